#pragma once

#include <string>

class QObject;

// The steps of start-up that must happen around QApplication's construction
// for the core's GL contexts to share textures with Qt's.
class FLKApplicationSetup {
public:
    // Before QApplication: EGL on X11 (Qt's GLX integration gives no context
    // the core could share with), a 4.5 core default format and one share
    // group for all of Qt's contexts. A user's own integration choice stands.
    // Also bounds malloc's arenas (before any thread starts).
    static void prepareEnvironment();

    // After QApplication: the core's main queue and user feedback on Qt's
    // event loop, and its contexts made on Qt's EGL display, sharing with
    // Qt's global context. False with `reason` set when OpenGL 4.5 cannot be
    // had that way.
    // On a software rasteriser the preview starts at kSoftwarePerformanceLevel
    // and canvases read their frames back.
    static bool bindCore(QObject* application, std::string* reason);

    // Whether the core's GL is a rasteriser running on the processor (Mesa's
    // llvmpipe or softpipe, ...). After bindCore().
    static bool drawsInSoftware();
    static constexpr unsigned kSoftwarePerformanceLevel = 1;

    // The critical alert for a machine without OpenGL 4.5; returns when the
    // user dismissed it.
    static void showOpenGLNotSupportedAlert();
};
