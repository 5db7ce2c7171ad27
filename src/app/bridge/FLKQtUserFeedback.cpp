#include "app/bridge/FLKQtUserFeedback.h"

#include <QApplication>
#include <QMessageBox>

void FLKQtUserFeedback::beep() {
    QMetaObject::invokeMethod(context_, [] { QApplication::beep(); }, Qt::AutoConnection);
}

QString FLKQtUserFeedback::informativeText(const FLKError& error) {
    QStringList parts;
    if (!error.failureReason.empty()) parts << QString::fromStdString(error.failureReason);
    if (!error.recoverySuggestion.empty()) parts << QString::fromStdString(error.recoverySuggestion);
    return parts.join("\n\n");
}

void FLKQtUserFeedback::presentError(const FLKError& error) {
    QMetaObject::invokeMethod(
        context_,
        [error] {
            auto* box = new QMessageBox(QMessageBox::Warning, QString(),
                                        QString::fromStdString(error.localizedDescription), QMessageBox::Ok,
                                        QApplication::activeWindow());
            box->setAttribute(Qt::WA_DeleteOnClose);
            box->setInformativeText(informativeText(error));
            box->open();
        },
        // Queued even on the main thread: the caller is in the middle of a
        // model change that an alert's nested event loop must not interrupt.
        Qt::QueuedConnection);
}
