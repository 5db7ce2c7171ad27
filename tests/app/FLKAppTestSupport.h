#pragma once

// What every test program of the running application needs: a fresh home for
// its stores, the build's resources, Qt bound to the core's GL, and the GL
// driver kept loaded for LeakSanitizer.
#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <string>
#include <string_view>

#include "app/shell/FLKApplicationSetup.h"

namespace flktest {

// Qt terminates its EGL display at exit, which unloads Mesa's driver before
// LeakSanitizer looks: what the driver keeps would be reported from an
// unknown module, out of reach of the suppressions. Keep it loaded.
inline void pinGLDriver() {
    dl_iterate_phdr(
        [](dl_phdr_info* info, size_t, void*) {
            const std::string_view name = info->dlpi_name ? info->dlpi_name : "";
            if (name.ends_with("_dri.so")) dlopen(info->dlpi_name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
            return 0;
        },
        nullptr);
}

// Runs the QtTest object `Tests` inside an application bound like the program's.
template <class Tests>
int runApplicationTests(int argc, char** argv) {
    QTemporaryDir home;
    ::setenv("FLICKWELL_HOME", qPrintable(home.path()), 1);
    ::setenv("FLICKWELL_RESOURCES", FLK_TEST_RESOURCES, 0);
    FLKApplicationSetup::prepareEnvironment();
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    std::string reason;
    if (!FLKApplicationSetup::bindCore(&application, &reason)) {
        qCritical("No OpenGL 4.5 through Qt: %s", reason.c_str());
        return 1;
    }
    pinGLDriver();
    Tests tests;
    return QTest::qExec(&tests, argc, argv);
}

}  // namespace flktest
