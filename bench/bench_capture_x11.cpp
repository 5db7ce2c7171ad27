// Records the first monitor of $DISPLAY while previewing it into a live
// sprite, changing the display's colour twice a second, and prints: pictures
// captured and recorded, pictures missing against the monitor's 30 a second,
// processor time a picture, and the time from a change on the display to the
// picture that shows it reaching the sprite.
#include <X11/Xlib.h>
#include <sys/resource.h>

#include <algorithm>
#include <string>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/capture/FLKDeviceScreenRecorderDelegate.h"
#include "core/capture/FLKScreenDevice.h"
#include "core/capture/FLKScreenDeviceProvider.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/platform/FLKTemporaryStore.h"
#include "core/platform/FLKTimer.h"
#include "core/scene/FLKRealtimeVideoSprite.h"

namespace {

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Hands each frame to the scene's live sprite and notes when the awaited colour arrives.
class TimedSprite : public FLKDeviceScreenOutput {
public:
    void recorderDidOutputSampleBuffer(FLKDeviceScreenRecorder& recorder, const FLKSampleBuffer& buffer) override {
        sprite->recorderDidOutputSampleBuffer(recorder, buffer);
        ++frames;
        if (changedAt < 0) return;
        const auto& p = *buffer.imageBuffer;
        size_t offset = static_cast<size_t>(p.height / 4) * p.stride + static_cast<size_t>(p.width / 4) * 4;
        if (p.bgra[offset + 2] == awaitedRed) {
            latencies.push_back(queue->now() - changedAt);
            changedAt = -1;
        }
    }
    std::shared_ptr<FLKRealtimeVideoSprite> sprite = FLKRealtimeVideoSprite::realtimeVideoSprite();
    std::shared_ptr<FLKRunLoopMainQueue> queue;
    uint64_t frames = 0;
    double changedAt = -1;
    uint8_t awaitedRed = 0;
    std::vector<double> latencies;
};

}  // namespace

int main(int argc, char** argv) {
    double seconds = argc > 1 ? std::atof(argv[1]) : 60;
    // "preview" leaves the recording out, to tell the encoder's share from the capture's.
    bool recording = !(argc > 2 && std::string(argv[2]) == "preview");
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "bench_capture_x11: no X display\n");
        return 1;
    }
    auto queue = std::make_shared<FLKRunLoopMainQueue>();
    FLKMainQueue::setMain(queue);
    auto devices = FLKScreenDeviceProvider().devices();
    if (devices.empty()) return 1;
    auto device = devices.front();
    auto delegate = std::make_shared<FLKDeviceScreenRecorderDelegate>();
    auto recorder = FLKDeviceScreenRecorder::make(device, delegate, FLKTemporaryStore::storeWithDirectory("Bench", "mp4"),
                                                  queue);
    auto output = std::make_shared<TimedSprite>();
    output->queue = queue;
    recorder->setOutput(output);
    auto paint = [&](uint8_t red) {
        Window root = DefaultRootWindow(display);
        XSetWindowBackground(display, root, (static_cast<unsigned long>(red) << 16) | (90 << 8) | 60);
        XClearWindow(display, root);
        XSync(display, False);
    };
    paint(200);
    recorder->preview();
    queue->runUntil([&] { return output->frames > 0; }, 30);
    if (recording) {
        recorder->record();
        queue->runUntil([&] { return recorder->framesRecorded() > 0; }, 30);
    }
    uint64_t framesAtStart = output->frames;
    double start = queue->now();
    double cpuStart = cpuSeconds();
    bool bright = true;
    auto changes = FLKTimer::scheduledTimer(
        0.5, true,
        [&](FLKTimer&) {
            if (output->changedAt >= 0) return;  // the last change is still on its way
            bright = !bright;
            output->awaitedRed = bright ? 200 : 100;
            paint(output->awaitedRed);
            output->changedAt = queue->now();
        },
        queue);
    queue->runUntilDate(start + seconds);
    changes->invalidate();
    double elapsed = queue->now() - start;
    double cpu = cpuSeconds() - cpuStart;
    uint64_t captured = output->frames - framesAtStart;
    uint64_t recorded = recorder->framesRecorded();
    uint64_t dropped = recorder->picturesDropped();
    bool finished = false;
    std::optional<std::filesystem::path> file;
    recorder->finish([&](std::optional<std::filesystem::path> url) {
        file = url;
        finished = true;
    });
    queue->runUntil([&] { return finished; }, 60);

    const double expected = elapsed * FLKScreenDevice::kFrameRate;
    auto& l = output->latencies;
    std::sort(l.begin(), l.end());
    auto at = [&](double q) { return l.empty() ? 0.0 : l[std::min(l.size() - 1, static_cast<size_t>(q * l.size()))]; };
    std::printf("monitor            %dx%d at %.0f fps for %.1f s\n", dynamic_cast<FLKScreenDevice&>(*device).monitor().width,
                dynamic_cast<FLKScreenDevice&>(*device).monitor().height, FLKScreenDevice::kFrameRate, elapsed);
    std::printf("pictures captured  %llu of %.0f (%.2f %% missing)\n", static_cast<unsigned long long>(captured),
                expected, 100.0 * std::max(0.0, expected - static_cast<double>(captured)) / expected);
    std::printf("pictures recorded  %llu%s; %llu dropped on the way (main thread or encoder behind)\n",
                static_cast<unsigned long long>(recorded), file ? "" : " (no file)",
                static_cast<unsigned long long>(dropped));
    std::printf("processor a picture %.1f ms (%.0f %% of one core)\n", 1000.0 * cpu / std::max<uint64_t>(captured, 1),
                100.0 * cpu / elapsed);
    std::printf("display to sprite  median %.1f ms, 90th %.1f ms, worst %.1f ms over %zu changes (frame period %.1f ms)\n",
                1000 * at(0.5), 1000 * at(0.9), 1000 * (l.empty() ? 0 : l.back()), l.size(),
                1000.0 / FLKScreenDevice::kFrameRate);
    std::fflush(stdout);
    if (file) std::filesystem::remove(*file);
    // The stopped timer's last firing is still queued and holds the queue: let it pass.
    queue->runUntilDate(queue->now() + 0.6);
    XCloseDisplay(display);
    FLKMainQueue::setMain(nullptr);
    return 0;
}
