#pragma once

#include <array>

#include "FLKFrameLayer.h"
#include "FLKMockAppLayout.h"

enum class FLKMockPage { list, detail, explore };

// The still parts of the mock app, drawn once at full resolution: bars and
// the whole scrolling content of each page. Frames are put together from
// these by copying rows.
class FLKMockAppArtwork {
public:
    // `detailCard` is the card whose page the session opens.
    FLKMockAppArtwork(const FLKMockAppLayout& layout, int detailCard);

    const FLKFrameLayer& statusBar() const { return statusBar_; }
    const FLKFrameLayer& appBar(FLKMockPage page) const { return appBars_[static_cast<size_t>(page)]; }
    const FLKFrameLayer& content(FLKMockPage page) const { return contents_[static_cast<size_t>(page)]; }
    // The tab bar with the first (0) or the second (1) tab selected.
    const FLKFrameLayer& tabBar(int selected) const { return tabBars_[selected ? 1 : 0]; }

private:
    FLKFrameLayer drawStatusBar() const;
    FLKFrameLayer drawAppBar(FLKMockPage page) const;
    FLKFrameLayer drawTabBar(int selected) const;
    FLKFrameLayer drawList() const;
    FLKFrameLayer drawDetail(const FLKMockCard& card) const;
    FLKFrameLayer drawExplore() const;

    const FLKMockAppLayout& layout_;
    FLKFrameLayer statusBar_;
    std::array<FLKFrameLayer, 3> appBars_;
    std::array<FLKFrameLayer, 3> contents_;
    std::array<FLKFrameLayer, 2> tabBars_;
};

namespace flk::recording {
inline constexpr unsigned kPrimary = 0x4f46e5;
inline constexpr unsigned kPrimaryDark = 0x3730a3;
inline constexpr unsigned kBackground = 0xf3f4fa;
inline constexpr unsigned kInk = 0x23263a;
inline constexpr unsigned kMutedInk = 0x9aa0b6;
inline constexpr unsigned kTint = 0xe3e1ff;
// Light and deep colour of palette entry `index` (any integer).
std::array<FLKPaint, 2> accentPair(int index);
}  // namespace flk::recording
