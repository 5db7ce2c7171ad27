#include "editing/FLKMenuItemViewModel.h"

#include <vector>

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

FLKMenuItemViewModel::ObserverToken FLKMenuItemViewModel::addPropertyObserver(PropertyObserver observer) {
    ObserverToken token = nextToken_++;
    observers_.emplace(token, std::move(observer));
    return token;
}

void FLKMenuItemViewModel::removePropertyObserver(ObserverToken token) { observers_.erase(token); }

void FLKMenuItemViewModel::didChangeProperty(const std::string& propertyName) {
    // Observers may remove themselves while being called.
    std::vector<ObserverToken> tokens;
    for (const auto& [token, observer] : observers_) tokens.push_back(token);
    for (auto token : tokens) {
        auto it = observers_.find(token);
        if (it == observers_.end()) continue;
        auto observer = it->second;
        observer(propertyName);
    }
}
