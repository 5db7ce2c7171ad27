#pragma once

#include <filesystem>
#include <memory>

#include "core/exporter/FLKRecordingDelegate.h"
#include "core/platform/FLKError.h"
#include "core/render/FLKRenderOutput.h"

// A writer of an export (MP4 or GIF): takes the off-screen renderer's frames
// and reports start, progress and outcome to its delegate. Exactly one of
// recorderDidFinish or didFailWithError follows a successful record().
class FLKExportRecorder : public FLKRenderOutput {
public:
    // Set before record(); read on the render thread afterwards.
    void setDelegate(std::weak_ptr<FLKRecordingDelegate> delegate) { delegate_ = std::move(delegate); }
    std::shared_ptr<FLKRecordingDelegate> delegate() const { return delegate_.lock(); }

    // Opens the output. False with the error set when it cannot (nothing is
    // reported to the delegate then); otherwise the delegate hears recorderDidStart.
    virtual bool record(FLKError* error = nullptr) = 0;
    virtual const std::filesystem::path& destinationURL() const = 0;

private:
    std::weak_ptr<FLKRecordingDelegate> delegate_;
};
