#pragma once

#include <functional>
#include <memory>
#include <string>

#include "editing/FLKPropertyObservable.h"

class FLKMenuViewModel;

// A menu item as the views see it. Views bind to it through property
// observers, called with the property's name after each change, on the
// thread that made the change (the main thread).
class FLKMenuItemViewModel : public FLKPropertyObservable {
public:
    using ExecutionBlock = std::function<void()>;

    explicit FLKMenuItemViewModel(std::string identifier = {});
    ~FLKMenuItemViewModel() override = default;
    FLKMenuItemViewModel(const FLKMenuItemViewModel&) = delete;
    FLKMenuItemViewModel& operator=(const FLKMenuItemViewModel&) = delete;

    const std::string& identifier() const { return identifier_; }

    const std::string& title() const { return title_; }
    void setTitle(std::string title);
    bool isEnabled() const { return isEnabled_; }
    void setEnabled(bool enabled);
    bool isON() const { return isON_; }
    void setON(bool on);
    bool isToggle() const { return isToggle_; }
    void setToggle(bool toggle);
    const std::shared_ptr<FLKMenuViewModel>& submenuViewModel() const { return submenuViewModel_; }
    void setSubmenuViewModel(std::shared_ptr<FLKMenuViewModel> submenu);
    const ExecutionBlock& executionBlock() const { return executionBlock_; }
    void setExecutionBlock(ExecutionBlock block);

    // Runs the execution block when one is set.
    virtual void execute();

private:
    std::string identifier_;
    std::string title_;
    bool isEnabled_ = true;
    bool isON_ = false;
    bool isToggle_ = false;
    std::shared_ptr<FLKMenuViewModel> submenuViewModel_;
    ExecutionBlock executionBlock_;
};
