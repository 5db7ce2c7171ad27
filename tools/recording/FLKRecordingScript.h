#pragma once

#include <optional>

#include "FLKMockAppLayout.h"
#include "core/platform/FLKPoint.h"

// A finger on the screen as "show touches" draws it.
struct FLKTouchMark {
    FLKPoint point;  // screen pixels
    double opacity = 1;
    double scale = 1;
};

// The pressed state of a card: a circle spreading from the touch.
struct FLKCardRipple {
    int card = 0;
    FLKPoint origin;  // list coordinates
    double progress = 0;
};

// Everything that moves, at one moment of the session.
struct FLKRecordingState {
    double listOffset = 0;
    double detailOffset = 0;
    double exploreOffset = 0;
    // 0 shows the list, 1 the detail page; between, the detail page slides in.
    double detailProgress = 0;
    // 0 shows the first tab, 1 the second; between, one fades into the other.
    double tabProgress = 0;
    std::optional<FLKTouchMark> touch;
    std::optional<FLKCardRipple> ripple;
};

// The scripted session: scroll the feed, open a card, scroll its page, go
// back, scroll on, switch tab, scroll the grid. Written for ten seconds and
// stretched or squeezed to the length asked for.
class FLKRecordingScript {
public:
    FLKRecordingScript(const FLKMockAppLayout& layout, double duration);

    // The card that is tapped and opened.
    int openedCard() const { return openedCard_; }
    FLKRecordingState stateAt(double seconds) const;

    static double easeInOut(double t);
    static double easeOut(double t);

private:
    struct Scroll {
        double start, end, from, to;
        FLKPoint fingerStart;  // screen pixels at the moment the finger lands
    };
    double scrollValue(const Scroll& scroll, double time) const;
    std::optional<FLKTouchMark> fingerOf(const Scroll& scroll, double time) const;
    static std::optional<FLKTouchMark> tapAt(FLKPoint point, double down, double time);

    const FLKMockAppLayout& layout_;
    double timeScale_;
    Scroll listFirst_, detail_, listSecond_, explore_;
    int openedCard_ = 0;
    FLKPoint tapPoint_;
};
