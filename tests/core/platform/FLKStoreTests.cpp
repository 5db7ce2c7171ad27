#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <regex>
#include <set>
#include <thread>

#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKLocalStore.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKResources.h"
#include "core/platform/FLKTemporaryStore.h"
#include "core/platform/FLKUniqueIdentifier.h"
#include "core/platform/FLKUserDefaults.h"
#include "FLKStoreTestSupport.h"

namespace fs = std::filesystem;
using namespace flktest;

TEST(UniqueIdentifier, IsAnUpperCaseVersion4UUID) {
    static const std::regex kUUID("^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$");
    for (int i = 0; i < 200; ++i) {
        std::string identifier = flk::uniqueIdentifier();
        ASSERT_TRUE(std::regex_match(identifier, kUUID)) << identifier;
    }
}

TEST(UniqueIdentifier, StaysUniqueAcrossThreads) {
    constexpr int kThreads = 4;
    constexpr int kPerThread = 5000;
    std::vector<std::vector<std::string>> results(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&results, t] {
            for (int i = 0; i < kPerThread; ++i) results[t].push_back(flk::uniqueIdentifier());
        });
    }
    for (auto& thread : threads) thread.join();
    std::set<std::string> all;
    for (const auto& list : results) all.insert(list.begin(), list.end());
    EXPECT_EQ(all.size(), size_t{kThreads * kPerThread});
}

TEST(PathTests, RecogniseImagesDocumentsAndTemplatesByExtension) {
    for (const char* image : {"a.png", "b.JPG", "c.jpeg", "d.Gif", "e.bmp", "f.tiff", "g.TIF", "h.webp", "i.HEIC"})
        EXPECT_TRUE(flk::isImage(image)) << image;
    for (const char* other : {"a.mp4", "png", "b.png.txt", "c.", "/folder.png/movie.mov", ".png"})
        EXPECT_FALSE(flk::isImage(other)) << other;

    EXPECT_TRUE(flk::isFlickwellFile("/x/Promo.flickwell"));
    EXPECT_TRUE(flk::isFlickwellFile("/x/Promo.FLICKWELL"));
    EXPECT_FALSE(flk::isFlickwellFile("/x/Promo.flickwelltemplate"));
    EXPECT_FALSE(flk::isFlickwellFile("/x/flickwell"));
    EXPECT_TRUE(flk::isFlickwellTemplateFile("/x/Phone.flickwelltemplate"));
    EXPECT_FALSE(flk::isFlickwellTemplateFile("/x/Phone.flickwell"));
}

TEST(PathTests, ExistsSeesFilesAndFoldersButNotBrokenLinks) {
    fs::path folder = freshFolder();
    writeText(folder / "file.txt", "x");
    fs::create_symlink(folder / "missing", folder / "broken");
    EXPECT_TRUE(flk::exists(folder));
    EXPECT_TRUE(flk::exists(folder / "file.txt"));
    EXPECT_FALSE(flk::exists(folder / "broken"));
    EXPECT_FALSE(flk::exists(folder / "nothing"));
    EXPECT_FALSE(flk::exists(""));
}

TEST(PathTests, RenameKeepsTheExtensionAndNeverReplaces) {
    fs::path folder = freshFolder();
    writeText(folder / "Old.flickwelltemplate" / "document.json", "old");
    writeText(folder / "Taken.flickwelltemplate" / "document.json", "taken");

    FLKError error;
    EXPECT_FALSE(flk::renameItemAtURL(folder / "Old.flickwelltemplate", "Taken", &error));
    EXPECT_NE(error.localizedDescription.find("already exists"), std::string::npos) << error.localizedDescription;
    EXPECT_EQ(readText(folder / "Taken.flickwelltemplate" / "document.json"), "taken");
    EXPECT_TRUE(flk::exists(folder / "Old.flickwelltemplate"));

    FLKError badName;
    EXPECT_FALSE(flk::renameItemAtURL(folder / "Old.flickwelltemplate", "../Escape", &badName));
    EXPECT_FALSE(badName.localizedDescription.empty());

    auto renamed = flk::renameItemAtURL(folder / "Old.flickwelltemplate", "New");
    ASSERT_TRUE(renamed);
    EXPECT_EQ(*renamed, folder / "New.flickwelltemplate");
    EXPECT_EQ(readText(*renamed / "document.json"), "old");
    EXPECT_FALSE(flk::exists(folder / "Old.flickwelltemplate"));

    FLKError missing;
    EXPECT_FALSE(flk::renameItemAtURL(folder / "Gone.flickwelltemplate", "Other", &missing));
    EXPECT_NE(missing.localizedDescription.find("Gone.flickwelltemplate"), std::string::npos);
}

TEST(PathTests, CopyAndRemoveReportFailuresAndLeaveNoDebris) {
    fs::path folder = freshFolder();
    writeText(folder / "source" / "media" / "a.png", "pixels");
    writeText(folder / "source" / "document.json", "{}");

    ASSERT_TRUE(flk::copyItem(folder / "source", folder / "copy"));
    EXPECT_EQ(readText(folder / "copy" / "media" / "a.png"), "pixels");

    writeText(folder / "other.txt", "other");
    FLKError taken;
    EXPECT_FALSE(flk::copyItem(folder / "other.txt", folder / "copy", &taken));
    EXPECT_EQ(readText(folder / "copy" / "document.json"), "{}");
    EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"copy", "other.txt", "source"}));

    FLKError removeMissing;
    EXPECT_FALSE(flk::removeItem(folder / "nothing", &removeMissing));
    EXPECT_NE(removeMissing.localizedDescription.find("nothing"), std::string::npos);
    EXPECT_TRUE(flk::removeItem(folder / "copy"));
    EXPECT_FALSE(flk::exists(folder / "copy"));
}

TEST(Homes, FlickwellHomeRootsEveryStore) {
    fs::path home = std::getenv("FLICKWELL_HOME");
    ScopedEnvironment xdgData("XDG_DATA_HOME", "/elsewhere/data");
    ASSERT_TRUE(flk::homeRoot());
    EXPECT_EQ(*flk::homeRoot(), home);
    EXPECT_EQ(flk::dataHome(), home / "data");
    EXPECT_EQ(flk::configHome(), home / "config");
    EXPECT_EQ(flk::temporaryHome(), home / "tmp");
    EXPECT_EQ(flk::stateHome(), home / "state");
    EXPECT_EQ(FLKLocalStore::storeWithDirectory("masks", kFLKFileExtensionPNG)->directoryURL(), home / "data" / "masks");
    EXPECT_EQ(FLKTemporaryStore::storeWithDirectory(kFLKTempDirectoryExport, kFLKFileExtensionM4V)->directoryURL(),
              home / "tmp" / kFLKTempDirectoryExport);
    EXPECT_EQ(FLKUserDefaults::standardUserDefaults().fileURL(), home / "config" / "FLKUserDefaults.json");
}

TEST(Homes, WithoutFlickwellHomeFollowTheXDGConventions) {
    ScopedEnvironment noRoot("FLICKWELL_HOME", std::nullopt);
    ScopedEnvironment home("HOME", "/home/tester");
    {
        ScopedEnvironment data("XDG_DATA_HOME", "/xdg/data");
        ScopedEnvironment config("XDG_CONFIG_HOME", "/xdg/config");
        ScopedEnvironment tmp("TMPDIR", "/scratch");
        ScopedEnvironment state("XDG_STATE_HOME", "/xdg/state");
        EXPECT_FALSE(flk::homeRoot());
        EXPECT_EQ(flk::stateHome(), fs::path("/xdg/state/flickwell"));
        EXPECT_EQ(flk::dataHome(), fs::path("/xdg/data/flickwell"));
        EXPECT_EQ(flk::configHome(), fs::path("/xdg/config/flickwell"));
        EXPECT_EQ(flk::temporaryHome(), fs::path("/scratch/flickwell"));
    }
    // Unset or relative values fall back to the home folder.
    ScopedEnvironment data("XDG_DATA_HOME", "relative/data");
    ScopedEnvironment config("XDG_CONFIG_HOME", std::nullopt);
    ScopedEnvironment tmp("TMPDIR", std::nullopt);
    ScopedEnvironment state("XDG_STATE_HOME", "relative/state");
    EXPECT_EQ(flk::stateHome(), fs::path("/home/tester/.local/state/flickwell"));
    EXPECT_EQ(flk::dataHome(), fs::path("/home/tester/.local/share/flickwell"));
    EXPECT_EQ(flk::configHome(), fs::path("/home/tester/.config/flickwell"));
    EXPECT_EQ(flk::temporaryHome(), fs::path("/tmp/flickwell"));
}

TEST(Stores, UniqueURLsAreFreshLocationsWithTheStoreExtension) {
    auto store = FLKTemporaryStore::storeWithDirectory("Files", "tmp", freshFolder());
    EXPECT_FALSE(flk::exists(store->directoryURL()));  // made lazily
    std::set<fs::path> urls;
    for (int i = 0; i < 50; ++i) {
        fs::path url = store->createUniqueFileURL();
        EXPECT_EQ(url.parent_path(), store->directoryURL());
        EXPECT_EQ(url.extension(), ".tmp");
        EXPECT_EQ(url.stem().string().size(), 36u);
        EXPECT_FALSE(flk::exists(url));
        urls.insert(url);
    }
    EXPECT_EQ(urls.size(), 50u);
    EXPECT_TRUE(fs::is_directory(store->directoryURL()));
}

TEST(Stores, ListOnlyTheirOwnFilesSortedByName) {
    auto store = FLKLocalStore::storeWithDirectory("recordings-" + flk::uniqueIdentifier(), kFLKFileExtensionMP4);
    EXPECT_TRUE(store->fileURLs().empty());  // no folder yet
    fs::path dir = store->directoryURL();
    for (const char* name : {"b.mp4", "a.mp4", "C.MP4", "d.mov", "FLKList.json", ".hidden.mp4", "mp4"})
        writeText(dir / name, "x");
    EXPECT_EQ(store->fileURLs(), (std::vector<fs::path>{dir / "C.MP4", dir / "a.mp4", dir / "b.mp4"}));
    EXPECT_EQ(store->createFileURLWithName("Demo"), dir / "Demo.mp4");
}

TEST(Stores, CopyIntoTheStoreUnderAName) {
    fs::path outside = freshFolder();
    auto store = FLKTemporaryStore::storeWithDirectory("kept", kFLKFileExtensionMP4, freshFolder());
    writeText(outside / "take.mp4", "movie");

    FLKError error;
    auto copy = store->copyFileFromURL(outside / "take.mp4", "First take", &error);
    ASSERT_TRUE(copy) << error.fullMessage();
    EXPECT_EQ(*copy, store->directoryURL() / "First take.mp4");
    EXPECT_EQ(readText(*copy), "movie");
    EXPECT_TRUE(flk::exists(outside / "take.mp4"));

    writeText(outside / "other.mp4", "other");
    FLKError taken;
    EXPECT_FALSE(store->copyFileFromURL(outside / "other.mp4", "First take", &taken));
    EXPECT_FALSE(taken.localizedDescription.empty());
    EXPECT_EQ(readText(*copy), "movie");

    FLKError badName;
    EXPECT_FALSE(store->copyFileFromURL(outside / "other.mp4", "../escape", &badName));
    EXPECT_FALSE(badName.localizedDescription.empty());
    EXPECT_EQ(store->fileURLs(), std::vector<fs::path>{*copy});
}

TEST(Stores, CopyOfAMissingSourceFailsNamingItAndAddsNothing) {
    auto store = FLKLocalStore::storeWithDirectory("masks-" + flk::uniqueIdentifier(), kFLKFileExtensionPNG);
    FLKError error;
    fs::path missing = freshFolder() / "no-such-mask.png";
    EXPECT_FALSE(store->copyFileFromURL(missing, "mask", &error));
    EXPECT_NE(error.localizedDescription.find(missing.string()), std::string::npos) << error.localizedDescription;
    EXPECT_EQ(error.domain, kFLKFileSystemErrorDomain);
    EXPECT_TRUE(store->fileURLs().empty());
    EXPECT_FALSE(flk::exists(store->createFileURLWithName("mask")));
}

TEST(Stores, CopyWholeTemplateFolders) {
    fs::path outside = freshFolder();
    writeText(outside / "Phone.flickwelltemplate" / "scenes" / "S.json", "{\"className\":\"FLKScene\"}");
    auto store = FLKLocalStore::storeWithDirectory("templates-" + flk::uniqueIdentifier(),
                                                   kFLKFileExtensionFlickwellTemplate);
    auto copy = store->copyFileFromURL(outside / "Phone.flickwelltemplate", "Phone");
    ASSERT_TRUE(copy);
    EXPECT_EQ(readText(*copy / "scenes" / "S.json"), "{\"className\":\"FLKScene\"}");
    EXPECT_EQ(store->fileURLs(), std::vector<fs::path>{*copy});
}

TEST(Stores, PropertyListsLiveBesideTheFilesAsJSON) {
    auto store = FLKTemporaryStore::storeWithDirectory("masks", kFLKFileExtensionPNG, freshFolder());
    FLKError error;
    auto url = store->localURLForPlistWithName("FLKMasksList", &error);
    ASSERT_TRUE(url) << error.fullMessage();
    EXPECT_EQ(*url, store->directoryURL() / "FLKMasksList.json");
    EXPECT_TRUE(fs::is_directory(store->directoryURL()));
    EXPECT_FALSE(store->localURLForPlistWithName("", &error));

    // A store whose folder cannot be made reports it.
    fs::path blocker = freshFolder() / "file";
    writeText(blocker, "not a folder");
    FLKTemporaryStore blocked(blocker / "masks", kFLKFileExtensionPNG);
    FLKError blockedError;
    EXPECT_FALSE(blocked.localURLForPlistWithName("FLKMasksList", &blockedError));
    EXPECT_NE(blockedError.localizedDescription.find((blocker / "masks").string()), std::string::npos);
}

TEST(Resources, FoundByNameAndExtensionInTheResourcesFolder) {
    fs::path folder = freshFolder();
    writeText(folder / "FLKExportSettings.json", "{\"mp4\": [1, 2]}");
    writeText(folder / "Broken.json", "{");
    fs::create_directories(folder / "Phone.flickwelltemplate");
    ScopedEnvironment resources("FLICKWELL_RESOURCES", folder.string());

    EXPECT_EQ(FLKResources::resourcesDirectory(), folder);
    EXPECT_EQ(FLKResources::URLForResource("Phone", kFLKFileExtensionFlickwellTemplate),
              folder / "Phone.flickwelltemplate");
    EXPECT_FALSE(FLKResources::URLForResource("silence", kFLKFileExtensionMP3));
    EXPECT_FALSE(FLKResources::URLForResource("..", ""));

    auto settings = FLKResources::propertyListNamed("FLKExportSettings");
    ASSERT_TRUE(settings);
    EXPECT_EQ((*settings)["mp4"], FLKJSON::array({1, 2}));

    FLKError missing;
    EXPECT_FALSE(FLKResources::propertyListNamed("FLKTemplateList", &missing));
    EXPECT_NE(missing.localizedDescription.find("FLKTemplateList.json"), std::string::npos);
    FLKError broken;
    EXPECT_FALSE(FLKResources::propertyListNamed("Broken", &broken));
    EXPECT_FALSE(broken.localizedDescription.empty());
}

TEST(Resources, AMissingResourcesFolderFindsNothing) {
    ScopedEnvironment resources("FLICKWELL_RESOURCES", (freshFolder() / "absent").string());
    EXPECT_FALSE(FLKResources::resourcesDirectory());
    EXPECT_FALSE(FLKResources::URLForResource("FLKDefaults", kFLKFileExtensionPlist));
}

namespace {

// Runs the main queue until `done` holds; the watcher thread reports
// asynchronously, so this waits (bounded) rather than asserting a delay.
template <class Predicate>
bool runMainQueueUntil(FLKManualMainQueue& queue, Predicate done) {
    for (int attempt = 0; attempt < 2000 && !done(); ++attempt) {
        if (queue.runPending() == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return done();
}

// Waits (bounded) for another thread without running the main queue.
template <class Predicate>
bool waitFor(Predicate done) {
    for (int attempt = 0; attempt < 2000 && !done(); ++attempt) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return done();
}

}  // namespace

TEST(Stores, WatchingReportsChangesOnTheMainQueueUntilStopped) {
    auto previous = FLKMainQueue::main();
    auto queue = std::make_shared<FLKManualMainQueue>();
    FLKMainQueue::setMain(queue);

    auto store = FLKLocalStore::storeWithDirectory("watched-" + flk::uniqueIdentifier(), kFLKFileExtensionMP4);
    std::atomic<int> calls{0};
    std::vector<size_t> countsSeen;
    ASSERT_TRUE(store->startWatchingForUpdates([&] {
        EXPECT_TRUE(queue->isMainThread());
        countsSeen.push_back(store->fileURLs().size());
        ++calls;
    }));

    fs::path source = freshFolder() / "take.mp4";
    writeText(source, "movie");
    ASSERT_TRUE(store->copyFileFromURL(source, "Kept"));
    ASSERT_TRUE(runMainQueueUntil(*queue, [&] { return calls > 0; }));
    EXPECT_EQ(countsSeen.back(), 1u);

    ASSERT_TRUE(flk::removeItem(store->createFileURLWithName("Kept")));
    ASSERT_TRUE(runMainQueueUntil(*queue, [&] { return !countsSeen.empty() && countsSeen.back() == 0; }));

    // A change already queued when watching stops is not delivered.
    int before = calls;
    writeText(store->createFileURLWithName("Late"), "x");
    ASSERT_TRUE(waitFor([&] { return queue->hasPending(); })) << "the watcher never posted the change";
    store->stopWatchingForUpdates();
    queue->runPending();
    EXPECT_EQ(calls, before);

    FLKMainQueue::setMain(previous);
}

TEST(Stores, WatchingAFolderThatCannotExistFails) {
    fs::path blocker = freshFolder() / "file";
    writeText(blocker, "x");
    FLKLocalStore store(blocker / "inside", kFLKFileExtensionPNG);
    FLKError error;
    EXPECT_FALSE(store.startWatchingForUpdates([] {}, &error));
    EXPECT_FALSE(error.localizedDescription.empty());
}
