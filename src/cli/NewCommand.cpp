#include "cli/NewCommand.h"

#include <cstdio>

#include "cli/CommandSupport.h"
#include "cli/DocumentSource.h"
#include "core/model/FLKFile.h"
#include "core/platform/FLKPaths.h"
#include "core/timeline/FLKTimeline.h"

void NewCommand::add(CLI::App& app, int& exitCode) {
    auto command = std::make_shared<NewCommand>();
    CLI::App* sub = app.add_subcommand("new", "Make a document from a template and recordings");
    sub->add_option("--template,-t", command->template_, "Template name or folder")->required();
    sub->add_option("--video", command->request_.videos, "Recording to add (repeat for more clips)");
    sub->add_option("--transition", command->request_.transitions,
                    "Transition between consecutive recordings: crossZoom, fade or crosshatch (repeat)");
    sub->add_option("--transition-duration", command->request_.transitionDuration, "Seconds (default 1)");
    sub->add_option("--audio", command->audio_, "Soundtrack");
    sub->add_option("--out,-o", command->outputURL_, "Document to write (.flickwell)")->required();
    sub->add_flag("--force,-f", command->force_, "Replace an existing document");
    sub->callback([command, &exitCode] { exitCode = command->run(); });
}

int NewCommand::run() const {
    if (!flk::isFlickwellFile(outputURL_)) {
        return flk::cli::fail(outputURL_.string() + ": a document's name ends in .flickwell.");
    }
    if (flk::exists(outputURL_) && !force_) {
        return flk::cli::fail(outputURL_.string() + " already exists; give --force to replace it.");
    }
    auto request = request_;
    if (!audio_.empty()) request.audio = std::filesystem::path(audio_);
    auto inputs = TimelineAssembly::inputs(request);
    inputs.push_back({"--template", template_});
    if (auto problem = flk::cli::outputReplacingInput(outputURL_, inputs)) return flk::cli::fail(*problem);
    FLKError error;
    // Checked before the template is opened, so a typo costs nothing.
    if (!TimelineAssembly::validate(request, &error)) return flk::cli::fail(error.fullMessage());
    if (!DocumentSource::templateNamed(template_) && !flk::isFlickwellTemplateFile(template_)) {
        return flk::cli::fail("there is no template named \"" + template_ + "\" (see `flickwell-cli templates`).");
    }
    auto file = DocumentSource::open(template_, &error);
    if (!file) return flk::cli::fail(error.fullMessage());
    if (!TimelineAssembly::apply(*file, request, &error)) return flk::cli::fail(error.fullMessage());

    const auto& document = *file->document();
    if (!file->writeScene(document.currentScene(), document.currentTimeline(), outputURL_, &error)) {
        return flk::cli::fail(error.fullMessage());
    }
    std::printf("%s (%.2f s)\n", outputURL_.string().c_str(),
                document.currentTimeline() ? document.currentTimeline()->duration() : 0.0);
    return 0;
}
