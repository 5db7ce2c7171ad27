#include "core/exporter/FLKExportGIFOutput.h"

FLKExportGIFOutput::FLKExportGIFOutput(std::shared_ptr<const FLKExportOptions> exportOptions)
    : recorder_(std::move(exportOptions)) {}

bool FLKExportGIFOutput::record(FLKError* error) {
    recorder_.setProgressHandler([this](double progress) {
        if (auto delegate = this->delegate()) delegate->didUpdateWithProgress(*this, progress);
    });
    if (!recorder_.record(error)) return false;
    if (auto delegate = this->delegate()) delegate->recorderDidStart(*this);
    return true;
}

void FLKExportGIFOutput::didRenderToBuffer(FLKRenderer&, const FLKPixelBuffer& pixelBuffer) {
    recorder_.appendBuffer(pixelBuffer);
}

void FLKExportGIFOutput::didFinishRenderingOffScreen(FLKRenderer&) {
    FLKError error;
    const bool finished = recorder_.finish(&error);
    auto delegate = this->delegate();
    if (!delegate) return;
    if (finished) {
        delegate->recorderDidFinish(*this);
    } else {
        delegate->didFailWithError(*this, error);
    }
}

void FLKExportGIFOutput::didFailRenderingOffScreen(FLKRenderer&, const FLKError& error) {
    if (auto delegate = this->delegate()) delegate->didFailWithError(*this, error);
}
