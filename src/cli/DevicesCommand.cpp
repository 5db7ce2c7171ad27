#include "cli/DevicesCommand.h"

#include <cstdio>

#include "cli/CaptureSupport.h"
#include "cli/CommandSupport.h"
#include "core/capture/FLKDevice.h"
#include "core/capture/FLKDeviceFinder.h"
#include "core/platform/FLKRunLoopMainQueue.h"

namespace {

void print(const std::vector<std::shared_ptr<FLKDevice>>& devices, bool json) {
    if (json) {
        FLKJSON list = FLKJSON::array();
        for (const auto& device : devices) list.push_back(flk::cli::deviceJSON(*device));
        // One line a listing, so a watcher reads one change a line.
        std::printf("%s\n", list.dump().c_str());
    } else if (devices.empty()) {
        std::printf("No devices.\n");
    } else {
        for (const auto& device : devices) std::printf("%s\n", flk::cli::deviceLine(*device).c_str());
    }
    std::fflush(stdout);
}

// Prints every listing the finder announces.
class Printer : public FLKDeviceFinderObserver {
public:
    explicit Printer(bool json) : json_(json) {}
    void deviceFinderDidUpdateWithDevices(FLKDeviceFinder&, const std::vector<std::shared_ptr<FLKDevice>>& devices) override {
        if (!json_) std::printf("--\n");
        print(devices, json_);
    }

private:
    bool json_;
};

}  // namespace

void DevicesCommand::add(CLI::App& app, int& exitCode) {
    auto command = std::make_shared<DevicesCommand>();
    CLI::App* sub = app.add_subcommand("devices", "List the phones, capture cards and monitors that can be recorded");
    sub->add_flag("--json", command->json_, "Print JSON");
    sub->add_flag("--watch", command->watch_, "Keep running and print the list again after each change");
    sub->callback([command, &exitCode] { exitCode = command->run(); });
}

int DevicesCommand::run() const {
    for (const auto& note : flk::cli::missingSourceNotes()) flk::cli::warn(note);
    auto queue = flk::cli::captureRunLoop(flk::cli::stopMainRunLoop);
    auto finder = FLKDeviceFinder::makeWithSystemSources(queue);
    if (!watch_) {
        print(finder->currentDevices(), json_);
        return 0;
    }
    auto printer = std::make_shared<Printer>(json_);
    // Listed before watching: the first line is the whole list, not what the
    // trackers have heard so far.
    (void)finder->currentDevices();
    finder->installConnectionHandlers();
    finder->addObserver(printer);
    queue->run();
    finder->removeObserver(printer);
    return 0;
}
