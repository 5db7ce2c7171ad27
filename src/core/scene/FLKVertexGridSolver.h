#pragma once

#include <cstddef>
#include <memory>

#include "core/platform/FLKPoint.h"
#include "core/scene/FLKVertex.h"

// Fills the (gridSize + 1)^2 vertex records of a quad. a is the top left, b the
// bottom left, c the bottom right and d the top right corner. Vertex (r, k) is
// record r (gridSize + 1) + k with texture coordinate (k / gridSize, r / gridSize).
//
// This solver interpolates bilinearly, which is exact for parallelograms.
class FLKVertexGridSolver {
public:
    FLKVertexGridSolver(FLKPoint a, FLKPoint b, FLKPoint c, FLKPoint d, unsigned gridSize);
    virtual ~FLKVertexGridSolver() = default;
    FLKVertexGridSolver(const FLKVertexGridSolver&) = delete;
    FLKVertexGridSolver& operator=(const FLKVertexGridSolver&) = delete;

    static std::unique_ptr<FLKVertexGridSolver> solverForA(FLKPoint a, FLKPoint b, FLKPoint c, FLKPoint d,
                                                           unsigned gridSize);

    FLKPoint a() const { return _a; }
    FLKPoint b() const { return _b; }
    FLKPoint c() const { return _c; }
    FLKPoint d() const { return _d; }
    unsigned gridSize() const { return _gridSize; }

    // Allocates the vertex block and fills it.
    virtual void solve();

    // nullptr before solve().
    const FLKVertex* vertices() const { return _vertices.get(); }
    std::size_t vertexCount() const { return std::size_t(_gridSize + 1) * (_gridSize + 1); }
    std::size_t verticesSize() const { return vertexCount() * sizeof(FLKVertex); }

protected:
    // A fresh, uninitialised block of vertexCount() records, kept as vertices().
    FLKVertex* allocateVertices();

    static void writeVertex(FLKVertex& vertex, double x, double y, float u, float v) {
        vertex = FLKVertex{{float(x), float(y), 0.0f, 1.0f}, {u, v}, {0.0f, 0.0f}};
    }

private:
    FLKPoint _a, _b, _c, _d;
    unsigned _gridSize;
    std::unique_ptr<FLKVertex[]> _vertices;
};
