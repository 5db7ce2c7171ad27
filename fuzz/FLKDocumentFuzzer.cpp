// A document package from anywhere: ZIP entries, JSON records and media
// paths into the model. Every failure must be an error, never a crash.
#include <cstdint>

#include "FLKFuzzSupport.h"
#include "core/model/FLKCoreServices.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKError.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool installed = [] {
        flk::fuzz::scratchFolder();
        flk::installCoreServices();
        return true;
    }();
    (void)installed;
    const auto document = flk::fuzz::writeInput("input.flickwell", data, size);
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    FLKError error;
    loader.loadSceneFromFileURL(document, &error);
    loader.closeDocument();
    return 0;
}
