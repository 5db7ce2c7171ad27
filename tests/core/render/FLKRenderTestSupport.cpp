#include "FLKRenderTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "core/media/FLKImageIO.h"

FLKTestTarget::FLKTestTarget(int width, int height) : context(FLKContext::contextWithSize({720, 720})) {
    resize(width, height);
}

void FLKTestTarget::resize(int width, int height) {
    FLKContext::Scope scope(*context);
    texture = FLKGPUTexture::renderTarget(width, height, FLKPixelFormat::BGRA8);
}

FLKImage FLKTestTarget::renderScene(FLKRenderer& renderer, const std::shared_ptr<FLKScene>& scene) {
    FLKContext::Scope scope(*context);
    renderer.setScene(scene);
    renderer.render();
    return texture ? flk::imageWithTexture(*texture) : FLKImage();
}

std::shared_ptr<FLKScene> sceneWithCameraFrame(const FLKRect& frame) {
    auto scene = std::make_shared<FLKScene>();
    scene->setZOrder(0);
    scene->setMainCamera(FLKCamera::cameraWithFrame(frame));
    return scene;
}

std::shared_ptr<FLKColorGradientSprite> gradientSprite(const FLKRect& frame, std::vector<FLKColor> colors) {
    auto sprite = FLKColorGradientSprite::colorGradientSpriteWithColors(std::move(colors));
    sprite->setShape(FLKPlane::planeWithFrame(frame));
    return sprite;
}

std::shared_ptr<FLKColorGradientSprite> solidSprite(const FLKRect& frame, FLKColor color) {
    return gradientSprite(frame, {color, color, color, color});
}

int channelDifference(const FLKImage& image, int x, int y, const uint8_t expected[4]) {
    const uint8_t* p = image.pixel(x, y);
    int worst = 0;
    for (int c = 0; c < 4; ++c) worst = std::max(worst, std::abs(int(p[c]) - int(expected[c])));
    return worst;
}

double psnr(const FLKImage& actual, const FLKImage& expected, const std::vector<bool>& mask) {
    double sum = 0;
    size_t count = 0;
    for (int y = 0; y < actual.height; ++y) {
        for (int x = 0; x < actual.width; ++x) {
            if (!mask[size_t(y) * actual.width + x]) continue;
            for (int c = 0; c < 3; ++c) {
                double d = double(actual.pixel(x, y)[c]) - double(expected.pixel(x, y)[c]);
                sum += d * d;
            }
            count += 3;
        }
    }
    if (count == 0) return 0;
    double mse = sum / double(count);
    return mse == 0 ? 99.0 : 10.0 * std::log10(255.0 * 255.0 / mse);
}

std::string writeComparisonImages(const std::string& name, const FLKImage& actual, const FLKImage& expected) {
    std::filesystem::path folder = ::testing::TempDir();
    FLKImage diff(actual.width, actual.height);
    for (int y = 0; y < actual.height; ++y) {
        for (int x = 0; x < actual.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                diff.pixel(x, y)[c] = uint8_t(std::min(255, 4 * std::abs(int(actual.pixel(x, y)[c]) -
                                                                         int(expected.pixel(x, y)[c]))));
            }
            diff.pixel(x, y)[3] = 255;
        }
    }
    std::string paths;
    for (auto [suffix, image] : {std::pair{"actual", &actual}, {"expected", &expected}, {"diff", &diff}}) {
        auto path = folder / (name + "-" + suffix + ".png");
        flk::writePNG(*image, path);
        paths += " " + path.string();
    }
    return "images:" + paths;
}
