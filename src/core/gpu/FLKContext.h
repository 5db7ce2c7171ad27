#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "core/platform/FLKPoint.h"
#include "core/platform/FLKRect.h"
#include "core/platform/FLKSize.h"

// An OpenGL 4.5 core context. Every context made here shares its objects
// (textures, buffers, programs, samplers) with the shared context; container
// objects (vertex arrays, framebuffers) stay with the context that made them.
//
// Ownership rule: a context is current on at most one thread at a time. GL
// work happens only inside an FLKContext::Scope, which holds the context's
// mutex for its whole lifetime; a second thread entering a Scope on the same
// context waits. A render thread that owns a context for a long run (export)
// keeps one Scope open on its own context (contextWithSize), never on the
// shared one.
class FLKContext {
public:
    class Scope;

    // Made once, race-free. Never null; isValid() tells whether a GL 4.5
    // context could be made (errorDescription() says why not).
    static std::shared_ptr<FLKContext> sharedContext();
    // A new surfaceless context of the given size, sharing with the shared one.
    static std::shared_ptr<FLKContext> contextWithSize(FLKSize size);
    // Wraps a context the application made and made current on this thread
    // (for instance the desktop widget's). With no functions given, the EGL
    // context current now is used to make it current again later. The context
    // must share objects with the shared context: textures and buffers made
    // elsewhere are used and released through it.
    static std::shared_ptr<FLKContext> adoptCurrentContext(FLKSize size = {720, 720},
                                                           std::function<bool()> makeCurrent = {},
                                                           std::function<void()> doneCurrent = {});

    // The EGL display and config a desktop toolkit already opened, and its
    // context every context made here shares objects with. The handles are
    // EGLDisplay, EGLConfig and EGLContext, passed opaquely so that callers
    // need no EGL header.
    struct NativePlatform {
        void* display = nullptr;
        void* config = nullptr;
        void* shareContext = nullptr;
    };
    // Makes the shared context and every later one on the toolkit's display
    // instead of Mesa's surfaceless one: a context on another display cannot
    // share textures with the toolkit's. Only before the first sharedContext();
    // false afterwards.
    static bool useNativePlatform(const NativePlatform& platform);

    // True when an OpenGL 4.5 core context can be made; otherwise `reason`
    // receives why.
    static bool isGPUSupported(std::string* reason = nullptr);

    // Frames a second of preview rendering.
    static int fps() { return 30; }

    ~FLKContext();
    FLKContext(const FLKContext&) = delete;
    FLKContext& operator=(const FLKContext&) = delete;

    bool isValid() const { return valid_; }
    const std::string& errorDescription() const { return errorDescription_; }
    // The GL renderer string (the "device").
    const std::string& deviceName() const { return deviceName_; }
    // "4.5 (Core Profile) Mesa ...".
    const std::string& versionString() const { return versionString_; }

    FLKSize size() const;
    void setSize(FLKSize size);

    // Between the view's bottom-left origin and the GPU's top-left origin.
    FLKPoint gpuPointForPoint(FLKPoint p) const;
    FLKRect gpuRectForRect(FLKRect r) const;

    // How draws on this context show video frames: 1 (the default) converts
    // each frame to RGBA once, in a compute pass that exports rely on bit for
    // bit; 2 samples the frame's luma and chroma planes in the draw itself,
    // which spares the pass and the wait for it on software rasterisers.
    unsigned videoRenderingMode() const { return videoRenderingMode_.load(); }
    void setVideoRenderingMode(unsigned mode) { videoRenderingMode_.store(mode); }
    bool drawsVideoPlanes() const { return videoRenderingMode() == 2; }

    // The default sampler (linear, clamp to edge), a shared GL object made
    // on first use; call inside a Scope.
    unsigned int samplerState();

    // True when this context is current on the calling thread.
    bool isCurrent() const;
    // The context made current on this thread by the innermost Scope, or null.
    static FLKContext* current();

    // Deletes a shared GL object now when a context of the share group is
    // current on this thread, otherwise at the next Scope entry on any context.
    enum class ObjectKind { texture, buffer, sampler, program };
    static void releaseObject(ObjectKind kind, unsigned int name);

private:
    struct Native;  // EGL handles
    FLKContext();
    static std::shared_ptr<FLKContext> createOwned(FLKSize size, const FLKContext* shareWith);
    void readDeviceStrings();
    bool makeCurrentNow();
    void doneCurrentNow();
    static void drainReleasedObjects();

    std::unique_ptr<Native> native_;  // written while constructing only
    bool valid_ = false;              // written while constructing only
    bool ownsNative_ = true;          // written while constructing only
    std::string errorDescription_;    // written while constructing only
    std::string deviceName_;          // written while constructing only
    std::string versionString_;       // written while constructing only
    std::function<bool()> externalMakeCurrent_;
    std::function<void()> externalDoneCurrent_;

    std::atomic<unsigned> videoRenderingMode_{1};  // any thread

    mutable std::mutex sizeMutex_;
    FLKSize size_{720, 720};  // guarded by sizeMutex_

    std::recursive_mutex currentMutex_;  // held by every Scope on this context
    unsigned int sampler_ = 0;           // guarded by currentMutex_

    friend class Scope;
};

// Makes a context current on the calling thread for the Scope's lifetime and
// restores what was current before. Nested Scopes on one thread are allowed.
class FLKContext::Scope {
public:
    explicit Scope(FLKContext& context);
    explicit Scope(const std::shared_ptr<FLKContext>& context) : Scope(*context) {}
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

    // False when the context could not be made current; no GL call may follow.
    bool isCurrent() const { return current_; }

private:
    FLKContext& context_;
    FLKContext* previous_ = nullptr;
    bool current_ = false;
};
