// Any file dropped on the program as a recording: probing, then decoding its
// first frames and a thumbnail, must end in a clear failure or frames.
#include <cstdint>

#include "FLKFuzzSupport.h"
#include "core/media/FLKAsset.h"
#include "core/media/FLKAssetImageGenerator.h"
#include "core/media/FLKAssetReader.h"
#include "core/media/FLKMediaSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = [] {
        flk::media::setLibraryLogVerbose(false);
        return true;
    }();
    (void)quiet;
    const auto file = flk::fuzz::writeInput("input.media", data, size);
    auto asset = FLKAsset::assetWithPath(file.string());
    if (!asset->isReadable() || !asset->hasVideo()) return 0;
    FLKAssetReader reader(asset, 0, asset->duration() > 0 ? asset->duration() : 1.0, 64, 64);
    reader.setSingleThreaded(true);
    if (reader.startReading()) {
        for (int n = 0; n < 4 && reader.copyNextSampleBuffer(); ++n) {
        }
    }
    FLKAssetImageGenerator generator(asset);
    generator.setMaximumSize({64, 64});
    generator.generateImagesForTimes({0.0}, [](double, const FLKImage*, double, const FLKError*) {});
    return 0;
}
