#pragma once

#include "core/platform/FLKError.h"

class FLKExportRecorder;

// Told by an export writer how its run goes. Called on the thread the writer
// works on (the render thread); every method is optional.
class FLKRecordingDelegate {
public:
    virtual ~FLKRecordingDelegate() = default;
    virtual void recorderDidStart(FLKExportRecorder&) {}
    virtual void recorderDidFinish(FLKExportRecorder&) {}
    virtual void didFailWithError(FLKExportRecorder&, const FLKError&) {}
    virtual void didUpdateWithProgress(FLKExportRecorder&, double) {}
};
