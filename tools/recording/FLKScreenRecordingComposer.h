#pragma once

#include "FLKMockAppArtwork.h"
#include "FLKRecordingScript.h"
#include "core/platform/FLKPixelBuffer.h"

// Puts one frame of the mock app together from the pre-drawn layers: pages
// are row copies at their scroll offsets; only the touch mark and the ripple
// are drawn anew each frame.
class FLKScreenRecordingComposer {
public:
    FLKScreenRecordingComposer(const FLKMockAppLayout& layout, const FLKMockAppArtwork& artwork);

    // `frame` must be the layout's size.
    void compose(const FLKRecordingState& state, FLKPixelBuffer& frame);

private:
    // App bar and visible content of `page`, moved sideways by `shiftX`.
    void composePage(FLKMockPage page, double offset, int shiftX, float brightness, FLKPixelBuffer& frame) const;
    void composeFirstTab(const FLKRecordingState& state, FLKPixelBuffer& frame) const;
    void composeSecondTab(const FLKRecordingState& state, FLKPixelBuffer& frame) const;
    void fadeThrough(const FLKRecordingState& state, FLKPixelBuffer& frame);
    void drawRipple(const FLKCardRipple& ripple, double listOffset, int shiftX, FLKPixelBuffer& frame) const;
    void drawEdgeShadow(int edgeX, FLKPixelBuffer& frame) const;
    void drawTouch(const FLKTouchMark& touch, FLKPixelBuffer& frame) const;

    const FLKMockAppLayout& layout_;
    const FLKMockAppArtwork& artwork_;
    FLKPixelBuffer scratch_;     // the incoming tab while tabs change
    FLKPixelBuffer background_;  // the page colour the old tab fades out to
};
