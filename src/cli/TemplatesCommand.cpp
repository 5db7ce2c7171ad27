#include "cli/TemplatesCommand.h"

#include <cstdio>

#include "cli/CommandSupport.h"
#include "core/exporter/FLKExportPresets.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKJSON.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"

void TemplatesCommand::add(CLI::App& app, int& exitCode) {
    auto command = std::make_shared<TemplatesCommand>();
    CLI::App* sub = app.add_subcommand("templates", "List the templates, built-in first, then your own");
    sub->add_flag("--json", command->json_, "Print JSON");
    sub->callback([command, &exitCode] { exitCode = command->run(); });
}

int TemplatesCommand::run() const {
    auto& manager = FLKTemplateManager::defaultManager();
    FLKJSON list = FLKJSON::array();
    for (const auto& aTemplate : manager.templates()) {
        auto scene = aTemplate->scene();
        FLKJSON entry{{"name", aTemplate->name()},
                      {"builtIn", manager.isBundledTemplate(*aTemplate)},
                      {"path", aTemplate->URL().string()}};
        if (scene && scene->mainCamera()) {
            const auto size = scene->mainCamera()->frame().size;
            entry["canvas"] = {{"width", size.width}, {"height", size.height}};
            entry["deviceFrame"] = FLKExportPresets::showsDeviceArtwork(*scene);
        }
        list.push_back(std::move(entry));
    }
    if (json_) {
        std::printf("%s\n", list.dump(2).c_str());
        return 0;
    }
    if (list.empty()) return flk::cli::fail("no templates are installed.");
    for (const auto& entry : list) {
        std::string canvas = entry.contains("canvas")
                                 ? flk::cli::sizeString({entry["canvas"]["width"].get<double>(),
                                                         entry["canvas"]["height"].get<double>()})
                                 : "unreadable";
        std::string kind = !entry.contains("deviceFrame") ? "" : entry["deviceFrame"].get<bool>() ? "device frame" : "frameless";
        std::printf("%-20s %-9s %-11s %s\n", entry["name"].get<std::string>().c_str(),
                    entry["builtIn"].get<bool>() ? "built-in" : "yours", canvas.c_str(), kind.c_str());
    }
    return 0;
}
