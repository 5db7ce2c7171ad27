#include "FLKScreenRecordingComposer.h"

#include <algorithm>
#include <cmath>

namespace {
// How far the list drifts left, as a share of the width, while a page covers it.
constexpr double kParallax = 0.25;
constexpr float kCoveredBrightness = 0.7f;

FLKRoundedRect circle(double cx, double cy, double radius) {
    return {FLKRect(cx - radius, cy - radius, 2 * radius, 2 * radius), radius};
}
}  // namespace

FLKScreenRecordingComposer::FLKScreenRecordingComposer(const FLKMockAppLayout& layout, const FLKMockAppArtwork& artwork)
    : layout_(layout),
      artwork_(artwork),
      scratch_(layout.width(), layout.height()),
      background_(layout.width(), layout.height()) {
    const FLKPaint paint = FLKPaint::hex(flk::recording::kBackground);
    const uint8_t bgra[4] = {static_cast<uint8_t>(std::lround(paint.blue * 255)),
                             static_cast<uint8_t>(std::lround(paint.green * 255)),
                             static_cast<uint8_t>(std::lround(paint.red * 255)), 255};
    for (size_t i = 0; i < background_.bgra.size(); ++i) background_.bgra[i] = bgra[i % 4];
}

void FLKScreenRecordingComposer::compose(const FLKRecordingState& state, FLKPixelBuffer& frame) {
    const int pageBottom = layout_.tabBarTop();
    artwork_.statusBar().copyInto(frame, 0, layout_.statusBarHeight(), 0, 0, 0, frame.height);
    artwork_.tabBar(0).copyInto(frame, 0, layout_.tabBarHeight(), 0, pageBottom, 0, frame.height);

    if (state.tabProgress <= 0) {
        composeFirstTab(state, frame);
    } else if (state.tabProgress >= 1) {
        composeSecondTab(state, frame);
    } else {
        fadeThrough(state, frame);
    }
    if (state.touch) drawTouch(*state.touch, frame);
}

void FLKScreenRecordingComposer::composeSecondTab(const FLKRecordingState& state, FLKPixelBuffer& frame) const {
    composePage(FLKMockPage::explore, state.exploreOffset, 0, 1, frame);
    artwork_.tabBar(1).copyInto(frame, 0, layout_.tabBarHeight(), 0, layout_.tabBarTop(), 0, frame.height);
}

// The bars cross-fade; the old content fades out to the background before
// the new one fades in, so the two never show through each other.
void FLKScreenRecordingComposer::fadeThrough(const FLKRecordingState& state, FLKPixelBuffer& frame) {
    constexpr double kTurn = 0.4;
    const double p = state.tabProgress;
    const int contentTop = layout_.contentTop(), contentBottom = layout_.tabBarTop();
    composeFirstTab(state, frame);
    composeSecondTab(state, scratch_);
    const auto weight = static_cast<float>(p);
    flk::recording::mixRows(frame, scratch_, weight, layout_.statusBarHeight(), contentTop);
    flk::recording::mixRows(frame, scratch_, weight, contentBottom, frame.height);
    if (p < kTurn) {
        flk::recording::mixRows(frame, background_, static_cast<float>(p / kTurn), contentTop, contentBottom);
    } else {
        flk::recording::mixRows(frame, scratch_, 1, contentTop, contentBottom);
        flk::recording::mixRows(frame, background_, static_cast<float>(1 - (p - kTurn) / (1 - kTurn)), contentTop,
                                contentBottom);
    }
}

void FLKScreenRecordingComposer::composeFirstTab(const FLKRecordingState& state, FLKPixelBuffer& frame) const {
    const double p = state.detailProgress;
    if (p < 1) {
        int shift = static_cast<int>(std::lround(-kParallax * layout_.width() * p));
        float brightness = 1 - (1 - kCoveredBrightness) * static_cast<float>(p);
        composePage(FLKMockPage::list, state.listOffset, shift, brightness, frame);
        if (state.ripple) drawRipple(*state.ripple, state.listOffset, shift, frame);
    }
    if (p > 0) {
        int edge = static_cast<int>(std::lround(layout_.width() * (1 - p)));
        composePage(FLKMockPage::detail, state.detailOffset, edge, 1, frame);
        if (edge > 0) drawEdgeShadow(edge, frame);
    }
}

void FLKScreenRecordingComposer::composePage(FLKMockPage page, double offset, int shiftX, float brightness,
                                             FLKPixelBuffer& frame) const {
    const int pageTop = layout_.statusBarHeight(), contentTop = layout_.contentTop(), bottom = layout_.tabBarTop();
    artwork_.appBar(page).copyInto(frame, 0, layout_.appBarHeight(), shiftX, pageTop, pageTop, contentTop, brightness);
    const FLKFrameLayer& content = artwork_.content(page);
    int sourceY = static_cast<int>(std::lround(offset));
    artwork_.content(page).copyInto(frame, sourceY, content.height() - sourceY, shiftX, contentTop, contentTop, bottom,
                                    brightness);
}

void FLKScreenRecordingComposer::drawRipple(const FLKCardRipple& ripple, double listOffset, int shiftX,
                                            FLKPixelBuffer& frame) const {
    const FLKRect card = layout_.cards()[static_cast<size_t>(ripple.card)].frame;
    const double top = layout_.contentTop() + card.origin.y - listOffset;
    const int x0 = static_cast<int>(card.origin.x) + shiftX, y0 = static_cast<int>(std::floor(top));
    FLKCanvas overlay(static_cast<int>(card.size.width) + 1, static_cast<int>(card.size.height) + 2);
    const double dy = top - y0;
    FLKRoundedRect shape{FLKRect(0, dy, card.size.width, card.size.height), layout_.px(14)};
    const double grown = FLKRecordingScript::easeOut(ripple.progress);
    const double reach = std::hypot(card.size.width, card.size.height) * grown;
    const FLKRoundedRect wave =
        circle(ripple.origin.x - card.origin.x, ripple.origin.y - card.origin.y + dy, std::max(reach, 1.0));
    const float fade = static_cast<float>(1 - std::pow(ripple.progress, 3));
    // Only the part of the card inside the list's viewport may be touched.
    const double clipTop = layout_.contentTop() - y0, clipBottom = layout_.tabBarTop() - y0;
    overlay.fill(shape, [&](double x, double y) {
        if (y < clipTop || y > clipBottom) return FLKPaint{0, 0, 0, 0};
        float inWave = static_cast<float>(std::clamp(0.5 - wave.distance(x, y), 0.0, 1.0));
        return FLKPaint::hex(flk::recording::kPrimary, fade * (0.05f + 0.14f * inWave));
    });
    flk::recording::blendCanvas(overlay, frame, x0, y0);
}

void FLKScreenRecordingComposer::drawEdgeShadow(int edgeX, FLKPixelBuffer& frame) const {
    const int width = static_cast<int>(std::ceil(layout_.px(10)));
    FLKCanvas shadow(width, layout_.tabBarTop() - layout_.statusBarHeight());
    shadow.fill(FLKRoundedRect{FLKRect(0, 0, width, shadow.height()), 0}, [&](double x, double) {
        double t = x / width;
        return FLKPaint::hex(0x000000, static_cast<float>(0.18 * t * t));
    });
    flk::recording::blendCanvas(shadow, frame, edgeX - width, layout_.statusBarHeight());
}

void FLKScreenRecordingComposer::drawTouch(const FLKTouchMark& touch, FLKPixelBuffer& frame) const {
    const double radius = layout_.px(19) * touch.scale;
    const int size = static_cast<int>(std::ceil(2 * radius)) + 4;
    const int x0 = static_cast<int>(std::floor(touch.point.x - size / 2.0));
    const int y0 = static_cast<int>(std::floor(touch.point.y - size / 2.0));
    FLKCanvas mark(size, size);
    const double cx = touch.point.x - x0, cy = touch.point.y - y0;
    const auto opacity = static_cast<float>(touch.opacity);
    mark.fill(circle(cx, cy, radius), FLKPaint::hex(0xffffff, 0.5f * opacity));
    mark.stroke(circle(cx, cy, radius), std::max(1.0, layout_.px(1.5)),
                [&](double, double) { return FLKPaint::hex(0x20232f, 0.35f * opacity); });
    flk::recording::blendCanvas(mark, frame, x0, y0);
}
