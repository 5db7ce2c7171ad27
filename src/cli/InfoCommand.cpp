#include "cli/InfoCommand.h"

#include <cstdio>

#include "cli/CommandSupport.h"
#include "cli/DocumentSource.h"
#include "core/model/FLKFile.h"
#include "core/platform/FLKJSON.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKVideoClip.h"
#include "core/timeline/FLKVideoTransitionClip.h"

namespace {
FLKJSON rectJSON(const FLKRect& r) {
    return {{"x", r.origin.x}, {"y", r.origin.y}, {"width", r.size.width}, {"height", r.size.height}};
}

FLKJSON nodesJSON(const FLKScene& scene) {
    FLKJSON nodes = FLKJSON::array();
    for (const auto& node : scene.recursiveAllChildren()) {
        FLKJSON entry{{"class", node->className()}, {"name", node->name() ? *node->name() : ""}, {"zOrder", node->zOrder()}};
        if (auto sprite = std::dynamic_pointer_cast<FLKSprite>(node)) entry["bounds"] = rectJSON(sprite->bounds());
        nodes.push_back(std::move(entry));
    }
    return nodes;
}

FLKJSON clipJSON(const FLKTimelineClip& clip) {
    FLKJSON entry{{"name", clip.name()},
                  {"start", clip.timeRange().start},
                  {"end", clip.timeRange().end}};
    if (auto video = dynamic_cast<const FLKVideoClip*>(&clip)) {
        entry["kind"] = "video";
        entry["media"] = video->assetURL().filename().string();
        entry["sourceStart"] = video->clipRange().start;
        entry["sourceEnd"] = video->clipRange().end;
    } else if (auto transition = dynamic_cast<const FLKVideoTransitionClip*>(&clip)) {
        entry["kind"] = "transition";
        entry["transition"] = transition->transition() ? transition->transition()->serialized().value("functionName", "") : "";
    } else {
        entry["kind"] = "placeholder";
    }
    return entry;
}

FLKJSON documentJSON(const FLKFile& file) {
    const auto& scene = file.document()->currentScene();
    const auto& timeline = file.document()->currentTimeline();
    FLKJSON info;
    info["scene"] = {{"name", scene->name() ? *scene->name() : ""},
                     {"camera", scene->mainCamera() ? rectJSON(scene->mainCamera()->frame()) : FLKJSON()},
                     {"nodes", nodesJSON(*scene)}};
    auto container = scene->childWithClass<FLKVideoContainer>();
    if (container && container->audio() && container->audio()->audioURL()) {
        info["audio"] = container->audio()->audioURL()->filename().string();
    }
    FLKJSON clips = FLKJSON::array();
    for (const auto& track : timeline ? timeline->tracks() : FLKTimeline::Tracks{}) {
        for (const auto& clip : track->clips()) clips.push_back(clipJSON(*clip));
    }
    info["duration"] = timeline ? timeline->duration() : 0.0;
    info["clips"] = std::move(clips);
    FLKJSON media = FLKJSON::array();
    for (const auto& name : file.media()->allFiles()) media.push_back(name.string());
    info["media"] = std::move(media);
    return info;
}

void printText(const FLKJSON& info) {
    const auto& scene = info["scene"];
    std::printf("Scene \"%s\"", scene["name"].get<std::string>().c_str());
    if (scene["camera"].is_object()) {
        std::printf(", camera %s", flk::cli::sizeString({scene["camera"]["width"].get<double>(),
                                                        scene["camera"]["height"].get<double>()}).c_str());
    }
    std::printf("\n");
    for (const auto& node : scene["nodes"]) {
        std::printf("  z %-4lld %-24s %s\n", static_cast<long long>(node["zOrder"].get<int64_t>()),
                    node["class"].get<std::string>().c_str(), node["name"].get<std::string>().c_str());
    }
    std::printf("Timeline %.2f s\n", info["duration"].get<double>());
    for (const auto& clip : info["clips"]) {
        std::printf("  %6.2f-%6.2f s  %-10s", clip["start"].get<double>(), clip["end"].get<double>(),
                    clip["kind"].get<std::string>().c_str());
        if (clip.contains("media")) {
            std::printf(" %s (from %.2f s)", clip["media"].get<std::string>().c_str(), clip["sourceStart"].get<double>());
        }
        if (clip.contains("transition")) std::printf(" %s", clip["transition"].get<std::string>().c_str());
        std::printf("\n");
    }
    if (info.contains("audio")) std::printf("Audio %s\n", info["audio"].get<std::string>().c_str());
    std::printf("Media\n");
    for (const auto& name : info["media"]) std::printf("  %s\n", name.get<std::string>().c_str());
}
}  // namespace

void InfoCommand::add(CLI::App& app, int& exitCode) {
    auto command = std::make_shared<InfoCommand>();
    CLI::App* sub = app.add_subcommand("info", "Show the scene, clips and media of a document or template");
    sub->add_option("document", command->source_, "Document, template folder or template name")->required();
    sub->add_flag("--json", command->json_, "Print JSON");
    sub->callback([command, &exitCode] { exitCode = command->run(); });
}

int InfoCommand::run() const {
    FLKError error;
    auto file = DocumentSource::open(source_, &error);
    if (!file) return flk::cli::fail(error.fullMessage());
    auto info = documentJSON(*file);
    if (json_) std::printf("%s\n", info.dump(2).c_str());
    else printText(info);
    return 0;
}
