#pragma once

#include <QLabel>

#include <memory>

#include "editing/FLKPropertyObservable.h"

class FLKSceneView;
class FLKTooltipsDispatcher;

// The canvas's hint beside the pointer: the dispatcher's tooltip in a small
// label over the canvas, hidden while there is none. Bound to one loaded
// scene's dispatcher at a time.
class FLKTooltipsPanel : public QLabel {
    Q_OBJECT

public:
    explicit FLKTooltipsPanel(FLKSceneView* canvas);
    ~FLKTooltipsPanel() override;

    void setDispatcher(std::shared_ptr<FLKTooltipsDispatcher> dispatcher);

private:
    void showTooltip();

    FLKSceneView* canvas_;
    std::shared_ptr<FLKTooltipsDispatcher> dispatcher_;
    FLKPropertyObservable::ObserverToken token_ = 0;
};
