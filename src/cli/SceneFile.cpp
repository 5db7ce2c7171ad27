#include "cli/SceneFile.h"

#include <stdexcept>

#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKSerializable.h"

namespace {
constexpr const char* kDomain = "FLKSceneFileErrorDomain";

// Media paths in a loose scene file resolve against the file's folder.
class FolderSerializationFile : public FLKSerializationFile {
public:
    explicit FolderSerializationFile(std::filesystem::path folder) : folder_(std::move(folder)) {}
    std::filesystem::path folderURL() const override { return folder_; }

private:
    std::filesystem::path folder_;
};

FLKError fileError(long code, const std::filesystem::path& url, const std::string& problem) {
    return FLKError::make(kDomain, code, "Could not read the scene " + url.string() + ": " + problem);
}
}  // namespace

std::shared_ptr<FLKScene> SceneFile::load(const std::filesystem::path& url, FLKError* error) {
    std::error_code code;
    if (!std::filesystem::is_regular_file(url, code)) {
        flk::setError(error, fileError(1, url, "no such file."));
        return nullptr;
    }
    FLKError readError;
    auto json = flk::dictionaryFromJSONAtURL(url, &readError);
    if (!json) {
        flk::setError(error, fileError(2, url, "it is not valid JSON (" + readError.fullMessage() + ")."));
        return nullptr;
    }
    if (auto unknown = flk::unknownClassName(*json)) {
        flk::setError(error, fileError(3, url, "unknown class \"" + *unknown + "\"."));
        return nullptr;
    }
    auto folder = std::filesystem::absolute(url, code).parent_path();
    FLKFileSerializationContextScope context(std::make_shared<FolderSerializationFile>(folder));
    try {
        auto scene = flk::serializableFromJSONAtURL<FLKScene>(url);
        if (!scene->mainCamera()) {
            flk::setError(error, fileError(5, url, "the scene has no main camera."));
            return nullptr;
        }
        return scene;
    } catch (const std::invalid_argument&) {
        flk::setError(error, fileError(4, url,
                                       "it does not hold a readable scene (the top level must be an "
                                       "\"FLKScene\" with well-formed values)."));
        return nullptr;
    }
}
