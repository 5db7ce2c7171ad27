#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/gpu/FLKContext.h"
#include "core/platform/FLKColor.h"
#include "core/platform/FLKImage.h"
#include "core/render/FLKRenderer.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKScene.h"

// A renderer drawing into a texture of the test's choice on a context of its own.
class FLKTestTarget : public FLKRendererDataSource {
public:
    FLKTestTarget(int width, int height);
    std::shared_ptr<FLKGPUTexture> textureForRenderer(FLKRenderer&) override { return texture; }
    FLKSize drawableSizeForRenderer(FLKRenderer&) override { return {720, 720}; }
    // Draws one frame of the scene and answers it as straight RGBA.
    FLKImage renderScene(FLKRenderer& renderer, const std::shared_ptr<FLKScene>& scene);
    void resize(int width, int height);

    std::shared_ptr<FLKContext> context;
    std::shared_ptr<FLKGPUTexture> texture;
};

std::shared_ptr<FLKScene> sceneWithCameraFrame(const FLKRect& frame);
std::shared_ptr<FLKColorGradientSprite> gradientSprite(const FLKRect& frame, std::vector<FLKColor> colors);
std::shared_ptr<FLKColorGradientSprite> solidSprite(const FLKRect& frame, FLKColor color);

// Largest channel difference between a pixel and an expected RGBA value.
int channelDifference(const FLKImage& image, int x, int y, const uint8_t expected[4]);
// Peak signal-to-noise ratio over the RGB channels of the pixels `mask` selects.
double psnr(const FLKImage& actual, const FLKImage& expected, const std::vector<bool>& mask);
// Writes actual, expected and their difference beside each other in the
// test's temporary folder and answers the paths, for a failure message.
std::string writeComparisonImages(const std::string& name, const FLKImage& actual, const FLKImage& expected);
