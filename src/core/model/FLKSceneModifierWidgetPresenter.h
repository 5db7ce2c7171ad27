#pragma once

// What the scene modifier needs of the on-canvas widget presenter: redrawing
// the widget after the camera changed.
class FLKSceneModifierWidgetPresenter {
public:
    virtual ~FLKSceneModifierWidgetPresenter() = default;
    virtual void updateWidget() = 0;
};
