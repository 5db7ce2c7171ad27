#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/platform/FLKError.h"

// Plays one audio file. The whole file is decoded to 16-bit interleaved
// stereo when the player is made, so seeking is exact and the output thread
// never waits on the decoder.
//
// Without a usable audio output (no sound card, the audio subsystem refuses
// to start) the player stays usable but silent: its position then follows the
// steady clock while it plays, so callers driven by currentTime() still work.
//
// Threads: the public members are called from one thread (the main thread);
// the audio output thread reads the samples and advances the position.
class FLKAudioPlayer {
public:
    // Null (and `error` naming the file and the reason) when the file holds no
    // decodable audio.
    static std::unique_ptr<FLKAudioPlayer> playerWithContentsOfURL(const std::filesystem::path& url,
                                                                   FLKError* error = nullptr);
    ~FLKAudioPlayer();
    FLKAudioPlayer(const FLKAudioPlayer&) = delete;
    FLKAudioPlayer& operator=(const FLKAudioPlayer&) = delete;

    static constexpr int kChannels = 2;
    // Files longer than this are refused rather than decoded into memory.
    static constexpr double kMaximumDuration = 30 * 60;

    const std::filesystem::path& url() const { return url_; }
    void play();
    void pause();
    bool isPlaying() const;
    // Seconds of sound in the file.
    double duration() const;
    double currentTime() const;
    // Clamped to the file; at or past the end the position is the end.
    void setCurrentTime(double seconds);
    // 0 to 1, applied to the samples as they are played.
    float volume() const;
    void setVolume(float volume);

    int sampleRate() const { return sampleRate_; }
    // False when the player is silent for lack of an audio output.
    bool hasAudioOutput() const { return device_ != 0; }
    // Why there is no audio output (empty when there is one).
    const std::string& audioOutputFailure() const { return outputFailure_; }

private:
    FLKAudioPlayer(std::filesystem::path url, std::vector<int16_t> samples, int sampleRate);
    void openAudioOutput();
    static void fillAudio(void* player, uint8_t* stream, int length);
    void fill(int16_t* out, int64_t frames);
    int64_t frameCount() const { return static_cast<int64_t>(samples_.size()) / kChannels; }
    // Silent mode: the position the steady clock has reached.
    int64_t clockPositionLocked() const;

    const std::filesystem::path url_;
    const std::vector<int16_t> samples_;  // immutable after construction; read by the output thread
    const int sampleRate_;
    uint32_t device_ = 0;       // SDL audio device id; 0 without output; set before output starts
    bool ownsSubsystem_ = false;  // main thread only
    std::string outputFailure_;   // main thread only

    mutable std::mutex mutex_;
    bool playing_ = false;     // guarded by mutex_
    int64_t position_ = 0;     // frames; guarded by mutex_ (advanced by the output thread)
    float volume_ = 1.0f;      // guarded by mutex_
    std::chrono::steady_clock::time_point clockStart_;  // silent mode only; guarded by mutex_
};
