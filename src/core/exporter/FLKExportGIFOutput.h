#pragma once

#include <memory>

#include "core/exporter/FLKExportRecorder.h"
#include "core/exporter/FLKGIFRecorder.h"

// Lets the GIF writer take an export's frames and report like the MP4 writer.
// Threads: record() on the controlling thread, the render callbacks on the
// render thread afterwards.
class FLKExportGIFOutput : public FLKExportRecorder {
public:
    explicit FLKExportGIFOutput(std::shared_ptr<const FLKExportOptions> exportOptions);

    bool record(FLKError* error = nullptr) override;
    const std::filesystem::path& destinationURL() const override { return recorder_.destinationURL(); }
    FLKGIFRecorder& recorder() { return recorder_; }

    void didRenderToBuffer(FLKRenderer&, const FLKPixelBuffer& pixelBuffer) override;
    void didFinishRenderingOffScreen(FLKRenderer&) override;
    // The unfinished file goes with the recorder.
    void didFailRenderingOffScreen(FLKRenderer&, const FLKError& error) override;

private:
    FLKGIFRecorder recorder_;
};
