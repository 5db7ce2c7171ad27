#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/scene/FLKLine.h"
#include "core/scene/FLKVertexGridSolver.h"

// Spreads the grid over the quad by projective subdivision: the line through
// a cell's diagonal crossing and a vanishing point of the quad halves the cell,
// so row line r and column line k are the images of v = r / g and u = k / g
// under the quad's homography. The grid size must be a power of two.
class FLKPerspectiveVertexGridSolver : public FLKVertexGridSolver {
public:
    using FLKVertexGridSolver::FLKVertexGridSolver;

    static std::unique_ptr<FLKPerspectiveVertexGridSolver> solverForA(FLKPoint a, FLKPoint b, FLKPoint c,
                                                                      FLKPoint d, unsigned gridSize);

    void solve() override;

    // The index of the grid line that a path of halving choices (0 = first
    // half, 1 = second half) leads to; 0 for an empty path or one that runs
    // past the grid.
    static unsigned offsetForOrigin(const std::vector<std::uint8_t>& origin, unsigned gridSize);

    // Halves the cell a (top left), b (bottom left), c (bottom right), d (top
    // right), whose diagonals cross at o, by the lines through o and v1 (a
    // column line) and through o and v2 (a row line), stores them and goes on
    // into the sub-cells until a cell is one grid step wide. Each interior line
    // is computed once: row lines by the cells of the first column, column
    // lines by the cells of the first row. The paths are scratch: they are
    // extended and restored.
    void recursivelyFindRowsAndColumnsForA(FLKPoint a, FLKPoint b, FLKPoint c, FLKPoint d, FLKPoint o,
                                           FLKPoint v1, FLKPoint v2, unsigned depth, unsigned gridSize,
                                           std::vector<std::uint8_t>& rowOrigin,
                                           std::vector<std::uint8_t>& columnOrigin,
                                           std::vector<FLKLine>& rowLines, std::vector<FLKLine>& columnLines);

private:
    void writeIntersections(const std::vector<FLKLine>& rowLines, const std::vector<FLKLine>& columnLines);
};
