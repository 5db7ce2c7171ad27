#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/platform/FLKPoint.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKPlane.h"
#include "core/scene/FLKVertex.h"

// A convex quad drawn antialiased into a single-sampled target, in two parts
// that share their boundary exactly, so every pixel is shaded at most once:
//
// - the interior, the quad moved in by kInset on every side, whose pixels
//   have all four 4x sample positions inside and are drawn as they are;
// - the band from there to the quad moved out by kOutset, drawn by the
//   coverage pipelines, which weigh each pixel by the share of its sample
//   positions inside the quad (the edges()).
//
// Both carry the quad's own attribute functions, beyond its edges too, as a
// multisampled pass evaluates them at the centres of edge pixels. A quad too
// thin for an interior is drawn whole as its band (interiorNeedsCoverage).
class FLKCoverageQuad {
public:
    using Matrix = std::array<float, 16>;  // the camera's, column-major
    // No 4x sample position lies farther than 0.53 pixels from the pixel's centre.
    static constexpr double kInset = 0.6;
    static constexpr double kOutset = 1.0;
    // Interior: four records in grid order (top left, top right, bottom left,
    // bottom right) drawn as the triangles (0, 1, 2) and (1, 3, 2) - or, with
    // a hole, the four inner corners and then the hole's four corners, each in
    // turn from the top left, drawn as kHoledInteriorIndices.
    static const std::array<std::uint16_t, 24> kHoledInteriorIndices;
    // Band: four records per edge (top, right, bottom, left): inner start,
    // inner end, outer end, outer start, drawn as two triangles each.
    static constexpr size_t kBandVertexCount = 16;
    static const std::array<std::uint16_t, 24> kBandIndices;

    template <typename Vertex>
    struct Geometry {
        std::vector<Vertex> interior;
        std::array<Vertex, kBandVertexCount> band;
        bool interiorNeedsCoverage = false;
        bool interiorHasHole = false;
        std::array<float, 16> edges{};  // for FLKRenderPipeline::setCoverageEdges
    };

    // Corners in scene coordinates as the camera `matrix` maps them onto a
    // target of `width` x `height` pixels. Absent when the quad is not
    // strictly convex on screen or the camera is not affine.
    static std::optional<FLKCoverageQuad> make(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomRight,
                                               FLKPoint bottomLeft, const Matrix& matrix, int width, int height);

    const std::array<float, 16>& edges() const { return edges_; }
    bool hasInterior() const { return hasInterior_; }
    // Scene positions, corners in turn: top left, top right, bottom right, bottom left.
    const std::array<FLKPoint, 4>& innerCorners() const { return inner_; }
    const std::array<FLKPoint, 4>& outerCorners() const { return outer_; }

    // The plane's texture mapped by its homography, as FLKProjectiveQuad
    // draws it; absent when the plane has no projective weights. `hole`
    // (u0, v0, u1, v1) is a rectangle of texture coordinates where the texture
    // samples to zero: the interior leaves it out when it lies well inside.
    static std::optional<Geometry<FLKVertex>> texturedGeometry(const FLKPlane& plane, const Matrix& matrix, int width,
                                                              int height,
                                                              std::optional<std::array<double, 4>> hole = {});
    // Coloured records of a quad drawn as the triangles (0, 1, 2) and
    // (1, 3, 2); each edge's band extends the triangle the edge belongs to.
    static std::optional<Geometry<FLKColoredVertex>> coloredGeometry(const std::array<FLKColoredVertex, 4>& corners,
                                                                    const Matrix& matrix, int width, int height);

private:
    FLKCoverageQuad() = default;
    // True when the scene point's pixel and those around it lie in the interior.
    bool isWellInside(FLKPoint scene) const;

    std::array<FLKPoint, 4> inner_{};
    std::array<FLKPoint, 4> outer_{};
    std::array<float, 16> edges_{};
    bool hasInterior_ = false;
    std::array<double, 6> mapping_{};  // scene to window: a, b, c, d, tx, ty
    std::array<double, 12> lines_{};   // per edge: inward unit normal (window), offset
};
