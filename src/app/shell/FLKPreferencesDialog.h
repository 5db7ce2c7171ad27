#pragma once

#include <QDialog>

#include "core/platform/FLKNotificationCenter.h"

class FLKPerformanceSettings;
class FLKUserDefaults;
class QButtonGroup;
class QCheckBox;
class QRadioButton;

// Preferences: the preview's performance level and the settings kept
// between starts (the welcome screen, sounds). Changes apply at once.
// Main thread only; the level's notification reaches it through a queued call.
class FLKPreferencesDialog : public QDialog {
    Q_OBJECT

public:
    // Both must outlive the dialog.
    FLKPreferencesDialog(FLKPerformanceSettings& performance, FLKUserDefaults& defaults, QWidget* parent = nullptr);

    // The button of level 1, 2 or 3.
    QRadioButton* levelButton(unsigned level) const;
    QCheckBox* welcomeCheckBox() const { return welcome_; }
    QCheckBox* soundCheckBox() const { return sound_; }

private:
    void showCurrentValues();

    FLKPerformanceSettings& performance_;
    FLKUserDefaults& defaults_;
    QButtonGroup* levels_ = nullptr;
    QCheckBox* welcome_ = nullptr;
    QCheckBox* sound_ = nullptr;
    FLKObservation levelObservation_;
};
