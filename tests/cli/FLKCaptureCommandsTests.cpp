// `devices` and `record` as a user runs them, with a stand-in adb whose phone
// streams a real H.264 test pattern.
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

#include "core/capture/FLKSubprocess.h"
#include "core/platform/FLKJSON.h"
#include "core/platform/FLKPaths.h"
#include "core/capture/FLKCaptureDecoder.h"
#include "core/media/FLKMediaSupport.h"
#include "support/FLKProgramRun.h"

using flk::testing::ProgramRun;
using flk::testing::quoted;

namespace {

ProgramRun runCLI(const std::string& arguments) { return flk::testing::runProgram(FLK_CLI_PATH, arguments); }

// Pictures in a file and the seconds between its first and last.
struct Span {
    size_t pictures = 0;
    double seconds = 0;
};
Span spanOf(const std::filesystem::path& file) {
    Span span;
    std::string reason;
    auto input = flk::media::openInput(file.string(), &reason);
    if (!input) return span;
    int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) return span;
    auto decoder = FLKCaptureDecoder::make(input->streams[index]->codecpar, &reason);
    flk::media::Packet packet(av_packet_alloc());
    double first = -1;
    double last = -1;
    auto count = [&](std::shared_ptr<const FLKPixelBuffer>) { ++span.pictures; };
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        if (packet->stream_index == index) {
            double t = flk::media::secondsOf(packet->pts, input->streams[index]->time_base);
            if (first < 0) first = t;
            last = std::max(last, t);
            decoder->decode(packet.get(), count);
        }
        av_packet_unref(packet.get());
    }
    decoder->decode(nullptr, count);
    span.seconds = first < 0 ? 0 : last - first;
    return span;
}

// Whether the index comes before the pictures, so players can start at once.
bool indexFirst(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string head(4096, '\0');
    in.read(head.data(), static_cast<std::streamsize>(head.size()));
    auto moov = head.find("moov");
    auto mdat = head.find("mdat");
    return moov != std::string::npos && (mdat == std::string::npos || moov < mdat);
}

struct CaptureCommandsTest : ::testing::Test {
    std::filesystem::path folder = flk::temporaryHome() / "capture-commands";
    std::filesystem::path clip = folder / "pattern.h264";

    void SetUp() override {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        // Ten seconds of pattern: one screenrecord run covers every test.
        std::string make = "ffmpeg -nostdin -hide_banner -loglevel error -y -f lavfi -i testsrc2=size=320x240:rate=30 "
                           "-frames:v 300 -c:v libx264 -bf 0 -g 1000 -pix_fmt yuv420p -f h264 " + quoted(clip);
        ASSERT_EQ(std::system(make.c_str()), 0);
        ::setenv("FLICKWELL_ADB", FLK_ADB_STANDIN, 1);
        ::setenv("FLK_STANDIN_STREAM", clip.c_str(), 1);
        ::setenv("FLK_STANDIN_STATE", folder.c_str(), 1);
        ::unsetenv("FLK_STANDIN_DEVICES");
        ::unsetenv("DISPLAY");
    }

    // Waits, through change notices on the folder and never a clock, until the
    // file being recorded holds `seconds` of pictures; false if the program ended first.
    bool waitForRecorded(const std::filesystem::path& part, double seconds, FLKSubprocess& program) {
        int notify = inotify_init1(IN_CLOEXEC);
        inotify_add_watch(notify, part.parent_path().c_str(), IN_MODIFY | IN_CREATE | IN_CLOSE_WRITE);
        bool reached = false;
        char events[4096];
        for (;;) {
            if (std::filesystem::exists(part) && spanOf(part).seconds >= seconds) {
                reached = true;
                break;
            }
            pollfd fds[2] = {{notify, POLLIN, 0}, {program.outputDescriptor(), POLLIN, 0}};
            // The program's output closing means it ended; a minute without any change means it hangs.
            if (::poll(fds, 2, 60'000) <= 0 || (fds[1].revents & (POLLHUP | POLLIN))) break;
            if (::read(notify, events, sizeof events) < 0) break;
        }
        ::close(notify);
        return reached;
    }

    bool startRecording(FLKSubprocess& program, const std::filesystem::path& out, const std::filesystem::path& errors) {
        return program.start({"/bin/sh", "-c",
                              std::string("exec ") + FLK_CLI_PATH + " record STANDIN01 --out " + quoted(out) + " 2>" +
                                  quoted(errors)});
    }
};

std::string fileText(const std::filesystem::path& file) {
    std::ifstream in(file);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

TEST_F(CaptureCommandsTest, DevicesListsEverySourceWithItsState) {
    ::setenv("FLK_STANDIN_DEVICES",
             "STANDIN01  device product:p model:Standin_Phone device:d\nlocked phone  unauthorized usb:1-1", 1);
    auto text = runCLI("devices");
    EXPECT_EQ(text.exitCode, 0) << text.output();
    EXPECT_NE(text.standardOutput.find("adb      ready         STANDIN01"), std::string::npos) << text.standardOutput;
    EXPECT_NE(text.standardOutput.find("Standin Phone"), std::string::npos);
    EXPECT_NE(text.standardOutput.find("unauthorized  locked phone"), std::string::npos) << text.standardOutput;
    EXPECT_NE(text.standardError.find("No X display"), std::string::npos);

    auto json = runCLI("devices --json");
    ASSERT_EQ(json.exitCode, 0);
    auto list = FLKJSON::parse(json.standardOutput);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0]["kind"], "adb");
    EXPECT_EQ(list[0]["name"], "Standin Phone");
    EXPECT_EQ(list[1]["identifier"], "locked phone");
    EXPECT_EQ(list[1]["state"], "unauthorized");

    auto refused = runCLI("record 'locked phone' --out " + quoted(folder / "locked.mp4"));
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.standardError.find("has not allowed this computer"), std::string::npos) << refused.output();
    EXPECT_FALSE(std::filesystem::exists(folder / "locked.mp4"));
}

TEST_F(CaptureCommandsTest, WatchPrintsTheListUntilAskedToStop) {
    FLKSubprocess watch;
    ASSERT_TRUE(watch.start({FLK_CLI_PATH, "devices", "--watch", "--json"}));
    std::string output;
    char chunk[1024];
    while (output.find('\n') == std::string::npos) {
        ssize_t n = watch.read(chunk, sizeof chunk);
        ASSERT_GT(n, 0);
        output.append(chunk, static_cast<size_t>(n));
    }
    auto list = FLKJSON::parse(output.substr(0, output.find('\n')));
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0]["identifier"], "STANDIN01");
    // Ctrl+C ends it cleanly.
    watch.kill(SIGINT);
    EXPECT_EQ(watch.wait(), 0);
}

TEST_F(CaptureCommandsTest, RecordRefusesWhatItCannotDoAndSaysWhy) {
    auto unknown = runCLI("record NOPE --out " + quoted(folder / "a.mp4"));
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.standardError.find("No device \"NOPE\""), std::string::npos) << unknown.output();
    EXPECT_NE(unknown.standardError.find("STANDIN01"), std::string::npos);  // what there is instead

    std::ofstream(folder / "taken.mp4") << "mine";
    auto taken = runCLI("record STANDIN01 --out " + quoted(folder / "taken.mp4"));
    EXPECT_EQ(taken.exitCode, 1);
    EXPECT_NE(taken.standardError.find("already exists"), std::string::npos);
    EXPECT_EQ(fileText(folder / "taken.mp4"), "mine");

    ::setenv("FLICKWELL_ADB", (folder / "missing-adb").c_str(), 1);
    auto noAdb = runCLI("record STANDIN01 --out " + quoted(folder / "b.mp4"));
    EXPECT_EQ(noAdb.exitCode, 1);
    EXPECT_NE(noAdb.standardError.find("adb was not found"), std::string::npos) << noAdb.output();
    EXPECT_FALSE(std::filesystem::exists(folder / "a.mp4"));
    EXPECT_FALSE(std::filesystem::exists(folder / "b.mp4"));
}

TEST_F(CaptureCommandsTest, RecordWritesAPlayableMP4ForTheDuration) {
    auto out = folder / "take.mp4";
    auto run = runCLI("record STANDIN01 --out " + quoted(out) + " --duration 1");
    ASSERT_EQ(run.exitCode, 0) << run.output();
    EXPECT_NE(run.standardOutput.find("Recorded"), std::string::npos);
    auto span = spanOf(out);
    EXPECT_GE(span.seconds, 0.9);
    EXPECT_GE(span.pictures, 25u);
    EXPECT_TRUE(indexFirst(out));
    EXPECT_FALSE(std::filesystem::exists(out.string() + ".part"));
}

TEST_F(CaptureCommandsTest, AKilledRecordingKeepsAllButItsLastSecondAndTheNextStartFinishesIt) {
    auto out = folder / "killed.mp4";
    auto part = std::filesystem::path(out.string() + ".part");
    FLKSubprocess program;
    ASSERT_TRUE(startRecording(program, out, folder / "killed.err"));
    ASSERT_TRUE(waitForRecorded(part, 5.0, program)) << fileText(folder / "killed.err");
    program.kill();  // kill -9, no chance to tidy up
    program.wait();
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_GE(spanOf(part).seconds, 4.0);

    auto next = runCLI("devices");
    EXPECT_EQ(next.exitCode, 0);
    EXPECT_NE(next.standardError.find("recovered an interrupted recording: " + out.string()), std::string::npos)
        << next.output();
    ASSERT_TRUE(std::filesystem::exists(out));
    EXPECT_FALSE(std::filesystem::exists(part));
    auto span = spanOf(out);
    EXPECT_GE(span.seconds, 4.0);
    EXPECT_GE(span.pictures, 120u);
    EXPECT_TRUE(indexFirst(out));
    // Nothing is left to recover a second time.
    EXPECT_EQ(runCLI("devices").standardError.find("recovered"), std::string::npos);
}

TEST_F(CaptureCommandsTest, APhoneUnpluggedMidRecordingKeepsWhatWasRecorded) {
    auto out = folder / "unplugged.mp4";
    FLKSubprocess program;
    ASSERT_TRUE(startRecording(program, out, folder / "unplugged.err"));
    ASSERT_TRUE(waitForRecorded(out.string() + ".part", 1.0, program));
    std::ofstream(folder / "unplugged") << "gone\n";
    // The stand-in's stream ends as a cable pulled out would end it.
    pid_t screenrecord = std::stoi(fileText(folder / "screenrecord.pid"));
    ASSERT_GT(screenrecord, 0);
    ::kill(screenrecord, SIGKILL);
    int status = program.wait();
    EXPECT_EQ(status, 1);
    auto errors = fileText(folder / "unplugged.err");
    EXPECT_NE(errors.find("went away during the recording"), std::string::npos) << errors;
    EXPECT_NE(errors.find("is kept in"), std::string::npos) << errors;
    EXPECT_GE(spanOf(out).seconds, 1.0);
}
