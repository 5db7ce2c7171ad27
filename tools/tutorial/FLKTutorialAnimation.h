#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "FLKMockAppArtwork.h"
#include "FLKRecordingScript.h"
#include "FLKScreenRecordingComposer.h"
#include "core/platform/FLKTimeUpdatable.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"

// The tutorial's story as a scene: a recording drops into a phone, plays on
// its screen, and an arrow leads to the MP4 and GIF badges. buildScene()
// makes the sprites; the off-screen renderer copies the scene, and update()
// then moves the copied sprites for each frame.
//
// Threads: buildScene() and attach() on the calling thread before
// rendering; update() on the renderer's render thread only.
class FLKTutorialAnimation : public FLKTimeUpdatable {
public:
    static constexpr int kSide = 720;
    static constexpr double kDuration = 8;

    FLKTutorialAnimation();

    std::shared_ptr<FLKScene> buildScene() const;
    // Finds the sprites of the renderer's copy of the built scene.
    bool attach(const FLKScene& renderedScene);

    bool update(double time) override;
    double currentTime() const override { return currentTime_.load(); }

private:
    enum Layer { background, screenOff, screen, phone, file, chevron0, chevron1, chevron2, mp4, gif, layerCount };

    void place(Layer layer, FLKPoint center, double scale, double angle = 0) const;
    void showScreen(double time);

    std::vector<std::shared_ptr<FLKGPUTexture>> textures_;  // built once, shared read-only
    std::vector<std::shared_ptr<FLKSprite>> sprites_;       // the rendered copies; render thread after attach()

    // The phone's screen is the sample recording, drawn small (render thread after construction).
    FLKMockAppLayout screenLayout_;
    FLKRecordingScript screenScript_;
    FLKMockAppArtwork screenArtwork_;
    FLKScreenRecordingComposer screenComposer_;
    FLKPixelBuffer screenFrame_;

    std::atomic<double> currentTime_{0};
};
