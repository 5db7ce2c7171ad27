#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "core/model/FLKFile.h"
#include "core/platform/FLKImage.h"
#include "core/platform/FLKLocalStore.h"

class FLKScene;

// A ready-made document the user starts from: an unzipped package folder
// named "<name>.flickwelltemplate", built in or in the user's local store.
// Opening one works on a copy; the folder itself is never changed or deleted.
class FLKTemplate : public FLKFile {
public:
    explicit FLKTemplate(std::filesystem::path url);

    // nullptr when the path is not a template folder.
    static std::shared_ptr<FLKTemplate> fileWithURL(const std::filesystem::path& url);
    // The user's templates: the local store "templates".
    static const std::shared_ptr<FLKLocalStore>& localStore();

    // Writes `file`'s model with `scene` as the template `name` in `store`
    // (default: the local store): a new folder, or replacing the existing one.
    static std::shared_ptr<FLKTemplate> writeTemplateFromFile(const std::shared_ptr<FLKFile>& file,
                                                              const std::shared_ptr<FLKScene>& scene,
                                                              const std::string& name, bool overwrite,
                                                              FLKError* error = nullptr,
                                                              const std::shared_ptr<FLKStore>& store = nullptr);

    const std::string& name() const { return name_; }
    // The picture of the template's preview folder; read once.
    const std::optional<FLKImage>& thumbnail();
    // The template's scene, read once; nullptr when it has none or it cannot be read.
    std::shared_ptr<FLKScene> scene();

    // A new working document holding a copy of the template folder, read.
    std::shared_ptr<FLKFile> temporaryFileCopy(FLKError* error = nullptr) override;

    void cleanup() override {}

private:
    std::string name_;
    bool thumbnailLoaded_ = false;
    std::optional<FLKImage> thumbnail_;
    bool sceneLoaded_ = false;
    std::shared_ptr<FLKScene> scene_;
};
