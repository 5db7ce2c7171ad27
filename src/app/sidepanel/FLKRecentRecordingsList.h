#pragma once

#include <QListWidget>

#include <memory>
#include <vector>

class FLKRecentlyRecordedItemViewModel;
class FLKRecordingItemMenuViewModel;
class QMenu;

// The kept recordings, newest first, each with a thumbnail of its first
// picture made off the main thread. Double-clicking one asks for it to be
// loaded; its context menu shows it in the file manager, moves it to the
// trash or renames it. Main thread only.
class FLKRecentRecordingsList : public QListWidget {
    Q_OBJECT

public:
    static constexpr int kThumbnailSide = 64;

    explicit FLKRecentRecordingsList(QWidget* parent = nullptr);

    void setItems(std::vector<std::shared_ptr<FLKRecentlyRecordedItemViewModel>> items);
    // The view model of that row, or null.
    std::shared_ptr<FLKRecentlyRecordedItemViewModel> itemAtRow(int row) const;
    // The context menu of that row (the caller owns it), or null.
    QMenu* makeContextMenu(int row);
    // Thumbnails asked for and not yet arrived.
    int pendingThumbnails() const { return pendingThumbnails_; }

signals:
    void loadRequested(int row);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    std::vector<std::shared_ptr<FLKRecentlyRecordedItemViewModel>> items_;  // in row order
    // The one being renamed lives on while its sheet is up, whatever the list does meanwhile.
    std::shared_ptr<FLKRecordingItemMenuViewModel> renaming_;
    int pendingThumbnails_ = 0;
    unsigned generation_ = 0;  // a new list drops the thumbnails the old one asked for
};
