#include "editing/FLKMenuItemViewModel.h"

FLKMenuItemViewModel::FLKMenuItemViewModel(std::string identifier) : identifier_(std::move(identifier)) {}

void FLKMenuItemViewModel::setTitle(std::string title) {
    if (title == title_) return;
    title_ = std::move(title);
    didChangeProperty("title");
}

void FLKMenuItemViewModel::setEnabled(bool enabled) {
    if (enabled == isEnabled_) return;
    isEnabled_ = enabled;
    didChangeProperty("isEnabled");
}

void FLKMenuItemViewModel::setON(bool on) {
    if (on == isON_) return;
    isON_ = on;
    didChangeProperty("isON");
}

void FLKMenuItemViewModel::setToggle(bool toggle) {
    if (toggle == isToggle_) return;
    isToggle_ = toggle;
    didChangeProperty("isToggle");
}

void FLKMenuItemViewModel::setSubmenuViewModel(std::shared_ptr<FLKMenuViewModel> submenu) {
    if (submenu == submenuViewModel_) return;
    submenuViewModel_ = std::move(submenu);
    didChangeProperty("submenuViewModel");
}

void FLKMenuItemViewModel::setExecutionBlock(ExecutionBlock block) {
    executionBlock_ = std::move(block);
    didChangeProperty("executionBlock");
}

void FLKMenuItemViewModel::execute() {
    if (executionBlock_) executionBlock_();
}
