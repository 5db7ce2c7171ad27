#include "app/sidepanel/FLKSaveRecordingSheetPresenter.h"

#include "app/sidepanel/FLKSaveRecordingSheet.h"
#include "editing/FLKSaveRecordingSheetDelegate.h"

FLKSaveRecordingSheetPresenter::~FLKSaveRecordingSheetPresenter() { dismissSaveRecordingSheet(); }

void FLKSaveRecordingSheetPresenter::presentSaveRecordingSheet(std::weak_ptr<FLKSaveRecordingSheetDelegate> delegate,
                                                               const std::string& initialName) {
    dismissSaveRecordingSheet();
    const bool renaming = !initialName.empty();
    auto* sheet = new FLKSaveRecordingSheet(QString::fromStdString(initialName), renaming, host_);
    sheet_ = sheet;
    // The delegate dismisses the sheet from inside these calls: it is deleted later, not here.
    QObject::connect(sheet, &QDialog::accepted, sheet, [sheet, delegate] {
        if (auto strong = delegate.lock()) strong->sheetDidSaveWithName(sheet->name().toStdString());
    });
    QObject::connect(sheet, &QDialog::rejected, sheet, [delegate] {
        if (auto strong = delegate.lock()) strong->sheetDidCancel();
    });
    sheet->open();
}

void FLKSaveRecordingSheetPresenter::dismissSaveRecordingSheet() {
    if (!sheet_) return;
    FLKSaveRecordingSheet* sheet = sheet_;
    sheet_ = nullptr;
    // Closed without telling the delegate again: it asked for this.
    sheet->disconnect();
    sheet->hide();
    sheet->deleteLater();
}
