#pragma once

#include <QWidget>

#include <memory>

#include "core/platform/FLKNotificationCenter.h"

class FLKMainWindow;
class FLKTemplate;
class FLKTemplateGrid;
class QPushButton;

// The templates page: the grid of templates, a click on one putting the
// document on it (the recordings come along); saving the current scene as a
// template, and renaming, deleting and importing the user's own. Follows the
// template manager's list as it changes. Main thread only.
class FLKTemplatesPage : public QWidget {
    Q_OBJECT

public:
    explicit FLKTemplatesPage(FLKMainWindow& window, QWidget* parent = nullptr);

    FLKTemplateGrid* grid() const { return grid_; }
    QPushButton* saveButton() const { return saveButton_; }
    QPushButton* renameButton() const { return renameButton_; }
    QPushButton* deleteButton() const { return deleteButton_; }
    QPushButton* importButton() const { return importButton_; }

    // Puts the document on the template in that row; false when nothing changed.
    bool chooseTemplateAtRow(int row);
    // Ask the user what they need to know (a name, a yes, a folder), then act
    // on the template in the current row.
    void renameCurrentWithDialog();
    void deleteCurrentWithDialog();
    void importWithDialog();

private:
    std::shared_ptr<FLKTemplate> currentUserTemplate() const;
    void followSelectedTemplate();
    void refreshButtons();

    FLKMainWindow& window_;
    FLKTemplateGrid* grid_ = nullptr;
    QPushButton* saveButton_ = nullptr;
    QPushButton* renameButton_ = nullptr;
    QPushButton* deleteButton_ = nullptr;
    QPushButton* importButton_ = nullptr;
    FLKObservation templatesObservation_;
    FLKObservation loadObservation_;
};
