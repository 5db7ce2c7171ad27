#pragma once

// Helpers shared by the desktop program's test executables.
#include <QApplication>
#include <QDir>
#include <QString>
#include <QTemporaryDir>
#include <QTest>

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <string>
#include <string_view>

#include "app/shell/FLKApplicationSetup.h"

namespace flk_test {

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

// Where a test's screenshot goes; the folder is made on first use.
inline QString artifactPath(const QString& name) {
    QDir().mkpath(FLK_TEST_ARTIFACTS);
    return QDir(FLK_TEST_ARTIFACTS).filePath(name);
}

// main() of a test program: stores under a fresh home, resources from the
// build, the program's GL set-up, then the test object's slots.
template <class Tests>
int runTests(int argc, char** argv) {
    QTemporaryDir home;
    ::setenv("FLICKWELL_HOME", qPrintable(home.path()), 1);
    ::setenv("FLICKWELL_RESOURCES", FLK_TEST_RESOURCES, 0);
    FLKApplicationSetup::prepareEnvironment();
    QApplication application(argc, argv);
    // A fixed style keeps the screenshots comparable between runs.
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

}  // namespace flk_test
