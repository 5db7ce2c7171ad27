#include "app/canvas/FLKCanvasOverlay.h"

#include <QPainter>
#include <QPainterPath>

#include "app/canvas/FLKSceneView.h"
#include "core/scene/FLKShape.h"
#include "editing/FLKSelection.h"
#include "editing/FLKSelectionEditingWidgetViewModel.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"

namespace {
const QColor kAccent(64, 156, 255);
constexpr double kHandleSide = 8;    // screen pixels
constexpr double kMarkerRadius = 6;  // screen pixels
}  // namespace

FLKCanvasOverlay::FLKCanvasOverlay(std::shared_ptr<FLKSelectionEditingWidgetViewModel> selectionEditing,
                                   std::shared_ptr<FLKVertexEditingWidgetViewModel> vertexEditing)
    : selectionEditing_(std::move(selectionEditing)), vertexEditing_(std::move(vertexEditing)) {}

void FLKCanvasOverlay::paint(QPainter& painter, const FLKSceneView& view) const {
    painter.setRenderHint(QPainter::Antialiasing);
    // While corners are edited the frame would only hide them.
    if (vertexEditing_ && vertexEditing_->sprite()) {
        paintCornerMarkers(painter, view);
    } else {
        paintSelectionFrame(painter, view);
    }
}

void FLKCanvasOverlay::paintSelectionFrame(QPainter& painter, const FLKSceneView& view) const {
    if (!selectionEditing_ || !selectionEditing_->selection()) return;
    const FLKRect bounds = selectionEditing_->selection()->bounds();
    if (bounds.isNull()) return;
    const QPointF topLeft = view.widgetPointForScenePoint(bounds.origin);
    const QPointF bottomRight = view.widgetPointForScenePoint(
        {bounds.origin.x + bounds.size.width, bounds.origin.y + bounds.size.height});
    const QRectF frame(topLeft, bottomRight);
    painter.setPen(QPen(kAccent, 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame);

    // Round the frame from the top-left corner, corners and side midpoints
    // alternating, as the selection numbers its edges.
    const QPointF centre = frame.center();
    const QPointF handles[] = {frame.topLeft(),     {centre.x(), frame.top()},    frame.topRight(),
                               {frame.right(), centre.y()}, frame.bottomRight(), {centre.x(), frame.bottom()},
                               frame.bottomLeft(),  {frame.left(), centre.y()}};
    painter.setPen(QPen(kAccent, 1));
    painter.setBrush(Qt::white);
    for (const QPointF& handle : handles) {
        painter.drawRect(QRectF(handle.x() - kHandleSide / 2, handle.y() - kHandleSide / 2, kHandleSide, kHandleSide));
    }
}

void FLKCanvasOverlay::paintCornerMarkers(QPainter& painter, const FLKSceneView& view) const {
    const auto shape = vertexEditing_->sprite()->shape();
    if (!shape) return;
    const std::vector<FLKPoint> corners = shape->createPoints();
    if (corners.empty()) return;
    QPainterPath outline;
    outline.moveTo(view.widgetPointForScenePoint(corners.front()));
    for (size_t i = 1; i < corners.size(); ++i) outline.lineTo(view.widgetPointForScenePoint(corners[i]));
    outline.closeSubpath();
    painter.setPen(QPen(kAccent, 1, Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(outline);
    painter.setPen(QPen(Qt::white, 1.5));
    for (size_t i = 0; i < corners.size(); ++i) {
        const bool grabbed = i == vertexEditing_->currentCornerIndex();
        painter.setBrush(grabbed ? QColor(Qt::white) : kAccent);
        painter.drawEllipse(view.widgetPointForScenePoint(corners[i]), kMarkerRadius, kMarkerRadius);
    }
}
