#pragma once

#include <memory>

class FLKWidgetViewModel;

// A drawn widget of the desktop shell, paired with its view model.
class FLKWidget {
public:
    virtual ~FLKWidget() = default;
    virtual std::shared_ptr<FLKWidgetViewModel> viewModel() const = 0;
};
