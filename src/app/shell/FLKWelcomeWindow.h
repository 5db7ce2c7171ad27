#pragma once

#include <QDialog>

#include "app/shell/FLKTemplateGrid.h"

class FLKDocumentController;
class FLKUserDefaults;
class QCheckBox;
class QListWidget;
class QPushButton;

// The first thing a new user sees: the templates with their previews, one
// of which starts a new document, the recent documents and a way to open
// any other, and whether to show this window at launch. Whatever opens
// closes the window; closing it any other way keeps the scene already
// shown. Main thread only.
class FLKWelcomeWindow : public QDialog {
    Q_OBJECT

public:
    FLKWelcomeWindow(FLKUserDefaults& defaults, FLKDocumentController& documents, QWidget* parent = nullptr);

    FLKTemplateGrid* templateList() const { return templateList_; }
    QListWidget* recentList() const { return recentList_; }
    QPushButton* startButton() const { return startButton_; }
    QPushButton* openButton() const { return openButton_; }
    QCheckBox* showAtLaunchBox() const { return showAtLaunchBox_; }
    bool isLoadingPreviews() const;

    // Starts a new document from the template in that row of the grid; false
    // (and the error shown) when it cannot be read, and the window stays open.
    bool chooseTemplateAtRow(int row);
    // Opens the recent document in that row; false when it did not open.
    bool openRecentAtRow(int row);

private:
    FLKUserDefaults& defaults_;
    FLKDocumentController& documents_;
    FLKTemplateGrid* templateList_ = nullptr;
    QListWidget* recentList_ = nullptr;
    QPushButton* startButton_ = nullptr;
    QPushButton* openButton_ = nullptr;
    QCheckBox* showAtLaunchBox_ = nullptr;
};
