#include "FLKRecordingScript.h"

#include <algorithm>
#include <cmath>

namespace {
// Moments of the ten-second script.
constexpr double kCardTap = 2.45;
constexpr double kOpenStart = 2.75, kOpenEnd = 3.15;
constexpr double kBackTap = 5.2;
constexpr double kCloseStart = 5.4, kCloseEnd = 5.8;
constexpr double kTabTap = 7.85;
constexpr double kTabStart = 7.95, kTabEnd = 8.35;
constexpr double kRippleLength = 0.45;
constexpr double kTapHold = 0.14;
constexpr double kFadeOut = 0.15;
// The finger lifts this far into a scroll; the content glides on.
constexpr double kLiftFraction = 0.55;

double unitProgress(double time, double start, double end) {
    return std::clamp((time - start) / (end - start), 0.0, 1.0);
}
}  // namespace

double FLKRecordingScript::easeInOut(double t) {
    t = std::clamp(t, 0.0, 1.0);
    return t < 0.5 ? 4 * t * t * t : 1 - std::pow(-2 * t + 2, 3) / 2;
}

double FLKRecordingScript::easeOut(double t) {
    t = std::clamp(t, 0.0, 1.0);
    return 1 - std::pow(1 - t, 3);
}

FLKRecordingScript::FLKRecordingScript(const FLKMockAppLayout& layout, double duration)
    : layout_(layout), timeScale_(10.0 / std::max(duration, 1e-3)) {
    const double view = layout.contentHeight();
    const double listMax = std::max(0.0, static_cast<double>(layout.listHeight()) - view);
    const double fingerX = layout.width() * 0.62;
    const double fingerY = layout.contentTop() + view * 0.8;
    double firstStop = std::min(listMax, view * 1.15);
    listFirst_ = {0.5, 2.1, 0, firstStop, {fingerX, fingerY}};
    detail_ = {3.7, 4.7, 0, std::min(std::max(0.0, layout.detailHeight() - view), view * 0.45), {fingerX, fingerY}};
    listSecond_ = {6.0, 7.4, firstStop, std::min(listMax, firstStop + view * 0.95), {fingerX * 0.9, fingerY}};
    explore_ = {8.8, 9.8, 0, std::min(std::max(0.0, layout.gridHeight() - view), view * 0.5), {fingerX, fingerY}};

    openedCard_ = layout.cardNear(firstStop, 0.42);
    const FLKRect& card = layout.cards()[static_cast<size_t>(openedCard_)].frame;
    tapPoint_ = {card.origin.x + card.size.width * 0.42, layout.contentTop() + card.midY() - firstStop};
}

double FLKRecordingScript::scrollValue(const Scroll& scroll, double time) const {
    return scroll.from + (scroll.to - scroll.from) * easeInOut(unitProgress(time, scroll.start, scroll.end));
}

std::optional<FLKTouchMark> FLKRecordingScript::fingerOf(const Scroll& scroll, double time) const {
    const double down = scroll.start - 0.08, lift = scroll.start + (scroll.end - scroll.start) * kLiftFraction;
    if (time < down || time > lift + kFadeOut) return std::nullopt;
    double moved = scrollValue(scroll, std::min(time, lift)) - scroll.from;
    FLKTouchMark mark{{scroll.fingerStart.x, scroll.fingerStart.y - moved}, 1, 1};
    mark.scale = 0.8 + 0.2 * easeOut(unitProgress(time, down, down + 0.08));
    if (time > lift) mark.opacity = 1 - unitProgress(time, lift, lift + kFadeOut);
    return mark;
}

std::optional<FLKTouchMark> FLKRecordingScript::tapAt(FLKPoint point, double down, double time) {
    const double up = down + kTapHold;
    if (time < down || time > up + kFadeOut) return std::nullopt;
    FLKTouchMark mark{point, 1, 0.8 + 0.2 * easeOut(unitProgress(time, down, down + 0.08))};
    if (time > up) mark.opacity = 1 - unitProgress(time, up, up + kFadeOut);
    return mark;
}

FLKRecordingState FLKRecordingScript::stateAt(double seconds) const {
    const double t = seconds * timeScale_;
    FLKRecordingState state;
    state.listOffset = t < listSecond_.start ? scrollValue(listFirst_, t) : scrollValue(listSecond_, t);
    state.detailOffset = scrollValue(detail_, t);
    state.exploreOffset = scrollValue(explore_, t);
    state.detailProgress = t < kCloseStart ? easeInOut(unitProgress(t, kOpenStart, kOpenEnd))
                                           : 1 - easeInOut(unitProgress(t, kCloseStart, kCloseEnd));
    state.tabProgress = easeInOut(unitProgress(t, kTabStart, kTabEnd));

    for (const Scroll* scroll : {&listFirst_, &detail_, &listSecond_, &explore_}) {
        if (!state.touch) state.touch = fingerOf(*scroll, t);
    }
    const FLKRect tab = layout_.tabFrame(1);
    for (auto [point, down] : {std::pair{tapPoint_, kCardTap},
                               {layout_.backButtonCenter(), kBackTap},
                               {FLKPoint{tab.midX(), tab.origin.y + layout_.px(28)}, kTabTap}}) {
        if (!state.touch) state.touch = tapAt(point, down, t);
    }
    if (t >= kCardTap && t < kCardTap + kRippleLength) {
        FLKPoint origin{tapPoint_.x, tapPoint_.y - layout_.contentTop() + listFirst_.to};
        state.ripple = FLKCardRipple{openedCard_, origin, (t - kCardTap) / kRippleLength};
    }
    return state;
}
