#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <sys/wait.h>
#include <unistd.h>

#include "core/media/FLKAsset.h"
#include "core/media/FLKImageIO.h"
#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKVideoContainer.h"

namespace fs = std::filesystem;

namespace {

class FolderFile : public FLKSerializationFile {
public:
    explicit FolderFile(fs::path folder) : folder_(std::move(folder)) {}
    fs::path folderURL() const override { return folder_; }

private:
    fs::path folder_;
};

int runGenerator(const std::string& arguments) {
    std::string command = std::string("\"") + FLK_MAKE_CONTENT + "\" " + arguments + " 2>/dev/null";
    int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<std::string> stringsIn(const fs::path& url) {
    auto json = flk::dictionaryFromJSONAtURL(url);
    std::vector<std::string> names;
    if (json && json->is_array()) {
        for (const auto& name : *json) names.push_back(name.get<std::string>());
    }
    return names;
}

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
    return files;
}

uint8_t alphaAt(const FLKImage& image, FLKPoint point) {
    return image.pixel(static_cast<int>(point.x), static_cast<int>(point.y))[3];
}

// The generated content is the same for every test: made once.
class ContentTests : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        output_ = new fs::path(fs::temp_directory_path() / ("flk-content-" + std::to_string(::getpid())));
        fs::remove_all(*output_);
        status_ = runGenerator("\"" + output_->string() + "\"");
    }
    static void TearDownTestSuite() {
        fs::remove_all(*output_);
        delete output_;
    }
    void SetUp() override { ASSERT_EQ(status_, 0) << "the generator failed"; }

    static fs::path templateFolder(const std::string& name) { return *output_ / (name + ".flickwelltemplate"); }
    static std::vector<std::string> templateNames() { return stringsIn(*output_ / "FLKTemplateList.json"); }

    static std::shared_ptr<FLKScene> loadScene(const std::string& name) {
        fs::path folder = templateFolder(name);
        FLKFileSerializationContextScope scope(std::make_shared<FolderFile>(folder));
        auto scenes = filesIn(folder / "scenes");
        if (scenes.size() != 1) return nullptr;
        return flk::serializableFromJSONAtURL<FLKScene>(scenes.front());
    }

    static inline fs::path* output_ = nullptr;
    static inline int status_ = -1;
};

TEST_F(ContentTests, EveryListedTemplateIsACompletePackage) {
    auto names = templateNames();
    ASSERT_GE(names.size(), 6u);
    for (const auto& name : names) {
        SCOPED_TRACE(name);
        fs::path folder = templateFolder(name);
        ASSERT_TRUE(fs::is_directory(folder));
        ASSERT_EQ(filesIn(folder / "scenes").size(), 1u);
        ASSERT_EQ(filesIn(folder / "timelines").size(), 1u);
        EXPECT_TRUE(fs::is_directory(folder / "media"));
        ASSERT_EQ(filesIn(folder / "preview").size(), 1u);
        EXPECT_TRUE(flk::readImage(filesIn(folder / "preview").front()));

        auto document = flk::dictionaryFromJSONAtURL(folder / "document.json");
        ASSERT_TRUE(document);
        EXPECT_EQ((*document)["className"], "FLKDocument");
        EXPECT_EQ((*document)["scenes"], FLKJSON::array({"scenes/" + filesIn(folder / "scenes").front().stem().string()}));
        EXPECT_EQ((*document)["timelines"],
                  FLKJSON::array({"timelines/" + filesIn(folder / "timelines").front().stem().string()}));
        auto metadata = flk::dictionaryFromJSONAtURL(folder / "metadata.json");
        ASSERT_TRUE(metadata);
        EXPECT_EQ((*metadata)["documentVersion"], 1);
        EXPECT_FALSE(fs::exists(*output_ / ("." + name + ".partial")));
    }
}

TEST_F(ContentTests, ScenesLoadWithBackgroundScreenAndDeviceArtwork) {
    for (const auto& name : templateNames()) {
        SCOPED_TRACE(name);
        auto scene = loadScene(name);
        ASSERT_TRUE(scene);
        ASSERT_TRUE(scene->mainCamera());
        FLKRect frame = scene->mainCamera()->frame();
        EXPECT_TRUE(frame.size.width == 1080 || frame.size.width == 1920);
        EXPECT_EQ(frame.size.width + frame.size.height, 3000);

        auto background = scene->childWithClass<FLKColorGradientSprite>();
        ASSERT_TRUE(background);
        EXPECT_EQ(background->colors().size(), 4u);
        EXPECT_EQ(background->bounds(), frame);

        auto container = scene->childWithClass<FLKVideoContainer>();
        ASSERT_TRUE(container);
        ASSERT_TRUE(container->plane());
        EXPECT_TRUE(container->plane()->isConvex());
        FLKRect screen = container->plane()->bounds();
        EXPECT_GE(screen.origin.x, frame.origin.x);
        EXPECT_LE(screen.maxY(), frame.maxY());
        if (container->videoMaskImageURL()) {
            EXPECT_TRUE(flk::readImage(*container->videoMaskImageURL()));
        }

        if (name == "Full Screen") continue;
        auto device = scene->childWithClass<FLKTexturedSprite>();
        ASSERT_TRUE(device);
        ASSERT_TRUE(device->resourceURL());
        EXPECT_TRUE(fs::exists(*device->resourceURL()));
        ASSERT_TRUE(device->texture()) << "the artwork was not read";
        EXPECT_EQ(device->texture()->width(), device->bounds().size.width);
        EXPECT_GT(device->zOrder(), container->zOrder()) << "the bezel must cover the video's edges";
    }
}

TEST_F(ContentTests, ScreenHoleIsClearAndSurroundedByBezel) {
    for (const auto& name : templateNames()) {
        if (name == "Full Screen") continue;
        SCOPED_TRACE(name);
        auto scene = loadScene(name);
        ASSERT_TRUE(scene);
        auto device = scene->childWithClass<FLKTexturedSprite>();
        auto plane = scene->childWithClass<FLKVideoContainer>()->plane();
        auto image = flk::readImage(*device->resourceURL());
        ASSERT_TRUE(image);
        FLKPoint origin = device->bounds().origin;
        auto local = [&](FLKPoint p, double dx) { return FLKPoint{p.x - origin.x + dx, p.y - origin.y}; };
        FLKPoint middle{(plane->topLeft().x + plane->bottomRight().x) / 2, (plane->topLeft().y + plane->bottomRight().y) / 2};
        FLKPoint leftEdge{(plane->topLeft().x + plane->bottomLeft().x) / 2, (plane->topLeft().y + plane->bottomLeft().y) / 2};
        EXPECT_EQ(alphaAt(*image, local(middle, 0)), 0);
        EXPECT_EQ(alphaAt(*image, local(leftEdge, 4)), 0);
        EXPECT_EQ(alphaAt(*image, local(leftEdge, -6)), 255);
        EXPECT_EQ(alphaAt(*image, {0, 0}), 0) << "the artwork has a margin for its shadow";
    }
}

TEST_F(ContentTests, PerspectiveScreenIsAConvexQuadThatIsNoRectangle) {
    auto scene = loadScene("Phone Perspective");
    ASSERT_TRUE(scene);
    auto plane = scene->childWithClass<FLKVideoContainer>()->plane();
    EXPECT_TRUE(plane->isConvex());
    FLKPoint top{plane->topRight().x - plane->topLeft().x, plane->topRight().y - plane->topLeft().y};
    FLKPoint bottom{plane->bottomRight().x - plane->bottomLeft().x, plane->bottomRight().y - plane->bottomLeft().y};
    FLKPoint left{plane->bottomLeft().x - plane->topLeft().x, plane->bottomLeft().y - plane->topLeft().y};
    double cross = top.x * bottom.y - top.y * bottom.x;
    double dot = top.x * left.x + top.y * left.y;
    EXPECT_GT(std::abs(cross) / (std::hypot(top.x, top.y) * std::hypot(bottom.x, bottom.y)), 0.05)
        << "top and bottom edges are parallel";
    EXPECT_GT(std::abs(dot) / (std::hypot(top.x, top.y) * std::hypot(left.x, left.y)), 0.05) << "square corner";
}

TEST_F(ContentTests, FullScreenTemplateShowsOnlyBackgroundAndVideo) {
    auto scene = loadScene("Full Screen");
    ASSERT_TRUE(scene);
    EXPECT_FALSE(scene->childWithClass<FLKTexturedSprite>());
    EXPECT_EQ(scene->childWithClass<FLKVideoContainer>()->plane()->bounds(), scene->mainCamera()->frame());
    EXPECT_TRUE(filesIn(templateFolder("Full Screen") / "media").empty());
}

TEST_F(ContentTests, MasksAreRoundedAndListed) {
    auto names = stringsIn(*output_ / "FLKMasksList.json");
    ASSERT_FALSE(names.empty());
    for (const auto& name : names) {
        SCOPED_TRACE(name);
        auto mask = flk::readImage(*output_ / (name + ".png"));
        ASSERT_TRUE(mask);
        EXPECT_EQ(alphaAt(*mask, {0, 0}), 0);
        EXPECT_EQ(alphaAt(*mask, {mask->width / 2.0, mask->height / 2.0}), 255);
        EXPECT_EQ(alphaAt(*mask, {mask->width / 2.0, 0}), 255);
    }
}

TEST_F(ContentTests, SilenceLastsAtLeastOneSecond) {
    FLKAsset silence((*output_ / "silence.mp3").string());
    ASSERT_TRUE(silence.isReadable()) << silence.failureReason();
    EXPECT_TRUE(silence.hasAudio());
    EXPECT_FALSE(silence.hasVideo());
    EXPECT_GE(silence.duration(), 1.0);
}

TEST(ContentGenerator, RefusesBadArgumentsAndUnwritableFolders) {
    EXPECT_EQ(runGenerator(""), 2);
    EXPECT_EQ(runGenerator("a b"), 2);
    fs::path file = fs::temp_directory_path() / ("flk-content-file-" + std::to_string(::getpid()));
    std::ofstream(file) << "not a folder";
    EXPECT_EQ(runGenerator("\"" + file.string() + "\""), 1);
    fs::remove(file);
}

}  // namespace
