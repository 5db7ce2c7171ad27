#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "editing/FLKSceneViewActionsNotifier.h"

namespace {

// Logs what reaches it into a log shared by all observers of a test.
class RecordingObserver : public FLKCanvasEventObserver {
public:
    RecordingObserver(std::string name, std::vector<std::string>& log, bool swallows = false,
                      bool acceptsDrop = false)
        : name_(std::move(name)), log_(log), swallows_(swallows), acceptsDrop_(acceptsDrop) {}

    bool swallowsEvent(const FLKEvent&, FLKCanvasView*) override {
        log_.push_back(name_ + "?");
        return swallows_;
    }
    void canvasViewDidReceiveMouseDownEvent(FLKCanvasView*, const FLKEvent&) override { log_.push_back(name_); }
    void canvasViewDidReceiveScrollWheelEvent(FLKCanvasView*, const FLKEvent&) override { log_.push_back(name_); }
    void canvasViewDidReceiveCancelOperation(FLKCanvasView*) override { log_.push_back(name_ + " cancel"); }
    bool canvasViewShouldBeginDragAndDropForFileAtPath(FLKCanvasView*, const std::filesystem::path&) override {
        log_.push_back(name_ + " drop?");
        return acceptsDrop_;
    }

private:
    std::string name_;
    std::vector<std::string>& log_;
    bool swallows_;
    bool acceptsDrop_;
};

TEST(FLKSceneViewActionsNotifierTest, NewestFirstAndSwallowingHidesFromOlder) {
    std::vector<std::string> log;
    FLKSceneViewActionsNotifier notifier;
    auto oldest = std::make_shared<RecordingObserver>("oldest", log);
    auto middle = std::make_shared<RecordingObserver>("middle", log, /*swallows=*/true, /*acceptsDrop=*/true);
    auto newest = std::make_shared<RecordingObserver>("newest", log);
    notifier.addObserver(oldest);
    notifier.addObserver(middle);
    notifier.addObserver(newest);
    notifier.addObserver(oldest);  // already there: keeps its place

    notifier.canvasViewDidReceiveEvent(nullptr, FLKEvent::mouseEvent(FLKEventType::mouseDown, {1, 2}));
    EXPECT_EQ(log, (std::vector<std::string>{"newest?", "newest", "middle?", "middle"}));

    // Escape reaches everybody; a drop is accepted by the first that wants it.
    log.clear();
    notifier.canvasViewDidReceiveCancelOperation(nullptr);
    EXPECT_TRUE(notifier.canvasViewShouldBeginDragAndDropForFileAtPath(nullptr, "/tmp/a.png"));
    EXPECT_EQ(log, (std::vector<std::string>{"newest cancel", "middle cancel", "oldest cancel", "newest drop?",
                                             "middle drop?"}));

    // Gone observers drop out; removing the swallower lets the event through.
    newest.reset();
    notifier.removeObserver(middle);
    EXPECT_EQ(notifier.reverseObservers().size(), 1u);
    log.clear();
    FLKEvent scroll;
    scroll.type = FLKEventType::scrollWheel;
    notifier.canvasViewDidReceiveEvent(nullptr, scroll);
    EXPECT_EQ(log, (std::vector<std::string>{"oldest?", "oldest"}));
    EXPECT_FALSE(notifier.canvasViewShouldBeginDragAndDropForFileAtPath(nullptr, "/tmp/a.png"));
}

}  // namespace
