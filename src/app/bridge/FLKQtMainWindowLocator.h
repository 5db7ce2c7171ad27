#pragma once

#include <QObject>

#include <mutex>
#include <optional>

#include "core/capture/FLKMainWindowLocating.h"

class QWidget;

// Where the main window is on the screen, for capture to tell whether a
// display shows this program. Capture asks from its own threads, so the
// frame is copied here on the main thread whenever the window moves,
// resizes, shows or hides. Installed while the main window lives.
class FLKQtMainWindowLocator : public QObject, public FLKMainWindowLocating {
    Q_OBJECT

public:
    explicit FLKQtMainWindowLocator(QWidget* window);

    std::optional<FLKRect> mainWindowFrame() const override;  // any thread

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void record();

    QWidget* const window_;  // main thread only
    mutable std::mutex mutex_;
    std::optional<FLKRect> frame_;  // guarded by mutex_
};
