// The finder's rules in virtual time: one notification a burst, observers
// held weakly, phones before monitors.
#include <gtest/gtest.h>

#include <functional>

#include "core/capture/FLKDeviceFinder.h"
#include "core/capture/FLKHandFedDeviceProvider.h"
#include "core/platform/FLKManualMainQueue.h"

namespace {

class Recorder : public FLKDeviceFinderObserver {
public:
    void deviceFinderDidUpdateWithDevices(FLKDeviceFinder&, const std::vector<std::shared_ptr<FLKDevice>>& devices) override {
        std::vector<std::string> ids;
        for (const auto& d : devices) ids.push_back(d->uniqueIdentifier());
        lists.push_back(ids);
        times.push_back(queue ? queue->now() : 0);
    }
    std::shared_ptr<FLKManualMainQueue> queue;
    std::vector<std::vector<std::string>> lists;
    std::vector<double> times;
};

struct FinderTest : ::testing::Test {
    std::shared_ptr<FLKManualMainQueue> queue = std::make_shared<FLKManualMainQueue>();
    std::shared_ptr<flk::test::HandFedDeviceProvider> phones = std::make_shared<flk::test::HandFedDeviceProvider>(false);
    std::shared_ptr<flk::test::HandFedDeviceProvider> cards = std::make_shared<flk::test::HandFedDeviceProvider>(false);
    std::shared_ptr<flk::test::HandFedDeviceProvider> monitors = std::make_shared<flk::test::HandFedDeviceProvider>(true);
    FLKDeviceFinder finder{{phones, cards}, {monitors}, queue};

    // A timer still pending holds its queue; running it out lets both go.
    void TearDown() override { queue->advanceBy(10); }

    std::shared_ptr<Recorder> observer() {
        auto r = std::make_shared<Recorder>();
        r->queue = queue;
        return r;
    }
};

}  // namespace

TEST_F(FinderTest, ListsPhonesAndCardsFirstThenMonitors) {
    monitors->add("left");
    monitors->add("right");
    phones->add("R58");
    cards->add("v4l2:usb-1");
    auto devices = finder.currentDevices();
    ASSERT_EQ(devices.size(), 4u);
    EXPECT_EQ(devices[0]->uniqueIdentifier(), "R58");
    EXPECT_EQ(devices[1]->uniqueIdentifier(), "v4l2:usb-1");
    EXPECT_EQ(devices[2]->uniqueIdentifier(), "display:left");
    EXPECT_EQ(devices[3]->uniqueIdentifier(), "display:right");
    // Each call makes new wrappers, equal to the old ones.
    auto again = finder.currentDevices();
    EXPECT_NE(devices[0].get(), again[0].get());
    EXPECT_TRUE(*devices[0] == *again[0]);
    EXPECT_TRUE(finder.isDeviceAvailable(*devices[2]));
    monitors->remove("left");
    EXPECT_FALSE(finder.isDeviceAvailable(*devices[2]));
}

TEST_F(FinderTest, AConnectAndUnplugWithinASecondMakeOneCallbackAfterTheLast) {
    auto seen = observer();
    finder.findDevices();
    finder.addObserver(seen);
    ASSERT_EQ(seen->lists.size(), 1u);  // at once on adding
    queue->advanceBy(1.0);              // the start's own deferred check
    seen->lists.clear();
    seen->times.clear();
    double start = queue->now();

    phones->add("R58");
    queue->advanceBy(0.6);
    phones->remove("R58");  // a burst: the timer starts again
    queue->advanceBy(0.999);
    EXPECT_TRUE(seen->lists.empty());
    queue->advanceBy(0.002);
    ASSERT_EQ(seen->lists.size(), 1u);
    EXPECT_DOUBLE_EQ(seen->times[0], start + 0.6 + 1.0);
    EXPECT_TRUE(seen->lists[0].empty());
    EXPECT_FALSE(finder.hasPendingNotification());
    queue->advanceBy(5);
    EXPECT_EQ(seen->lists.size(), 1u);
}

TEST_F(FinderTest, MonitorChangesCoalesceWithPhoneEvents) {
    auto seen = observer();
    finder.installConnectionHandlers();
    finder.addObserver(seen);
    seen->lists.clear();
    monitors->add("hdmi");
    queue->advanceBy(0.5);
    phones->add("R58");
    queue->advanceBy(0.5);
    cards->add("v4l2:usb-2");
    queue->advanceBy(3);
    ASSERT_EQ(seen->lists.size(), 1u);
    EXPECT_EQ(seen->lists[0], (std::vector<std::string>{"R58", "v4l2:usb-2", "display:hdmi"}));
}

TEST_F(FinderTest, AddingTwiceKeepsOneEntryAndEachAddNotifiesEveryone) {
    auto first = observer();
    auto second = observer();
    finder.addObserver(first);
    finder.addObserver(second);
    finder.addObserver(first);
    EXPECT_EQ(first->lists.size(), 3u);   // its own two adds and the second's
    EXPECT_EQ(second->lists.size(), 2u);
    finder.checkAndNotifyAllDevices();
    EXPECT_EQ(first->lists.size(), 4u);  // one entry, so one call
    finder.removeObserver(first);
    finder.checkAndNotifyAllDevices();
    EXPECT_EQ(first->lists.size(), 4u);
    EXPECT_EQ(second->lists.size(), 4u);
}

TEST_F(FinderTest, ObserversAreHeldWeakly) {
    auto kept = observer();
    std::weak_ptr<Recorder> dropped;
    {
        auto temporary = observer();
        dropped = temporary;
        finder.addObserver(temporary);
    }
    EXPECT_TRUE(dropped.expired());  // the finder did not keep it alive
    finder.addObserver(kept);
    EXPECT_EQ(kept->lists.size(), 1u);
}

TEST_F(FinderTest, InstallingTwiceWatchesOnceAndAFinderGoneIgnoresLateEvents) {
    finder.findDevices();
    finder.findDevices();
    EXPECT_EQ(phones->watchCalls, 2);  // asked twice; a provider keeps one watcher
    auto queue2 = std::make_shared<FLKManualMainQueue>();
    auto provider = std::make_shared<flk::test::HandFedDeviceProvider>(false);
    auto seen = std::make_shared<Recorder>();
    {
        FLKDeviceFinder shortLived({provider}, {}, queue2);
        shortLived.installConnectionHandlers();
        shortLived.addObserver(seen);
        provider->startWatching([queue2] { queue2->post([] {}); });
    }
    provider->add("late");
    queue2->advanceBy(2);  // the dead finder's timer fires into nothing
    EXPECT_EQ(seen->lists.size(), 1u);
}
