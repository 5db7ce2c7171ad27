#include <malloc.h>

#include <CLI/CLI.hpp>

#include "cli/DevicesCommand.h"
#include "cli/ExportCommand.h"
#include "cli/FrameCommand.h"
#include "cli/InfoCommand.h"
#include "cli/NewCommand.h"
#include "cli/PresetsCommand.h"
#include "cli/RecordCommand.h"
#include "cli/TemplatesCommand.h"
#include "cli/CommandSupport.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/media/FLKMediaSupport.h"
#include "core/model/FLKCoreServices.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKLog.h"

int main(int argc, char** argv) {
    // Frames of a megabyte and more are allocated and freed on different
    // threads all through an export; glibc would otherwise raise its mmap
    // threshold after the first free and keep them in arenas it cannot shrink.
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
    flk::installCoreServices();
    // However the command ends: the current document is process-wide and
    // would outlive it, so closing it removes its working folder and stops
    // its sound; then no thread of ours may outlive main().
    struct Shutdown {
        ~Shutdown() {
            FLKSceneLoader::defaultSceneLoader().closeDocument();
            flk::shutdownCoreServices();
        }
    } shutdown;
    CLI::App app{"Flickwell without a window: make app videos from templates and recordings"};
    app.require_subcommand(1);
    bool verbose = false;
    app.add_flag("--verbose,-v", verbose, "Print the engine's log lines (buffering, readers) to standard error");
    // The engine's log is for diagnosis; a user sees results, warnings and errors.
    app.parse_complete_callback([&verbose] {
        if (!verbose) flk::setLogSink([](const std::string&) {});
        flk::media::setLibraryLogVerbose(verbose);
        // A recording a crash or kill cut short becomes a normal file again.
        std::vector<FLKError> errors;
        for (const auto& url : FLKDeviceScreenRecorder::recoverInterruptedRecordings(&errors)) {
            flk::cli::warn("recovered an interrupted recording: " + url.string());
        }
        for (const auto& error : errors) flk::cli::warn(error.fullMessage());
    });
    int exitCode = 0;
    TemplatesCommand::add(app, exitCode);
    NewCommand::add(app, exitCode);
    InfoCommand::add(app, exitCode);
    FrameCommand::add(app, exitCode);
    ExportCommand::add(app, exitCode);
    PresetsCommand::add(app, exitCode);
    DevicesCommand::add(app, exitCode);
    RecordCommand::add(app, exitCode);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        exitCode = app.exit(e);
    }
    return exitCode;
}
