#include "core/model/FLKAudioTrackMediaPlayer.h"

#include "core/platform/FLKLog.h"

std::unique_ptr<FLKAudioTrackMediaPlayer> FLKAudioTrackMediaPlayer::playerForURL(const std::filesystem::path& url) {
    FLKError error;
    auto player = FLKAudioPlayer::playerWithContentsOfURL(url, &error);
    if (!player) {
        flk::log("%s", error.fullMessage().c_str());
        return nullptr;
    }
    return std::make_unique<FLKAudioTrackMediaPlayer>(std::move(player));
}

void FLKAudioTrackMediaPlayer::install() {
    FLKAudioTrackPlayer::setFactory(
        [](const std::filesystem::path& url) -> std::unique_ptr<FLKAudioTrackPlayer> { return playerForURL(url); });
}
