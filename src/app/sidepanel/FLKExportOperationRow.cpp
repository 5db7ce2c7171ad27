#include "app/sidepanel/FLKExportOperationRow.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>
#include <QUrl>

#include <cmath>

#include "core/exporter/FLKExportOperation.h"

namespace {
constexpr int kProgressSteps = 1000;
}  // namespace

FLKExportOperationRow::FLKExportOperationRow(std::shared_ptr<FLKExportOperation> operation, QWidget* parent)
    : QWidget(parent), operation_(std::move(operation)) {
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 2, 0, 2);
    auto* name = new QLabel(QString::fromStdString(operation_->destinationURL().filename().string()), this);
    name->setToolTip(QString::fromStdString(operation_->destinationURL().string()));
    layout->addWidget(name, 0, 0, 1, 2);
    progress_ = new QProgressBar(this);
    progress_->setRange(0, kProgressSteps);
    progress_->setValue(0);
    progress_->setTextVisible(false);
    layout->addWidget(progress_, 1, 0);
    cancel_ = new QToolButton(this);
    cancel_->setText("Cancel");
    cancel_->setToolTip("Stop this export; nothing is written");
    connect(cancel_, &QToolButton::clicked, this, &FLKExportOperationRow::cancelOperation);
    layout->addWidget(cancel_, 1, 1);
    status_ = new QLabel("Waiting", this);
    status_->setWordWrap(true);
    layout->addWidget(status_, 2, 0);
    showInFolder_ = new QPushButton("Show in Folder", this);
    showInFolder_->hide();
    connect(showInFolder_, &QPushButton::clicked, this, [this] {
        const QString folder = QFileInfo(QString::fromStdString(operation_->destinationURL().string())).absolutePath();
        QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
    });
    layout->addWidget(showInFolder_, 2, 1);
    layout->setColumnStretch(0, 1);
}

void FLKExportOperationRow::cancelOperation() {
    if (!operation_->cancel()) return;
    cancel_->setEnabled(false);
    status_->setText("Cancelling");
}

void FLKExportOperationRow::operationDidStart() {
    if (!operation_->isCancelled()) status_->setText("Exporting");
}

void FLKExportOperationRow::operationDidUpdate() {
    progress_->setValue(static_cast<int>(std::lround(operation_->progress() * kProgressSteps)));
}

void FLKExportOperationRow::operationDidFinish() {
    cancel_->hide();
    if (operation_->isCancelled()) {
        status_->setText("Cancelled");
        progress_->setValue(0);
    } else if (auto error = operation_->error()) {
        status_->setText("Failed: " + QString::fromStdString(error->failureReason.empty() ? error->localizedDescription
                                                                                           : error->failureReason));
    } else {
        progress_->setValue(kProgressSteps);
        status_->setText("Done");
        showInFolder_->show();
    }
}
