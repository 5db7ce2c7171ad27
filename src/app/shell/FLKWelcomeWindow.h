#pragma once

#include <QDialog>

#include <memory>
#include <vector>

class FLKTemplate;
class FLKUserDefaults;
class QCheckBox;
class QListWidget;
class QListWidgetItem;
class QPushButton;

// The first thing a new user sees: the templates with their previews, one
// of which starts the document, and whether to show this window at launch.
// Choosing a template loads it through the scene loader and closes the
// window; closing it any other way keeps the scene already shown. Main
// thread only.
class FLKWelcomeWindow : public QDialog {
    Q_OBJECT

public:
    FLKWelcomeWindow(FLKUserDefaults& defaults, QWidget* parent = nullptr);

    QListWidget* templateList() const { return templateList_; }
    QPushButton* startButton() const { return startButton_; }
    QCheckBox* showAtLaunchBox() const { return showAtLaunchBox_; }
    // Previews still to be read; they come in one per turn of the event loop.
    bool isLoadingPreviews() const { return nextPreview_ < templates_.size(); }

    // Loads the template in that row of the list; false (and the error shown)
    // when it cannot be read, and the window stays open.
    bool chooseTemplateAtRow(int row);

private:
    void loadNextPreview();

    FLKUserDefaults& defaults_;
    std::vector<std::shared_ptr<FLKTemplate>> templates_;  // in list order
    size_t nextPreview_ = 0;
    QListWidget* templateList_ = nullptr;
    QPushButton* startButton_ = nullptr;
    QCheckBox* showAtLaunchBox_ = nullptr;
};
