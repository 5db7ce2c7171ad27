#include "app/canvas/FLKCanvasOverlay.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

#include "app/canvas/FLKSceneView.h"
#include "core/scene/FLKShape.h"
#include "core/scene/FLKShapeEditable.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKHoverWidgetViewModel.h"
#include "editing/FLKSelection.h"
#include "editing/FLKSelectionEditingWidgetViewModel.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"

namespace {
const QColor kAccent(64, 156, 255);
// Sizes in device-independent pixels, rounded to whole device pixels.
constexpr double kFrameWidth = 1.5;
constexpr double kHandleSide = 8;
constexpr double kMarkerRadius = 6;
constexpr double kHoveredMarkerRadius = 8;

// Places lines and squares on the device-pixel grid of the painted surface:
// a line of an odd number of device pixels is centred on a pixel, one of an
// even number between two, so neither is smeared over a neighbour.
class PixelGrid {
public:
    explicit PixelGrid(qreal ratio) : ratio_(ratio > 0 ? ratio : 1) {}

    // A width of about `logical` pixels, a whole number of device pixels.
    qreal width(qreal logical) const { return std::max<qreal>(1, std::round(logical * ratio_)) / ratio_; }
    QPointF snap(QPointF point, qreal lineWidth) const { return {snap(point.x(), lineWidth), snap(point.y(), lineWidth)}; }
    qreal snap(qreal value, qreal lineWidth) const {
        const bool odd = static_cast<long>(std::lround(lineWidth * ratio_)) % 2 == 1;
        return odd ? (std::floor(value * ratio_) + 0.5) / ratio_ : std::round(value * ratio_) / ratio_;
    }

private:
    qreal ratio_;
};

std::vector<QPointF> widgetPoints(const FLKShape& shape, const FLKSceneView& view) {
    std::vector<QPointF> points;
    for (const FLKPoint& point : shape.createPoints()) points.push_back(view.widgetPointForScenePoint(point));
    return points;
}

QPainterPath closedPath(const std::vector<QPointF>& points) {
    QPainterPath path;
    if (points.empty()) return path;
    path.moveTo(points.front());
    for (size_t i = 1; i < points.size(); ++i) path.lineTo(points[i]);
    path.closeSubpath();
    return path;
}
}  // namespace

FLKCanvasOverlay::FLKCanvasOverlay(const FLKCanvasViewModels& models)
    : selectionEditing_(models.framing()), vertexEditing_(models.cornering()), hovering_(models.hovering()) {}

void FLKCanvasOverlay::paint(QPainter& painter, const FLKSceneView& view) const {
    painter.setRenderHint(QPainter::Antialiasing);
    // While corners are edited the frame and the highlight would only hide them.
    if (vertexEditing_ && vertexEditing_->sprite()) {
        paintCornerMarkers(painter, view);
        return;
    }
    paintHoverHighlight(painter, view);
    paintSelectionFrame(painter, view);
}

void FLKCanvasOverlay::paintHoverHighlight(QPainter& painter, const FLKSceneView& view) const {
    if (!hovering_ || !hovering_->highlightedObject()) return;
    // The frame already marks a selected object.
    const auto& selection = selectionEditing_ ? selectionEditing_->selection() : nullptr;
    if (selection && selection->containsObject(hovering_->highlightedObject())) return;
    auto editable = std::dynamic_pointer_cast<FLKShapeEditable>(hovering_->highlightedObject());
    const auto shape = editable ? editable->shape() : nullptr;
    if (!shape) return;
    const PixelGrid grid(painter.device()->devicePixelRatioF());
    const qreal width = grid.width(kFrameWidth);
    std::vector<QPointF> corners = widgetPoints(*shape, view);
    for (QPointF& corner : corners) corner = grid.snap(corner, width);
    painter.setPen(QPen(kAccent, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(closedPath(corners));
}

void FLKCanvasOverlay::paintSelectionFrame(QPainter& painter, const FLKSceneView& view) const {
    if (!selectionEditing_ || !selectionEditing_->selection()) return;
    const FLKRect bounds = selectionEditing_->selection()->bounds();
    if (bounds.isNull()) return;
    const PixelGrid grid(painter.device()->devicePixelRatioF());
    const qreal width = grid.width(kFrameWidth);
    const QRectF frame(grid.snap(view.widgetPointForScenePoint(bounds.origin), width),
                       grid.snap(view.widgetPointForScenePoint({bounds.origin.x + bounds.size.width,
                                                                bounds.origin.y + bounds.size.height}),
                                 width));
    painter.setPen(QPen(kAccent, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame);

    // Round the frame from the top-left corner, corners and side midpoints
    // alternating, as the selection numbers its edges.
    const QPointF centre = frame.center();
    const QPointF handles[] = {frame.topLeft(),     {centre.x(), frame.top()},    frame.topRight(),
                               {frame.right(), centre.y()}, frame.bottomRight(), {centre.x(), frame.bottom()},
                               frame.bottomLeft(),  {frame.left(), centre.y()}};
    const qreal handleLine = grid.width(1);
    const qreal side = grid.width(kHandleSide);
    painter.setPen(QPen(kAccent, handleLine));
    painter.setBrush(Qt::white);
    for (const QPointF& handle : handles) {
        const QPointF topLeft = grid.snap(handle - QPointF(side / 2, side / 2), handleLine);
        painter.drawRect(QRectF(topLeft, QSizeF(side, side)));
    }
}

void FLKCanvasOverlay::paintCornerMarkers(QPainter& painter, const FLKSceneView& view) const {
    const auto shape = vertexEditing_->sprite()->shape();
    if (!shape) return;
    const std::vector<QPointF> corners = widgetPoints(*shape, view);
    if (corners.empty()) return;
    const PixelGrid grid(painter.device()->devicePixelRatioF());
    painter.setPen(QPen(kAccent, grid.width(1), Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(closedPath(corners));
    const qreal ring = grid.width(1.5);
    for (size_t i = 0; i < corners.size(); ++i) {
        // The corner under the pointer, or the one being dragged.
        const bool current = i == vertexEditing_->currentCornerIndex();
        painter.setPen(QPen(current ? kAccent : QColor(Qt::white), ring));
        painter.setBrush(current ? QColor(Qt::white) : kAccent);
        const qreal radius = current ? kHoveredMarkerRadius : kMarkerRadius;
        painter.drawEllipse(corners[i], radius, radius);
    }
}
