#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "core/timeline/FLKPlaceholderClip.h"
#include "core/timeline/FLKTimelineTrack.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKTimelineTrackEditingAction.h"
#include "editing/FLKWidgetPresenter.h"

namespace {

TEST(FLKTimelineTrackEditingActionTest, RecordedEvenWhenUnchangedAndRestoresTheList) {
    FLKActionPipeline pipeline;
    auto track = std::make_shared<FLKTimelineTrack>("track");
    auto first = std::make_shared<FLKPlaceholderClip>("a", FLKTimeRange{0, 2});
    track->addClip(first);

    auto unchanged = FLKTimelineTrackEditingAction::actionWithTrack(track);
    unchanged->finalize();
    EXPECT_NE(pipeline.execute(unchanged), nullptr);

    auto adding = FLKTimelineTrackEditingAction::actionWithTrack(track);
    auto second = std::make_shared<FLKPlaceholderClip>("b", FLKTimeRange{2, 3});
    track->addClip(second);
    adding->finalize();
    pipeline.execute(adding);
    EXPECT_EQ(pipeline.undoQueue().size(), 2u);

    pipeline.undo();
    EXPECT_EQ(track->clips(), FLKTimelineTrack::Clips{first});
    pipeline.redo();
    EXPECT_EQ(track->clips(), (FLKTimelineTrack::Clips{first, second}));
}

class RecordingDisplay : public FLKCursorDisplay {
public:
    void showSystemCursor(SystemCursor cursor) override { shown.push_back("system " + std::to_string(int(cursor))); }
    void showImageCursor(const std::string& imageName, FLKPoint hotSpot) override {
        shown.push_back(imageName + " " + std::to_string(hotSpot.x));
    }
    std::vector<std::string> shown;
};

TEST(FLKCursorManagerTest, ShowsOnlyChangesAndTreatsUnknownTypesAsArrow) {
    auto display = std::make_shared<RecordingDisplay>();
    FLKCursorManager manager;
    manager.setDisplay(display);  // the arrow
    manager.setCursorType(FLKCursorTypeLeftRight);
    manager.setCursorType(FLKCursorTypeLeftRight);
    manager.setCursorType(42);
    manager.setCursorType(FLKCursorTypeArrow);
    EXPECT_EQ(manager.cursorType(), FLKCursorTypeArrow);
    EXPECT_EQ(display->shown, (std::vector<std::string>{"system 0", "CursorLeftRight 0.500000", "system 0"}));
}

// The overlay as the desktop shell provides it, keeping its widgets in a list.
class ListWidgetView : public FLKWidgetView {
public:
    struct Widget : FLKWidget {
        std::shared_ptr<FLKWidgetViewModel> model;
        std::string widgetClass;
        std::shared_ptr<FLKWidgetViewModel> viewModel() const override { return model; }
    };
    std::shared_ptr<FLKWidget> makeWidget(const std::string& widgetClass,
                                          const std::shared_ptr<FLKWidgetViewModel>& viewModel) override {
        auto widget = std::make_shared<Widget>();
        widget->model = viewModel;
        widget->widgetClass = widgetClass;
        return widget;
    }
    std::shared_ptr<FLKWidget> widgetForViewModel(const FLKWidgetViewModel& viewModel) const override {
        for (auto& widget : widgets) {
            if (widget->viewModel().get() == &viewModel) return widget;
        }
        return nullptr;
    }
    void addWidget(const std::shared_ptr<FLKWidget>& widget) override { widgets.push_back(widget); }
    void removeWidget(const std::shared_ptr<FLKWidget>& widget) override { std::erase(widgets, widget); }
    void setNeedsDisplay() override { ++redraws; }

    std::vector<std::shared_ptr<FLKWidget>> widgets;
    int redraws = 0;
};

class Host : public FLKWidgetHostViewController {
public:
    std::shared_ptr<FLKWidgetView> addWidgetView() override { return view; }
    std::shared_ptr<ListWidgetView> view = std::make_shared<ListWidgetView>();
};

class PlainViewModel : public FLKWidgetViewModel {
public:
    std::string widgetClass() const override { return "FLKPlainWidget"; }
};

class CountingAction : public FLKAction {
public:
    std::shared_ptr<FLKActionResult> execute() override { return FLKActionResult::resultWithAction(shared_from_this(), nullptr); }
    std::shared_ptr<FLKActionResult> undo() override { return execute(); }
};

TEST(FLKWidgetPresenterTest, OneWidgetPerViewModelRedrawnAfterUndoAndRedo) {
    auto host = std::make_shared<Host>();
    auto presenter = FLKWidgetPresenter::presenterWithViewController(host);
    ASSERT_EQ(presenter->widgetView(), host->view);

    auto viewModel = std::make_shared<PlainViewModel>();
    presenter->presentWidgetForViewModel(viewModel);
    presenter->presentWidgetForViewModel(viewModel);
    ASSERT_EQ(host->view->widgets.size(), 1u);
    EXPECT_EQ(static_cast<ListWidgetView::Widget&>(*host->view->widgets[0]).widgetClass, "FLKPlainWidget");
    viewModel->updateWidget();
    EXPECT_EQ(host->view->redraws, 1);

    FLKActionPipeline pipeline;
    pipeline.execute(std::make_shared<CountingAction>());
    pipeline.undo();
    pipeline.redo();
    EXPECT_EQ(host->view->redraws, 3);

    presenter->dismissWidgetForViewModel(viewModel);
    EXPECT_TRUE(host->view->widgets.empty());
    presenter.reset();
    pipeline.undo();  // a gone presenter is no longer told
    EXPECT_EQ(host->view->redraws, 3);
}

}  // namespace
