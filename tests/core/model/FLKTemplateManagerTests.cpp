#include <gtest/gtest.h>

#include <cstdlib>

#include "core/model/FLKDocumentTestSupport.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTemplate.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/scene/FLKScene.h"

namespace fs = std::filesystem;
using namespace flk::doctest;

namespace {

FLKObservation observe(const char* name, const void* object, FLKNotificationCenter::Observer observer) {
    auto& center = FLKNotificationCenter::defaultCenter();
    return FLKObservation(center, center.addObserver(name, object, std::move(observer)));
}

// Records presented errors instead of printing them.
struct RecordingFeedback : FLKUserFeedback {
    std::vector<std::string> errors;
    void beep() override {}
    void presentError(const FLKError& error) override { errors.push_back(error.localizedDescription); }
};

// A resources folder with built-in templates "A" and "B", and a user store,
// both fresh for each test.
class TemplateFixture : public ::testing::Test {
protected:
    void SetUp() override {
        folder_ = freshFolder();
        resources_ = folder_ / "resources";
        fs::create_directories(resources_);
        for (const char* name : {"A", "B"}) writeTemplateFolder(resources_, name);
        flk::writeJSONToURL(FLKJSON::array({"A", "B"}), resources_ / "FLKTemplateList.json");
        const char* previous = std::getenv("FLICKWELL_RESOURCES");
        previousResources_ = previous ? std::optional<std::string>(previous) : std::nullopt;
        setenv("FLICKWELL_RESOURCES", resources_.c_str(), 1);
        store_ = std::make_shared<FLKLocalStore>(folder_ / "user", kFLKFileExtensionFlickwellTemplate);
        feedback_ = std::make_shared<RecordingFeedback>();
        FLKUserFeedback::setShared(feedback_);
    }
    void TearDown() override {
        if (previousResources_) setenv("FLICKWELL_RESOURCES", previousResources_->c_str(), 1);
        else unsetenv("FLICKWELL_RESOURCES");
        FLKUserFeedback::setShared(nullptr);
        FLKFile::setCurrentFile(nullptr);
    }

    // A template folder whose scene is named after the template.
    static fs::path writeTemplateFolder(const fs::path& parent, const std::string& name) {
        auto file = FLKFile::temporaryFile();
        auto scene = std::make_shared<FLKScene>();
        scene->setName(name);
        file->document()->setCurrentScene(scene);
        EXPECT_TRUE(file->prepareForWriting());
        auto target = parent / (name + "." + kFLKFileExtensionFlickwellTemplate);
        EXPECT_TRUE(flk::copyItem(file->URL(), target));
        return target;
    }
    void writeUserList(const std::vector<std::string>& names) {
        ASSERT_TRUE(flk::writeJSONToURL(FLKJSON(names), *store_->localURLForPlistWithName("FLKTemplateList")));
    }
    static std::vector<std::string> namesOf(const FLKTemplateManager& manager) {
        std::vector<std::string> names;
        for (const auto& t : manager.templates()) names.push_back(t->name());
        return names;
    }
    using Names = std::vector<std::string>;

    fs::path folder_, resources_;
    std::optional<std::string> previousResources_;
    std::shared_ptr<FLKLocalStore> store_;
    std::shared_ptr<RecordingFeedback> feedback_;
};

}  // namespace

TEST_F(TemplateFixture, UserTemplateNamedLikeABuiltInOneIsListedOnceAtTheBuiltInPlace) {
    writeTemplateFolder(store_->directoryURL(), "B");
    writeTemplateFolder(store_->directoryURL(), "C");
    writeUserList({"C", "B"});
    FLKTemplateManager manager(store_);
    EXPECT_EQ(manager.templateNames(), (Names{"A", "B", "C"}));
    EXPECT_EQ(namesOf(manager), (Names{"A", "B", "C"}));
    EXPECT_EQ(*manager.templateNamed("B"), resources_ / "B.flickwelltemplate");
    EXPECT_TRUE(manager.isBundledTemplate(*manager.templates()[1]));
    EXPECT_FALSE(manager.isBundledTemplate(*manager.templates()[2]));
}

TEST_F(TemplateFixture, UserTemplateDeletedBehindOurBackIsDroppedAtStartUp) {
    writeTemplateFolder(store_->directoryURL(), "C");
    writeUserList({"Gone", "C"});
    FLKTemplateManager manager(store_);
    EXPECT_EQ(manager.userTemplateNames(), (Names{"C"}));
    EXPECT_EQ(namesOf(manager), (Names{"A", "B", "C"}));
}

TEST_F(TemplateFixture, SavingAppendsAndSelectsWhileOverwritingKeepsThePlace) {
    FLKTemplateManager manager(store_);
    FLKSceneLoader loader(manager);
    FLKScene::setCurrentSceneProvider(nullptr);
    ASSERT_TRUE(loader.loadFirstScene());
    // As in the program: no one but the loader says which scene is current.
    auto scene = loader.currentScene();
    ASSERT_EQ(FLKScene::currentScene(), scene);

    int updates = 0;
    auto observation = observe(kFLKTemplateManagerTemplatesDidUpdateNotification, nullptr,
                               [&](const FLKNotification&) { ++updates; });
    ASSERT_TRUE(manager.saveTemplateWithName("Mine", false));
    ASSERT_TRUE(manager.saveTemplateWithName("Second", false));
    EXPECT_EQ(namesOf(manager), (Names{"A", "B", "Mine", "Second"}));
    EXPECT_EQ(manager.selectedTemplate()->name(), "Second");

    scene->setName("changed");
    ASSERT_TRUE(manager.saveTemplateWithName("Mine", true));
    EXPECT_EQ(namesOf(manager), (Names{"A", "B", "Mine", "Second"}));
    EXPECT_EQ(manager.selectedTemplateIndex(), 2u);
    EXPECT_EQ(*manager.templates()[2]->scene()->name(), "changed");
    EXPECT_EQ(updates, 3);

    // Saving a new template under a taken name is presented and changes nothing.
    EXPECT_FALSE(manager.saveTemplateWithName("Mine", false));
    EXPECT_EQ(feedback_->errors.size(), 1u);
    EXPECT_EQ(manager.userTemplateNames(), (Names{"Mine", "Second"}));
}

TEST_F(TemplateFixture, RenamingFailsOnATakenNameAndOtherwiseMovesToTheEnd) {
    for (const char* name : {"C", "D"}) writeTemplateFolder(store_->directoryURL(), name);
    writeUserList({"C", "D"});
    FLKTemplateManager manager(store_);
    auto c = manager.templateWithName("C");

    FLKError error;
    EXPECT_FALSE(manager.renameTemplate(c, "B", &error));
    EXPECT_EQ(error.localizedDescription, "A template with name B already exists.");
    EXPECT_TRUE(fs::exists(c->URL()));

    ASSERT_TRUE(manager.renameTemplate(c, "E", &error)) << error.fullMessage();
    EXPECT_EQ(manager.userTemplateNames(), (Names{"D", "E"}));
    EXPECT_EQ(namesOf(manager), (Names{"A", "B", "D", "E"}));
    EXPECT_EQ(manager.selectedTemplate()->name(), "E");
    EXPECT_FALSE(fs::exists(c->URL()));
}

TEST_F(TemplateFixture, RemovingDeletesTheFolderUnlistsItAndClearsTheSelection) {
    writeTemplateFolder(store_->directoryURL(), "C");
    writeUserList({"C"});
    FLKTemplateManager manager(store_);
    manager.selectTemplateNamed("C");
    auto c = manager.selectedTemplate();
    ASSERT_TRUE(manager.removeTemplate(c));
    EXPECT_FALSE(fs::exists(c->URL()));
    EXPECT_EQ(namesOf(manager), (Names{"A", "B"}));
    EXPECT_EQ(manager.selectedTemplate(), nullptr);
    // A built-in one stays, with the refusal presented.
    EXPECT_FALSE(manager.removeTemplate(manager.templates()[0]));
    EXPECT_TRUE(fs::exists(resources_ / "A.flickwelltemplate"));
    EXPECT_EQ(feedback_->errors.size(), 1u);
}

TEST_F(TemplateFixture, ImportingCopiesTheFolderInUnderItsOwnName) {
    auto outside = writeTemplateFolder(folder_, "Imported");
    FLKTemplateManager manager(store_);
    ASSERT_TRUE(manager.addTemplateFromURL(outside));
    EXPECT_EQ(namesOf(manager), (Names{"A", "B", "Imported"}));
    EXPECT_TRUE(fs::exists(outside));
    EXPECT_FALSE(manager.addTemplateFromURL(folder_ / "nothing.flickwelltemplate"));
}

TEST_F(TemplateFixture, LoadingATemplateWorksOnACopyKeepsMediaAndNotifiesOnce) {
    FLKTemplateManager manager(store_);
    FLKSceneLoader loader(manager);
    std::vector<int64_t> types;
    auto observation = observe(kFLKSceneLoaderDidLoadSceneNotification, &loader, [&](const FLKNotification& n) {
        types.push_back(std::get<int64_t>(n.userInfo.at(kFLKSceneLoaderLoadTypeUserInfoKey)));
    });
    ASSERT_TRUE(loader.loadFirstScene());
    EXPECT_EQ(*loader.currentScene()->name(), "A");
    auto first = FLKFile::currentFile();
    auto recording = *first->media()->addFile(writeTestPNG(folder_ / "brought.png"));

    ASSERT_TRUE(loader.loadSceneFromTemplate(manager.templateWithName("B")));
    EXPECT_EQ(*loader.currentScene()->name(), "B");
    auto second = FLKFile::currentFile();
    EXPECT_NE(second->URL(), first->URL());
    EXPECT_TRUE(fs::exists(second->mediaURL() / recording.filename()));
    EXPECT_EQ(types, (std::vector<int64_t>{2, 2}));

    // The template folder itself is never touched by working on the copy.
    EXPECT_FALSE(fs::exists(resources_ / "B.flickwelltemplate" / "media" / recording.filename()));
    auto firstFolder = first->URL();
    first.reset();
    EXPECT_FALSE(fs::exists(firstFolder));  // released with the previous document
}

TEST_F(TemplateFixture, LoadingSomethingThatIsNotADocumentKeepsTheCurrentOne) {
    FLKTemplateManager manager(store_);
    FLKSceneLoader loader(manager);
    ASSERT_TRUE(loader.loadFirstScene());
    auto current = FLKFile::currentFile();
    writeText(folder_ / "notes.txt", "hello");
    writeText(folder_ / "broken.flickwell", "not a zip");
    FLKError error;
    EXPECT_EQ(loader.loadSceneFromFileURL(folder_ / "notes.txt", &error), nullptr);
    EXPECT_NE(error.localizedDescription.find("notes.txt"), std::string::npos);
    EXPECT_EQ(loader.loadSceneFromFileURL(folder_ / "broken.flickwell", &error), nullptr);
    EXPECT_EQ(FLKFile::currentFile(), current);
}
