#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "core/media/FLKImageIO.h"

namespace fs = std::filesystem;

namespace {
fs::path testFolder() {
    fs::path folder = fs::path(std::getenv("FLICKWELL_HOME")) / "imageio";
    fs::create_directories(folder);
    return folder;
}

FLKImage pattern(int width, int height) {
    FLKImage image(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint8_t* p = image.pixel(x, y);
            p[0] = static_cast<uint8_t>(x * 17);
            p[1] = static_cast<uint8_t>(y * 29);
            p[2] = static_cast<uint8_t>((x + y) * 7);
            p[3] = static_cast<uint8_t>(255 - x * y);
        }
    }
    return image;
}
}  // namespace

TEST(FLKImageIO, PNGRoundTripKeepsEveryByte) {
    fs::path url = testFolder() / "nested" / "pattern.png";
    FLKImage image = pattern(13, 7);
    FLKError error;
    ASSERT_TRUE(flk::writePNG(image, url, &error)) << error.fullMessage();
    auto read = flk::readImage(url, &error);
    ASSERT_TRUE(read) << error.fullMessage();
    EXPECT_EQ(read->width, 13);
    EXPECT_EQ(read->height, 7);
    EXPECT_EQ(read->rgba, image.rgba);

    // Only the finished file is left: no temporary beside it.
    int files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(url.parent_path())) ++files;
    EXPECT_EQ(files, 1);
}

TEST(FLKImageIO, UnreadableFilesGiveAnErrorNamingTheFile) {
    fs::path folder = testFolder();
    FLKError missing;
    EXPECT_FALSE(flk::readImage(folder / "absent.png", &missing));
    EXPECT_NE(missing.localizedDescription.find("absent.png"), std::string::npos);
    EXPECT_FALSE(missing.failureReason.empty());

    fs::path garbage = folder / "garbage.png";
    std::ofstream(garbage) << "this is not a picture at all";
    FLKError damaged;
    EXPECT_FALSE(flk::readImage(garbage, &damaged));
    EXPECT_NE(damaged.localizedDescription.find("garbage.png"), std::string::npos);

    fs::path empty = folder / "empty.jpg";
    std::ofstream{empty};
    EXPECT_FALSE(flk::readImage(empty));
    EXPECT_FALSE(flk::readImage(folder));
}

TEST(FLKImageIO, AFailedWriteKeepsThePreviousFile) {
    fs::path url = testFolder() / "keep.png";
    ASSERT_TRUE(flk::writePNG(pattern(4, 4), url));
    auto before = fs::file_size(url);
    FLKError error;
    EXPECT_FALSE(flk::writePNG(FLKImage(), url, &error));
    EXPECT_NE(error.localizedDescription.find("keep.png"), std::string::npos);
    EXPECT_EQ(fs::file_size(url), before);
    EXPECT_TRUE(flk::readImage(url));
}
