#include <gtest/gtest.h>

#include <thread>

#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"
#include "core/platform/FLKUserDefaults.h"
#include "core/platform/FLKUserDefaultsKeys.h"
#include "FLKStoreTestSupport.h"

namespace fs = std::filesystem;
using namespace flktest;

namespace {

FLKJSON fileContents(const fs::path& url) {
    auto json = flk::dictionaryFromJSONAtURL(url);
    return json ? *json : FLKJSON();
}

const FLKJSON kShippedDefaults = {{"FLKShouldShowWelcome", true}, {"FLKIsSoundOn", true}, {"FLKAppLaunchCount", 0}};

}  // namespace

TEST(UserDefaults, ValuesPersistAcrossInstances) {
    fs::path url = freshFolder() / "prefs" / "defaults.json";
    {
        FLKUserDefaults defaults(url);
        defaults.setBool("flag", true);
        defaults.setInteger("count", 9007199254740993);  // beyond double precision
        defaults.setDouble("ratio", 0.25);
        defaults.setString("name", "Demo");
        defaults.setObject("list", FLKJSON::array({"a", "b"}));
        FLKError error;
        ASSERT_TRUE(defaults.synchronize(&error)) << error.fullMessage();
    }
    FLKUserDefaults reread(url);
    EXPECT_TRUE(reread.boolForKey("flag"));
    EXPECT_EQ(reread.integerForKey("count"), 9007199254740993);
    EXPECT_DOUBLE_EQ(reread.doubleForKey("ratio"), 0.25);
    EXPECT_EQ(reread.stringForKey("name"), "Demo");
    EXPECT_EQ(reread.objectForKey("list"), FLKJSON::array({"a", "b"}));
    EXPECT_FALSE(reread.objectForKey("absent"));
    EXPECT_FALSE(reread.boolForKey("absent"));
    EXPECT_EQ(reread.integerForKey("absent"), 0);
    EXPECT_FALSE(reread.stringForKey("count"));
}

TEST(UserDefaults, DestructionSavesUnsynchronisedChanges) {
    fs::path url = freshFolder() / "defaults.json";
    { FLKUserDefaults(url).setInteger("late", 4); }
    EXPECT_EQ(FLKUserDefaults(url).integerForKey("late"), 4);
}

TEST(UserDefaults, RegisteredDefaultsShowThroughButAreNeverWritten) {
    fs::path url = freshFolder() / "defaults.json";
    FLKUserDefaults defaults(url);
    defaults.registerDefaults(kShippedDefaults);
    defaults.registerDefaults(FLKJSON::array({1, 2}));  // ignored: not an object
    EXPECT_TRUE(defaults.boolForKey("FLKIsSoundOn"));

    defaults.setBool("FLKIsSoundOn", false);
    EXPECT_FALSE(defaults.boolForKey("FLKIsSoundOn"));
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(fileContents(url), (FLKJSON{{"FLKIsSoundOn", false}}));

    defaults.removeObjectForKey("FLKIsSoundOn");
    EXPECT_TRUE(defaults.boolForKey("FLKIsSoundOn"));
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(fileContents(url), FLKJSON::object());
    EXPECT_TRUE(FLKUserDefaults(url).objectForKey("FLKIsSoundOn") == std::nullopt);
}

TEST(UserDefaults, ValuesConvertBetweenTypesLikeStoredSettings) {
    FLKUserDefaults defaults(freshFolder() / "defaults.json");
    defaults.registerDefaults({{"yes", "YES"}, {"no", "NO"}, {"text", "12.5"}, {"real", 3.75}, {"huge", 1e300},
                               {"word", "abc"}, {"list", FLKJSON::array()}});
    EXPECT_TRUE(defaults.boolForKey("yes"));
    EXPECT_FALSE(defaults.boolForKey("no"));
    EXPECT_EQ(defaults.integerForKey("text"), 12);
    EXPECT_DOUBLE_EQ(defaults.doubleForKey("text"), 12.5);
    EXPECT_EQ(defaults.integerForKey("real"), 3);
    EXPECT_EQ(defaults.integerForKey("huge"), std::numeric_limits<int64_t>::max());
    EXPECT_FALSE(defaults.boolForKey("word"));
    EXPECT_EQ(defaults.integerForKey("list"), 0);
    EXPECT_EQ(defaults.integerForKey("yes"), 1);
}

TEST(UserDefaults, WritesLeaveOnlyTheFileBehind) {
    fs::path folder = freshFolder();
    FLKUserDefaults defaults(folder / "defaults.json");
    for (int i = 0; i < 20; ++i) {
        defaults.setInteger("step", i);
        ASSERT_TRUE(defaults.synchronize());
    }
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"defaults.json"});
    EXPECT_EQ(fileContents(folder / "defaults.json"), (FLKJSON{{"step", 19}}));
}

TEST(UserDefaults, AFailedWriteIsReportedAndRetriedLater) {
    fs::path folder = freshFolder();
    writeText(folder / "blocker", "a file where a folder should be");
    FLKUserDefaults defaults(folder / "blocker" / "defaults.json");
    defaults.setBool("flag", true);
    FLKError error;
    EXPECT_FALSE(defaults.synchronize(&error));
    EXPECT_NE(error.localizedDescription.find("defaults.json"), std::string::npos) << error.localizedDescription;

    fs::remove(folder / "blocker");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(FLKUserDefaults(folder / "blocker" / "defaults.json").boolForKey("flag"));
}

TEST(UserDefaults, AnUnreadableFileIsLoggedAndReadsAsEmpty) {
    fs::path url = freshFolder() / "defaults.json";
    writeText(url, "{ not json");
    std::vector<std::string> lines;
    flk::setLogSink([&lines](const std::string& line) { lines.push_back(line); });
    FLKUserDefaults defaults(url);
    flk::setLogSink({});
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(url.string()), std::string::npos) << lines[0];
    EXPECT_FALSE(defaults.objectForKey("anything"));
    defaults.setBool("fresh", true);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(fileContents(url), (FLKJSON{{"fresh", true}}));
}

TEST(UserDefaults, ConcurrentUseKeepsEveryValue) {
    fs::path url = freshFolder() / "defaults.json";
    FLKUserDefaults defaults(url);
    constexpr int kThreads = 4;
    constexpr int kKeys = 50;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&defaults, t] {
            for (int k = 0; k < kKeys; ++k) {
                std::string key = "t" + std::to_string(t) + "k" + std::to_string(k);
                defaults.setInteger(key, k);
                EXPECT_EQ(defaults.integerForKey(key), k);
                if (k % 10 == 0) defaults.synchronize();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(fileContents(url).size(), size_t{kThreads * kKeys});
}

TEST(UserDefaultsKeys, LaunchCountingAcrossLaunches) {
    fs::path url = freshFolder() / "defaults.json";
    {
        FLKUserDefaults firstLaunch(url);
        firstLaunch.registerDefaults(kShippedDefaults);
        EXPECT_EQ(flk::numberOfLaunches(firstLaunch), 0);
        flk::incrementLaunchCount(firstLaunch);
        EXPECT_TRUE(flk::isFirstLaunch(firstLaunch));
        EXPECT_FALSE(flk::exists(url));  // counting alone does not write
    }
    FLKUserDefaults secondLaunch(url);
    secondLaunch.registerDefaults(kShippedDefaults);
    flk::incrementLaunchCount(secondLaunch);
    EXPECT_EQ(flk::numberOfLaunches(secondLaunch), 2);
    EXPECT_FALSE(flk::isFirstLaunch(secondLaunch));
}

TEST(UserDefaultsKeys, BooleanSettersWriteAtOnce) {
    fs::path url = freshFolder() / "defaults.json";
    FLKUserDefaults defaults(url);
    defaults.registerDefaults(kShippedDefaults);
    EXPECT_TRUE(flk::isSoundOn(defaults));
    EXPECT_TRUE(flk::shouldShowWelcomeScreen(defaults));
    flk::setSoundOn(false, defaults);
    flk::setShouldShowWelcomeScreen(false, defaults);
    EXPECT_EQ(fileContents(url), (FLKJSON{{"FLKIsSoundOn", false}, {"FLKShouldShowWelcome", false}}));
    EXPECT_FALSE(flk::isSoundOn(defaults));
    EXPECT_FALSE(flk::shouldShowWelcomeScreen(defaults));
}

TEST(UserDefaultsKeys, LoadDefaultsRegistersTheResource) {
    fs::path resources = freshFolder();
    writeText(resources / "FLKDefaults.json", kShippedDefaults.dump());
    fs::path url = freshFolder() / "defaults.json";
    FLKUserDefaults defaults(url);
    {
        ScopedEnvironment missing("FLICKWELL_RESOURCES", (resources / "absent").string());
        FLKError error;
        std::vector<std::string> lines;
        flk::setLogSink([&lines](const std::string& line) { lines.push_back(line); });
        EXPECT_FALSE(flk::loadDefaults(defaults, &error));
        flk::setLogSink({});
        EXPECT_NE(error.localizedDescription.find("FLKDefaults"), std::string::npos);
        EXPECT_EQ(lines.size(), 1u);
    }
    ScopedEnvironment present("FLICKWELL_RESOURCES", resources.string());
    ASSERT_TRUE(flk::loadDefaults(defaults));
    EXPECT_TRUE(flk::isSoundOn(defaults));
    EXPECT_TRUE(flk::shouldShowWelcomeScreen(defaults));
    EXPECT_EQ(flk::numberOfLaunches(defaults), 0);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_FALSE(flk::exists(url));
}
