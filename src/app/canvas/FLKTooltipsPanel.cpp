#include "app/canvas/FLKTooltipsPanel.h"

#include <algorithm>

#include "app/canvas/FLKSceneView.h"
#include "editing/FLKTooltipsDispatcher.h"

namespace {
// Below and right of the pointer, clear of the arrow and the resize cursors.
constexpr int kOffsetX = 16;
constexpr int kOffsetY = 22;
}  // namespace

FLKTooltipsPanel::FLKTooltipsPanel(FLKSceneView* canvas) : QLabel(canvas), canvas_(canvas) {
    setObjectName("tooltipsPanel");
    // Never in the way of the canvas's own input.
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setStyleSheet("QLabel { background: rgba(20, 20, 24, 220); color: white; border-radius: 4px; padding: 3px 7px; }");
    hide();
}

FLKTooltipsPanel::~FLKTooltipsPanel() { setDispatcher(nullptr); }

void FLKTooltipsPanel::setDispatcher(std::shared_ptr<FLKTooltipsDispatcher> dispatcher) {
    if (dispatcher_) dispatcher_->removePropertyObserver(token_);
    dispatcher_ = std::move(dispatcher);
    if (dispatcher_) {
        token_ = dispatcher_->addPropertyObserver([this](const std::string& name) {
            if (name == "tooltip" || name == "location") showTooltip();
        });
    }
    showTooltip();
}

void FLKTooltipsPanel::showTooltip() {
    const std::string text = dispatcher_ ? dispatcher_->tooltip() : std::string();
    if (text.empty()) return hide();
    setText(QString::fromStdString(text));
    adjustSize();
    const QPoint pointer = canvas_->widgetPointForScenePoint(dispatcher_->location()).toPoint();
    // Kept inside the canvas; near its right or bottom edge it goes to the other side.
    int x = pointer.x() + kOffsetX;
    int y = pointer.y() + kOffsetY;
    if (x + width() > canvas_->width()) x = pointer.x() - kOffsetX - width();
    if (y + height() > canvas_->height()) y = pointer.y() - kOffsetY - height();
    move(std::clamp(x, 0, std::max(0, canvas_->width() - width())), std::clamp(y, 0, std::max(0, canvas_->height() - height())));
    show();
    raise();
}
