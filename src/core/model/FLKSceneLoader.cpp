#include "core/model/FLKSceneLoader.h"

#include "core/model/FLKReadonlyFile.h"
#include "core/model/FLKTemplate.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKScene.h"

FLKSceneLoader::FLKSceneLoader(FLKTemplateManager& templates) : templates_(templates) {}

FLKSceneLoader& FLKSceneLoader::defaultSceneLoader() {
    static auto* loader = new FLKSceneLoader(FLKTemplateManager::defaultManager());
    return *loader;
}

std::shared_ptr<FLKScene> FLKSceneLoader::loadFirstScene(FLKError* error) {
    templates_.setSelectedTemplateIndex(0);
    auto selected = templates_.selectedTemplate();
    if (!selected) {
        flk::setError(error, flk::fileSystemErrorWithMessage("No template is installed."));
        return nullptr;
    }
    return loadSceneFromTemplate(selected, error);
}

std::shared_ptr<FLKScene> FLKSceneLoader::loadSceneFromTemplate(const std::shared_ptr<FLKTemplate>& aTemplate,
                                                               FLKError* error) {
    auto copy = aTemplate->temporaryFileCopy(error);
    if (!copy) return nullptr;
    if (auto current = FLKFile::currentFile(); current && current->media()) {
        copy->media()->addFilesFromMedia(*current->media());
    }
    return loadSceneWithFile(copy);
}

std::shared_ptr<FLKScene> FLKSceneLoader::loadSceneFromFileURL(const std::filesystem::path& url, FLKError* error) {
    auto document = FLKFile::fileWithURL(url);
    if (!document) {
        flk::setError(error, flk::fileSystemErrorWithMessage("The file " + flk::absoluteString(url) +
                                                             " is not a Flickwell document."));
        return nullptr;
    }
    auto copy = document->temporaryFileCopy(error);
    return copy ? loadSceneWithFile(copy) : nullptr;
}

std::shared_ptr<FLKScene> FLKSceneLoader::loadSceneWithFile(const std::shared_ptr<FLKFile>& file) {
    FLKFile::setCurrentFile(file);
    currentScene_ = file->document() ? file->document()->currentScene() : nullptr;
    currentTimeline_ = file->document() ? file->document()->currentTimeline() : nullptr;
    // The scene layer asks for "the current scene" without knowing the loader;
    // the scene loaded last is that scene. Weakly held: it is the document's.
    FLKScene::setCurrentSceneProvider([scene = std::weak_ptr<FLKScene>(currentScene_)] { return scene.lock(); });
    notifyDidLoadSceneWithType(kLoadTypeFile);
    return currentScene_;
}

void FLKSceneLoader::closeDocument() {
    currentScene_.reset();
    currentTimeline_.reset();
    FLKFile::setCurrentFile(nullptr);
}

void FLKSceneLoader::notifyDidLoadSceneWithType(unsigned long type) {
    FLKNotificationCenter::defaultCenter().post(kFLKSceneLoaderDidLoadSceneNotification, this,
                                                {{kFLKSceneLoaderLoadTypeUserInfoKey, static_cast<int64_t>(type)}});
}
