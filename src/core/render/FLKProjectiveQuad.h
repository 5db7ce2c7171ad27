#pragma once

#include <array>
#include <optional>

#include "core/scene/FLKPlane.h"
#include "core/scene/FLKVertex.h"

// A plane drawn exactly with two triangles instead of its vertex grid.
//
// The square of texture coordinates maps onto the quad by one homography H;
// a corner's image is (X, Y, W) / W. Giving each corner vertex the clip-space
// weight W (position (x W, y W, 0, W) through the affine camera) makes the
// rasteriser's perspective-correct interpolation divide the texture
// coordinates exactly as H^-1 does, so every pixel samples the texel the
// projective grid approximates. Parallelograms get W = 1 (plain affine).
namespace FLKProjectiveQuad {

// The four corner records in grid order: top left, top right, bottom left,
// bottom right (the records of a plane of grid size 1). Absent when the quad
// is not strictly convex, where no homography of the square fits it.
std::optional<std::array<FLKVertex, 4>> verticesForPlane(const FLKPlane& plane);

// The two triangles over those records, as a grid of size 1 indexes them.
inline constexpr std::array<std::uint16_t, 6> kIndices{0, 1, 2, 1, 3, 2};

// The homogeneous weights W of the corners top left, top right, bottom right,
// bottom left (normalised so top left is 1); absent when not strictly convex.
std::optional<std::array<double, 4>> cornerWeights(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomRight,
                                                   FLKPoint bottomLeft);
}  // namespace FLKProjectiveQuad
