#pragma once

#include <QWidget>

#include <filesystem>
#include <memory>
#include <vector>

#include "core/platform/FLKNotificationCenter.h"

class FLKMainWindow;
class FLKVideoContainer;
class QListWidget;
class QPushButton;

// The masks page: the library of mask pictures with previews (built-in
// first, then the user's), put on the selected screen or taken off it;
// importing a PNG and removing one of the user's own. Follows the masks
// manager's list as it changes. Main thread only.
class FLKMasksPage : public QWidget {
    Q_OBJECT

public:
    explicit FLKMasksPage(FLKMainWindow& window, QWidget* parent = nullptr);

    QListWidget* maskList() const { return list_; }
    QPushButton* applyButton() const { return applyButton_; }
    QPushButton* clearButton() const { return clearButton_; }
    QPushButton* importButton() const { return importButton_; }
    QPushButton* removeButton() const { return removeButton_; }
    // The mask file of that row, or an empty path.
    std::filesystem::path maskAtRow(int row) const;

    // The screen a mask goes on: the selected one, else the scene's only one.
    std::shared_ptr<FLKVideoContainer> targetScreen() const;
    // The mask in the current row onto the target screen; false (the user
    // told why) when there is none or its picture cannot be copied.
    bool applyCurrentMask();
    void clearMask();
    void importWithDialog();
    void removeCurrentWithDialog();

private:
    void reload();
    void refreshButtons();

    FLKMainWindow& window_;
    std::vector<std::filesystem::path> masks_;  // in row order
    QListWidget* list_ = nullptr;
    QPushButton* applyButton_ = nullptr;
    QPushButton* clearButton_ = nullptr;
    QPushButton* importButton_ = nullptr;
    QPushButton* removeButton_ = nullptr;
    FLKObservation masksObservation_;
};
