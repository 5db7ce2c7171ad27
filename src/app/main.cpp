#include <QApplication>

#include <string>

#include "app/shell/FLKApplicationSetup.h"
#include "app/shell/FLKMainWindow.h"
#include "core/model/FLKCoreServices.h"
#include "core/platform/FLKLog.h"

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
        FLKMainWindow window;
        window.resize(1280, 800);
        window.show();
        window.showScene();
        status = application.exec();
    }
    // No thread of ours may outlive main(): static destructors would race it.
    flk::shutdownCoreServices();
    return status;
}
