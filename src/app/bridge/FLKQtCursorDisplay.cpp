#include "app/bridge/FLKQtCursorDisplay.h"

#include <QCursor>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {

// Degrees to turn the horizontal double arrow by; none for unknown names.
bool arrowAngleForImageName(const std::string& imageName, qreal* degrees) {
    // Screen y grows downwards, so "up-right" is a turn of -45 degrees.
    if (imageName == "CursorLeftRight") *degrees = 0;
    else if (imageName == "CursorUpDown") *degrees = 90;
    else if (imageName == "CursorUpRightDownLeft") *degrees = -45;
    else if (imageName == "CursorUpLeftDownRight") *degrees = 45;
    else return false;
    return true;
}

// A horizontal double arrow about the origin, `length` from tip to tip.
QPainterPath doubleArrow(qreal length) {
    const qreal half = length / 2;
    const qreal head = 5.5;   // from a tip back to the base of its head
    const qreal wing = 4.5;   // half the width of a head
    const qreal shaft = 1.25; // half the width of the shaft
    QPainterPath path;
    path.moveTo(-half, 0);
    path.lineTo(-half + head, -wing);
    path.lineTo(-half + head, -shaft);
    path.lineTo(half - head, -shaft);
    path.lineTo(half - head, -wing);
    path.lineTo(half, 0);
    path.lineTo(half - head, wing);
    path.lineTo(half - head, shaft);
    path.lineTo(-half + head, shaft);
    path.lineTo(-half + head, wing);
    path.closeSubpath();
    return path;
}

}  // namespace

void FLKQtCursorDisplay::showSystemCursor(SystemCursor cursor) {
    if (!widget_) return;
    switch (cursor) {
        case SystemCursor::arrow: widget_->setCursor(Qt::ArrowCursor); break;
        case SystemCursor::openHand: widget_->setCursor(Qt::OpenHandCursor); break;
        case SystemCursor::closedHand: widget_->setCursor(Qt::ClosedHandCursor); break;
        case SystemCursor::crosshair: widget_->setCursor(Qt::CrossCursor); break;
    }
}

void FLKQtCursorDisplay::showImageCursor(const std::string& imageName, FLKPoint hotSpotFraction) {
    if (!widget_) return;
    const QPixmap pixmap = cursorPixmap(imageName, widget_->devicePixelRatioF());
    if (pixmap.isNull()) return widget_->setCursor(Qt::ArrowCursor);
    // Qt takes the hot spot in device-independent pixels.
    const QSizeF size = pixmap.deviceIndependentSize();
    widget_->setCursor(QCursor(pixmap, static_cast<int>(std::lround(size.width() * hotSpotFraction.x)),
                               static_cast<int>(std::lround(size.height() * hotSpotFraction.y))));
}

QPixmap FLKQtCursorDisplay::cursorPixmap(const std::string& imageName, qreal devicePixelRatio) {
    qreal degrees = 0;
    if (!arrowAngleForImageName(imageName, &degrees)) return {};
    const int side = static_cast<int>(std::ceil(kCursorSide * devicePixelRatio));
    QPixmap pixmap(side, side);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(kCursorSide / 2.0, kCursorSide / 2.0);
    painter.rotate(degrees);
    // A diagonal spans more of the square; keep both kinds inside it with
    // room for the outline.
    const qreal length = degrees == 0 || degrees == 90 ? kCursorSide - 3 : (kCursorSide - 3) * 1.2;
    const QPainterPath arrow = doubleArrow(length);
    // A white outline keeps the black arrow visible on dark and light scenes.
    painter.setPen(QPen(Qt::white, 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::white);
    painter.drawPath(arrow);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawPath(arrow);
    return pixmap;
}
