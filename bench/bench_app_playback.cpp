// The desktop program's main window playing a document, measured from the
// inside: launch to first frame on screen, frames presented per second while
// playing, processor use while playback is paused, and peak memory.
// Usage: bench_app_playback DOCUMENT [play-seconds=10] [idle-seconds=10] [warm-up-seconds=2]
#include <QApplication>
#include <QTimer>

#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKApplicationSetup.h"
#include "app/shell/FLKMainWindow.h"
#include "core/model/FLKCoreServices.h"
#include "core/model/FLKSceneLoader.h"
#include "core/timeline/FLKTimeline.h"

namespace {

double monotonicSeconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Seconds since this process was started by the kernel (exec included).
double secondsSinceProcessStart() {
    std::ifstream stat("/proc/self/stat");
    std::string field;
    // The command name is in parentheses and may hold spaces: skip past it.
    std::getline(stat, field, ')');
    for (int i = 3; i <= 22; ++i) stat >> field;
    const double started = std::stod(field) / static_cast<double>(sysconf(_SC_CLK_TCK));
    return monotonicSeconds(CLOCK_BOOTTIME) - started;
}

double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Busy and total processor seconds of the whole machine so far: the display
// server's work to show our frames counts too.
std::pair<double, double> machineProcessorSeconds() {
    std::ifstream stat("/proc/stat");
    std::string cpu;
    stat >> cpu;
    double busy = 0, total = 0, ticks = 0;
    for (int field = 0; field < 8 && stat >> ticks; ++field) {
        total += ticks;
        if (field != 3 && field != 4) busy += ticks;  // idle and iowait
    }
    const double hz = static_cast<double>(sysconf(_SC_CLK_TCK));
    return {busy / hz, total / hz};
}

double peakResidentMB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s DOCUMENT [play-seconds] [idle-seconds]\n", argv[0]);
        return 2;
    }
    const std::string document = argv[1];
    const int playSeconds = argc > 2 ? std::stoi(argv[2]) : 10;
    const int idleSeconds = argc > 3 ? std::stoi(argv[3]) : 10;
    const int warmUp = (argc > 4 ? std::stoi(argv[4]) : 2) * 1000;

    FLKApplicationSetup::prepareEnvironment();
    QApplication application(argc, argv);
    std::string reason;
    if (!FLKApplicationSetup::bindCore(&application, &reason)) {
        std::fprintf(stderr, "no OpenGL 4.5: %s\n", reason.c_str());
        return 1;
    }
    int status = 0;
    {
        FLKMainWindow window;
        window.resize(1280, 800);
        window.show();
        FLKError error;
        if (!FLKSceneLoader::defaultSceneLoader().loadSceneFromFileURL(document, &error)) {
            std::fprintf(stderr, "%s: %s\n", document.c_str(), error.fullMessage().c_str());
            return 1;
        }
        window.showScene();
        FLKTimeline::masterTimeline()->setLooping(true);

        FLKSceneView* view = window.sceneView();
        double firstFrame = -1;
        long presented = 0;
        QObject::connect(view, &FLKSceneView::framePresented, [&] {
            if (firstFrame < 0) firstFrame = secondsSinceProcessStart();
            ++presented;
        });

        // A warm-up (decoders started, thumbnails made), then the measured stretch.
        long presentedAtStart = 0;
        uint64_t drawnAtStart = 0;
        double playStart = 0;
        double playProcessorStart = 0;
        std::pair<double, double> machineStart;
        double playSecondsMeasured = 0;
        double idleStart = 0;
        QTimer::singleShot(warmUp, [&] {
            presentedAtStart = presented;
            drawnAtStart = view->framesDrawn();
            playStart = monotonicSeconds(CLOCK_MONOTONIC);
            playProcessorStart = processorSeconds();
            machineStart = machineProcessorSeconds();
        });
        QTimer::singleShot(warmUp + playSeconds * 1000, [&] {
            playSecondsMeasured = monotonicSeconds(CLOCK_MONOTONIC) - playStart;
            const double presentedRate = static_cast<double>(presented - presentedAtStart) / playSecondsMeasured;
            const double drawnRate = static_cast<double>(view->framesDrawn() - drawnAtStart) / playSecondsMeasured;
            std::printf("launch to first frame:   %.2f s\n", firstFrame);
            const double processorPerFrame = 1000.0 * (processorSeconds() - playProcessorStart) /
                                             static_cast<double>(view->framesDrawn() - drawnAtStart);
            // The window is presented again for other widgets too (the play head
            // moving on the timeline): the canvas's own frames are what counts.
            std::printf("canvas frames drawn:     %.1f per second while playing (window presented %.1f)\n",
                        drawnRate, presentedRate);
            std::printf("processor per frame:     %.1f ms per canvas frame (all threads: decoding, drawing, composing)\n",
                        processorPerFrame);
            const auto machine = machineProcessorSeconds();
            std::printf("whole machine busy:      %.0f %% of its %ld cores while playing (display server included)\n",
                        100.0 * (machine.first - machineStart.first) / (machine.second - machineStart.second),
                        sysconf(_SC_NPROCESSORS_ONLN));
            // What Playback, Pause does; the window stays as it is.
            FLKTimeline::masterTimeline()->pause();
        });
        // Five seconds for decoding that was reading ahead to finish, then the idle stretch.
        QTimer::singleShot(warmUp + 5000 + playSeconds * 1000, [&] { idleStart = processorSeconds(); });
        QTimer::singleShot(warmUp + 5000 + (playSeconds + idleSeconds) * 1000, [&] {
            const double used = processorSeconds() - idleStart;
            std::printf("processor while paused:  %.2f %% of one core\n", 100.0 * used / idleSeconds);
            std::printf("peak resident memory:    %.0f MB\n", peakResidentMB());
            application.quit();
        });
        status = application.exec();
    }
    flk::shutdownCoreServices();
    return status;
}
