#pragma once

#include <QObject>

#include <functional>
#include <memory>

#include "editing/FLKPropertyObservable.h"

class FLKMenuItemViewModel;
class QAction;

// Keeps a menu action's title and enabled state those of its view model.
// Triggering the action runs the view model; `perform` stands in for view
// models whose command lives elsewhere (Undo and Redo, on the pipeline).
class FLKMenuItemBinding : public QObject {
    Q_OBJECT

public:
    FLKMenuItemBinding(QAction* action, std::shared_ptr<FLKMenuItemViewModel> viewModel,
                       std::function<void()> perform = {});
    ~FLKMenuItemBinding() override;

private:
    void refresh();

    QAction* const action_;  // a child of the same menu; outlives this binding's parent
    std::shared_ptr<FLKMenuItemViewModel> viewModel_;
    FLKPropertyObservable::ObserverToken token_ = 0;
};
