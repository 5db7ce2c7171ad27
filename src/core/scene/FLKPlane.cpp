#include "core/scene/FLKPlane.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>

#include "core/scene/FLKLine.h"
#include "core/scene/FLKProjectiveVertexGridSolver.h"
#include "core/scene/FLKVertexGridSolver.h"

FLK_REGISTER_SERIALIZABLE(FLKPlane);

namespace {

unsigned clampedGridSize(unsigned gridSize) {
    return std::clamp(gridSize, 1u, FLKPlane::kMaximumGridSize);
}

// The slope as the solver choice compares it; equal end points give the degenerate marker.
double edgeSlope(FLKPoint first, FLKPoint second) {
    if (first == second) return FLKLine::kDegenerate;
    return -(first.y - second.y) / (second.x - first.x);
}

// +1 or -1 for a turn; zero and undefined turns share a value of their own.
int turnSign(FLKPoint a, FLKPoint b, FLKPoint c) {
    const double z = (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
    const double sign = z / std::fabs(z);
    if (sign == 1.0) return 1;
    if (sign == -1.0) return -1;
    return 0;
}

std::shared_ptr<const std::vector<std::uint16_t>> buildIndices(unsigned gridSize) {
    const unsigned g = gridSize;
    const unsigned rowStride = g + 1;
    auto indices = std::make_shared<std::vector<std::uint16_t>>(std::size_t(g) * g * 6);
    std::uint16_t* out = indices->data();
    for (unsigned r = 0; r < g; ++r) {
        for (unsigned c = 0; c < g; ++c) {
            const unsigned i = r * rowStride + c;
            *out++ = std::uint16_t(i);
            *out++ = std::uint16_t(i + 1);
            *out++ = std::uint16_t(i + rowStride);
            *out++ = std::uint16_t(i + 1);
            *out++ = std::uint16_t(i + rowStride + 1);
            *out++ = std::uint16_t(i + rowStride);
        }
    }
    return indices;
}

// The indices depend on the grid size alone, so planes share them: those of
// the default size are kept for good, other sizes while a plane uses them.
std::shared_ptr<const std::vector<std::uint16_t>> sharedIndices(unsigned gridSize) {
    static std::mutex mutex;  // guards both caches: planes are built on any thread
    static std::shared_ptr<const std::vector<std::uint16_t>> defaultSize;
    static std::weak_ptr<const std::vector<std::uint16_t>> otherSizes[FLKPlane::kMaximumGridSize + 1];
    std::lock_guard lock(mutex);
    if (gridSize == FLKPlane::kDefaultGridSize) {
        if (!defaultSize) defaultSize = buildIndices(gridSize);
        return defaultSize;
    }
    auto indices = otherSizes[gridSize].lock();
    if (!indices) {
        indices = buildIndices(gridSize);
        otherSizes[gridSize] = indices;
    }
    return indices;
}

void hashCombine(std::size_t& seed, std::size_t value) {
    seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
}

std::string pointDescription(FLKPoint p) {
    char text[64];
    std::snprintf(text, sizeof text, "{%g, %g}", p.x, p.y);
    return text;
}

}  // namespace

FLKPlane::FLKPlane() : FLKPlane(FLKRect::zero()) {}

FLKPlane::FLKPlane(const FLKRect& frame)
    : FLKPlane({frame.origin.x, frame.origin.y}, {frame.origin.x + frame.size.width, frame.origin.y},
               {frame.origin.x, frame.origin.y + frame.size.height},
               {frame.origin.x + frame.size.width, frame.origin.y + frame.size.height}) {}

FLKPlane::FLKPlane(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomLeft, FLKPoint bottomRight,
                   unsigned gridSize)
    : _topLeft(topLeft),
      _topRight(topRight),
      _bottomLeft(bottomLeft),
      _bottomRight(bottomRight),
      _gridSize(clampedGridSize(gridSize)) {
    makeDirty();
}

FLKPlane::FLKPlane(const FLKPlane& other) = default;
FLKPlane& FLKPlane::operator=(const FLKPlane& other) = default;
FLKPlane::~FLKPlane() = default;

std::shared_ptr<FLKPlane> FLKPlane::planeWithFrame(const FLKRect& frame) {
    return std::make_shared<FLKPlane>(frame);
}

void FLKPlane::setTopLeft(FLKPoint point) {
    _topLeft = point;
    makeDirty();
}

void FLKPlane::setTopRight(FLKPoint point) {
    _topRight = point;
    makeDirty();
}

void FLKPlane::setBottomLeft(FLKPoint point) {
    _bottomLeft = point;
    makeDirty();
}

void FLKPlane::setBottomRight(FLKPoint point) {
    _bottomRight = point;
    makeDirty();
}

void FLKPlane::setTopLeft(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomLeft, FLKPoint bottomRight) {
    setCorners(topLeft, topRight, bottomLeft, bottomRight, _gridSize);
}

void FLKPlane::setGridSize(unsigned gridSize) {
    _gridSize = clampedGridSize(gridSize);
    makeDirty();
}

void FLKPlane::setCorners(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomLeft, FLKPoint bottomRight,
                          unsigned gridSize) {
    _topLeft = topLeft;
    _topRight = topRight;
    _bottomLeft = bottomLeft;
    _bottomRight = bottomRight;
    _gridSize = clampedGridSize(gridSize);
    makeDirty();
}

std::size_t FLKPlane::vertexCount() const { return _vertexGridSolver->vertexCount(); }
std::size_t FLKPlane::indexCount() const { return _indices->size(); }
const FLKVertex* FLKPlane::vertices() const { return _vertexGridSolver->vertices(); }
std::size_t FLKPlane::verticesLength() const { return _vertexGridSolver->verticesSize(); }
const std::uint16_t* FLKPlane::indices() const { return _indices->data(); }
std::size_t FLKPlane::indicesLength() const { return _indices->size() * sizeof(std::uint16_t); }

void FLKPlane::makeDirty() {
    destroyIndices();
    destroyVertices();
    calculateBounds();
    calculateVertices();
    calculateIndices();
}

void FLKPlane::destroyIndices() { _indices.reset(); }
void FLKPlane::destroyVertices() { _vertexGridSolver.reset(); }

void FLKPlane::calculateBounds() {
    const double minX = std::min({_topLeft.x, _topRight.x, _bottomRight.x, _bottomLeft.x});
    const double maxX = std::max({_topLeft.x, _topRight.x, _bottomRight.x, _bottomLeft.x});
    const double minY = std::min({_topLeft.y, _topRight.y, _bottomRight.y, _bottomLeft.y});
    const double maxY = std::max({_topLeft.y, _topRight.y, _bottomRight.y, _bottomLeft.y});
    _bounds = FLKRect(minX, minY, maxX - minX, maxY - minY);
}

void FLKPlane::calculateVertices() {
    const double top = edgeSlope(_topLeft, _topRight);
    const double bottom = edgeSlope(_bottomLeft, _bottomRight);
    const double left = edgeSlope(_topLeft, _bottomLeft);
    const double right = edgeSlope(_topRight, _bottomRight);
    // Unordered comparisons (a slope that is not a number) fall to the perspective solver.
    const bool parallelogram = left == right && top == bottom;

    std::unique_ptr<FLKVertexGridSolver> solver;
    if (parallelogram) {
        solver = FLKVertexGridSolver::solverForA(_topLeft, _bottomLeft, _bottomRight, _topRight, _gridSize);
    } else {
        solver = FLKPerspectiveVertexGridSolver::solverForA(_topLeft, _bottomLeft, _bottomRight, _topRight,
                                                            _gridSize);
    }
    solver->solve();
    _vertexGridSolver = std::move(solver);
}

void FLKPlane::calculateIndices() { _indices = sharedIndices(_gridSize); }

std::shared_ptr<FLKPlane> FLKPlane::copy() const { return std::make_shared<FLKPlane>(*this); }

std::vector<FLKPoint> FLKPlane::createPoints() const { return {_topLeft, _topRight, _bottomRight, _bottomLeft}; }

FLKPoint FLKPlane::center() const { return _bounds.center(); }

bool FLKPlane::containsPoint(FLKPoint point) const {
    const FLKPoint polygon[4] = {_topLeft, _topRight, _bottomRight, _bottomLeft};
    bool inside = false;
    for (int i = 0, j = 3; i < 4; j = i++) {
        const FLKPoint pi = polygon[i], pj = polygon[j];
        if ((pi.y > point.y) != (pj.y > point.y) &&
            point.x < (pj.x - pi.x) * (point.y - pi.y) / (pj.y - pi.y) + pi.x) {
            inside = !inside;
        }
    }
    return inside;
}

bool FLKPlane::isConvex() const {
    const FLKPoint polygon[4] = {_topLeft, _topRight, _bottomRight, _bottomLeft};
    const int first = turnSign(polygon[0], polygon[1], polygon[2]);
    for (int i = 1; i < 4; ++i) {
        if (turnSign(polygon[i], polygon[(i + 1) % 4], polygon[(i + 2) % 4]) != first) return false;
    }
    return true;
}

std::shared_ptr<FLKPlane> FLKPlane::planeWithCorners(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomLeft,
                                                     FLKPoint bottomRight, unsigned gridSize) const {
    auto plane = copy();
    plane->setCorners(topLeft, topRight, bottomLeft, bottomRight, gridSize);
    return plane;
}

std::shared_ptr<FLKPlane> FLKPlane::shapeMovedBy(FLKPoint delta) const {
    return planeWithCorners(_topLeft + delta, _topRight + delta, _bottomLeft + delta, _bottomRight + delta,
                            _gridSize);
}

std::shared_ptr<FLKPlane> FLKPlane::shapeMovedTo(FLKPoint point) const { return shapeMovedBy(point - _topLeft); }

std::shared_ptr<FLKPlane> FLKPlane::shapeScaledBy(double factor) const { return shapeScaledBy(factor, center()); }

std::shared_ptr<FLKPlane> FLKPlane::shapeScaledBy(double factor, FLKPoint referencePoint) const {
    auto scaled = [&](FLKPoint p) { return referencePoint + (p - referencePoint) * factor; };
    return planeWithCorners(scaled(_topLeft), scaled(_topRight), scaled(_bottomLeft), scaled(_bottomRight),
                            _gridSize);
}

std::shared_ptr<FLKPlane> FLKPlane::shapeBySettingPoint(FLKPoint point, std::size_t index) const {
    FLKPoint topLeft = _topLeft, topRight = _topRight, bottomRight = _bottomRight, bottomLeft = _bottomLeft;
    switch (index) {
        case 0: topLeft = point; break;
        case 1: topRight = point; break;
        case 2: bottomRight = point; break;
        case 3: bottomLeft = point; break;
        default: return copy();
    }
    return planeWithCorners(topLeft, topRight, bottomLeft, bottomRight, _gridSize);
}

void FLKPlane::setBounds(const FLKRect& bounds) {
    const FLKPoint oldCenter = _bounds.center();
    const FLKPoint newCenter = bounds.center();
    // A plane flat along an axis keeps its extent there rather than turning into NaN.
    const double scaleX = _bounds.width() != 0 ? bounds.width() / _bounds.width() : 1.0;
    const double scaleY = _bounds.height() != 0 ? bounds.height() / _bounds.height() : 1.0;
    auto mapped = [&](FLKPoint p) {
        return FLKPoint{(p.x - oldCenter.x) * scaleX + newCenter.x, (p.y - oldCenter.y) * scaleY + newCenter.y};
    };
    setTopLeft(mapped(_topLeft), mapped(_topRight), mapped(_bottomLeft), mapped(_bottomRight));
}

std::shared_ptr<FLKPlane> FLKPlane::planeWithOrientation(int orientation) const {
    switch (orientation) {
        case 1: return copy();
        case 2: return planeWithCorners(_topRight, _bottomRight, _topLeft, _bottomLeft, kDefaultGridSize);
        case 3: return planeWithCorners(_bottomRight, _bottomLeft, _topRight, _topLeft, kDefaultGridSize);
        case 4: return planeWithCorners(_bottomLeft, _topLeft, _bottomRight, _topRight, kDefaultGridSize);
        default: return planeWithCorners(_topLeft, _topRight, _bottomLeft, _bottomRight, kDefaultGridSize);
    }
}

bool FLKPlane::isEqual(const FLKShape& other) const {
    const auto* plane = dynamic_cast<const FLKPlane*>(&other);
    return plane && _topLeft == plane->_topLeft && _topRight == plane->_topRight &&
           _bottomLeft == plane->_bottomLeft && _bottomRight == plane->_bottomRight &&
           _gridSize == plane->_gridSize;
}

std::size_t FLKPlane::hash() const {
    std::size_t seed = hashValue(_topLeft);
    hashCombine(seed, hashValue(_topRight));
    hashCombine(seed, hashValue(_bottomLeft));
    hashCombine(seed, hashValue(_bottomRight));
    hashCombine(seed, _gridSize);
    return seed;
}

std::size_t hashValue(const FLKPlane& plane) { return plane.hash(); }

std::string FLKPlane::description() const {
    return "<" + className() + ": " + pointDescription(_topLeft) + ", " + pointDescription(_topRight) + ", " +
           pointDescription(_bottomRight) + ", " + pointDescription(_bottomLeft) +
           "; gridSize " + std::to_string(_gridSize) + ">";
}

FLKJSON FLKPlane::serialized() const {
    FLKJSON points = FLKJSON::array();
    for (const FLKPoint& p : createPoints()) points.push_back(p.dictionaryRepresentation());
    return FLKJSON{{"className", className()}, {"points", std::move(points)}};
}

bool FLKPlane::cornersFromDictionary(const FLKJSON& dictionary, FLKPoint corners[4]) {
    if (!dictionary.is_object()) return false;
    const auto points = dictionary.find("points");
    if (points == dictionary.end() || !points->is_array() || points->size() != 4) return false;
    // Stored as top left, top right, bottom right, bottom left.
    const int slot[4] = {0, 1, 3, 2};
    for (int i = 0; i < 4; ++i) {
        const auto point = FLKPoint::fromDictionary((*points)[i]);
        if (!point || !std::isfinite(point->x) || !std::isfinite(point->y)) return false;
        corners[slot[i]] = *point;
    }
    return true;
}

std::shared_ptr<FLKPlane> FLKPlane::newWithDictionary(const FLKJSON& dictionary) {
    if (dictionary.is_object()) {
        const auto name = dictionary.find("className");
        if (name != dictionary.end() && name->is_string() && *name != "FLKPlane") {
            return flk::objectWithDictionary<FLKPlane>(dictionary);
        }
    }
    FLKPoint corners[4];
    if (!cornersFromDictionary(dictionary, corners)) return nullptr;
    return std::make_shared<FLKPlane>(corners[0], corners[1], corners[2], corners[3]);
}
