#include <QApplication>
#include <QStringList>

#include <string>
#include <vector>

#include "app/shell/FLKApplicationDelegate.h"
#include "app/shell/FLKApplicationSetup.h"
#include "app/shell/FLKAutosave.h"
#include "app/shell/FLKBreadcrumbLog.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKMainWindow.h"
#include "app/shell/FLKSingleInstance.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/model/FLKCoreServices.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKUserDefaults.h"

int main(int argc, char** argv) {
    FLKApplicationSetup::prepareEnvironment();
    QApplication application(argc, argv);
    QApplication::setApplicationName("Flickwell");
    // Ties the window to the installed desktop entry and its icon.
    QGuiApplication::setDesktopFileName("org.flickwell.Flickwell");

    // Files named on the command line; Qt has taken its own options out.
    const QStringList files = application.arguments().mid(1);
    if (FLKSingleInstance::handOff(files)) return 0;
    FLKSingleInstance instance;
    if (!instance.listen()) flk::log("Later starts cannot hand their files to this one.");
    FLKBreadcrumbLog::startLogging();

    std::string reason;
    if (!FLKApplicationSetup::bindCore(&application, &reason)) {
        flk::log("%s", reason.c_str());
        FLKApplicationSetup::showOpenGLNotSupportedAlert();
        return 0;
    }
    // Recordings cut short by a crash are finished before anything can record again.
    std::vector<FLKError> recoveryErrors;
    for (const auto& recovered : FLKDeviceScreenRecorder::recoverInterruptedRecordings(&recoveryErrors))
        flk::log("Recovered an interrupted recording: %s", recovered.string().c_str());
    for (const auto& error : recoveryErrors) flk::log("%s", error.fullMessage().c_str());
    // A recorder still running finishes its file, and drops it unless kept.
    QObject::connect(&application, &QCoreApplication::aboutToQuit, [] {
        FLKNotificationCenter::defaultCenter().post(kFLKApplicationWillTerminateNotification);
    });
    int status = 0;
    {
        FLKApplicationDelegate delegate(FLKUserDefaults::standardUserDefaults(), FLKMainQueue::main());
        delegate.applicationDidFinishLaunching();
        FLKMainWindow& window = *delegate.window();
        QObject::connect(&instance, &FLKSingleInstance::filesReceived, &window, &FLKMainWindow::openHandedFiles);
        FLKAutosave autosave(*window.documentController());
        autosave.offerRecovery();
        window.openHandedFiles(files);
        autosave.start();
        status = application.exec();
    }
    // No thread of ours may outlive main(): static destructors would race it.
    flk::shutdownCoreServices();
    return status;
}
