#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "core/gpu/FLKTextureProvider.h"
#include "core/platform/FLKSize.h"

// Plays a video file into textures: what a URL video sprite forwards its
// playback controls to. The video-file reader implements it.
class FLKVideoFileTextureProvider : public FLKTextureProvider {
public:
    using Factory = std::function<std::shared_ptr<FLKVideoFileTextureProvider>(const std::filesystem::path& url)>;

    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;
    virtual void setCurrentTime(double seconds) = 0;
    virtual double currentTime() const = 0;
    virtual bool hasAudio() const = 0;
    virtual bool isPlaying() const = 0;
    virtual double duration() const = 0;
    virtual double fps() const = 0;
    virtual FLKSize videoSize() const = 0;
    virtual int64_t numFrames() const = 0;
    virtual void setShouldLoop(bool shouldLoop) = 0;

    // How URL video sprites make their providers. The application installs
    // the video-file reader at start-up; until then sprites have no provider
    // and draw nothing.
    static void setFactory(Factory factory);
    static std::shared_ptr<FLKVideoFileTextureProvider> providerForURL(const std::filesystem::path& url);
};
