#include "FLKTutorialAnimation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "FLKTutorialArtwork.h"
#include "core/scene/FLKColorGradientSprite.h"

using namespace flk::tutorial;

namespace {
constexpr int kScreenWidth = kPhoneWidth - 2 * kScreenInset;
constexpr int kScreenHeight = kPhoneHeight - 2 * kScreenInset;
const FLKPoint kPhoneCenter{220, 372};
const FLKPoint kBadgeCenters[2] = {{560, 292}, {560, 452}};

double progress(double t, double start, double end) { return std::clamp((t - start) / (end - start), 0.0, 1.0); }
double easeOut(double t) { return FLKRecordingScript::easeOut(t); }
double easeInOut(double t) { return FLKRecordingScript::easeInOut(t); }
// Overshoots a little before settling: things that pop in.
double easeOutBack(double t) {
    constexpr double c = 1.9;
    t = std::clamp(t, 0.0, 1.0) - 1;
    return 1 + (c + 1) * t * t * t + c * t * t;
}

std::shared_ptr<FLKPlane> planeAround(FLKPoint center, double width, double height, double angle) {
    double c = std::cos(angle), s = std::sin(angle);
    auto corner = [&](double x, double y) { return FLKPoint{center.x + x * c - y * s, center.y + x * s + y * c}; };
    double hw = width / 2, hh = height / 2;
    return std::make_shared<FLKPlane>(corner(-hw, -hh), corner(hw, -hh), corner(-hw, hh), corner(hw, hh), 2);
}
}  // namespace

FLKTutorialAnimation::FLKTutorialAnimation()
    : screenLayout_(kScreenWidth, kScreenHeight, 3),
      screenScript_(screenLayout_, kDuration - 2),
      screenArtwork_(screenLayout_, screenScript_.openedCard()),
      screenComposer_(screenLayout_, screenArtwork_),
      screenFrame_(kScreenWidth, kScreenHeight) {
    textures_.resize(layerCount);
    textures_[phone] = textureOf(drawPhone());
    textures_[file] = textureOf(drawRecordingFile());
    auto chevron = textureOf(drawChevron());
    textures_[chevron0] = textures_[chevron1] = textures_[chevron2] = chevron;
    textures_[mp4] = textureOf(drawFormatBadge("MP4", 0x4f46e5));
    textures_[gif] = textureOf(drawFormatBadge("GIF", 0xe83e8c));
}

std::shared_ptr<FLKScene> FLKTutorialAnimation::buildScene() const {
    auto scene = std::make_shared<FLKScene>();
    auto add = [&](std::shared_ptr<FLKSprite> sprite, Layer layer, const FLKRect& frame) {
        sprite->setShape(FLKPlane::planeWithFrame(frame));
        scene->addChild(sprite);
        sprite->setZOrder(layer);
    };
    add(FLKColorGradientSprite::colorGradientSpriteWithColors(
            {flk::hexColor("4338ca"), flk::hexColor("7c3aed"), flk::hexColor("2563eb"), flk::hexColor("db2777")}),
        background, FLKRect(0, 0, kSide, kSide));
    // Everything else starts out of sight; update() places it.
    const FLKRect hidden(-2 * kSide, -2 * kSide, 64, 64);
    add(FLKColorGradientSprite::colorGradientSpriteWithColors(
            {flk::hexColor("11131a"), flk::hexColor("1a1d29"), flk::hexColor("1a1d29"), flk::hexColor("262a3b")}),
        screenOff, hidden);
    for (int layer = screen; layer < layerCount; ++layer) {
        add(std::make_shared<FLKTexturedSprite>(textures_[static_cast<size_t>(layer)]), static_cast<Layer>(layer),
            hidden);
    }
    return scene;
}

bool FLKTutorialAnimation::attach(const FLKScene& renderedScene) {
    sprites_.assign(layerCount, nullptr);
    for (const auto& child : renderedScene.children()) {
        auto sprite = std::dynamic_pointer_cast<FLKSprite>(child);
        if (sprite && child->zOrder() >= 0 && child->zOrder() < layerCount)
            sprites_[static_cast<size_t>(child->zOrder())] = sprite;
    }
    return std::all_of(sprites_.begin(), sprites_.end(), [](const auto& sprite) { return sprite != nullptr; });
}

void FLKTutorialAnimation::place(Layer layer, FLKPoint center, double scale, double angle) const {
    const auto& texture = textures_[layer];
    double width = texture ? texture->width() : kScreenWidth, height = texture ? texture->height() : kScreenHeight;
    if (layer == screen || layer == screenOff) width = kScreenWidth, height = kScreenHeight;
    // A sprite too small to see waits out of sight at full size rather than as a degenerate quad.
    if (scale < 0.01) center = {-2.0 * kSide, -2.0 * kSide}, scale = 1;
    sprites_[layer]->setShape(planeAround(center, width * scale, height * scale, angle));
}

bool FLKTutorialAnimation::update(double t) {
    currentTime_.store(t);
    // The phone rises into place.
    FLKPoint phoneAt{kPhoneCenter.x, kPhoneCenter.y + 560 * (1 - easeOut(progress(t, 0, 0.8)))};
    place(phone, phoneAt, 1);
    place(screenOff, phoneAt, 1);

    // The recording falls onto the phone, settles with a bounce, and sinks into the screen.
    const double fall = progress(t, 0.7, 1.45);
    FLKPoint fileAt{phoneAt.x + 40 * (1 - fall), -120 + (phoneAt.y + 40 - -120) * fall * fall};
    double squash = t > 1.45 ? 1 + 0.08 * std::sin(progress(t, 1.45, 1.8) * std::numbers::pi) : 1;
    double sink = 1 - easeInOut(progress(t, 1.8, 2.2));
    double angle = 0.35 * (1 - fall) * std::sin(fall * 5);
    place(file, fileAt, squash * sink, angle);

    showScreen(t);

    // Export: the arrow's steps pop in one after another, then pulse.
    for (int i = 0; i < 3; ++i) {
        double appear = easeOutBack(progress(t, 3.6 + 0.2 * i, 3.95 + 0.2 * i));
        double pulse = t > 4.6 ? 1 + 0.1 * std::max(0.0, std::sin((t - 4.6) * 5 - i * 0.9)) : 1;
        place(static_cast<Layer>(chevron0 + i), {388 + 36.0 * i, kPhoneCenter.y}, appear * pulse);
    }
    for (int i = 0; i < 2; ++i) {
        double pop = easeOutBack(progress(t, 4.4 + 0.4 * i, 4.85 + 0.4 * i));
        double bob = t > 5.2 ? 5 * std::sin((t - 5.2) * 2.2 + i * 1.7) : 0;
        FLKPoint at{kBadgeCenters[i].x, kBadgeCenters[i].y + bob};
        place(i ? gif : mp4, at, pop);
    }
    return true;
}

void FLKTutorialAnimation::showScreen(double t) {
    constexpr double kStart = 1.85;
    const double grow = easeOut(progress(t, kStart, 2.35));
    FLKPoint center = sprites_[screenOff]->position();
    place(screen, center, grow);
    if (grow <= 0) return;
    screenComposer_.compose(screenScript_.stateAt(std::max(0.0, t - kStart)), screenFrame_);
    auto texture =
        std::make_shared<FLKGPUTexture>(kScreenWidth, kScreenHeight, FLKPixelFormat::BGRA8, screenFrame_.bgra);
    std::static_pointer_cast<FLKTexturedSprite>(sprites_[screen])->setTexture(texture);
}
