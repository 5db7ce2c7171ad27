#include <gtest/gtest.h>

#include "core/model/FLKMasksManager.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKSerializable.h"
#include "core/model/FLKDocumentTestSupport.h"

namespace fs = std::filesystem;
using namespace flk::doctest;

namespace {

struct MasksFixture {
    fs::path folder = freshFolder();
    std::shared_ptr<FLKLocalStore> store = std::make_shared<FLKLocalStore>(folder / "masks", "png");
    int updates = 0;
    FLKObservation observation{FLKNotificationCenter::defaultCenter(),
                               FLKNotificationCenter::defaultCenter().addObserver(
                                   kFLKMasksManagerMasksDidUpdateNotification, nullptr,
                                   [this](const FLKNotification&) { ++updates; })};
};

}  // namespace

TEST(FLKMasksManager, AddingAndRemovingKeepsTheListInOrder) {
    MasksFixture f;
    FLKMasksManager manager(f.store);
    EXPECT_TRUE(manager.masksNames().empty());
    // Built-in masks (whatever the resources hold) always come first.
    const std::vector<fs::path> builtIns = manager.masks();

    auto circle = manager.addMaskFromURL(writeTestPNG(f.folder / "Circle.png"));
    auto star = manager.addMaskFromURL(writeTestPNG(f.folder / "Star.png"));
    ASSERT_TRUE(circle && star);
    EXPECT_EQ(*circle, f.folder / "masks" / "Circle.png");
    EXPECT_EQ(manager.masksNames(), (std::vector<std::string>{"Circle", "Star"}));
    std::vector<fs::path> expected = builtIns;
    expected.insert(expected.end(), {*circle, *star});
    EXPECT_EQ(manager.masks(), expected);
    EXPECT_EQ(manager.maskNamed("Star"), star);
    EXPECT_EQ(f.updates, 2);

    FLKError error;
    EXPECT_FALSE(manager.addMaskFromURL(f.folder / "Circle.png", &error));  // name taken
    EXPECT_FALSE(error.localizedDescription.empty());
    writeText(f.folder / "Photo.jpg", "jpeg");
    error = {};
    EXPECT_FALSE(manager.addMaskFromURL(f.folder / "Photo.jpg", &error));
    EXPECT_NE(error.fullMessage().find("PNG"), std::string::npos);
    EXPECT_EQ(manager.masksNames().size(), 2u);
    EXPECT_EQ(f.updates, 2);

    ASSERT_TRUE(manager.removeMask(*circle));
    EXPECT_FALSE(fs::exists(*circle));
    EXPECT_EQ(manager.masksNames(), (std::vector<std::string>{"Star"}));
    EXPECT_EQ(f.updates, 3);

    error = {};
    EXPECT_FALSE(manager.removeMask(*circle, &error));  // already gone
    EXPECT_FALSE(manager.removeMask(f.folder / "Circle.png", &error));  // not one of the user's masks
    EXPECT_TRUE(fs::exists(f.folder / "Circle.png"));
    EXPECT_EQ(manager.masksNames(), (std::vector<std::string>{"Star"}));
    EXPECT_EQ(f.updates, 3);
}

TEST(FLKMasksManager, StartingUpDropsMasksWhoseFilesAreGoneAndBadNames) {
    MasksFixture f;
    {
        FLKMasksManager manager(f.store);
        ASSERT_TRUE(manager.addMaskFromURL(writeTestPNG(f.folder / "Keep.png")));
        ASSERT_TRUE(manager.addMaskFromURL(writeTestPNG(f.folder / "Lost.png")));
    }
    fs::remove(f.folder / "masks" / "Lost.png");
    auto list = *FLKMasksManager(f.store).plistURL();
    writeText(list, R"(["Keep","Lost","../Keep",7,"Keep"])");

    FLKMasksManager restarted(f.store);
    EXPECT_EQ(restarted.masksNames(), (std::vector<std::string>{"Keep"}));
    EXPECT_EQ(FLKJSON::parse(readText(list)), FLKJSON::parse(R"(["Keep"])"));
}
