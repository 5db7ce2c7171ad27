#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKUserFeedback.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKEditRedoMenuItemViewModel.h"
#include "editing/FLKEditUndoMenuItemViewModel.h"

namespace {

struct Document {
    int value = 0;
};

// Snapshots the document's value when made and when finalised, as the
// editing actions do.
class ValueAction : public FLKAction {
public:
    explicit ValueAction(std::shared_ptr<Document> document) : document_(std::move(document)), initial_(document_->value) {}
    void finalize() { final_ = document_->value; }

    std::shared_ptr<FLKActionResult> execute() override {
        if (final_ == initial_) return nullptr;
        document_->value = final_;
        return FLKActionResult::resultWithAction(shared_from_this(), document_);
    }
    std::shared_ptr<FLKActionResult> undo() override {
        document_->value = initial_;
        return FLKActionResult::resultWithAction(shared_from_this(), document_);
    }

private:
    std::shared_ptr<Document> document_;
    int initial_;
    int final_ = 0;
};

class CountingFeedback : public FLKUserFeedback {
public:
    void beep() override { ++beeps; }
    void presentError(const FLKError&) override {}
    int beeps = 0;
};

// Records pipeline notices in posting order as "name@object".
class NoticeRecorder {
public:
    NoticeRecorder() {
        auto& center = FLKNotificationCenter::defaultCenter();
        for (const char* name : {FLKActionPipelineDidUpdateNotification, FLKActionPipelineDidUndoNotification,
                                 FLKActionPipelineDidRedoNotification}) {
            observations_.emplace_back(center, center.addObserver(name, nullptr, [this](const FLKNotification& n) {
                                           notices.push_back({n.name, n.object});
                                       }));
        }
    }
    struct Notice {
        std::string name;
        const void* object;
    };
    std::vector<Notice> notices;

private:
    std::vector<FLKObservation> observations_;
};

class ActionPipelineTest : public ::testing::Test {
protected:
    void SetUp() override {
        feedback = std::make_shared<CountingFeedback>();
        FLKUserFeedback::setShared(feedback);
        FLKActionPipeline::sharedPipeline().clear();
    }
    void TearDown() override { FLKUserFeedback::setShared(nullptr); }

    // A drag from the current value to `to`, committed through the pipeline.
    std::shared_ptr<ValueAction> edit(FLKActionPipeline& pipeline, int to) {
        auto action = std::make_shared<ValueAction>(document);
        document->value = to;
        action->finalize();
        pipeline.execute(action);
        return action;
    }

    std::shared_ptr<Document> document = std::make_shared<Document>();
    std::shared_ptr<CountingFeedback> feedback;
};

TEST_F(ActionPipelineTest, UnchangedEditIsNotRecordedAndPostsNothing) {
    FLKActionPipeline pipeline;
    NoticeRecorder recorder;
    auto action = std::make_shared<ValueAction>(document);
    action->finalize();
    EXPECT_EQ(pipeline.execute(action), nullptr);
    EXPECT_EQ(pipeline.execute(nullptr), nullptr);
    EXPECT_FALSE(pipeline.canUndo());
    EXPECT_FALSE(pipeline.canRedo());
    EXPECT_TRUE(recorder.notices.empty());
}

TEST_F(ActionPipelineTest, NewEditAfterUndoDropsRedoHistory) {
    FLKActionPipeline pipeline;
    edit(pipeline, 1);
    edit(pipeline, 2);
    pipeline.undo();
    EXPECT_EQ(document->value, 1);
    ASSERT_TRUE(pipeline.canRedo());

    auto third = edit(pipeline, 5);
    EXPECT_FALSE(pipeline.canRedo());
    ASSERT_EQ(pipeline.undoQueue().size(), 2u);
    EXPECT_EQ(pipeline.undoQueue().back(), third);
    EXPECT_EQ(pipeline.redo(), nullptr);
    EXPECT_EQ(document->value, 5);
}

TEST_F(ActionPipelineTest, UndoTwiceRedoTwiceRestoresSecondStateWithNoticesInOrder) {
    FLKActionPipeline pipeline;
    auto first = edit(pipeline, 10);
    auto second = edit(pipeline, 20);
    NoticeRecorder recorder;

    auto undone = pipeline.undo();
    ASSERT_NE(undone, nullptr);
    EXPECT_EQ(undone->action(), second);
    EXPECT_EQ(undone->object(), document);
    EXPECT_EQ(document->value, 10);
    pipeline.undo();
    EXPECT_EQ(document->value, 0);
    EXPECT_FALSE(pipeline.canUndo());

    pipeline.redo();
    EXPECT_EQ(document->value, 10);
    auto redone = pipeline.redo();
    ASSERT_NE(redone, nullptr);
    EXPECT_EQ(redone->action(), second);
    EXPECT_EQ(document->value, 20);
    EXPECT_FALSE(pipeline.canRedo());
    EXPECT_EQ(pipeline.undoQueue(), (std::vector<std::shared_ptr<FLKAction>>{first, second}));

    const void* p = &pipeline;
    std::vector<std::pair<std::string, const void*>> expected = {
        {FLKActionPipelineDidUndoNotification, second.get()}, {FLKActionPipelineDidUpdateNotification, p},
        {FLKActionPipelineDidUndoNotification, first.get()},  {FLKActionPipelineDidUpdateNotification, p},
        {FLKActionPipelineDidRedoNotification, first.get()},  {FLKActionPipelineDidUpdateNotification, p},
        {FLKActionPipelineDidRedoNotification, second.get()}, {FLKActionPipelineDidUpdateNotification, p},
    };
    ASSERT_EQ(recorder.notices.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(recorder.notices[i].name, expected[i].first) << i;
        EXPECT_EQ(recorder.notices[i].object, expected[i].second) << i;
    }
}

TEST_F(ActionPipelineTest, EmptyStacksBeepAndPostNothing) {
    FLKActionPipeline pipeline;
    NoticeRecorder recorder;
    EXPECT_EQ(pipeline.undo(), nullptr);
    EXPECT_EQ(pipeline.redo(), nullptr);
    EXPECT_EQ(feedback->beeps, 2);
    EXPECT_TRUE(recorder.notices.empty());

    edit(pipeline, 3);
    pipeline.undo();
    EXPECT_EQ(feedback->beeps, 2);
}

TEST_F(ActionPipelineTest, RedoMovesAnActionThatReportsNoChange) {
    FLKActionPipeline pipeline;
    auto action = edit(pipeline, 4);
    pipeline.undo();
    action->finalize();  // now equal to its initial state: execute answers nothing
    EXPECT_EQ(pipeline.redo(), nullptr);
    EXPECT_TRUE(pipeline.canUndo());
    EXPECT_FALSE(pipeline.canRedo());
    EXPECT_EQ(feedback->beeps, 0);
}

TEST_F(ActionPipelineTest, ClearEmptiesBothStacksAndAlwaysPosts) {
    FLKActionPipeline pipeline;
    edit(pipeline, 1);
    edit(pipeline, 2);
    pipeline.undo();
    NoticeRecorder recorder;
    pipeline.clear();
    EXPECT_FALSE(pipeline.canUndo());
    EXPECT_FALSE(pipeline.canRedo());
    pipeline.clear();
    ASSERT_EQ(recorder.notices.size(), 2u);
    EXPECT_EQ(recorder.notices[1].name, FLKActionPipelineDidUpdateNotification);
    EXPECT_EQ(recorder.notices[1].object, &pipeline);
}

TEST_F(ActionPipelineTest, MenuItemsFollowTheSharedPipeline) {
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    FLKEditUndoMenuItemViewModel undoItem;
    FLKEditRedoMenuItemViewModel redoItem;
    EXPECT_EQ(undoItem.title(), "Undo");
    EXPECT_EQ(redoItem.title(), "Redo");
    EXPECT_FALSE(undoItem.isEnabled());
    EXPECT_FALSE(redoItem.isEnabled());

    std::vector<std::string> undoChanges;
    undoItem.addPropertyObserver([&](const std::string& name) { undoChanges.push_back(name); });

    edit(pipeline, 7);
    EXPECT_TRUE(undoItem.isEnabled());
    EXPECT_FALSE(redoItem.isEnabled());
    EXPECT_EQ(undoChanges, std::vector<std::string>{"isEnabled"});

    pipeline.undo();
    EXPECT_FALSE(undoItem.isEnabled());
    EXPECT_TRUE(redoItem.isEnabled());

    edit(pipeline, 8);
    EXPECT_TRUE(undoItem.isEnabled());
    EXPECT_FALSE(redoItem.isEnabled());
    pipeline.undo();
    ASSERT_TRUE(redoItem.isEnabled());

    pipeline.clear();
    EXPECT_FALSE(undoItem.isEnabled());
    EXPECT_FALSE(redoItem.isEnabled());
    EXPECT_EQ(undoItem.title(), "Undo");
}

TEST_F(ActionPipelineTest, MenuItemRunsItsBlockAndStopsObservingWhenGone) {
    int runs = 0;
    {
        FLKEditUndoMenuItemViewModel item;
        item.execute();
        item.setExecutionBlock([&] { ++runs; });
        item.execute();
    }
    EXPECT_EQ(runs, 1);
    // A destroyed item must not be called back.
    edit(FLKActionPipeline::sharedPipeline(), 9);
    FLKActionPipeline::sharedPipeline().clear();
}

}  // namespace
