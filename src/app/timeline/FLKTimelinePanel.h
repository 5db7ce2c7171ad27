#pragma once

#include <QTimer>
#include <QWidget>

#include <memory>

class FLKTimelinePanelViewModel;
class FLKTimelineView;
class QScrollArea;

// The timeline dock's content: the rows of clips scrolling sideways, and the
// refresh that keeps the play head following the timeline. The clock moves
// the timeline's time on its own queue; this panel reads it on the main
// thread, quickly while the timeline plays or a picked moment's frame is
// still being decoded, slowly otherwise, and only while it is shown.
class FLKTimelinePanel : public QWidget {
    Q_OBJECT

public:
    // Refresh periods in milliseconds: following the timeline, and watching
    // for playback started elsewhere.
    static constexpr int kFollowingPeriod = 33;  // the preview rate
    static constexpr int kIdlePeriod = 250;

    explicit FLKTimelinePanel(QWidget* parent = nullptr);
    ~FLKTimelinePanel() override;

    const std::shared_ptr<FLKTimelinePanelViewModel>& viewModel() const { return viewModel_; }
    // The panel of another timeline (after a scene load); null shows nothing.
    void setViewModel(std::shared_ptr<FLKTimelinePanelViewModel> viewModel);

    FLKTimelineView* timelineView() const { return view_; }
    QScrollArea* scrollArea() const { return scrollArea_; }

    // Whether the frame at the play head can be drawn: decoded, or nothing to decode.
    bool showsFrameAtPlayHead() const;

    // Refreshes now, with the canvas's frame: repainted in the same pass of
    // the window rather than presenting it once more. The panel's own timer
    // then waits two periods, standing in only when such frames stop coming.
    void refreshWithFrame();

signals:
    // Clips were edited: the picture under the play head may have changed.
    void frameChanged();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void followTimeline();
    void refresh();

    QScrollArea* const scrollArea_;
    FLKTimelineView* const view_;
    std::shared_ptr<FLKTimelinePanelViewModel> viewModel_;
    QTimer refreshTimer_;
    double shownTime_ = -1;
    bool wasWaiting_ = false;
    // Refreshes left to wait for a frame that may never come (a file that
    // stopped decoding), after which the panel goes back to idling.
    int waitBudget_ = 0;
};
