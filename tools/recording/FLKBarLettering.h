#pragma once

#include <string_view>

#include "FLKCanvas.h"

// Short labels drawn from rounded strokes on a 2 x 4 grid, so that artwork
// can carry a few characters ("9:41", "MP4", "GIF") without a font.
// Knows 0-9, ':', and the capitals C E F G I M P R; others leave a gap.
class FLKBarLettering {
public:
    // `cell` is the grid unit in pixels: characters are 2 cells wide and
    // 4 high; strokes are `cell * 0.7` thick.
    explicit FLKBarLettering(double cell) : cell_(cell) {}

    double widthOf(std::string_view text) const;
    double height() const { return 4 * cell_ + thickness(); }
    // Draws `text` with the top left of its box at (x, y).
    void draw(FLKCanvas& canvas, std::string_view text, double x, double y, const FLKPaint& paint) const;
    // A straight stroke with round caps.
    static void drawStroke(FLKCanvas& canvas, FLKPoint from, FLKPoint to, double thickness, const FLKPaint& paint);

private:
    double thickness() const { return cell_ * 0.7; }
    double advance() const { return 3.1 * cell_; }

    double cell_;
};
