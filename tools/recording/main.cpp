// flk-make-recording: writes a sample phone screen recording of a mock app.
//   flk-make-recording OUT.mp4 [--size WxH] [--duration S] [--seed N]

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "FLKScreenRecordingWriter.h"
#include "core/media/FLKMediaSupport.h"

namespace {
int usage(const char* program, const std::string& problem) {
    std::fprintf(stderr, "flk-make-recording: %s\nusage: %s OUT.mp4 [--size WxH] [--duration S] [--seed N]\n",
                 problem.c_str(), program);
    return 2;
}

bool parseSize(const std::string& text, FLKScreenRecordingWriter::Options& options) {
    char separator = 0, extra = 0;
    return std::sscanf(text.c_str(), "%d%c%d%c", &options.width, &separator, &options.height, &extra) == 3 &&
           (separator == 'x' || separator == 'X') && options.width > 0 && options.height > 0;
}

bool parseNumber(const std::string& text, double& value) {
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return end != text.c_str() && *end == '\0';
}
}  // namespace

int main(int argc, char** argv) {
    // The encoder's own statistics are noise in a build log.
    av_log_set_level(AV_LOG_ERROR);
    FLKScreenRecordingWriter::Options options;
    std::optional<std::string> output;
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        bool hasValue = i + 1 < argc;
        if (argument == "--size" && hasValue) {
            if (!parseSize(argv[++i], options)) return usage(argv[0], "--size wants WxH, for example 1920x1080.");
        } else if (argument == "--duration" && hasValue) {
            if (!parseNumber(argv[++i], options.duration)) return usage(argv[0], "--duration wants seconds.");
        } else if (argument == "--seed" && hasValue) {
            double seed = 0;
            if (!parseNumber(argv[++i], seed) || seed < 0) return usage(argv[0], "--seed wants a whole number.");
            options.seed = static_cast<unsigned>(seed);
        } else if (!output && !argument.empty() && argument[0] != '-') {
            output = argument;
        } else {
            return usage(argv[0], "unexpected argument \"" + argument + "\".");
        }
    }
    if (!output) return usage(argv[0], "no output file given.");
    FLKError error;
    if (!FLKScreenRecordingWriter::write(*output, options, &error)) {
        std::fprintf(stderr, "flk-make-recording: %s\n", error.fullMessage().c_str());
        return 1;
    }
    return 0;
}
