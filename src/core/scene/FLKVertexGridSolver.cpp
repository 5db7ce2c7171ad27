#include "core/scene/FLKVertexGridSolver.h"

FLKVertexGridSolver::FLKVertexGridSolver(FLKPoint a, FLKPoint b, FLKPoint c, FLKPoint d, unsigned gridSize)
    : _a(a), _b(b), _c(c), _d(d), _gridSize(gridSize) {}

std::unique_ptr<FLKVertexGridSolver> FLKVertexGridSolver::solverForA(FLKPoint a, FLKPoint b, FLKPoint c,
                                                                     FLKPoint d, unsigned gridSize) {
    return std::make_unique<FLKVertexGridSolver>(a, b, c, d, gridSize);
}

FLKVertex* FLKVertexGridSolver::allocateVertices() {
    _vertices = std::make_unique_for_overwrite<FLKVertex[]>(vertexCount());
    return _vertices.get();
}

void FLKVertexGridSolver::solve() {
    FLKVertex* vertex = allocateVertices();
    const unsigned g = _gridSize;
    const double step = 1.0 / g;
    const float textureStep = 1.0f / float(g);
    for (unsigned r = 0; r <= g; ++r) {
        const double t = r * step;
        const double leftX = _a.x + (_b.x - _a.x) * t, leftY = _a.y + (_b.y - _a.y) * t;
        const double rightX = _d.x + (_c.x - _d.x) * t, rightY = _d.y + (_c.y - _d.y) * t;
        const double spanX = rightX - leftX, spanY = rightY - leftY;
        const float v = float(r) * textureStep;
        for (unsigned k = 0; k <= g; ++k) {
            const double s = k * step;
            writeVertex(*vertex++, leftX + spanX * s, leftY + spanY * s, float(k) * textureStep, v);
        }
    }
}
