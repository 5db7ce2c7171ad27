// flk-make-icon: writes the program's icon as a freedesktop hicolor theme.
//   flk-make-icon <output folder> <name>
// gives <output folder>/hicolor/scalable/apps/<name>.svg and
// <output folder>/hicolor/<N>x<N>/apps/<name>.png for the usual sizes.

#include <cstdio>
#include <filesystem>
#include <string>

#include "FLKAppIcon.h"
#include "core/media/FLKImageIO.h"
#include "core/platform/FLKAtomicFile.h"

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s <output folder> <name>\n", argv[0]);
        return 2;
    }
    fs::path theme = fs::path(argv[1]) / "hicolor";
    std::string name = argv[2];
    // Both writers create the folders they need.
    auto folderFor = [&](const std::string& size) { return theme / size / "apps"; };
    FLKError error;
    if (!flk::writeFileAtomically(folderFor("scalable") / (name + ".svg"), FLKAppIcon::svg(), &error)) {
        std::fprintf(stderr, "flk-make-icon: %s\n", error.fullMessage().c_str());
        return 1;
    }
    for (int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        std::string side = std::to_string(size);
        if (!flk::writePNG(FLKAppIcon::render(size).image(), folderFor(side + "x" + side) / (name + ".png"), &error)) {
            std::fprintf(stderr, "flk-make-icon: %s\n", error.fullMessage().c_str());
            return 1;
        }
    }
    return 0;
}
