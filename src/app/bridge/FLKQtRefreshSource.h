#pragma once

#include <QPointer>
#include <QTimer>

#include "core/platform/FLKRefreshSource.h"

// The display clock's refreshes on Qt's event loop, at the preview rate of
// the performance settings: nothing in the editor is drawn faster, so ticking
// faster would only spend the processor. Main thread only.
class FLKQtRefreshSource : public FLKRefreshSource {
public:
    // The timer lives as a child of `context` (the application), so a source
    // outliving the event loop (the clock is a process-wide object) stops safely.
    explicit FLKQtRefreshSource(QObject* context);

    int open() override;
    Period nominalRefreshPeriod() const override;
    void start(Callback callback) override;
    void stop() override;

private:
    QPointer<QTimer> timer_;
};
