#include <QApplication>

#include <string>

#include "app/shell/FLKApplicationDelegate.h"
#include "app/shell/FLKApplicationSetup.h"
#include "core/model/FLKCoreServices.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKUserDefaults.h"

int main(int argc, char** argv) {
    FLKApplicationSetup::prepareEnvironment();
    QApplication application(argc, argv);
    QApplication::setApplicationName("Flickwell");

    std::string reason;
    if (!FLKApplicationSetup::bindCore(&application, &reason)) {
        flk::log("%s", reason.c_str());
        FLKApplicationSetup::showOpenGLNotSupportedAlert();
        return 0;
    }
    int status = 0;
    {
        FLKApplicationDelegate delegate(FLKUserDefaults::standardUserDefaults(), FLKMainQueue::main());
        delegate.applicationDidFinishLaunching();
        status = application.exec();
    }
    // No thread of ours may outlive main(): static destructors would race it.
    flk::shutdownCoreServices();
    return status;
}
