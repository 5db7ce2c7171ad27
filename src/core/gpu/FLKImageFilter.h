#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUTexture.h"
#include "core/gpu/FLKTextureConsumer.h"
#include "core/gpu/FLKTextureProvider.h"
#include "core/platform/FLKSerializable.h"

// A compute pass from the provider's texture into an RGBA8 texture of the same
// size, rerun only when something changed. Being a provider itself, filters
// chain. The pass runs in 8x8 work groups over the whole groups only: a last
// band of fewer than 8 columns or rows is never written (it keeps what it had,
// transparent black on a new texture).
//
// Threads: parameters may be set from any thread (guarded by mutex_); the pass
// runs, with its GL calls, on the thread that reads texture() with a context
// of the shared group current (the render or reader thread).
class FLKImageFilter : public FLKTextureProvider, public FLKTextureConsumer, public FLKSerializable {
public:
    // Null (and "Error occurred when building compute pipeline for function
    // <name>" logged) when the kernel is unknown or does not build.
    static std::shared_ptr<FLKImageFilter> filterWithFunctionName(const std::string& functionName,
                                                                  std::shared_ptr<FLKContext> context);
    // The class named by "className", on the shared context, from "functionName".
    static std::shared_ptr<FLKImageFilter> newWithDictionary(const FLKJSON& dictionary);

    ~FLKImageFilter() override;
    FLKImageFilter(const FLKImageFilter&) = delete;
    FLKImageFilter& operator=(const FLKImageFilter&) = delete;

    const std::string& functionName() const { return functionName_; }
    const std::shared_ptr<FLKContext>& context() const { return context_; }
    bool isDirty() const;
    // Asks for a new pass, for a source whose pixels changed in place.
    void setDirty();

    std::shared_ptr<FLKTextureProvider> provider() const override;
    // Held weakly; a new source makes the filter dirty.
    void setProvider(const std::shared_ptr<FLKTextureProvider>& provider) override;

    // Runs the pass first when dirty and a context is current; null until a
    // pass has had a source.
    std::shared_ptr<FLKGPUTexture> texture() const override;
    void refreshTexture() override {}
    // Runs the pass now (needs a current context); without a source texture
    // the output stays as it was and the filter stays dirty.
    void applyFilter();

    FLKJSON serialized() const override;
    std::string className() const override { return "FLKImageFilter"; }

protected:
    FLKImageFilter(std::string functionName, std::shared_ptr<FLKContext> context);
    // Compiles the kernel; false after logging the failure.
    bool buildPipeline();

    // These run inside applyFilter with mutex_ held. False when an input
    // besides the provider's texture is missing: no pass, no output made.
    virtual bool hasOtherInputs(FLKTextureProvider& /*provider*/) { return true; }
    // The program is in use for these two.
    // Binds the source (the provider's texture) at texture unit 0 and the
    // output at image unit 1; false when something needed is missing (no
    // pass then).
    virtual bool setTextures(FLKTextureProvider& provider, FLKGPUTexture& source, FLKGPUTexture& output);
    virtual void setBuffers() {}

    // Makes the filter dirty; call with mutex_ held.
    void markDirtyLocked() { dirty_ = true; }

    template <class Filter>
    static std::shared_ptr<Filter> built(std::shared_ptr<Filter> filter) {
        return filter->buildPipeline() ? filter : nullptr;
    }

    mutable std::mutex mutex_;

private:
    void applyIfDirty();
    bool ensureOutput(int width, int height);

    const std::string functionName_;
    const std::shared_ptr<FLKContext> context_;
    unsigned int pipeline_ = 0;                           // written once while building
    std::weak_ptr<FLKTextureProvider> provider_;          // guarded by mutex_
    std::shared_ptr<FLKGPUTexture> internalTexture_;      // guarded by mutex_; GL side on the render thread
    bool dirty_ = true;                                   // guarded by mutex_
};
