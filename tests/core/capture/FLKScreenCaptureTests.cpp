// One of this computer's monitors, on a virtual X display: what the display
// shows while recording is what the recording shows, in the same order.
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include <atomic>
#include <cstdlib>

#include "FLKCaptureTestSupport.h"
#include "core/capture/FLKMainWindowLocating.h"
#include "core/capture/FLKScreenDevice.h"
#include "core/capture/FLKScreenDeviceProvider.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/platform/FLKTemporaryStore.h"

namespace {

constexpr double kGiveUp = 60;  // a safety net; the test waits on pictures, never on time

struct Colour {
    uint8_t r, g, b;
};
// The first has no blue, which a phone's first picture may not have: a monitor's may.
constexpr Colour kOrange{220, 110, 0};
constexpr Colour kTeal{40, 180, 160};
constexpr Colour kPurple{150, 50, 210};

bool near(const std::array<uint8_t, 3>& bgr, Colour c) {
    auto close = [](int a, int b) { return std::abs(a - b) <= 12; };
    return close(bgr[0], c.b) && close(bgr[1], c.g) && close(bgr[2], c.r);
}

int classify(const std::array<uint8_t, 3>& bgr) {
    if (near(bgr, kOrange)) return 0;
    if (near(bgr, kTeal)) return 1;
    if (near(bgr, kPurple)) return 2;
    return -1;
}

class XDisplayPainter {
public:
    XDisplayPainter() : display_(XOpenDisplay(nullptr)) {}
    ~XDisplayPainter() {
        if (display_) XCloseDisplay(display_);
    }
    bool isOpen() const { return display_ != nullptr; }
    void fill(Colour c) {
        Window root = DefaultRootWindow(display_);
        XSetWindowBackground(display_, root, (static_cast<unsigned long>(c.r) << 16) | (c.g << 8) | c.b);
        XClearWindow(display_, root);
        XSync(display_, False);
    }

private:
    Display* display_;
};

struct WindowAt : FLKMainWindowLocating {
    std::optional<FLKRect> frame;
    std::optional<FLKRect> mainWindowFrame() const override { return frame; }
};

}  // namespace

TEST(FLKScreenCapture, ListsTheMonitorAndKnowsWhereTheAppIs) {
    FLKScreenDeviceProvider provider;
    auto devices = provider.devices();
    ASSERT_EQ(devices.size(), 1u);
    auto* screen = dynamic_cast<FLKScreenDevice*>(devices[0].get());
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(screen->kind(), "display");
    EXPECT_TRUE(screen->name());
    EXPECT_EQ(screen->monitor().width, 640);
    EXPECT_EQ(screen->monitor().height, 480);
    const auto again = provider.devices();
    ASSERT_EQ(again.size(), 1u);
    EXPECT_EQ(devices[0]->uniqueIdentifier(), again[0]->uniqueIdentifier());  // stable
    EXPECT_FALSE(screen->isShowingApp());  // nothing installed: headless
    auto locator = std::make_shared<WindowAt>();
    FLKScreenDevice::setMainWindowLocator(locator);
    locator->frame = FLKRect(100, 100, 200, 200);
    EXPECT_TRUE(screen->isShowingApp());
    locator->frame = FLKRect(2000, 100, 200, 200);
    EXPECT_FALSE(screen->isShowingApp());
    FLKScreenDevice::setMainWindowLocator(nullptr);
    EXPECT_NEAR(screen->minFrameDuration(), 1.0 / 30, 1e-9);
}

// A monitor declared on part of the screen (xrandr --setmonitor) and then
// deleted: each is a change the watching provider hears, and the list shows it.
TEST(FLKScreenCapture, AMonitorDeclaredOnPartOfTheScreenIsListedByItsName) {
    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(display, nullptr);
    FLKScreenDeviceProvider provider;
    auto queue = std::make_shared<FLKRunLoopMainQueue>();
    std::atomic<int> changes = 0;
    provider.startWatching([&] {
        ++changes;
        queue->post([] {});
    });
    // The watcher's connection must have selected its events before the change.
    ASSERT_TRUE(queue->runUntil(
        [&] {
            if (provider.isWatchingEvents()) return true;
            queue->post([] {});  // nothing posts when it gets there: keep looking
            return false;
        },
        kGiveUp));
    auto listed = [&] {
        std::vector<std::string> ids;
        for (const auto& device : provider.devices()) ids.push_back(device->uniqueIdentifier());
        return ids;
    };
    auto before = listed();
    ASSERT_EQ(before.size(), 1u);

    XRRMonitorInfo* monitor = XRRAllocateMonitor(display, 0);
    monitor->name = XInternAtom(display, "LEFTHALF", False);
    monitor->x = 0;
    monitor->y = 0;
    monitor->width = 320;
    monitor->height = 480;
    monitor->mwidth = 100;
    monitor->mheight = 150;
    XRRSetMonitor(display, DefaultRootWindow(display), monitor);
    XSync(display, False);
    ASSERT_TRUE(queue->runUntil([&] { return changes >= 1; }, kGiveUp));
    auto devices = provider.devices();
    ASSERT_EQ(devices.size(), 2u);
    auto half = std::find_if(devices.begin(), devices.end(),
                             [](const auto& d) { return d->uniqueIdentifier() == "display:LEFTHALF"; });
    ASSERT_NE(half, devices.end());
    EXPECT_EQ((*half)->name(), "LEFTHALF");  // no EDID and no output: RandR's name for it
    EXPECT_EQ(dynamic_cast<FLKScreenDevice&>(**half).monitor().width, 320);

    const int afterSetting = changes;
    XRRDeleteMonitor(display, DefaultRootWindow(display), monitor->name);
    XSync(display, False);
    ASSERT_TRUE(queue->runUntil([&] { return changes > afterSetting; }, kGiveUp));
    EXPECT_EQ(listed(), before);
    provider.stopWatching();
    XRRFreeMonitors(monitor);
    XCloseDisplay(display);
}

TEST(FLKScreenCapture, TheRecordingShowsTheDisplaysColoursInOrder) {
    XDisplayPainter painter;
    ASSERT_TRUE(painter.isOpen());
    painter.fill(kOrange);
    auto queue = std::make_shared<FLKRunLoopMainQueue>();
    auto device = FLKScreenDeviceProvider().devices().at(0);
    auto delegate = std::make_shared<flk::test::RecordingDelegate>();
    auto store = FLKTemporaryStore::storeWithDirectory("Kept", "mp4");
    auto recorder = FLKDeviceScreenRecorder::make(device, delegate, store, queue);
    auto probe = std::make_shared<flk::test::PixelProbe>();
    recorder->setOutput(probe);
    recorder->preview();
    auto showing = [&](Colour c, size_t count) {
        return queue->runUntil(
            [&] {
                size_t seen = 0;
                for (auto it = probe->colours.rbegin(); it != probe->colours.rend() && near(*it, c); ++it) {
                    ++seen;
                }
                return seen >= count;
            },
            kGiveUp);
    };
    ASSERT_TRUE(showing(kOrange, 1)) << probe->colours.size() << " pictures, none orange";
    recorder->record();
    ASSERT_TRUE(queue->runUntil([&] { return recorder->framesRecorded() >= 5; }, kGiveUp));
    painter.fill(kTeal);
    ASSERT_TRUE(showing(kTeal, 10));
    painter.fill(kPurple);
    ASSERT_TRUE(showing(kPurple, 10));
    auto result = flk::test::finishRecording(*recorder, *queue);
    ASSERT_TRUE(result);

    auto frames = flk::test::decodeAll(*result);
    ASSERT_GE(frames.size(), 25u);
    EXPECT_EQ(frames[0].pixels->width, 640);
    int last = 0;
    std::array<int, 3> counts{};
    for (size_t i = 0; i < frames.size(); ++i) {
        const auto& p = *frames[i].pixels;
        size_t offset = static_cast<size_t>(p.height / 4) * p.stride + static_cast<size_t>(p.width / 4) * 4;
        int colour = classify({p.bgra[offset], p.bgra[offset + 1], p.bgra[offset + 2]});
        ASSERT_GE(colour, 0) << "picture " << i << " shows none of the colours";
        ASSERT_GE(colour, last) << "picture " << i << " goes back to an earlier colour";
        last = colour;
        ++counts[static_cast<size_t>(colour)];
        if (i > 0) {
            EXPECT_GT(frames[i].time, frames[i - 1].time);
        }
    }
    EXPECT_GE(counts[0], 1);
    EXPECT_GE(counts[1], 10);
    EXPECT_GE(counts[2], 10);
}
