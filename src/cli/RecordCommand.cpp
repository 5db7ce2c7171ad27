#include "cli/RecordCommand.h"

#include <unistd.h>

#include <cstdio>

#include "cli/CaptureSupport.h"
#include "cli/CommandSupport.h"
#include "core/capture/FLKCaptureError.h"
#include "core/capture/FLKDevice.h"
#include "core/capture/FLKDeviceFinder.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/capture/FLKDeviceScreenRecorderDelegate.h"
#include "core/platform/FLKLocalStore.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/platform/FLKTimer.h"

namespace {

class FailureWatch : public FLKDeviceScreenRecorderDelegate {
public:
    void recorderDidFailWithError(FLKDeviceScreenRecorder&, const FLKError& error) override { failure = error; }
    std::optional<FLKError> failure;
};

std::shared_ptr<FLKDevice> findDevice(const std::vector<std::shared_ptr<FLKDevice>>& devices, const std::string& wanted) {
    for (const auto& device : devices) {
        if (device->uniqueIdentifier() == wanted) return device;
    }
    std::shared_ptr<FLKDevice> byName;
    for (const auto& device : devices) {
        if (device->name() && *device->name() == wanted) {
            if (byName) return nullptr;  // two of that name: only the identifier tells them apart
            byName = device;
        }
    }
    return byName;
}

}  // namespace

void RecordCommand::add(CLI::App& app, int& exitCode) {
    auto command = std::make_shared<RecordCommand>();
    CLI::App* sub = app.add_subcommand("record", "Record a phone, capture card or monitor to an MP4 file");
    sub->add_option("device", command->device_, "The device's identifier or name, as `devices` lists them")->required();
    sub->add_option("--out,-o", command->out_, "The MP4 file to write (it must not exist)")->required();
    sub->add_option("--duration", command->duration_, "Seconds to record; without it, until Ctrl+C")
        ->check(CLI::PositiveNumber);
    sub->callback([command, &exitCode] { exitCode = command->run(); });
}

int RecordCommand::run() const {
    std::filesystem::path out = out_;
    if (!flk::hasExtension(out, "mp4")) return flk::cli::fail("\"" + out_ + "\": the recording is written as MP4; name it .mp4.");
    if (flk::exists(out)) return flk::cli::fail("\"" + out_ + "\" already exists; choose another name.");
    if (flk::exists(out.string() + ".part")) {
        return flk::cli::fail("\"" + out_ + ".part\" is another recording in progress or left from one.");
    }
    auto folder = out.has_parent_path() ? out.parent_path() : std::filesystem::path(".");
    if (!std::filesystem::is_directory(folder)) return flk::cli::fail("\"" + out_ + "\": the folder does not exist.");

    bool interrupted = false;
    auto queue = flk::cli::captureRunLoop([&interrupted] { interrupted = true; });
    auto finder = FLKDeviceFinder::makeWithSystemSources(queue);
    auto devices = finder->currentDevices();
    auto device = findDevice(devices, device_);
    if (!device) {
        std::string message = "No device \"" + device_ + "\".";
        if (devices.empty()) {
            message += " Nothing can be recorded now.";
        } else {
            message += " Devices:";
            for (const auto& d : devices) message += "\n  " + flk::cli::deviceLine(*d);
        }
        for (const auto& note : flk::cli::missingSourceNotes()) message += "\n" + note;
        return flk::cli::fail(message);
    }
    if (device->state() == FLKDevice::State::unauthorized) {
        return flk::cli::fail("\"" + device_ + "\" has not allowed this computer: unlock the phone and accept the "
                              "USB debugging prompt.");
    }
    if (!device->isChoosable()) return flk::cli::fail("\"" + device_ + "\" is offline: reconnect it and try again.");

    auto watch = std::make_shared<FailureWatch>();
    auto recorder = FLKDeviceScreenRecorder::make(device, watch, FLKDeviceScreenRecorder::recentlyRecordedStore(),
                                                  queue, std::filesystem::absolute(out));
    recorder->preview();
    recorder->record();
    if (!recorder->isRecording()) {
        queue->runUntil([&] { return watch->failure.has_value(); }, 0.5);
        std::string reason = watch->failure ? watch->failure->fullMessage() : "the device could not be opened.";
        return flk::cli::fail("Cannot record \"" + device_ + "\": " + reason);
    }
    std::string label = device->name() ? *device->name() : device->uniqueIdentifier();
    const bool terminal = isatty(STDERR_FILENO);
    auto progress = FLKTimer::scheduledTimer(
        0.5, true,
        [&](FLKTimer&) {
            double start = recorder->recordingSessionStartTime();
            double seconds = start < 0 ? 0 : queue->now() - start;
            std::fprintf(stderr, "\rRecording %s: %.1f s, %llu pictures ", label.c_str(), seconds,
                         static_cast<unsigned long long>(recorder->framesRecorded()));
        },
        queue);
    if (!terminal) progress->invalidate();
    // The duration counts from the first recorded picture.
    queue->runUntil([&] {
        if (interrupted || watch->failure) return true;
        double start = recorder->recordingSessionStartTime();
        return duration_ > 0 && start >= 0 && queue->now() - start >= duration_;
    });
    progress->invalidate();
    if (terminal) std::fprintf(stderr, "\n");
    std::optional<std::filesystem::path> written;
    bool finished = false;
    uint64_t pictures = recorder->framesRecorded();
    recorder->finish([&](std::optional<std::filesystem::path> url) {
        written = url;
        finished = true;
    });
    queue->runUntil([&] { return finished; });
    if (watch->failure) {
        std::string what = watch->failure->code == flk::capture::kErrorDeviceWasDisconnected
                               ? "\"" + device_ + "\" went away during the recording"
                               : "Recording \"" + device_ + "\" failed (" + watch->failure->fullMessage() + ")";
        if (written) return flk::cli::fail(what + "; what was recorded until then is kept in \"" + out_ + "\".");
        return flk::cli::fail(what + "; nothing was recorded.");
    }
    if (!written) {
        return flk::cli::fail("Nothing was recorded from \"" + device_ +
                              "\": it showed no picture (only black or a placeholder at its top-left corner).");
    }
    std::printf("Recorded %llu pictures to %s\n", static_cast<unsigned long long>(pictures), out_.c_str());
    return 0;
}
