// The scene and timeline records of a document, read on their own. A record
// that cannot be read raises std::invalid_argument, which every loading
// boundary turns into an error; anything else escaping is a fault.
#include <cstdint>
#include <stdexcept>

#include "FLKFuzzSupport.h"
#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKScene.h"
#include "core/timeline/FLKTimeline.h"

namespace {
// Media paths in the records resolve against the fuzzing folder.
class ScratchFile : public FLKSerializationFile {
public:
    std::filesystem::path folderURL() const override { return flk::fuzz::scratchFolder(); }
};

template <class T>
void read(const std::filesystem::path& record) {
    try {
        if (auto object = flk::serializableFromJSONAtURL<T>(record)) (void)object->serialized();
    } catch (const std::invalid_argument&) {
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto record = flk::fuzz::writeInput("record.json", data, size);
    FLKFileSerializationContextScope context(std::make_shared<ScratchFile>());
    read<FLKScene>(record);
    read<FLKTimeline>(record);
    return 0;
}
