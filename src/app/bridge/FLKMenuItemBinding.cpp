#include "app/bridge/FLKMenuItemBinding.h"

#include <QAction>

#include "editing/FLKMenuItemViewModel.h"

FLKMenuItemBinding::FLKMenuItemBinding(QAction* action, std::shared_ptr<FLKMenuItemViewModel> viewModel,
                                       std::function<void()> perform)
    : QObject(action), action_(action), viewModel_(std::move(viewModel)) {
    token_ = viewModel_->addPropertyObserver([this](const std::string&) { refresh(); });
    connect(action_, &QAction::triggered, this, [this, perform = std::move(perform)] {
        if (perform) {
            perform();
        } else {
            viewModel_->execute();
        }
    });
    refresh();
}

FLKMenuItemBinding::~FLKMenuItemBinding() { viewModel_->removePropertyObserver(token_); }

void FLKMenuItemBinding::refresh() {
    action_->setText(QString::fromStdString(viewModel_->title()));
    action_->setEnabled(viewModel_->isEnabled());
}
