#include "FLKMockAppLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {
constexpr double kDesignWidth = 360;
constexpr double kMargin = 12;
constexpr double kGap = 10;
constexpr double kCardHeight = 84;
constexpr double kPhotoHeight = 150;
// Pages hold this many viewports of content, room for the scripted scrolling.
constexpr double kListScreens = 3.6;
constexpr double kGridScreens = 2.0;
constexpr int kPaletteSize = 7;
}  // namespace

FLKMockAppLayout::FLKMockAppLayout(int width, int height, unsigned seed)
    : width_(width),
      height_(height),
      unit_(std::min(width, height) / kDesignWidth),
      statusBarHeight_(static_cast<int>(std::lround(24 * unit_))),
      appBarHeight_(static_cast<int>(std::lround(56 * unit_))),
      tabBarHeight_(static_cast<int>(std::lround(72 * unit_))),
      columns_(std::max(1, static_cast<int>(width / unit_ / 300))) {
    layOutCards(seed);
    layOutTiles();
    detailHeight_ = static_cast<int>(std::max<double>(contentHeight() * 1.6, px(760)));
}

void FLKMockAppLayout::layOutCards(unsigned seed) {
    std::mt19937 random(seed);
    auto between = [&](double low, double high) {
        return low + (high - low) * (static_cast<double>(random()) / std::mt19937::max());
    };
    const double cardWidth = (width_ - px(kMargin) * (columns_ + 1)) / columns_;
    std::vector<double> columnBottoms(static_cast<size_t>(columns_), px(kMargin));
    const double wanted = contentHeight() * kListScreens;
    for (int i = 0; *std::min_element(columnBottoms.begin(), columnBottoms.end()) < wanted; ++i) {
        auto column = std::min_element(columnBottoms.begin(), columnBottoms.end()) - columnBottoms.begin();
        FLKMockCard card;
        card.colorIndex = static_cast<int>((i * 3 + random() % 2) % kPaletteSize);
        card.hasPhoto = i % 3 == 1;
        card.hasBadge = i % 4 == 0;
        card.titleLength = between(0.35, 0.6);
        card.firstLine = between(0.7, 0.95);
        card.secondLine = between(0.4, 0.75);
        double height = px(kCardHeight + (card.hasPhoto ? kPhotoHeight : 0));
        double x = px(kMargin) + static_cast<double>(column) * (cardWidth + px(kMargin));
        card.frame =
            FLKRect(std::round(x), std::round(columnBottoms[column]), std::round(cardWidth), std::round(height));
        columnBottoms[column] += height + px(kGap);
        cards_.push_back(card);
    }
    listHeight_ =
        static_cast<int>(std::ceil(*std::max_element(columnBottoms.begin(), columnBottoms.end()) + px(kMargin)));
}

void FLKMockAppLayout::layOutTiles() {
    const int tileColumns = columns_ * 2;
    const double side = (width_ - px(kMargin) * (tileColumns + 1)) / tileColumns;
    const double pitch = side * 1.25 + px(kMargin);
    const int rows = static_cast<int>(std::ceil(contentHeight() * kGridScreens / pitch));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < tileColumns; ++column) {
            double x = px(kMargin) + column * (side + px(kMargin));
            // Alternate columns are staggered, as photo grids often are.
            double y = px(kMargin) + row * pitch + (column % 2 ? side * 0.3 : 0);
            tiles_.emplace_back(std::round(x), std::round(y), std::round(side), std::round(side * 1.25 - px(4)));
        }
    }
    gridHeight_ = static_cast<int>(std::ceil(px(kMargin) * 2 + rows * pitch + side * 0.3));
}

FLKRect FLKMockAppLayout::tabFrame(int index) const {
    // Rounded edges, not widths, so the tabs tile the bar exactly.
    double left = std::round(index * static_cast<double>(width_) / kTabCount);
    double right = std::round((index + 1) * static_cast<double>(width_) / kTabCount);
    return {left, static_cast<double>(tabBarTop()), right - left, static_cast<double>(tabBarHeight_)};
}

FLKPoint FLKMockAppLayout::backButtonCenter() const { return {px(28), statusBarHeight_ + appBarHeight_ / 2.0}; }

int FLKMockAppLayout::cardNear(double offset, double fraction) const {
    const double target = offset + contentHeight() * fraction;
    int best = 0;
    double bestDistance = std::numeric_limits<double>::max();
    for (size_t i = 0; i < cards_.size(); ++i) {
        const FLKRect& frame = cards_[i].frame;
        if (frame.origin.x > px(kMargin) + 1) continue;
        double distance = std::abs(frame.midY() - target);
        if (distance < bestDistance) bestDistance = distance, best = static_cast<int>(i);
    }
    return best;
}
