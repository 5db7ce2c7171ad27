#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <regex>

#include "core/model/FLKDocument.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKMetadata.h"
#include "core/model/FLKReadonlyFile.h"
#include "core/platform/FLKPaths.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/model/FLKDocumentTestSupport.h"

namespace fs = std::filesystem;
using namespace flk::doctest;

namespace {

struct Fixture {
    std::shared_ptr<FLKFile> file = FLKFile::temporaryFile();
    std::shared_ptr<FLKScene> scene = std::make_shared<FLKScene>();
    std::shared_ptr<FLKTimeline> timeline = FLKTimeline::timelineWithTimer({});
    fs::path shared;  // referenced by two sprites
    fs::path unreferencedImage;
    fs::path unreferencedFile;

    explicit Fixture(const fs::path& folder) {
        shared = *file->media()->addFile(writeTestPNG(folder / "screen.jpg.png"));
        unreferencedImage = *file->media()->addFile(writeTestPNG(folder / "old.png"));
        writeText(folder / "notes.bin", "not a picture");
        unreferencedFile = *file->media()->addFile(folder / "notes.bin");
        for (int i = 0; i < 2; ++i) {
            auto sprite = std::make_shared<FLKTexturedSprite>();
            sprite->setResourceURL(shared);
            scene->addChild(sprite);
        }
    }
};

}  // namespace

TEST(FLKDocumentFile, SavedPackageHoldsTheModelFilesAndOnlyReferencedMedia) {
    auto folder = freshFolder();
    Fixture f(folder);
    ASSERT_EQ(f.unreferencedFile.extension(), ".bin");
    ASSERT_EQ(f.shared.extension(), ".png");  // images come in redrawn as PNG

    auto destination = folder / "Promo.flickwell";
    FLKError error;
    ASSERT_TRUE(f.file->writeScene(f.scene, f.timeline, destination, &error)) << error.fullMessage();

    auto entries = archiveEntries(destination);
    const std::string S = *f.scene->identifier(), T = f.timeline->identifier();
    std::set<std::string> withoutPreview;
    std::vector<std::string> previews;
    for (const auto& name : entries) {
        if (name.rfind("preview/", 0) == 0 && name != "preview/") previews.push_back(name);
        else withoutPreview.insert(name);
    }
    EXPECT_EQ(withoutPreview, (std::set<std::string>{"document.json", "metadata.json", "scenes/", "scenes/" + S + ".json",
                                                     "timelines/", "timelines/" + T + ".json", "media/",
                                                     "media/" + f.shared.filename().string(), "preview/"}));
    EXPECT_EQ(previews.size(), 1u);  // the first textured sprite's picture

    auto documentText = readText(f.file->documentURL());
    EXPECT_EQ(documentText.find('\n'), std::string::npos);
    EXPECT_EQ(FLKJSON::parse(documentText),
              FLKJSON::parse(R"({"className":"FLKDocument","scenes":["scenes/)" + S + R"("],"timelines":["timelines/)" +
                             T + R"("]})"));
    EXPECT_FALSE(fs::exists(f.unreferencedImage));
    EXPECT_FALSE(fs::exists(f.unreferencedFile));

    ASSERT_TRUE(f.file->preview()->image());
    EXPECT_EQ(f.file->preview()->image()->width, f.file->preview()->image()->height);  // 8x4 cropped to 4x4
}

// An autosave must not take away media the undo history may bring back.
TEST(FLKDocumentFile, SnapshotKeepsTheWorkingFoldersMediaAndHoldsThemAll) {
    auto folder = freshFolder();
    Fixture f(folder);
    auto destination = folder / "Snapshot.flickwell";
    FLKError error;
    ASSERT_TRUE(f.file->writeSnapshot(f.scene, f.timeline, destination, &error)) << error.fullMessage();
    EXPECT_TRUE(fs::exists(f.unreferencedImage));
    EXPECT_TRUE(fs::exists(f.unreferencedFile));
    auto entries = archiveEntries(destination);
    const std::set<std::string> names(entries.begin(), entries.end());
    EXPECT_TRUE(names.count("media/" + f.unreferencedFile.filename().string()));
    EXPECT_TRUE(names.count("scenes/" + *f.scene->identifier() + ".json"));

    auto reopened = FLKFile::fileWithURL(destination)->temporaryFileCopy(&error);
    ASSERT_TRUE(reopened) << error.fullMessage();
    ASSERT_TRUE(reopened->document()->currentScene());
    EXPECT_EQ(*reopened->document()->currentScene()->identifier(), *f.scene->identifier());
}

TEST(FLKDocumentFile, MetadataCarriesTheSavingApplication) {
    auto folder = freshFolder();
    Fixture f(folder);
    f.file->metadata()->setApp("org.example.Old");
    f.file->metadata()->setAppVersion("0.0.1");
    f.file->metadata()->setAppBuild("7");
    f.file->metadata()->setDocumentVersion(0);

    ASSERT_TRUE(f.file->writeScene(f.scene, f.timeline, folder / "a.flickwell"));
    auto metadata = FLKJSON::parse(readText(f.file->metadataURL()));
    EXPECT_EQ(metadata["className"], "FLKMetadata");
    EXPECT_EQ(metadata["documentVersion"], 1);
    EXPECT_EQ(metadata["app"], "org.flickwell.Flickwell");
    EXPECT_EQ(metadata["appVersion"], flk::bundleVersion());
    EXPECT_EQ(metadata["appBuild"], flk::bundleBuild());
    EXPECT_TRUE(std::regex_match(flk::bundleVersion(), std::regex(R"(\d+\.\d+\.\d+)")));
    EXPECT_EQ(metadata.size(), 5u);
}

TEST(FLKDocumentFile, SavingOverAFileReplacesItWithoutLeavingArchivesBehind) {
    auto folder = freshFolder();
    Fixture f(folder);
    auto destination = folder / "Promo.flickwell";
    ASSERT_TRUE(f.file->writeScene(f.scene, f.timeline, destination));
    struct stat before {};
    ::stat(destination.c_str(), &before);

    auto otherScene = std::make_shared<FLKScene>();
    FLKError error;
    ASSERT_TRUE(f.file->writeScene(otherScene, f.timeline, destination, &error)) << error.fullMessage();
    struct stat after {};
    ::stat(destination.c_str(), &after);
    EXPECT_NE(before.st_ino, after.st_ino);  // a new file renamed into place, not rewritten in place

    auto entries = archiveEntries(destination);
    EXPECT_TRUE(entries.count("scenes/" + *otherScene->identifier() + ".json"));
    EXPECT_FALSE(entries.count("scenes/" + *f.scene->identifier() + ".json"));
    EXPECT_FALSE(entries.count("media/" + f.shared.filename().string()));  // no longer referenced

    std::set<fs::path> beside;
    for (const auto& entry : fs::directory_iterator(folder)) beside.insert(entry.path().filename());
    EXPECT_EQ(beside, (std::set<fs::path>{"Promo.flickwell", "screen.jpg.png", "old.png", "notes.bin"}));
    for (const auto& entry : fs::directory_iterator(f.file->URL().parent_path())) {
        EXPECT_NE(entry.path().extension(), ".flickwell") << entry.path();
    }
}

TEST(FLKDocumentFile, AFailedSaveIsReportedAndLeavesThePreviousFile) {
    auto folder = freshFolder();
    Fixture f(folder);
    auto destination = folder / "Promo.flickwell";
    ASSERT_TRUE(f.file->writeScene(f.scene, f.timeline, destination));
    const auto original = readText(destination);
    const auto contents = folderContents(folder);

    // A folder where document.json belongs makes the first write fail.
    fs::remove(f.file->documentURL());
    fs::create_directories(f.file->documentURL() / "blocker");
    FLKError error;
    EXPECT_FALSE(f.file->writeAtURL(destination, &error));
    EXPECT_NE(error.fullMessage().find("could not be saved"), std::string::npos) << error.fullMessage();
    EXPECT_EQ(readText(destination), original);
    fs::remove_all(f.file->documentURL());

    // Something that is not a document in the way of the destination.
    auto inTheWay = folder / "Folder.flickwell";
    fs::create_directories(inTheWay / "keep");
    error = {};
    EXPECT_FALSE(f.file->writeAtURL(inTheWay, &error));
    EXPECT_FALSE(error.localizedDescription.empty());
    EXPECT_TRUE(fs::is_directory(inTheWay / "keep"));

    if (::geteuid() != 0) {  // root writes into read-only folders regardless
        fs::permissions(folder, fs::perms::owner_write, fs::perm_options::remove);
        error = {};
        EXPECT_FALSE(f.file->writeAtURL(destination, &error));
        EXPECT_FALSE(error.localizedDescription.empty());
        fs::permissions(folder, fs::perms::owner_write, fs::perm_options::add);
        EXPECT_EQ(readText(destination), original);
    }
    fs::remove_all(inTheWay);
    EXPECT_EQ(folderContents(folder), contents);  // no archive left beside it
}

TEST(FLKDocumentFile, OpeningReadsTheModelIntoItsOwnWorkingFolder) {
    auto folder = freshFolder();
    Fixture f(folder);
    auto destination = folder / "Promo.flickwell";
    ASSERT_TRUE(f.file->writeScene(f.scene, f.timeline, destination));
    const auto original = readText(destination);

    EXPECT_EQ(FLKFile::fileWithURL(folder / "Promo.zip"), nullptr);
    EXPECT_EQ(FLKFile::fileWithURL(folder / "notes.bin"), nullptr);

    auto readonly = FLKFile::fileWithURL(destination);
    ASSERT_NE(readonly, nullptr);
    EXPECT_EQ(readonly->URL(), destination);
    FLKError error;
    auto opened = readonly->temporaryFileCopy(&error);
    ASSERT_NE(opened, nullptr) << error.fullMessage();
    EXPECT_NE(opened->URL(), f.file->URL());
    ASSERT_TRUE(opened->document()->currentScene());
    EXPECT_EQ(opened->document()->currentScene()->identifier(), f.scene->identifier());
    EXPECT_EQ(opened->document()->currentScene()->children().size(), 2u);
    ASSERT_TRUE(opened->document()->currentTimeline());
    EXPECT_EQ(opened->document()->currentTimeline()->identifier(), f.timeline->identifier());
    EXPECT_TRUE(opened->metadata()->isEqual(FLKMetadata()));
    EXPECT_TRUE(fs::exists(opened->mediaURL() / f.shared.filename()));

    const auto workingFolder = opened->URL();
    opened.reset();
    readonly.reset();
    EXPECT_FALSE(fs::exists(workingFolder));
    EXPECT_EQ(readText(destination), original);

    const auto ownFolder = f.file->URL();
    f.file.reset();
    EXPECT_FALSE(fs::exists(ownFolder));
}

// A soundtrack is stored by its absolute location; for one copied into the
// media that names the working folder of the session that saved it.
TEST(FLKDocumentFile, ASoundtrackInTheMediaIsSavedAndFoundAgainWhenOpened) {
    auto folder = freshFolder();
    auto file = FLKFile::temporaryFile();
    writeText(folder / "tone.m4a", "sound");
    writeText(folder / "song.m4a", "the user's own");
    const auto copied = *file->media()->addFile(folder / "tone.m4a");
    auto scene = std::make_shared<FLKScene>();
    auto screen = std::make_shared<FLKVideoContainer>();
    scene->addChild(screen);
    screen->setAudio(FLKAudioTrack::audioTrackWithAudioURL(copied));
    auto outside = std::make_shared<FLKVideoContainer>();
    scene->addChild(outside);
    outside->setAudio(FLKAudioTrack::audioTrackWithAudioURL(folder / "song.m4a"));
    auto destination = folder / "Sound.flickwell";
    ASSERT_TRUE(file->writeScene(scene, FLKTimeline::timelineWithTimer({}), destination));
    EXPECT_EQ(archiveEntries(destination).count("media/" + copied.filename().string()), 1u);
    file.reset();  // as in a later session: the folder that saved it is gone

    FLKError error;
    auto opened = FLKFile::fileWithURL(destination)->temporaryFileCopy(&error);
    ASSERT_NE(opened, nullptr) << error.fullMessage();
    std::vector<fs::path> sounds;
    for (const auto& track : opened->document()->currentScene()->childrenWithClass<FLKAudioTrack>()) {
        ASSERT_TRUE(track->audioURL());
        sounds.push_back(*track->audioURL());
    }
    std::sort(sounds.begin(), sounds.end());
    EXPECT_EQ(sounds, (std::vector<fs::path>{folder / "song.m4a", opened->mediaURL() / copied.filename()}));
    EXPECT_EQ(readText(opened->mediaURL() / copied.filename()), "sound");
}

TEST(FLKDocumentFile, ACopyOfADocumentSharesItsMediaButNotItsFolder) {
    auto folder = freshFolder();
    Fixture f(folder);
    ASSERT_TRUE(f.file->writeScene(f.scene, f.timeline, folder / "a.flickwell"));
    auto copy = f.file->temporaryFileCopy();
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->URL(), f.file->URL());
    EXPECT_TRUE(fs::exists(copy->mediaURL() / f.shared.filename()));
    EXPECT_EQ(copy->document()->currentScene(), nullptr);  // callers choose what the copy keeps
}

TEST(FLKDocumentRecords, EqualityFollowsTheirContent) {
    auto scene = std::make_shared<FLKScene>();
    auto timeline = FLKTimeline::timelineWithTimer({});
    FLKDocument a, b;
    a.setCurrentScene(scene);
    a.setCurrentTimeline(timeline);
    b.setCurrentScene(scene);
    EXPECT_FALSE(a.isEqual(b));
    b.setCurrentTimeline(timeline);
    EXPECT_TRUE(a.isEqual(b));
    EXPECT_EQ(a.hash(), b.hash());

    auto stored = FLKMetadata::newWithDictionary(
        FLKJSON{{"documentVersion", 1}, {"app", "x"}, {"appVersion", "1.0"}, {"appBuild", "3"}});
    EXPECT_EQ(stored->app(), "x");
    EXPECT_FALSE(stored->isEqual(FLKMetadata()));
    EXPECT_TRUE(stored->isEqual(*FLKMetadata::newWithDictionary(stored->serialized())));
}

TEST(FLKDocumentFile, TheCurrentFileOwnsItsFolderUntilReplaced) {
    auto first = FLKFile::temporaryFile();
    ASSERT_TRUE(first->writeTempDirectory());
    const auto firstFolder = first->URL();
    FLKFile::setCurrentFile(first);
    first.reset();
    EXPECT_TRUE(fs::exists(firstFolder));
    FLKFile::setCurrentFile(FLKFile::temporaryFile());
    EXPECT_FALSE(fs::exists(firstFolder));
    FLKFile::setCurrentFile(nullptr);
}

TEST(FLKDocumentFile, APreviewSourceDrawsThePreviewAndAFailedReadKeepsTheModel) {
    auto folder = freshFolder();
    Fixture f(folder);
    int calls = 0;
    FLKFile::setPreviewSource([&](const std::shared_ptr<FLKScene>& scene) -> std::optional<FLKImage> {
        ++calls;
        EXPECT_EQ(scene, f.scene);
        FLKImage wide(300, 100);
        wide.pixel(150, 50)[0] = 255;  // the centre survives the crop
        return wide;
    });
    ASSERT_TRUE(f.file->writeScene(f.scene, f.timeline, folder / "a.flickwell"));
    FLKFile::setPreviewSource(nullptr);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(f.file->preview()->allFiles().size(), 1u);
    auto preview = f.file->preview()->image();
    ASSERT_TRUE(preview);
    EXPECT_EQ(preview->width, 100);
    EXPECT_EQ(preview->height, 100);
    EXPECT_EQ(preview->pixel(50, 50)[0], 255);

    auto document = f.file->document();
    writeText(f.file->metadataURL(), "{");
    FLKError error;
    EXPECT_FALSE(f.file->read(&error));
    EXPECT_NE(error.localizedDescription.find("its metadata (metadata.json) is not valid JSON"), std::string::npos)
        << error.localizedDescription;
    EXPECT_EQ(f.file->document(), document);
    EXPECT_TRUE(FLKFileSerializationContext::contextStack().empty());
}
