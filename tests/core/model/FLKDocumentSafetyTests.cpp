#include <gtest/gtest.h>

#include "core/model/FLKFile.h"
#include "core/model/FLKReadonlyFile.h"
#include "core/model/FLKZipArchive.h"
#include "core/platform/FLKPaths.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/timeline/FLKTimeline.h"
#include "core/model/FLKDocumentTestSupport.h"

namespace fs = std::filesystem;
using namespace flk::doctest;

namespace {

fs::path workingFolders() { return flk::temporaryHome() / "Files"; }

// The files of a well-formed package whose scene JSON is given.
std::vector<ArchiveEntry> validPackage(const std::string& sceneJSON) {
    auto timeline = FLKTimeline::timelineWithTimer({});
    return {{"document.json", R"({"className":"FLKDocument","scenes":[],"timelines":[]})"},
            {"metadata.json", FLKMetadata().serialized().dump()},
            {"scenes/S.json", sceneJSON},
            {"timelines/T.json", timeline->serialized().dump()},
            {"media/a.png", "not really a picture"}};
}

std::string sceneWithPicture(const std::string& storedPath) {
    auto scene = std::make_shared<FLKScene>();
    auto sprite = std::make_shared<FLKTexturedSprite>();
    sprite->setResourceURL(fs::path("/somewhere/media/a.png"));
    scene->addChild(sprite);
    auto json = scene->serialized();
    json["children"][0]["resourceURL"] = storedPath;
    return json.dump();
}

// Opening `archive` fails with an error naming it, never our working folder,
// and leaves no working folder and no file outside one.
void expectRejected(const fs::path& archive, const std::string& reasonPart = {}) {
    auto current = FLKFile::temporaryFile();
    FLKFile::setCurrentFile(current);
    const auto before = folderContents(workingFolders());
    const auto outside = folderContents(archive.parent_path());

    auto readonly = FLKFile::fileWithURL(archive);
    ASSERT_NE(readonly, nullptr);
    FLKError error;
    EXPECT_EQ(readonly->temporaryFileCopy(&error), nullptr);
    EXPECT_NE(error.localizedDescription.find(archive.string()), std::string::npos) << error.localizedDescription;
    EXPECT_EQ(error.fullMessage().find(workingFolders().string()), std::string::npos) << error.fullMessage();
    EXPECT_NE(error.fullMessage().find(reasonPart), std::string::npos) << error.fullMessage();
    EXPECT_EQ(folderContents(workingFolders()), before);
    EXPECT_EQ(folderContents(archive.parent_path()), outside);
    EXPECT_EQ(FLKFile::currentFile(), current);
    FLKFile::setCurrentFile(nullptr);
}

}  // namespace

TEST(FLKDocumentSafety, ArchivesWithEntriesLeavingTheFolderAreRefused) {
    auto folder = freshFolder();
    auto climbing = folder / "climb" / "Climbing.flickwell";
    fs::create_directories(climbing.parent_path());
    auto entries = validPackage(sceneWithPicture("media/a.png"));
    entries.push_back({"../evil", "x"});
    writeArchive(climbing, entries);
    expectRejected(climbing, "\"../evil\"");
    EXPECT_FALSE(fs::exists(workingFolders() / "evil"));

    auto absolute = folder / "Absolute.flickwell";
    writeArchive(absolute, {{(folder / "abs-evil").string(), "x"}});
    expectRejected(absolute, "outside the document");
    EXPECT_FALSE(fs::exists(folder / "abs-evil"));

    for (std::string name : {"a/../../b", "a\\..\\b", "C:evil", "./x", "a//b"}) {
        auto odd = folder / "Odd.flickwell";
        writeArchive(odd, {{name, "x"}});
        expectRejected(odd, "\"" + name + "\"");
        fs::remove(odd);
    }
}

TEST(FLKDocumentSafety, LinksAndDevicesInArchivesAreRefused) {
    auto folder = freshFolder();
    auto link = folder / "Link.flickwell";
    auto entries = validPackage(sceneWithPicture("media/a.png"));
    entries.push_back({"media/b.png", "/etc/passwd", S_IFLNK | 0777});
    writeArchive(link, entries);
    expectRejected(link, "is a link or a device");

    auto device = folder / "Device.flickwell";
    writeArchive(device, {{"media/tty", "", S_IFCHR | 0666}});
    expectRejected(device, "is a link or a device");
}

TEST(FLKDocumentSafety, MediaPathsOutsideTheMediaFolderAreRefused) {
    auto folder = freshFolder();
    for (std::string stored : {"media/../../x", "../media/a.png", "/etc/passwd", "scenes/S.json"}) {
        auto archive = folder / "Escaping.flickwell";
        writeArchive(archive, validPackage(sceneWithPicture(stored)));
        expectRejected(archive, "its scene refers to the media file \"" + stored + "\", which lies outside");
        fs::remove(archive);
    }
    // The same package with a confined path opens.
    auto good = folder / "Good.flickwell";
    writeArchive(good, validPackage(sceneWithPicture("media/a.png")));
    FLKError error;
    auto opened = FLKFile::fileWithURL(good)->temporaryFileCopy(&error);
    ASSERT_NE(opened, nullptr) << error.fullMessage();
    EXPECT_EQ(opened->document()->currentScene()->children().size(), 1u);
}

TEST(FLKDocumentSafety, UnreadableModelFilesGiveAClearError) {
    auto folder = freshFolder();
    auto unknown = folder / "Unknown.flickwell";
    writeArchive(unknown, validPackage(R"({"className":"FLKNoSuchNode"})"));
    expectRejected(unknown, "Unknown.flickwell: its scene names an unknown kind of object \"FLKNoSuchNode\".");
    // Deep inside, where it used to be dropped without a word.
    auto nested = FLKJSON::parse(sceneWithPicture("media/a.png"));
    nested["children"][0]["className"] = "FLKNoSuchSprite";
    writeArchive(unknown, validPackage(nested.dump()));
    expectRejected(unknown, "its scene names an unknown kind of object \"FLKNoSuchSprite\"");
    auto timeline = validPackage(sceneWithPicture("media/a.png"));
    timeline[3].data = R"({"className":"FLKScene"})";
    writeArchive(unknown, timeline);
    expectRejected(unknown, "its timeline holds something other than a timeline");

    auto notJSON = folder / "NotJSON.flickwell";
    auto entries = validPackage(sceneWithPicture("media/a.png"));
    entries[1].data = "{\"className\": ";
    writeArchive(notJSON, entries);
    expectRejected(notJSON, "its metadata (metadata.json) is not valid JSON");

    auto missing = folder / "Missing.flickwell";
    entries = validPackage(sceneWithPicture("media/a.png"));
    entries.erase(entries.begin());
    writeArchive(missing, entries);
    expectRejected(missing, "its document record (document.json) is missing");
}

TEST(FLKDocumentSafety, DamagedAndOversizedArchivesAreRefused) {
    auto folder = freshFolder();
    auto saved = folder / "Saved.flickwell";
    auto file = FLKFile::temporaryFile();
    ASSERT_TRUE(file->writeScene(std::make_shared<FLKScene>(), FLKTimeline::timelineWithTimer({}), saved));
    auto bytes = readText(saved);
    auto truncated = folder / "Truncated.flickwell";
    writeText(truncated, bytes.substr(0, bytes.size() / 2));
    expectRejected(truncated, "not a readable document archive");

    auto empty = folder / "Empty.flickwell";
    writeText(empty, "");
    expectRejected(empty);

    FLKZipArchive::Limits few{1ull << 20, 2};
    FLKError error;
    EXPECT_FALSE(FLKZipArchive::unzipFileAtPath(saved, folder / "few", few, &error));
    EXPECT_NE(error.failureReason.find("more than 2 entries"), std::string::npos) << error.failureReason;
    EXPECT_FALSE(fs::exists(folder / "few"));

    auto big = folder / "Big.zip";
    writeArchive(big, {{"a", std::string(4000, 'a')}, {"b", std::string(4000, 'b')}});
    FLKZipArchive::Limits small{6000, 100};
    error = {};
    EXPECT_FALSE(FLKZipArchive::unzipFileAtPath(big, folder / "big", small, &error));
    EXPECT_NE(error.failureReason.find("allowed size"), std::string::npos) << error.failureReason;
    EXPECT_FALSE(fs::exists(folder / "big"));
    EXPECT_TRUE(FLKZipArchive::unzipFileAtPath(big, folder / "big", FLKZipArchive::Limits{8000, 2}, &error));
    EXPECT_EQ(readText(folder / "big" / "b"), std::string(4000, 'b'));
}
