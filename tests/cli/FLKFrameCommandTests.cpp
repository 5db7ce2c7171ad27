#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/media/FLKImageIO.h"

namespace {
namespace fs = std::filesystem;

struct Result {
    int exitCode = -1;
    std::string output;  // standard output and error together
};

Result runCLI(const std::string& arguments) {
    std::string command = std::string(FLK_CLI_PATH) + " " + arguments + " 2>&1";
    Result result;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return result;
    std::array<char, 512> chunk;
    while (size_t n = fread(chunk.data(), 1, chunk.size(), pipe)) result.output.append(chunk.data(), n);
    int status = pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

void writeText(const fs::path& url, const std::string& text) { std::ofstream(url) << text; }

// A 200 x 100 scene: a red-to-blue gradient background and, on its right
// half, a solid green picture loaded from media/green.png beside the file.
const char* kScene = R"({
  "className": "FLKScene", "identifier": "S", "zOrder": 0,
  "mainCamera": {"className": "FLKCamera", "identifier": "C", "zOrder": 0,
                 "frame": {"X": 0, "Y": 0, "Width": 200, "Height": 100}},
  "children": [
    {"className": "FLKColorGradientSprite", "identifier": "G", "zOrder": 1,
     "colors": ["#ff0000", "#ff0000", "#0000ff", "#0000ff"],
     "shape": {"className": "FLKPlane", "points": [{"X": 0, "Y": 0}, {"X": 200, "Y": 0},
                                                   {"X": 200, "Y": 100}, {"X": 0, "Y": 100}]}},
    {"className": "FLKTexturedSprite", "identifier": "T", "zOrder": 2, "resourceURL": "media/green.png",
     "shape": {"className": "FLKQuad", "points": [{"X": 100, "Y": 0}, {"X": 200, "Y": 0},
                                                  {"X": 200, "Y": 100}, {"X": 100, "Y": 100}]}}
  ]
})";

class FLKFrameCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::path(::testing::TempDir()) / ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::remove_all(folder);
        fs::create_directories(folder / "media");
        FLKImage green(8, 8);
        for (int i = 0; i < 64; ++i) {
            green.rgba[i * 4 + 1] = 255;
            green.rgba[i * 4 + 3] = 255;
        }
        ASSERT_TRUE(flk::writePNG(green, folder / "media" / "green.png"));
        writeText(folder / "scene.json", kScene);
    }
    fs::path folder;
};

TEST_F(FLKFrameCommandTest, RendersTheCameraFrameAtTheRequestedSize) {
    auto out = folder / "frame.png";
    Result result = runCLI("frame " + (folder / "scene.json").string() + " --out " + out.string() + " --size 400x200");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    auto image = flk::readImage(out);
    ASSERT_TRUE(image);
    ASSERT_EQ(image->width, 400);
    ASSERT_EQ(image->height, 200);
    const uint8_t* topLeft = image->pixel(2, 2);  // gradient: red at the top
    EXPECT_GE(topLeft[0], 230);
    EXPECT_LE(topLeft[2], 25);
    const uint8_t* bottomLeft = image->pixel(2, 197);  // blue at the bottom
    EXPECT_GE(bottomLeft[2], 230);
    EXPECT_LE(bottomLeft[0], 25);
    const uint8_t* right = image->pixel(300, 100);  // the picture
    EXPECT_EQ(right[0], 0);
    EXPECT_EQ(right[1], 255);
    EXPECT_EQ(right[3], 255);
}

TEST_F(FLKFrameCommandTest, FrameOptionPicksThePartOfTheScene) {
    auto out = folder / "part.png";
    Result result = runCLI("frame " + (folder / "scene.json").string() + " --out " + out.string() +
                           " --frame 120,10,40,20");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    auto image = flk::readImage(out);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 40);
    EXPECT_EQ(image->height, 20);
    for (auto [x, y] : {std::pair{0, 0}, {39, 19}}) EXPECT_EQ(image->pixel(x, y)[1], 255);
}

TEST_F(FLKFrameCommandTest, BadInputFailsWithAMessageNamingTheFileAndNoOutput) {
    auto out = folder / "never.png";
    writeText(folder / "broken.json", "{\"className\": \"FLKScene\", ");
    writeText(folder / "alien.json", R"({"className": "FLKScene", "children": [{"className": "FLKTeapot"}]})");
    struct Case {
        std::string file;
        std::string problem;
    };
    for (const Case& c : {Case{"missing.json", "no such file"}, Case{"broken.json", "not valid JSON"},
                          Case{"alien.json", "unknown class \"FLKTeapot\""}}) {
        Result result = runCLI("frame " + (folder / c.file).string() + " --out " + out.string());
        EXPECT_NE(result.exitCode, 0) << c.file;
        EXPECT_NE(result.output.find((folder / c.file).string()), std::string::npos) << result.output;
        EXPECT_NE(result.output.find(c.problem), std::string::npos) << result.output;
    }
    Result badSize = runCLI("frame " + (folder / "scene.json").string() + " --out " + out.string() + " --size 0x5");
    EXPECT_NE(badSize.exitCode, 0);
    EXPECT_NE(badSize.output.find("--size"), std::string::npos) << badSize.output;
    EXPECT_FALSE(fs::exists(out));
}
}  // namespace
