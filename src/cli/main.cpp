#include <CLI/CLI.hpp>

#include "cli/FrameCommand.h"
#include "core/model/FLKCoreServices.h"

int main(int argc, char** argv) {
    flk::installCoreServices();
    CLI::App app{"Flickwell without a window: render and export app videos"};
    app.require_subcommand(1);
    int exitCode = 0;
    FrameCommand::add(app, exitCode);
    CLI11_PARSE(app, argc, argv);
    return exitCode;
}
