#include <gtest/gtest.h>

#include <cmath>

#include "core/platform/FLKColorArrayTransformer.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKPerformanceSettings.h"

namespace {

// Counts the level notifications and remembers their senders.
struct LevelNotifications {
    std::vector<const void*> senders;
    FLKObservation observation{FLKNotificationCenter::defaultCenter(),
                               FLKNotificationCenter::defaultCenter().addObserver(
                                   FLKPerformanceSettingsDidUpdatePerformanceLevel, nullptr,
                                   [this](const FLKNotification& n) { senders.push_back(n.object); })};
};

struct Values {
    unsigned fps, msaa, mode;
    bool fixed;
    friend bool operator==(const Values&, const Values&) = default;
};

Values valuesOf(const FLKPerformanceSettings& settings) {
    return {settings.fps(), settings.msaaSampleCount(), settings.videoRenderingSettings(), settings.fixedResolution()};
}

}  // namespace

TEST(PerformanceSettings, ANewObjectStartsAtLevelThreeAndSaysSoOnce) {
    LevelNotifications notifications;
    FLKPerformanceSettings settings;
    EXPECT_EQ(settings.performanceLevel(), 3u);
    EXPECT_EQ(valuesOf(settings), (Values{30, 4, 1, false}));
    EXPECT_EQ(notifications.senders, std::vector<const void*>{&settings});
}

TEST(PerformanceSettings, LevelsSetTheirValuesTogether) {
    FLKPerformanceSettings settings;
    LevelNotifications notifications;

    settings.setPerformanceLevel(3);
    EXPECT_TRUE(notifications.senders.empty());

    settings.setPerformanceLevel(1);
    EXPECT_EQ(valuesOf(settings), (Values{30, 1, 2, true}));
    settings.setPerformanceLevel(2);
    EXPECT_EQ(valuesOf(settings), (Values{30, 2, 2, false}));
    EXPECT_EQ(notifications.senders.size(), 2u);
    EXPECT_EQ(notifications.senders.back(), &settings);
}

TEST(PerformanceSettings, AnUnknownLevelIsStoredAndPostedButKeepsTheValues) {
    FLKPerformanceSettings settings;
    settings.setPerformanceLevel(1);
    settings.setFps(24);
    LevelNotifications notifications;

    settings.setPerformanceLevel(7);
    EXPECT_EQ(settings.performanceLevel(), 7u);
    EXPECT_EQ(valuesOf(settings), (Values{24, 1, 2, true}));
    EXPECT_EQ(notifications.senders.size(), 1u);
}

TEST(ColorArrayTransformer, HexStringsToColoursAndBack) {
    FLKColorArrayTransformer transformer;
    auto colors = transformer.transformedValue(FLKJSON::array({"#ff0000", "00FF80", 42, "#000000"}));
    ASSERT_EQ(colors.size(), 3u);
    EXPECT_EQ(colors[0], (FLKColor{1, 0, 0, 1}));
    EXPECT_DOUBLE_EQ(colors[1].blue, 128 / 255.0);
    EXPECT_EQ(transformer.reverseTransformedValue(colors), FLKJSON::array({"#ff0000", "#00ff80", "#000000"}));

    EXPECT_TRUE(transformer.transformedValue(FLKJSON("#ff0000")).empty());
    EXPECT_EQ(transformer.reverseTransformedValue({FLKColor{NAN, 0, 0, 1}, FLKColor::white()}),
              FLKJSON::array({"#ffffff"}));
    EXPECT_EQ(transformer.reverseTransformedValue({}), FLKJSON::array());
}
