#pragma once

#include <QListWidget>

#include <memory>
#include <vector>

class FLKTemplate;

// The templates as a grid of previews with their names, in the template
// manager's order (built-in first, then the user's). Previews are read one
// per turn of the event loop, so the grid paints before they are all in.
// Main thread only.
class FLKTemplateGrid : public QListWidget {
    Q_OBJECT

public:
    // `previewSide`: the side of the square each preview is drawn into.
    explicit FLKTemplateGrid(int previewSide, QWidget* parent = nullptr);

    // Shows the manager's templates as they are now; the current row follows
    // the selected template.
    void reload();
    // The template in that row, or null.
    std::shared_ptr<FLKTemplate> templateAtRow(int row) const;
    // Previews still to be read.
    bool isLoadingPreviews() const { return nextPreview_ < templates_.size(); }

private:
    void loadNextPreview();

    const QSize previewSize_;
    std::vector<std::shared_ptr<FLKTemplate>> templates_;  // in row order
    size_t nextPreview_ = 0;
    // Bumped by every reload, so a pending preview of an older list is dropped.
    quint64 generation_ = 0;
};
