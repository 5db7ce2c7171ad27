#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <string>

#include "core/media/FLKAudioPlayer.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/model/FLKAudioTrackMediaPlayer.h"
#include "core/model/FLKSceneSoundController.h"
#include "core/platform/FLKUserDefaults.h"
#include "core/platform/FLKUserDefaultsKeys.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/model/FLKSceneModelTestSupport.h"

namespace {

// One second of a 440 Hz mono tone at 44.1 kHz: a rate the output takes as is.
std::filesystem::path monoWAV() {
    auto path = flk::test::scratchFolder("sound") / "tone.wav";
    if (!std::filesystem::exists(path)) {
        std::vector<int16_t> samples(44100);
        for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<int16_t>(8000 * std::sin(i * 0.0627));
        flk::test::writeWAV(path, samples, 44100, 1);
    }
    return path;
}

std::filesystem::path aacTone() {
    auto path = flk::test::scratchFolder("sound") / "tone.m4a";
    if (!std::filesystem::exists(path)) {
        FLKError error;
        EXPECT_TRUE(FLKSyntheticVideo::writeTone(path.string(), 2.0, 440.0, &error)) << error.fullMessage();
    }
    return path;
}

std::unique_ptr<FLKAudioPlayer> openPlayer(const std::filesystem::path& path) {
    FLKError error;
    auto player = FLKAudioPlayer::playerWithContentsOfURL(path, &error);
    EXPECT_NE(player, nullptr) << error.fullMessage();
    return player;
}

TEST(FLKAudioPlayer, DecodesTheWholeFileAndSeeksWithinIt) {
    auto wav = openPlayer(monoWAV());
    ASSERT_NE(wav, nullptr);
    EXPECT_EQ(wav->sampleRate(), 44100);
    EXPECT_NEAR(wav->duration(), 1.0, 1e-3);

    auto aac = openPlayer(aacTone());
    ASSERT_NE(aac, nullptr);
    EXPECT_EQ(aac->sampleRate(), 48000);
    EXPECT_NEAR(aac->duration(), 2.0, 0.05);

    aac->setCurrentTime(1.25);
    EXPECT_NEAR(aac->currentTime(), 1.25, 1e-4);
    aac->setCurrentTime(-3);
    EXPECT_EQ(aac->currentTime(), 0.0);
    aac->setVolume(1.5f);
    EXPECT_EQ(aac->volume(), 1.0f);
    aac->setVolume(0.25f);
    EXPECT_EQ(aac->volume(), 0.25f);
}

TEST(FLKAudioPlayer, PlaysAndPausesThroughTheAudioOutput) {
    auto player = openPlayer(aacTone());
    ASSERT_NE(player, nullptr);
    EXPECT_TRUE(player->hasAudioOutput()) << player->audioOutputFailure();
    player->setCurrentTime(0.5);
    player->play();
    EXPECT_TRUE(player->isPlaying());
    player->pause();
    EXPECT_FALSE(player->isPlaying());
    double pausedAt = player->currentTime();
    EXPECT_GE(pausedAt, 0.5);
    EXPECT_EQ(player->currentTime(), pausedAt);
}

TEST(FLKAudioPlayer, RefusesFilesWithoutSoundNamingThem) {
    auto folder = flk::test::scratchFolder("bad");
    std::ofstream(folder / "notes.m4a") << "this is not audio";
    auto videoOnly = folder / "silent.mp4";
    FLKSyntheticVideo::Options options;
    options.frameCount = 5;
    ASSERT_TRUE(FLKSyntheticVideo::writeVideo(videoOnly.string(), options));

    for (const auto& path : {folder / "missing.m4a", folder / "notes.m4a", videoOnly}) {
        FLKError error;
        EXPECT_EQ(FLKAudioPlayer::playerWithContentsOfURL(path, &error), nullptr) << path;
        EXPECT_NE(error.fullMessage().find(path.string()), std::string::npos) << error.fullMessage();
    }
    FLKError error;
    FLKAudioPlayer::playerWithContentsOfURL(videoOnly, &error);
    EXPECT_EQ(error.code, 7);
}

// Without an audio output (here: a driver that does not exist) the player
// stays usable and silent.
TEST(FLKAudioPlayer, WorksSilentlyWithoutAnAudioOutput) {
    std::string driver = std::getenv("SDL_AUDIODRIVER") ? std::getenv("SDL_AUDIODRIVER") : "";
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    auto player = openPlayer(monoWAV());
    setenv("SDL_AUDIODRIVER", driver.c_str(), 1);
    ASSERT_NE(player, nullptr);
    EXPECT_FALSE(player->hasAudioOutput());
    EXPECT_FALSE(player->audioOutputFailure().empty());
    player->setCurrentTime(0.25);
    player->play();
    EXPECT_TRUE(player->isPlaying());
    EXPECT_GE(player->currentTime(), 0.25);
    player->pause();
    EXPECT_FALSE(player->isPlaying());
    double pausedAt = player->currentTime();
    EXPECT_GE(pausedAt, 0.25);
    EXPECT_EQ(player->currentTime(), pausedAt);
}

// Counts how often a track starts its player.
class CountingPlayer : public FLKAudioTrackPlayer {
public:
    explicit CountingPlayer(std::unique_ptr<FLKAudioTrackPlayer> player, int* starts)
        : player_(std::move(player)), starts_(starts) {}
    void play() override {
        ++*starts_;
        player_->play();
    }
    void pause() override { player_->pause(); }
    bool isPlaying() const override { return player_->isPlaying(); }
    float volume() const override { return player_->volume(); }
    void setVolume(float volume) override { player_->setVolume(volume); }
    double currentTime() const override { return player_->currentTime(); }
    void setCurrentTime(double seconds) override { player_->setCurrentTime(seconds); }

private:
    std::unique_ptr<FLKAudioTrackPlayer> player_;
    int* starts_;
};

class FLKAudioTrackPlaying : public ::testing::Test {
protected:
    void SetUp() override { FLKAudioTrackMediaPlayer::install(); }
    void TearDown() override { FLKAudioTrackPlayer::setFactory(nullptr); }
};

TEST_F(FLKAudioTrackPlaying, PlayingTwiceStartsThePlayerOnce) {
    int starts = 0;
    FLKAudioTrackPlayer::setFactory([&starts](const std::filesystem::path& url) -> std::unique_ptr<FLKAudioTrackPlayer> {
        auto player = FLKAudioTrackMediaPlayer::playerForURL(url);
        return player ? std::make_unique<CountingPlayer>(std::move(player), &starts) : nullptr;
    });
    auto track = FLKAudioTrack::audioTrackWithAudioURL(aacTone());
    track->play();
    track->play();
    EXPECT_EQ(starts, 1);
    ASSERT_NE(track->player(), nullptr);
    EXPECT_TRUE(track->player()->isPlaying());
    track->pause();
    EXPECT_FALSE(track->player()->isPlaying());
}

TEST_F(FLKAudioTrackPlaying, AnUnplayableFileGivesNoPlayerAndZeroes) {
    auto path = flk::test::scratchFolder("bad") / "garbage.mp3";
    std::ofstream(path) << "not audio at all";
    auto track = FLKAudioTrack::audioTrackWithAudioURL(path);
    track->play();
    track->setVolume(1.0f);
    track->setCurrentTime(1.0);
    EXPECT_EQ(track->player(), nullptr);
    EXPECT_EQ(track->volume(), 0.0f);
    EXPECT_EQ(track->currentTime(), 0.0);
    EXPECT_EQ(track->serialized()["audioURL"], "file://" + path.string());
}

TEST_F(FLKAudioTrackPlaying, SoundSwitchSetsEveryTrackOfTheCurrentSceneAndIsStored) {
    auto scene = std::make_shared<FLKScene>();
    auto container = FLKVideoContainer::videoContainerWithFrame({0, 0, 100, 200});
    scene->addChild(container);
    auto containerTrack = FLKAudioTrack::audioTrackWithAudioURL(aacTone());
    container->setAudio(containerTrack);
    auto looseTrack = FLKAudioTrack::audioTrackWithAudioURL(monoWAV());
    scene->addChild(looseTrack);
    FLKScene::setCurrentSceneProvider([scene] { return scene; });
    containerTrack->setVolume(0.5f);
    looseTrack->setVolume(0.5f);
    containerTrack->setCurrentTime(0.75);

    auto& controller = FLKSceneSoundController::sharedController();
    controller.setSoundOn(false);
    EXPECT_EQ(containerTrack->volume(), 0.0f);
    EXPECT_EQ(looseTrack->volume(), 0.0f);
    EXPECT_FALSE(controller.soundOn());
    // Written at once: a fresh reader of the same file sees it.
    FLKUserDefaults reread(controller.userDefaults().fileURL());
    ASSERT_TRUE(reread.objectForKey(kFLKIsSoundOnKey).has_value());
    EXPECT_FALSE(reread.boolForKey(kFLKIsSoundOnKey));
    // Silencing never moves the play position.
    EXPECT_NEAR(containerTrack->currentTime(), 0.75, 1e-4);

    controller.setSoundOn(true);
    EXPECT_EQ(containerTrack->volume(), 1.0f);
    EXPECT_EQ(looseTrack->volume(), 1.0f);
    EXPECT_TRUE(FLKUserDefaults(controller.userDefaults().fileURL()).boolForKey(kFLKIsSoundOnKey));
    FLKScene::setCurrentSceneProvider(nullptr);
}

}  // namespace
