#include "cli/PresetsCommand.h"

#include <cstdio>

#include "cli/CommandSupport.h"
#include "core/exporter/FLKExportPresets.h"
#include "core/platform/FLKJSON.h"

void PresetsCommand::add(CLI::App& app, int& exitCode) {
    auto command = std::make_shared<PresetsCommand>();
    CLI::App* sub = app.add_subcommand("presets", "List the export presets");
    sub->add_option("--type", command->type_, "Only presets of this type")->check(CLI::IsMember({"mp4", "gif"}));
    sub->add_flag("--json", command->json_, "Print JSON");
    sub->callback([command, &exitCode] { exitCode = command->run(); });
}

int PresetsCommand::run() const {
    FLKError error;
    FLKJSON list = FLKJSON::array();
    for (const auto& [type, name] : {std::pair{FLKExportTypeMP4, "mp4"}, std::pair{FLKExportTypeGIF, "gif"}}) {
        if (!type_.empty() && type_ != name) continue;
        for (const auto& preset : FLKExportPresets::presetsOfType(type, &error)) {
            list.push_back(FLKJSON{{"type", name},
                                   {"name", preset->name()},
                                   {"width", preset->maxVideoResolution().width},
                                   {"height", preset->maxVideoResolution().height},
                                   {"minDuration", preset->minDuration()},
                                   {"maxDuration", preset->maxDuration()},
                                   {"maxSizeMB", preset->maxSizeMB()},
                                   {"fps", preset->fps()},
                                   {"frameless", preset->isFrameless()}});
        }
    }
    if (list.empty()) {
        return flk::cli::fail(error.localizedDescription.empty() ? "no export presets are installed."
                                                                  : error.fullMessage());
    }
    if (json_) {
        std::printf("%s\n", list.dump(2).c_str());
        return 0;
    }
    for (const auto& p : list) {
        char durations[32];
        std::snprintf(durations, sizeof durations, "%.0f-%.0f s", p["minDuration"].get<double>(),
                      p["maxDuration"].get<double>());
        std::printf("%-4s %-34s %-10s %-9s %3llu fps%s\n", p["type"].get<std::string>().c_str(),
                    p["name"].get<std::string>().c_str(),
                    flk::cli::sizeString({p["width"].get<double>(), p["height"].get<double>()}).c_str(), durations,
                    static_cast<unsigned long long>(p["fps"].get<std::uint64_t>()),
                    p["frameless"].get<bool>() ? "  frameless (store preview)" : "");
    }
    return 0;
}
