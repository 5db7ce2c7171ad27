#include "app/timeline/FLKTimelinePanel.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include "app/timeline/FLKTimelineView.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "editing/FLKTimelinePanelViewModel.h"

namespace {
// Ten seconds of following refreshes.
constexpr int kWaitBudget = 10000 / FLKTimelinePanel::kFollowingPeriod;
}  // namespace

FLKTimelinePanel::FLKTimelinePanel(QWidget* parent)
    : QWidget(parent), scrollArea_(new QScrollArea(this)), view_(new FLKTimelineView(scrollArea_)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    scrollArea_->setFrameShape(QFrame::NoFrame);
    scrollArea_->setWidgetResizable(false);
    scrollArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    scrollArea_->setWidget(view_);
    layout->addWidget(scrollArea_);
    // One row of cells and the scroll bar under it.
    const double rowHeight =
        FLKTimelineView::kTopInset + FLKTimelineClipViewModel::kCellHeight + FLKTimelineView::kBottomInset;
    setMinimumHeight(static_cast<int>(rowHeight) + scrollArea_->horizontalScrollBar()->sizeHint().height());

    refreshTimer_.setTimerType(Qt::PreciseTimer);
    connect(&refreshTimer_, &QTimer::timeout, this, &FLKTimelinePanel::refresh);
    connect(view_, &FLKTimelineView::playHeadChanged, this, &FLKTimelinePanel::followTimeline);
    connect(view_, &FLKTimelineView::rowsChanged, this, [this] {
        // Another clip may now be under the play head.
        emit frameChanged();
        followTimeline();
    });
}

FLKTimelinePanel::~FLKTimelinePanel() {
    // The view lets go of the view model's handlers before the model can go.
    view_->setViewModel(nullptr);
}

void FLKTimelinePanel::setViewModel(std::shared_ptr<FLKTimelinePanelViewModel> viewModel) {
    view_->setViewModel(viewModel);
    viewModel_ = std::move(viewModel);
    shownTime_ = -1;
    followTimeline();
}

bool FLKTimelinePanel::showsFrameAtPlayHead() const {
    if (!viewModel_) return true;
    const double time = viewModel_->currentTime();
    for (const auto& track : viewModel_->timeline()->tracks()) {
        auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track);
        if (video && video->clipAtTime(time) && video->expectsTextureAtTime(time) && !video->hasTextureAtTime(time)) {
            return false;
        }
    }
    return true;
}

void FLKTimelinePanel::followTimeline() {
    waitBudget_ = kWaitBudget;
    if (isVisible()) refreshTimer_.start(kFollowingPeriod);
}

void FLKTimelinePanel::refresh() {
    if (!viewModel_) return refreshTimer_.stop();
    viewModel_->refreshPlayHead();
    const double time = viewModel_->currentTime();
    const bool playing = viewModel_->isPlaying();
    const bool moved = time != shownTime_;
    const bool waiting = !playing && !showsFrameAtPlayHead();
    if (playing || moved) waitBudget_ = kWaitBudget;
    if (playing && moved) view_->ensurePlayHeadVisible();
    if (waiting && waitBudget_ > 0) --waitBudget_;
    shownTime_ = time;
    wasWaiting_ = waiting;
    const bool following = playing || moved || (waiting && waitBudget_ > 0);
    const int period = following ? kFollowingPeriod : kIdlePeriod;
    if (refreshTimer_.interval() != period) refreshTimer_.setInterval(period);
}

void FLKTimelinePanel::refreshWithFrame() {
    if (!isVisible() || !viewModel_) return;
    refresh();
    if (refreshTimer_.interval() == kFollowingPeriod) refreshTimer_.start(2 * kFollowingPeriod);
}

void FLKTimelinePanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    followTimeline();
}

void FLKTimelinePanel::hideEvent(QHideEvent* event) {
    refreshTimer_.stop();
    QWidget::hideEvent(event);
}
