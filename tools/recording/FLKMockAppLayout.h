#pragma once

#include <vector>

#include "core/platform/FLKRect.h"

// One entry of the mock app's feed, in list coordinates (y = 0 at the top of
// the list's content).
struct FLKMockCard {
    FLKRect frame;
    int colorIndex = 0;
    bool hasPhoto = false;
    bool hasBadge = false;
    // Bar lengths as fractions of the room for text.
    double titleLength = 0.5, firstLine = 0.8, secondLine = 0.6;
};

// Where everything sits on the mock app's screen, in pixels, for one screen
// size. Lengths are designed for a 360-unit-wide phone and scaled, so any
// size from a thumbnail to a landscape tablet gets the same look; wide
// screens show more columns.
class FLKMockAppLayout {
public:
    static constexpr int kTabCount = 4;

    FLKMockAppLayout(int width, int height, unsigned seed);

    int width() const { return width_; }
    int height() const { return height_; }
    // Pixels per design unit.
    double unit() const { return unit_; }
    double px(double units) const { return units * unit_; }

    int statusBarHeight() const { return statusBarHeight_; }
    int appBarHeight() const { return appBarHeight_; }
    int tabBarHeight() const { return tabBarHeight_; }
    // The scrolling area between the app bar and the tab bar.
    int contentTop() const { return statusBarHeight_ + appBarHeight_; }
    int contentHeight() const { return height_ - contentTop() - tabBarHeight_; }
    int tabBarTop() const { return height_ - tabBarHeight_; }

    int columns() const { return columns_; }
    const std::vector<FLKMockCard>& cards() const { return cards_; }
    // Heights of the three scrolling pages' content.
    int listHeight() const { return listHeight_; }
    int detailHeight() const { return detailHeight_; }
    int gridHeight() const { return gridHeight_; }
    // Tiles of the second tab's grid, in its content coordinates.
    const std::vector<FLKRect>& tiles() const { return tiles_; }

    FLKRect tabFrame(int index) const;
    FLKPoint backButtonCenter() const;
    // The card whose middle is nearest `fraction` of the way down the
    // viewport when the list is scrolled by `offset`, in the first column.
    int cardNear(double offset, double fraction) const;

private:
    void layOutCards(unsigned seed);
    void layOutTiles();

    int width_, height_;
    double unit_;
    int statusBarHeight_, appBarHeight_, tabBarHeight_;
    int columns_;
    std::vector<FLKMockCard> cards_;
    std::vector<FLKRect> tiles_;
    int listHeight_ = 0, detailHeight_ = 0, gridHeight_ = 0;
};
