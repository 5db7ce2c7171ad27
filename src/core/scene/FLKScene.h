#pragma once

#include <functional>
#include <memory>

#include "core/scene/FLKCamera.h"
#include "core/scene/FLKObject.h"

// The root of a scene tree; owns the camera the editor and the exporter look through.
class FLKScene : public FLKObject {
public:
    FLKScene() = default;

    static std::shared_ptr<FLKScene> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKScene"; }

    const std::shared_ptr<FLKCamera>& mainCamera() const { return mainCamera_; }
    void setMainCamera(std::shared_ptr<FLKCamera> camera) { mainCamera_ = std::move(camera); }

    // A copy whose video container holds neither video nor audio: the empty
    // template a document starts from.
    std::shared_ptr<FLKScene> templatedScene() const;

    // The scene the application is showing: the one the scene loader (a
    // higher layer) loaded last, through the function each load installs.
    static std::shared_ptr<FLKScene> currentScene();
    static void setCurrentSceneProvider(std::function<std::shared_ptr<FLKScene>()> provider);

    // The copy shares the main camera with the original.
    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKScene>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;

private:
    std::shared_ptr<FLKCamera> mainCamera_;
};
