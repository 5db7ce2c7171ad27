#pragma once

#include <string>

// Hears how the naming sheet of a recording ended.
class FLKSaveRecordingSheetDelegate {
public:
    virtual ~FLKSaveRecordingSheetDelegate() = default;
    virtual void sheetDidSaveWithName(const std::string& name) = 0;
    virtual void sheetDidCancel() = 0;
};
