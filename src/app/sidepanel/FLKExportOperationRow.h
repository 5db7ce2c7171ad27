#pragma once

#include <QWidget>

#include <memory>

class FLKExportOperation;
class QLabel;
class QProgressBar;
class QPushButton;
class QToolButton;

// One export of the export inspector's list: its name, a progress bar and a
// cancel button while it waits or runs; afterwards what became of it, with
// "Show in Folder" for a written file. Main thread only: the inspector
// forwards the operation's notifications.
class FLKExportOperationRow : public QWidget {
    Q_OBJECT

public:
    FLKExportOperationRow(std::shared_ptr<FLKExportOperation> operation, QWidget* parent = nullptr);

    const std::shared_ptr<FLKExportOperation>& operation() const { return operation_; }
    QProgressBar* progressBar() const { return progress_; }
    QToolButton* cancelButton() const { return cancel_; }
    QPushButton* showInFolderButton() const { return showInFolder_; }
    QLabel* statusLabel() const { return status_; }

    void operationDidStart();
    void operationDidUpdate();
    void operationDidFinish();

private:
    void cancelOperation();

    const std::shared_ptr<FLKExportOperation> operation_;
    QLabel* status_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QToolButton* cancel_ = nullptr;
    QPushButton* showInFolder_ = nullptr;
};
