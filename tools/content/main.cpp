// flk-make-content: writes the built-in templates, masks and sounds.
//   flk-make-content <output folder> [--preview-dir <folder>]

#include <cstdio>
#include <cstring>

#include "FLKContentWriter.h"

int main(int argc, char** argv) {
    std::optional<std::filesystem::path> output, previews;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--preview-dir") == 0 && i + 1 < argc) {
            previews = argv[++i];
        } else if (!output && argv[i][0] != '-') {
            output = argv[i];
        } else {
            output.reset();
            break;
        }
    }
    if (!output) {
        std::fprintf(stderr, "usage: %s <output folder> [--preview-dir <folder>]\n", argv[0]);
        return 2;
    }
    FLKError error;
    if (!FLKContentWriter(*output, previews).writeAll(&error)) {
        std::fprintf(stderr, "flk-make-content: %s\n", error.fullMessage().c_str());
        return 1;
    }
    return 0;
}
