#pragma once

#include <QPointer>

#include <memory>

#include "app/sidepanel/FLKSaveRecordingSheet.h"
#include "editing/FLKSaveRecordingSheetPresenting.h"

class QWidget;

// Shows the naming sheet over `host` for the recording view models and tells
// their delegate how it ended. One sheet at a time. Main thread only.
class FLKSaveRecordingSheetPresenter : public FLKSaveRecordingSheetPresenting {
public:
    explicit FLKSaveRecordingSheetPresenter(QWidget* host) : host_(host) {}
    ~FLKSaveRecordingSheetPresenter() override;

    void presentSaveRecordingSheet(std::weak_ptr<FLKSaveRecordingSheetDelegate> delegate,
                                   const std::string& initialName) override;
    void dismissSaveRecordingSheet() override;
    // The sheet shown now, or null.
    FLKSaveRecordingSheet* sheet() const { return sheet_; }

private:
    QPointer<QWidget> host_;
    QPointer<FLKSaveRecordingSheet> sheet_;
};
