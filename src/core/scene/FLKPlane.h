#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/platform/FLKJSON.h"
#include "core/platform/FLKPoint.h"
#include "core/platform/FLKRect.h"
#include "core/scene/FLKQuadShape.h"
#include "core/scene/FLKVertex.h"

class FLKVertexGridSolver;

// A quadrilateral of four free corners, tessellated into a grid of
// (gridSize + 1)^2 vertices whose texture coordinates follow the quad's
// perspective, plus the triangle indices over that grid.
//
// A plane is a value: every change of corners or grid size rebuilds bounds,
// vertices and indices at once. The built geometry is immutable and shared
// between copies, so copying is cheap and a copy may be read on another
// thread while the original is changed.
class FLKPlane : public FLKQuadShape {
public:
    static constexpr unsigned kDefaultGridSize = 128;
    // 16-bit indices: (255 + 1)^2 - 1 is the largest index.
    static constexpr unsigned kMaximumGridSize = 255;

    // A plane of zero size at the origin.
    FLKPlane();
    // top left (x, y), top right (x + w, y), bottom left (x, y + h), bottom right (x + w, y + h).
    explicit FLKPlane(const FLKRect& frame);
    // The grid size is clamped to 1 ... kMaximumGridSize. The perspective
    // grid needs a power of two.
    FLKPlane(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomLeft, FLKPoint bottomRight,
             unsigned gridSize = kDefaultGridSize);
    FLKPlane(const FLKPlane& other);
    FLKPlane& operator=(const FLKPlane& other);
    ~FLKPlane() override;

    static std::shared_ptr<FLKPlane> planeWithFrame(const FLKRect& frame);

    FLKPoint topLeft() const override { return _topLeft; }
    FLKPoint topRight() const override { return _topRight; }
    FLKPoint bottomLeft() const override { return _bottomLeft; }
    FLKPoint bottomRight() const override { return _bottomRight; }
    void setTopLeft(FLKPoint point) override;
    void setTopRight(FLKPoint point) override;
    void setBottomLeft(FLKPoint point) override;
    void setBottomRight(FLKPoint point) override;
    void setTopLeft(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomLeft, FLKPoint bottomRight);

    unsigned gridSize() const { return _gridSize; }
    void setGridSize(unsigned gridSize);

    // The solver that built the vertices; it owns the vertex memory.
    const FLKVertexGridSolver& vertexGridSolver() const { return *_vertexGridSolver; }
    // Number of records in vertices().
    std::size_t vertexCount() const;
    // Number of entries in indices().
    std::size_t indexCount() const;

    // FLKShape
    std::shared_ptr<FLKPlane> copy() const override;
    std::vector<FLKPoint> createPoints() const override;
    std::size_t numPoints() const override { return 4; }
    bool containsPoint(FLKPoint point) const override;
    bool isConvex() const override;
    std::shared_ptr<FLKPlane> shapeMovedBy(FLKPoint delta) const override;
    std::shared_ptr<FLKPlane> shapeMovedTo(FLKPoint point) const override;
    std::shared_ptr<FLKPlane> shapeScaledBy(double factor) const override;
    std::shared_ptr<FLKPlane> shapeScaledBy(double factor, FLKPoint referencePoint) const override;
    std::shared_ptr<FLKPlane> shapeBySettingPoint(FLKPoint point, std::size_t index) const override;
    const FLKVertex* vertices() const override;
    std::size_t verticesLength() const override;
    const std::uint16_t* indices() const override;
    std::size_t indicesLength() const override;
    FLKRect bounds() const override { return _bounds; }
    void setBounds(const FLKRect& bounds) override;
    bool isEqual(const FLKShape& other) const override;
    std::size_t hash() const override;
    std::string description() const override;

    // The centre of the bounds.
    FLKPoint center() const;

    // Orientation 1 (and any unknown value) keeps the corners; 2, 3 and 4 turn
    // them a quarter, half and three quarters round. The answer always has the
    // default grid size, except for orientation 1, which answers a copy.
    std::shared_ptr<FLKPlane> planeWithOrientation(int orientation) const;

    // Rebuilds bounds, vertices and indices from the corners and grid size.
    void makeDirty();

    // FLKSerializable: {"className", "points": [TL, TR, BR, BL] as {"X","Y"}}.
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKPlane"; }
    // Builds the plane class named under "className" (a plane when absent);
    // nullptr when the points are missing or malformed. The grid size is not
    // stored: a loaded plane has the default grid size.
    static std::shared_ptr<FLKPlane> newWithDictionary(const FLKJSON& dictionary);

    friend bool operator==(const FLKPlane& a, const FLKPlane& b) { return a.isEqual(b); }

protected:
    // The four corners of a serialised plane as top left, top right, bottom
    // left, bottom right; false when malformed.
    static bool cornersFromDictionary(const FLKJSON& dictionary, FLKPoint corners[4]);

private:
    // A copy of this plane (same class) with new corners and grid size.
    std::shared_ptr<FLKPlane> planeWithCorners(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomLeft,
                                               FLKPoint bottomRight, unsigned gridSize) const;
    void setCorners(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomLeft, FLKPoint bottomRight,
                    unsigned gridSize);

    void destroyIndices();
    void destroyVertices();
    void calculateBounds();
    void calculateVertices();
    void calculateIndices();

    FLKPoint _topLeft;
    FLKPoint _topRight;
    FLKPoint _bottomLeft;
    FLKPoint _bottomRight;
    unsigned _gridSize = kDefaultGridSize;
    FLKRect _bounds;
    // Immutable once built; shared with copies, replaced (never changed) by makeDirty.
    std::shared_ptr<const FLKVertexGridSolver> _vertexGridSolver;
    std::shared_ptr<const std::vector<std::uint16_t>> _indices;
};

std::size_t hashValue(const FLKPlane& plane);
