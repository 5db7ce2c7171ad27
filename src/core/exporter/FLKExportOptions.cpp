#include "core/exporter/FLKExportOptions.h"

#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKResources.h"
#include "core/platform/FLKTemporaryStore.h"

FLKExportOptions::FLKExportOptions(FLKExportType type, std::filesystem::path destinationURL, FLKRect frame,
                                   FLKSize videoSize, std::uint64_t numFrames, std::uint64_t fps,
                                   std::uint64_t outputFps, std::optional<std::filesystem::path> audioURL)
    : type_(type),
      destinationURL_(std::move(destinationURL)),
      frame_(frame),
      videoSize_(videoSize),
      numFrames_(numFrames),
      fps_(fps),
      outputFps_(outputFps),
      audioURL_(std::move(audioURL)),
      audioURLFixed_(audioURL_.has_value()) {}

std::shared_ptr<FLKExportOptions> FLKExportOptions::exportOptionsWithType(
    FLKExportType type, std::filesystem::path destinationURL, FLKRect frame, FLKSize videoSize,
    std::uint64_t numFrames, std::uint64_t fps, std::uint64_t outputFps,
    std::optional<std::filesystem::path> audioURL) {
    return std::make_shared<FLKExportOptions>(type, std::move(destinationURL), frame, videoSize, numFrames, fps,
                                              outputFps, std::move(audioURL));
}

std::optional<std::filesystem::path> FLKExportOptions::audioURL() const {
    std::lock_guard lock(mutex_);
    if (!audioURLFixed_) {
        audioURL_ = FLKResources::URLForResource("silence", kFLKFileExtensionMP3);
        audioURLFixed_ = true;
    }
    return audioURL_;
}

std::optional<std::filesystem::path> FLKExportOptions::tempDestinationURL() const {
    if (type_ != FLKExportTypeMP4) return std::nullopt;
    std::lock_guard lock(mutex_);
    if (!tempDestinationURL_) {
        auto store = FLKTemporaryStore::storeWithDirectory(kFLKTempDirectoryExport, kFLKFileExtensionM4V);
        tempDestinationURL_ = store->createUniqueFileURL();
    }
    return tempDestinationURL_;
}
