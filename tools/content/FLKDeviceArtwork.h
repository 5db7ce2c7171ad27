#pragma once

#include "FLKCanvas.h"

enum class FLKDeviceKind { phone, tablet, laptop };

// A device drawn flat, facing the viewer, with `margin` of free space round
// it for a shadow. `silhouette` is the whole device with its screen filled:
// shadows are cast from it so that none falls into the screen hole.
struct FLKDeviceArtwork {
    FLKCanvas artwork;
    FLKCanvas silhouette;
    FLKRoundedRect screen;  // the transparent hole, in canvas pixels

    // `scale` multiplies every length; draw at 2 to warp with fine edges.
    static FLKDeviceArtwork draw(FLKDeviceKind kind, double scale, int margin);
    // The same device turned a quarter to the left (its top facing left).
    FLKDeviceArtwork turnedLeft() const;
    // The soft shadow under the device, cast from the silhouette.
    void addShadow(double scale);
};

// Stand-in screen content for previews: an app's bars and cards in the hole.
void flkDrawScreenPlaceholder(FLKCanvas& canvas, const FLKRoundedRect& screen, const FLKPaint& accent);
