#pragma once

#include <QWidget>

#include <array>
#include <memory>

#include "core/platform/FLKNotificationCenter.h"

class FLKMainWindow;
class QColorDialog;
class QLabel;
class QPushButton;

// The background page: the four corner colours of the scene's gradient,
// each picked in a colour dialog that shows its colour live on the canvas
// (one undo step per pick, nothing when cancelled), and a picture as the
// background instead. Main thread only.
class FLKBackgroundPage : public QWidget {
    Q_OBJECT

public:
    static constexpr int kCornerCount = 4;

    explicit FLKBackgroundPage(FLKMainWindow& window, QWidget* parent = nullptr);

    QPushButton* cornerButton(int corner) const { return cornerButtons_[static_cast<size_t>(corner)]; }
    QPushButton* imageButton() const { return imageButton_; }
    QPushButton* removeImageButton() const { return removeImageButton_; }

    // Opens the colour dialog for that corner and waits for the user's answer.
    void pickCornerColor(int corner);

private:
    void refresh();
    void chooseImageWithDialog();
    void removeImage();

    FLKMainWindow& window_;
    std::array<QPushButton*, kCornerCount> cornerButtons_{};
    QLabel* noGradientLabel_ = nullptr;
    QPushButton* imageButton_ = nullptr;
    QPushButton* removeImageButton_ = nullptr;
    FLKObservation loadObservation_;
    FLKObservation historyObservation_;
};
