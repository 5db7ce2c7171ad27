#pragma once

#include <QObject>

#include "core/platform/FLKUserFeedback.h"

// Beeps and error alerts on the main window. Errors reported from another
// thread are shown once the main thread gets to them.
class FLKQtUserFeedback : public FLKUserFeedback {
public:
    explicit FLKQtUserFeedback(QObject* context) : context_(context) {}

    void beep() override;
    void presentError(const FLKError& error) override;

    // The alert's informative text: why it failed, then what to do about it.
    static QString informativeText(const FLKError& error);

private:
    QObject* const context_;  // lives on the main thread
};
