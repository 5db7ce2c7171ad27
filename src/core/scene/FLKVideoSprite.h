#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "core/gpu/FLKGPUTexture.h"
#include "core/platform/FLKSampleBuffer.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKVideo.h"

// A textured sprite showing video. It draws its plane turned to the video's
// orientation (1 portrait, 2 landscape).
class FLKVideoSprite : public FLKTexturedSprite, public FLKVideo {
public:
    using Clock = std::chrono::steady_clock;

    FLKVideoSprite() = default;

    static std::shared_ptr<FLKVideoSprite> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKVideoSprite"; }

    std::shared_ptr<FLKPlane> videoPlane() const { return plane(); }
    void setShape(const std::shared_ptr<FLKShape>& shape) override;
    // The plane actually drawn: the shape turned to the video's orientation.
    std::shared_ptr<FLKPlane> orientedPlane() const;

    unsigned videoOrientation() const;
    void setVideoOrientation(unsigned orientation);
    // 2 (landscape) when wider than high, otherwise 1; a square is portrait.
    static unsigned videoOrientationForSize(FLKSize size);

    FLKPixelFormat pixelFormat() const { return FLKPixelFormat::BGRA8; }
    virtual double currentTime() const { return 0; }
    double duration() const override { return 0; }

    // The moment playback is measured from, set to now on first read.
    Clock::time_point startDate();
    void setStartDate(Clock::time_point date);

    // Takes a frame: keeps its pixels and makes them the sprite's texture.
    // Frames the sprite decides to drop are ignored.
    void updateWithSampleBuffer(const FLKSampleBuffer& sampleBuffer);
    virtual bool shouldDiscardSampleBuffer(const FLKSampleBuffer&) { return false; }
    std::shared_ptr<const FLKPixelBuffer> imageBuffer() const;

    std::shared_ptr<FLKGPUBuffer> vertexBuffer() override { return planeVertexBuffer(); }
    bool isInteractable() const override { return false; }

    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKVideoSprite>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;
    std::shared_ptr<FLKPlane> drawnPlane() const override { return orientedPlane(); }

    void respondToGeometryChange();
    void calculateOrientedPlaneWithPlane(const std::shared_ptr<FLKPlane>& plane);

private:
    // Orientation and oriented plane change on the main thread, or on the
    // capture thread when a live frame turns the video; the renderer reads them.
    mutable std::mutex videoMutex_;
    unsigned videoOrientation_ = 1;                   // guarded by videoMutex_
    std::shared_ptr<FLKPlane> orientedPlane_;         // guarded by videoMutex_
    std::shared_ptr<const FLKPixelBuffer> imageBuffer_;  // guarded by videoMutex_
    std::optional<Clock::time_point> startDate_;      // guarded by videoMutex_
};
