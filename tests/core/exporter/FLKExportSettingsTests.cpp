#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

#include "core/exporter/FLKExportOptions.h"
#include "core/exporter/FLKExportSettingsParser.h"
#include "core/exporter/FLKExportType.h"
#include "core/exporter/FLKVideoSizeCalculator.h"
#include "core/exporter/FLKVideoSizeIntegritySolver.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"

namespace fs = std::filesystem;

namespace {
const fs::path kShippedSettings = fs::path(FLK_SOURCE_RESOURCES_DIR) / "FLKExportSettings.json";

// Sets FLICKWELL_RESOURCES for the life of the object.
class ResourcesFolder {
public:
    explicit ResourcesFolder(const fs::path& folder) { ::setenv("FLICKWELL_RESOURCES", folder.c_str(), 1); }
    ~ResourcesFolder() { ::unsetenv("FLICKWELL_RESOURCES"); }
};

class FLKExportSettingsFiles : public ::testing::Test {
protected:
    void SetUp() override { flk::setLogSink([this](const std::string& line) { logLines.push_back(line); }); }
    void TearDown() override { flk::setLogSink({}); }

    fs::path write(const std::string& name, const std::string& text) {
        fs::path folder = flk::temporaryHome() / "settings-tests";
        fs::create_directories(folder);
        fs::path url = folder / name;
        std::ofstream(url) << text;
        return url;
    }

    std::vector<std::string> logLines;
};

class Field : public FLKVideoSizeAdapter {
public:
    std::int64_t integerValue() const override { return value; }
    void setIntegerValue(std::int64_t v) override { value = v; }
    std::int64_t value = 0;
};

bool isEven(double side) { return std::fmod(side, 2.0) == 0.0; }
}  // namespace

TEST(FLKExportType, MapsToFileExtensions) {
    EXPECT_STREQ(FLKFileTypeForExportType(FLKExportTypeMP4), "mp4");
    EXPECT_STREQ(FLKFileTypeForExportType(FLKExportTypeGIF), "gif");
    EXPECT_DEATH(FLKFileTypeForExportType(2), "FLKFileTypeForExportType");
    EXPECT_EQ(FLKExportSettingsParser::keyForExportType(FLKExportTypeMP4), "mp4");
    EXPECT_EQ(FLKExportSettingsParser::keyForExportType(FLKExportTypeGIF), "gif");
    EXPECT_EQ(FLKExportSettingsParser::keyForExportType(2), std::nullopt);
}

TEST(FLKExportSettings, ReadsEveryKeyLoosely) {
    auto settings = FLKExportSettings::settingsWithDictionary(FLKJSON::parse(R"({
        "name": "Wide", "imageName": "PresetWide",
        "minAspectRatio": "4:3", "maxAspectRatio": " 16.5:9:2",
        "minResolution": {"width": "640", "height": 480.9},
        "maxResolution": {"width": 1920, "height": 1080},
        "minDuration": 0.1, "maxDuration": "12.5",
        "maxSizeMB": 500, "maxNumFrames": 900.7, "fps": 30, "frameless": true})"));
    EXPECT_EQ(settings->name(), "Wide");
    EXPECT_EQ(settings->imageName(), "PresetWide");
    EXPECT_EQ(settings->minAspectRatio(), (FLKSize{4, 3}));
    EXPECT_EQ(settings->maxAspectRatio(), (FLKSize{16.5, 9}));
    EXPECT_EQ(settings->minVideoResolution(), (FLKSize{640, 480}));
    EXPECT_EQ(settings->maxVideoResolution(), (FLKSize{1920, 1080}));
    EXPECT_EQ(settings->minDuration(), static_cast<double>(0.1f));
    EXPECT_EQ(settings->maxDuration(), 12.5);
    EXPECT_EQ(settings->maxSizeMB(), 500u);
    EXPECT_EQ(settings->maxNumFrames(), 900u);
    EXPECT_EQ(settings->fps(), 30u);
    EXPECT_TRUE(settings->isFrameless());

    FLKExportSettings empty(FLKJSON::parse(R"({"minResolution": [1, 2], "fps": "x"})"));
    EXPECT_EQ(empty.name(), "");
    EXPECT_EQ(empty.minAspectRatio(), (FLKSize{0, 0}));
    EXPECT_EQ(empty.minVideoResolution(), (FLKSize{0, 0}));
    EXPECT_EQ(empty.maxDuration(), 0.0);
    EXPECT_EQ(empty.fps(), 0u);
    EXPECT_FALSE(empty.isFrameless());
}

TEST(FLKExportSettings, AspectRatioStrings) {
    EXPECT_EQ(FLKExportSettings::aspectRatioFromString("16:9"), (FLKSize{16, 9}));
    EXPECT_EQ(FLKExportSettings::aspectRatioFromString("886:1920"), (FLKSize{886, 1920}));
    EXPECT_EQ(FLKExportSettings::aspectRatioFromString("2.35:1"), (FLKSize{static_cast<double>(2.35f), 1}));
    EXPECT_EQ(FLKExportSettings::aspectRatioFromString("wide:"), (FLKSize{0, 0}));
    EXPECT_THROW(FLKExportSettings::aspectRatioFromString("16x9"), std::invalid_argument);
}

TEST(FLKExportSettings, ExportFrameIsTheLargestCentredRectangleOfThePresetShape) {
    auto presetOfSize = [](int width, int height) {
        return FLKExportSettings(FLKJSON{{"maxResolution", {{"width", width}, {"height", height}}}});
    };
    EXPECT_EQ(presetOfSize(1920, 1080).exportFrameForCanvasSize({1920, 1080}), FLKRect(0, 0, 1920, 1080));
    EXPECT_EQ(presetOfSize(1080, 1080).exportFrameForCanvasSize({1920, 1080}), FLKRect(420, 0, 1080, 1080));
    EXPECT_EQ(presetOfSize(1920, 1080).exportFrameForCanvasSize({1080, 1920}), FLKRect(0, 656.25, 1080, 607.5));
    EXPECT_EQ(presetOfSize(3840, 2160).exportFrameForCanvasSize({1920, 1080}), FLKRect(0, 0, 1920, 1080));
    EXPECT_EQ(presetOfSize(0, 0).exportFrameForCanvasSize({1920, 1080}).size, (FLKSize{0, 0}));
}

TEST(FLKExportSettingsParser, ShippedPresetsAreUsable) {
    FLKExportSettingsParser parser("FLKExportSettings", kShippedSettings);
    FLKError error;
    auto mp4 = parser.settingsForExportType(FLKExportTypeMP4, &error);
    auto gif = parser.settingsForExportType(FLKExportTypeGIF, &error);
    EXPECT_TRUE(error.localizedDescription.empty()) << error.fullMessage();
    ASSERT_EQ(mp4.size(), 9u);
    ASSERT_EQ(gif.size(), 3u);

    std::set<std::string> names;
    int storePresets = 0;
    for (auto type : {FLKExportTypeMP4, FLKExportTypeGIF}) {
        auto calculator = FLKVideoSizeCalculator::calculatorWithType(type, {1, 1});
        for (const auto& preset : type == FLKExportTypeMP4 ? mp4 : gif) {
            SCOPED_TRACE(preset->name());
            EXPECT_TRUE(names.insert(preset->name()).second);
            EXPECT_FALSE(preset->imageName().empty());
            FLKSize size = preset->maxVideoResolution();
            FLKSize smallest = preset->minVideoResolution();
            EXPECT_TRUE(isEven(size.width) && isEven(size.height) && isEven(smallest.width) && isEven(smallest.height));
            EXPECT_LE(smallest.width, size.width);
            EXPECT_LE(smallest.height, size.height);
            EXPECT_GE(std::min(smallest.width, smallest.height), calculator->minHeight());
            EXPECT_LE(std::max(size.width, size.height), calculator->maxHeight());
            FLKSize ratio = preset->maxAspectRatio();
            EXPECT_NEAR(size.width / size.height, ratio.width / ratio.height, 1e-3);
            EXPECT_EQ(preset->minAspectRatio(), ratio);
            EXPECT_LT(0.0, preset->minDuration());
            EXPECT_LT(preset->minDuration(), preset->maxDuration());
            EXPECT_GT(preset->maxSizeMB(), 0u);
            EXPECT_EQ(preset->maxNumFrames(), static_cast<std::uint64_t>(preset->maxDuration() * preset->fps()));

            // The size editor opens at the preset's own size.
            auto width = std::make_shared<Field>();
            auto height = std::make_shared<Field>();
            FLKVideoSizeIntegritySolver solver(
                width, height, FLKExportOptions::exportOptionsWithType(type, "/tmp/x", {}, size, 1, 30, 30, {}));
            EXPECT_EQ(solver.videoSize(), size);

            if (preset->isFrameless()) {
                ++storePresets;
                EXPECT_EQ(type, FLKExportTypeMP4);
                EXPECT_EQ(preset->fps(), 30u);
                EXPECT_EQ(preset->minDuration(), 15.0);
                EXPECT_EQ(preset->maxDuration(), 30.0);
                EXPECT_EQ(preset->maxSizeMB(), 500u);
                EXPECT_EQ(smallest, size);
            }
            if (type == FLKExportTypeGIF) {
                EXPECT_EQ(preset->fps(), 15u);
            }
        }
    }
    EXPECT_EQ(storePresets, 6);
}

TEST(FLKExportSettingsParser, FindsTheResourceByName) {
    ResourcesFolder resources(FLK_SOURCE_RESOURCES_DIR);
    FLKExportSettingsParser parser("FLKExportSettings");
    auto gif = parser.settingsForExportType(FLKExportTypeGIF);
    ASSERT_EQ(gif.size(), 3u);
    EXPECT_EQ(gif[0]->name(), "README");
    EXPECT_TRUE(parser.settingsForExportType(7).empty());
}

TEST_F(FLKExportSettingsFiles, PresetsAreReadOncePerType) {
    fs::path url = write("cached.json", R"({"mp4": [{"name": "A"}, {"name": "B"}]})");
    FLKExportSettingsParser parser("cached", url);
    auto first = parser.settingsForExportType(FLKExportTypeMP4);
    ASSERT_EQ(first.size(), 2u);
    EXPECT_EQ(first[1]->name(), "B");

    write("cached.json", R"({"mp4": [], "gif": [{"name": "C"}]})");
    EXPECT_EQ(parser.settingsForExportType(FLKExportTypeMP4), first);
    ASSERT_EQ(parser.settingsForExportType(FLKExportTypeGIF).size(), 1u);
}

TEST_F(FLKExportSettingsFiles, BadFilesAreReportedWithTheirName) {
    fs::path badRatio = write("bad-ratio.json", R"({"gif": [{"name": "A", "minAspectRatio": "4"}, {"name": "B"}]})");
    FLKError error;
    auto list = FLKExportSettingsParser("bad", badRatio).settingsForExportType(FLKExportTypeGIF, &error);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0]->name(), "B");
    EXPECT_NE(error.fullMessage().find(badRatio.string()), std::string::npos) << error.fullMessage();
    EXPECT_NE(error.fullMessage().find("\"4\""), std::string::npos) << error.fullMessage();

    fs::path notJSON = write("not-json.json", "{\"gif\": [");
    error = {};
    EXPECT_TRUE(FLKExportSettingsParser("bad", notJSON).settingsForExportType(FLKExportTypeGIF, &error).empty());
    EXPECT_NE(error.fullMessage().find(notJSON.string()), std::string::npos) << error.fullMessage();

    error = {};
    fs::path missing = notJSON.parent_path() / "missing.json";
    EXPECT_TRUE(FLKExportSettingsParser("bad", missing).settingsForExportType(FLKExportTypeMP4, &error).empty());
    EXPECT_NE(error.fullMessage().find(missing.string()), std::string::npos) << error.fullMessage();
    EXPECT_EQ(logLines.size(), 3u);

    error = {};
    fs::path noKey = write("no-key.json", R"({"gif": []})");
    EXPECT_TRUE(FLKExportSettingsParser("bad", noKey).settingsForExportType(FLKExportTypeMP4, &error).empty());
    EXPECT_TRUE(error.localizedDescription.empty());
}

TEST_F(FLKExportSettingsFiles, OptionsFixTheirDerivedLocations) {
    auto options = FLKExportOptions::exportOptionsWithType(FLKExportTypeMP4, "/tmp/out.mp4", {1, 2, 3, 4},
                                                           {1080, 1920}, 300, 30, 15, std::nullopt);
    EXPECT_EQ(options->destinationURL(), "/tmp/out.mp4");
    EXPECT_EQ(options->frame(), FLKRect(1, 2, 3, 4));
    EXPECT_EQ(options->videoSize(), (FLKSize{1080, 1920}));
    EXPECT_EQ(options->numFrames(), 300u);
    EXPECT_EQ(options->fps(), 30u);
    EXPECT_EQ(options->outputFps(), 15u);

    auto temporary = options->tempDestinationURL();
    ASSERT_TRUE(temporary);
    EXPECT_EQ(temporary->extension(), ".m4v");
    EXPECT_EQ(temporary->parent_path(), flk::temporaryHome() / "Export");
    EXPECT_EQ(options->tempDestinationURL(), temporary);

    fs::path silence = write("silence.mp3", "not really audio");
    {
        ResourcesFolder resources(silence.parent_path());
        EXPECT_EQ(options->audioURL(), silence);
    }
    EXPECT_EQ(options->audioURL(), silence);

    auto gif = FLKExportOptions::exportOptionsWithType(FLKExportTypeGIF, "/tmp/out.gif", {}, {480, 480}, 1, 30, 30,
                                                       fs::path("/music/song.mp3"));
    EXPECT_EQ(gif->tempDestinationURL(), std::nullopt);
    EXPECT_EQ(gif->audioURL(), fs::path("/music/song.mp3"));
}
