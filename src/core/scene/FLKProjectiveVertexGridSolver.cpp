#include "core/scene/FLKProjectiveVertexGridSolver.h"

namespace {

bool isAllFirstHalves(const std::vector<std::uint8_t>& origin) {
    for (std::uint8_t choice : origin) {
        if (choice != 0) return false;
    }
    return true;
}

FLKPoint diagonalCrossing(FLKPoint a, FLKPoint b, FLKPoint c, FLKPoint d) {
    return FLKLine::through(a, c).intersection(FLKLine::through(b, d));
}

}  // namespace

std::unique_ptr<FLKPerspectiveVertexGridSolver> FLKPerspectiveVertexGridSolver::solverForA(
    FLKPoint a, FLKPoint b, FLKPoint c, FLKPoint d, unsigned gridSize) {
    return std::make_unique<FLKPerspectiveVertexGridSolver>(a, b, c, d, gridSize);
}

unsigned FLKPerspectiveVertexGridSolver::offsetForOrigin(const std::vector<std::uint8_t>& origin,
                                                         unsigned gridSize) {
    unsigned span = gridSize;
    unsigned offset = 0;
    for (std::uint8_t choice : origin) {
        span /= 2;
        offset += choice * span;
    }
    return offset < gridSize ? offset : 0;
}

void FLKPerspectiveVertexGridSolver::solve() {
    const unsigned g = gridSize();
    const FLKLine left = FLKLine::through(a(), b());
    const FLKLine bottom = FLKLine::through(b(), c());
    const FLKLine right = FLKLine::through(c(), d());
    const FLKLine top = FLKLine::through(d(), a());
    const FLKPoint v1 = left.intersection(right);
    const FLKPoint v2 = bottom.intersection(top);
    const FLKPoint o = diagonalCrossing(a(), b(), c(), d());

    // Lines the subdivision cannot reach (a grid size that is not a power of
    // two) stay degenerate rather than uninitialised.
    std::vector<FLKLine> rowLines(g + 1);
    std::vector<FLKLine> columnLines(g + 1);
    rowLines.front() = top;
    rowLines.back() = bottom;
    columnLines.front() = left;
    columnLines.back() = right;

    std::vector<std::uint8_t> rowOrigin, columnOrigin;
    rowOrigin.reserve(32);
    columnOrigin.reserve(32);
    recursivelyFindRowsAndColumnsForA(a(), b(), c(), d(), o, v1, v2, 0, g, rowOrigin, columnOrigin, rowLines,
                                      columnLines);

    writeIntersections(rowLines, columnLines);
}

// Vertex (r, k) is where row line r meets column line k. The column
// coefficients are laid out side by side so that a row's intersections are
// computed in vector registers before they are packed into records.
void FLKPerspectiveVertexGridSolver::writeIntersections(const std::vector<FLKLine>& rowLines,
                                                        const std::vector<FLKLine>& columnLines) {
    const unsigned g = gridSize();
    const std::size_t count = g + 1;
    std::vector<double> scratch(count * 5);
    double* const columnA = scratch.data();
    double* const columnB = columnA + count;
    double* const columnC = columnB + count;
    double* const xs = columnC + count;
    double* const ys = xs + count;
    for (std::size_t k = 0; k < count; ++k) {
        columnA[k] = columnLines[k].a;
        columnB[k] = columnLines[k].b;
        columnC[k] = columnLines[k].c;
    }

    FLKVertex* vertex = allocateVertices();
    const float textureStep = 1.0f / float(g);
    for (unsigned r = 0; r <= g; ++r) {
        const double ra = rowLines[r].a, rb = rowLines[r].b, rc = rowLines[r].c;
        for (std::size_t k = 0; k < count; ++k) {
            double determinant = ra * columnB[k] - columnA[k] * rb;
            determinant = determinant == 0 ? FLKLine::kZeroDeterminant : determinant;
            xs[k] = (rb * columnC[k] - columnB[k] * rc) / determinant;
            ys[k] = (columnA[k] * rc - ra * columnC[k]) / determinant;
        }
        const float v = float(r) * textureStep;
        for (std::size_t k = 0; k < count; ++k) {
            writeVertex(*vertex++, xs[k], ys[k], float(k) * textureStep, v);
        }
    }
}

void FLKPerspectiveVertexGridSolver::recursivelyFindRowsAndColumnsForA(
    FLKPoint a, FLKPoint b, FLKPoint c, FLKPoint d, FLKPoint o, FLKPoint v1, FLKPoint v2, unsigned depth,
    unsigned gridSize, std::vector<std::uint8_t>& rowOrigin, std::vector<std::uint8_t>& columnOrigin,
    std::vector<FLKLine>& rowLines, std::vector<FLKLine>& columnLines) {
    if (depth >= 32 || (gridSize >> depth) <= 1) return;

    // Every cell of a band shares its halving line, so one cell per band is enough.
    const bool inFirstRow = isAllFirstHalves(rowOrigin);
    const bool inFirstColumn = isAllFirstHalves(columnOrigin);
    const FLKLine columnHalf = FLKLine::through(o, v1);
    const FLKLine rowHalf = FLKLine::through(o, v2);
    if (inFirstRow) {
        columnOrigin.push_back(1);
        columnLines[offsetForOrigin(columnOrigin, gridSize)] = columnHalf;
        columnOrigin.pop_back();
    }
    if (inFirstColumn) {
        rowOrigin.push_back(1);
        rowLines[offsetForOrigin(rowOrigin, gridSize)] = rowHalf;
        rowOrigin.pop_back();
    }

    if ((gridSize >> (depth + 1)) <= 1) return;  // the sub-cells are one step wide

    const FLKPoint midTop = columnHalf.intersection(FLKLine::through(d, a));
    const FLKPoint midLeft = rowHalf.intersection(FLKLine::through(a, b));
    auto visit = [&](std::uint8_t rowChoice, std::uint8_t columnChoice, FLKPoint sa, FLKPoint sb, FLKPoint sc,
                     FLKPoint sd) {
        rowOrigin.push_back(rowChoice);
        columnOrigin.push_back(columnChoice);
        recursivelyFindRowsAndColumnsForA(sa, sb, sc, sd, diagonalCrossing(sa, sb, sc, sd), v1, v2, depth + 1,
                                          gridSize, rowOrigin, columnOrigin, rowLines, columnLines);
        rowOrigin.pop_back();
        columnOrigin.pop_back();
    };

    // Only sub-cells still in the first row or the first column have lines left to find.
    if (inFirstRow || inFirstColumn) visit(0, 0, a, midLeft, o, midTop);
    if (inFirstRow) {
        const FLKPoint midRight = rowHalf.intersection(FLKLine::through(c, d));
        visit(0, 1, midTop, o, midRight, d);
    }
    if (inFirstColumn) {
        const FLKPoint midBottom = columnHalf.intersection(FLKLine::through(b, c));
        visit(1, 0, midLeft, b, midBottom, o);
    }
}
