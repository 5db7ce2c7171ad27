#pragma once

// Helpers shared by the desktop program's test executables.
#include <QDir>
#include <QString>

#include <dlfcn.h>
#include <link.h>

#include <string_view>

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

}  // namespace flk_test
