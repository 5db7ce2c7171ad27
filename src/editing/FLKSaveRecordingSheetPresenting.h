#pragma once

#include <memory>
#include <string>

class FLKSaveRecordingSheetDelegate;

// The sheet that asks for a recording's name, on the inspector panel; the
// desktop program shows it. One sheet at a time.
class FLKSaveRecordingSheetPresenting {
public:
    virtual ~FLKSaveRecordingSheetPresenting() = default;
    // `initialName` fills the name field (empty for a new recording; renaming
    // shows the file's name and a "Cancel" button).
    virtual void presentSaveRecordingSheet(std::weak_ptr<FLKSaveRecordingSheetDelegate> delegate,
                                           const std::string& initialName) = 0;
    virtual void dismissSaveRecordingSheet() = 0;
};
