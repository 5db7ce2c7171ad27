#include "core/model/FLKTemplate.h"

#include "core/platform/FLKAtomicFile.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKScene.h"

namespace fs = std::filesystem;

namespace {

// Puts `folder` at `target` in one rename once the old one is out of the way;
// if that rename fails the old folder goes back.
bool replaceFolder(const fs::path& target, const fs::path& folder, FLKError* error) {
    std::error_code ec;
    auto staged = flk::siblingTemporaryURL(target);
    if (!flk::copyItem(folder, staged, error)) return false;
    auto previous = flk::siblingTemporaryURL(target);
    bool hadPrevious = flk::exists(target);
    if (hadPrevious) fs::rename(target, previous, ec);
    if (!ec) fs::rename(staged, target, ec);
    if (ec) {
        if (hadPrevious && !flk::exists(target)) fs::rename(previous, target, ec);
        fs::remove_all(staged, ec);
        flk::setError(error, flk::fileSystemErrorWithMessage("The template " + flk::absoluteString(target) +
                                                             " could not be replaced."));
        return false;
    }
    if (hadPrevious) fs::remove_all(previous, ec);
    return true;
}

}  // namespace

FLKTemplate::FLKTemplate(fs::path url) : FLKFile(ReadOnlyTag{}, std::move(url)) {
    name_ = URL().stem().string();
}

std::shared_ptr<FLKTemplate> FLKTemplate::fileWithURL(const fs::path& url) {
    if (!flk::isFlickwellTemplateFile(url)) return nullptr;
    return std::make_shared<FLKTemplate>(url);
}

const std::shared_ptr<FLKLocalStore>& FLKTemplate::localStore() {
    static auto* store =
        new std::shared_ptr<FLKLocalStore>(FLKLocalStore::storeWithDirectory("templates", kFLKFileExtensionFlickwellTemplate));
    return *store;
}

const std::optional<FLKImage>& FLKTemplate::thumbnail() {
    if (!thumbnailLoaded_) {
        thumbnailLoaded_ = true;
        FLKFileSerializationContextScope context(shared_from_this());
        thumbnail_ = FLKPreview::previewWithURL(previewURL())->image();
    }
    return thumbnail_;
}

std::shared_ptr<FLKScene> FLKTemplate::scene() {
    if (!sceneLoaded_) {
        sceneLoaded_ = true;
        try {
            FLKFileSerializationContextScope context(shared_from_this());
            scene_ = loadCurrentScene();
        } catch (const std::exception& e) {
            flk::log("The template %s has no readable scene: %s", name_.c_str(), e.what());
        }
    }
    return scene_;
}

std::shared_ptr<FLKFile> FLKTemplate::temporaryFileCopy(FLKError* error) {
    auto file = std::make_shared<FLKFile>();
    if (!flk::copyItem(URL(), file->URL(), error)) return nullptr;
    if (!file->read(URL(), error)) return nullptr;
    return file;
}

std::shared_ptr<FLKTemplate> FLKTemplate::writeTemplateFromFile(const std::shared_ptr<FLKFile>& file,
                                                                const std::shared_ptr<FLKScene>& scene,
                                                                const std::string& name, bool overwrite,
                                                                FLKError* error,
                                                                const std::shared_ptr<FLKStore>& store) {
    if (!flk::isValidFileName(name)) {
        flk::setError(error, flk::fileSystemErrorWithMessage("\"" + name + "\" cannot be a template name."));
        return nullptr;
    }
    const auto& targetStore = store ? store : std::static_pointer_cast<FLKStore>(localStore());
    auto target = targetStore->createFileURLWithName(name);
    if (!targetStore->createDirectoryIfNeeded(error)) return nullptr;

    auto copy = file->temporaryFileCopy(error);
    if (!copy) return nullptr;
    copy->document()->setCurrentScene(scene);
    // The timeline goes along, or pruning would drop the media only it uses.
    if (file->document()) copy->document()->setCurrentTimeline(file->document()->currentTimeline());
    if (!copy->prepareForWriting(error)) return nullptr;

    bool written = overwrite ? replaceFolder(target, copy->URL(), error) : flk::copyItem(copy->URL(), target, error);
    return written ? fileWithURL(target) : nullptr;
}
