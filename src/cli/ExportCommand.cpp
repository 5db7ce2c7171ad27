#include "cli/ExportCommand.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <cstdio>
#include <memory>

#include "cli/CommandSupport.h"
#include "cli/DocumentSource.h"
#include "cli/ExportProgress.h"
#include "core/exporter/FLKExportOperation.h"
#include "core/exporter/FLKExportPresets.h"
#include "core/exporter/FLKExportQueue.h"
#include "core/exporter/FLKExportVideoSanityChecker.h"
#include "core/exporter/FLKVideoSizeCalculator.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKTemplate.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoBufferManager.h"
#include "core/timeline/FLKTimelineVideoTrack.h"

namespace fs = std::filesystem;

namespace {
constexpr std::uint64_t kRenderFps = FLKExportPresets::kRenderFps;

struct Job {
    std::shared_ptr<const FLKExportSettings> preset;
    fs::path destination;
};

// A GIF cannot have more frames than are rendered: it is written at the
// rendering rate instead, and lasts as long as the video.
std::uint64_t gifFpsWritten(std::uint64_t asked) {
    if (asked <= kRenderFps) return asked;
    flk::cli::warn("--gif-fps " + std::to_string(asked) + " is above the " + std::to_string(kRenderFps) +
                   " frames per second an export renders; the GIF is written at " + std::to_string(kRenderFps) + ".");
    return kRenderFps;
}

// A custom size follows the rule of the presets' sizes: whole, even sides.
FLKSize evenSize(FLKSize asked) {
    const FLKSize written{static_cast<double>(FLKVideoSizeCalculator::evenLength(asked.width)),
                          static_cast<double>(FLKVideoSizeCalculator::evenLength(asked.height))};
    if (!(written == asked)) {
        flk::cli::warn("the video is written at " + flk::cli::sizeString(written) + ", not " +
                       flk::cli::sizeString(asked) + ": exported sides are even.");
    }
    return written;
}

void warnAboutPreset(const FLKExportSettings& preset, const FLKScene& scene, const FLKTimeline& timeline) {
    for (const auto& issue : FLKExportVideoSanityChecker::issuesInVideo(timeline, preset)) {
        flk::cli::warn(issue.failureReason + " " + issue.recoverySuggestion);
    }
    if (auto issue = FLKExportPresets::framelessIssue(preset, scene)) {
        flk::cli::warn(issue->failureReason + " " + issue->recoverySuggestion);
    }
}
// Each export plays a copy of the timeline that decodes on its own; the
// document's timeline is never shown here, so what it began decoding when
// the clips arrived is only memory taken from the export.
void stopDecodingForDocumentTimeline(const FLKTimeline& timeline) {
    for (const auto& track : timeline.tracks()) {
        auto videoTrack = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track);
        if (!videoTrack) continue;
        auto manager = std::dynamic_pointer_cast<FLKTimelineVideoBufferManager>(videoTrack->bufferManagers().video);
        if (manager) manager->removeAllBuffers();
    }
}
}  // namespace

void ExportCommand::add(CLI::App& app, int& exitCode) {
    auto command = std::make_shared<ExportCommand>();
    CLI::App* sub = app.add_subcommand("export", "Export a document or template to MP4 or GIF");
    sub->add_option("document", command->source_, "Document, template folder or template name")->required();
    sub->add_option("--type", command->type_, "mp4 or gif (default: from --out)")->check(CLI::IsMember({"mp4", "gif"}));
    sub->add_option("--preset,-p", command->presets_, "Preset name (repeat for several files; see `presets`)");
    sub->add_option("--size", command->size_, "Output size WxH instead of a preset");
    sub->add_option("--out,-o", command->outputURL_, "File to write")->required();
    sub->add_option("--video", command->request_.videos, "Recording to put on the timeline (repeat for more clips)");
    sub->add_option("--transition", command->request_.transitions, "Transition between consecutive recordings");
    sub->add_option("--transition-duration", command->request_.transitionDuration, "Seconds (default 1)");
    sub->add_option("--audio", command->audio_, "Soundtrack");
    sub->add_option("--gif-fps", command->gifFps_, "GIF frame rate without a preset (default 15)")
        ->check(CLI::Range(1, 50));
    sub->add_flag("--quiet,-q", command->quiet_, "No progress output");
    sub->add_flag("--verbose,-v", command->verbose_,
                  "Print where the time went: CPU and waits per frame of each stage, and the bound they set");
    sub->callback([command, &exitCode] { exitCode = command->run(); });
}

int ExportCommand::run() const {
    std::string typeName = type_;
    if (typeName.empty()) typeName = flk::hasExtension(outputURL_, "gif") ? "gif" : "mp4";
    const FLKExportType type = typeName == "gif" ? FLKExportTypeGIF : FLKExportTypeMP4;
    if (!flk::hasExtension(outputURL_, typeName)) {
        return flk::cli::fail(outputURL_.string() + ": a " + typeName + " export's name ends in ." + typeName + ".");
    }
    if (presets_.empty() == size_.empty()) return flk::cli::fail("give either --preset NAME or --size WxH.");
    std::error_code ec;
    if (!fs::is_directory(outputURL_.has_parent_path() ? outputURL_.parent_path() : fs::path("."), ec)) {
        return flk::cli::fail("the folder of " + outputURL_.string() + " does not exist.");
    }

    const std::uint64_t gifFps = type == FLKExportTypeGIF ? gifFpsWritten(gifFps_) : 0;
    FLKError error;
    std::vector<Job> jobs;
    if (!size_.empty()) {
        auto size = flk::cli::parseSize(size_);
        if (!size) return flk::cli::fail("--size \"" + size_ + "\" is not WxH with whole numbers from 1 to 16384.");
        std::uint64_t fps = type == FLKExportTypeGIF ? (gifFps ? gifFps : FLKExportPresets::kDefaultGIFFps) : kRenderFps;
        jobs.push_back({FLKExportPresets::customPreset(evenSize(*size), fps), outputURL_});
    }
    for (const auto& name : presets_) {
        auto preset = FLKExportPresets::presetNamed(type, name, &error);
        if (!preset) return flk::cli::fail(error.fullMessage());
        // Several files from one name: each carries its preset's name.
        auto destination = presets_.size() == 1 ? outputURL_
                                                : flk::uniqueFileURL(flk::fileURLByAddingSuffix(outputURL_, preset->name()));
        jobs.push_back({preset, destination});
    }

    auto request = request_;
    request.replaceClips = true;
    if (!audio_.empty()) request.audio = fs::path(audio_);
    auto inputs = TimelineAssembly::inputs(request);
    inputs.push_back({"the document", source_});
    for (const auto& job : jobs) {
        if (auto problem = flk::cli::outputReplacingInput(job.destination, inputs)) return flk::cli::fail(*problem);
    }
    if (!TimelineAssembly::validate(request, &error)) return flk::cli::fail(error.fullMessage());

    auto mainQueue = std::make_shared<FLKRunLoopMainQueue>();
    FLKMainQueue::setMain(mainQueue);
    auto file = DocumentSource::open(source_, &error);
    if (!file) return flk::cli::fail(error.fullMessage());
    if (!TimelineAssembly::apply(*file, request, &error)) return flk::cli::fail(error.fullMessage());
    const auto scene = file->document()->currentScene();
    const auto timeline = file->document()->currentTimeline();
    if (!scene->mainCamera()) return flk::cli::fail(source_ + ": the scene has no camera.");
    if (!timeline || !(timeline->duration() > 0)) {
        return flk::cli::fail(source_ + " has no clips on its timeline; add a recording with --video FILE.");
    }
    timeline->mapScene(scene);
    stopDecodingForDocumentTimeline(*timeline);

    auto queue = FLKExportQueue::make();
    queue->setPresentsErrors(false);
    std::vector<std::shared_ptr<FLKExportOperation>> operations;
    for (const auto& job : jobs) {
        if (presets_.size() > 0) warnAboutPreset(*job.preset, *scene, *timeline);
        const FLKRect frame = FLKExportPresets::exportFrame(*job.preset, scene->mainCamera()->frame());
        auto operation = FLKExportOperation::operationWithScene(*scene, timeline, type, job.destination, frame,
                                                                job.preset->maxVideoResolution(), kRenderFps);
        operation->setName(job.preset->name());
        if (type == FLKExportTypeGIF) {
            operation->setOutputFps(gifFps ? gifFps : FLKExportPresets::gifFps(*job.preset));
        }
        operations.push_back(operation);
    }

    ExportProgress progress(operations, quiet_ ? ExportProgress::Style::kSilent
                                               : (isatty(STDERR_FILENO) ? ExportProgress::Style::kBar
                                                                        : ExportProgress::Style::kLines));
    bool sessionEnded = false;
    auto& center = FLKExportOperation::notificationCenter();
    FLKObservation finished(center, center.addObserver(FLKExportQueueDidFinishNotification, queue.get(),
                                                       [&](const FLKNotification&) { sessionEnded = true; }));
    for (const auto& operation : operations) queue->addOperation(operation);
    mainQueue->runUntil([&] { return sessionEnded; });
    progress.finish();

    int failures = 0;
    for (const auto& operation : operations) {
        if (auto failure = operation->error()) {
            ++failures;
            flk::cli::fail(operation->name() + ": " + failure->fullMessage());
        } else {
            std::printf("%s\n", operation->destinationURL().string().c_str());
        }
        if (verbose_) {
            const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
            std::fprintf(stderr, "%s: %llu frames\n%s", operation->name().c_str(),
                         static_cast<unsigned long long>(operation->renderedFrames()),
                         operation->stageTimes().report(operation->renderedFrames(), cores).c_str());
        }
    }
    return failures == 0 ? 0 : 1;
}
