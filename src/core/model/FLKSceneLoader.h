#pragma once

#include <filesystem>
#include <memory>

#include "core/platform/FLKError.h"

class FLKFile;
class FLKScene;
class FLKTemplate;
class FLKTemplateManager;
class FLKTimeline;

inline constexpr const char* kFLKSceneLoaderDidLoadSceneNotification = "FLKSceneLoaderDidLoadSceneNotification";
inline constexpr const char* kFLKSceneLoaderLoadTypeUserInfoKey = "FLKSceneLoaderLoadTypeUserInfoKey";

// Turns a template or a document file into the current document and tells
// the rest of the system a new scene is loaded. Used from the thread of the
// user's command; the notification is posted on that thread.
class FLKSceneLoader {
public:
    static constexpr unsigned long kLoadTypeFile = 2;

    explicit FLKSceneLoader(FLKTemplateManager& templates);
    static FLKSceneLoader& defaultSceneLoader();

    const std::shared_ptr<FLKScene>& currentScene() const { return currentScene_; }
    const std::shared_ptr<FLKTimeline>& currentTimeline() const { return currentTimeline_; }

    // Each load answers the loaded scene; nullptr with the error set when
    // nothing was loaded, and then the current document stays as it was.
    std::shared_ptr<FLKScene> loadFirstScene(FLKError* error = nullptr);
    // Media the user brought into the current document come along.
    std::shared_ptr<FLKScene> loadSceneFromTemplate(const std::shared_ptr<FLKTemplate>& aTemplate,
                                                    FLKError* error = nullptr);
    std::shared_ptr<FLKScene> loadSceneFromFileURL(const std::filesystem::path& url, FLKError* error = nullptr);
    std::shared_ptr<FLKScene> loadSceneWithFile(const std::shared_ptr<FLKFile>& file);
    // Lets go of the current document: its scene, its timeline and the file,
    // whose working folder goes with it once nobody else holds it.
    void closeDocument();

    void notifyDidLoadSceneWithType(unsigned long type);

private:
    FLKTemplateManager& templates_;
    std::shared_ptr<FLKScene> currentScene_;
    std::shared_ptr<FLKTimeline> currentTimeline_;
};
