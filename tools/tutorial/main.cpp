// flk-make-tutorial: renders the splash video that shows how the app is used.
//   flk-make-tutorial OUT.mp4

#include <cstdio>

#include "FLKTutorialWriter.h"
#include "core/media/FLKMediaSupport.h"

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '-') {
        std::fprintf(stderr, "usage: %s OUT.mp4\n", argv[0]);
        return 2;
    }
    // The encoder's own statistics are noise in a build log.
    av_log_set_level(AV_LOG_ERROR);
    FLKError error;
    if (!FLKTutorialWriter::write(argv[1], &error)) {
        std::fprintf(stderr, "flk-make-tutorial: %s\n", error.fullMessage().c_str());
        return 1;
    }
    return 0;
}
