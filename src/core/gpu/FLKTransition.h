#pragma once

#include <string>
#include <vector>

#include "core/gpu/FLKGPUBuffer.h"
#include "core/gpu/FLKImageFilter.h"

// A video transition: mixes the outgoing clip's texture (the provider, unit 0)
// into the incoming one's (toProvider, unit 1) by progress, 0 to 1, writing
// image unit 2. Progress 0 gives exactly the outgoing frame, 1 exactly the
// incoming one. Only the kernel is saved, never progress or sources.
class FLKTransition : public FLKImageFilter {
public:
    static constexpr const char* kMenuTitle = "Add Transition";

    // The offered kernels in menu order, and the title each shows.
    static std::vector<std::string> transitionFunctionNames();
    static std::string titleForFunctionName(const std::string& functionName);

    // Null (with the pipeline failure logged) for an unknown kernel.
    static std::shared_ptr<FLKTransition> transitionWithFunctionName(const std::string& functionName);
    static std::shared_ptr<FLKTransition> transitionWithFunctionName(const std::string& functionName,
                                                                     std::shared_ptr<FLKContext> context);
    static std::shared_ptr<FLKTransition> newWithDictionary(const FLKJSON& dictionary);

    std::shared_ptr<FLKTextureProvider> toProvider() const;
    // Held weakly; a new source makes the transition dirty.
    void setToProvider(const std::shared_ptr<FLKTextureProvider>& provider);

    float progress() const;
    void setProgress(float progress);

    std::string className() const override { return "FLKTransition"; }

protected:
    bool hasOtherInputs(FLKTextureProvider& provider) override;
    bool setTextures(FLKTextureProvider& provider, FLKGPUTexture& source, FLKGPUTexture& output) override;
    void setBuffers() override;

private:
    FLKTransition(const std::string& functionName, std::shared_ptr<FLKContext> context);
    // Writes progress as one float at the start of the uniform buffer; mutex_ held.
    void updateUniforms();

    std::weak_ptr<FLKTextureProvider> toProvider_;  // guarded by mutex_
    float progress_ = 0;                            // guarded by mutex_
    FLKGPUBuffer uniformBuffer_;                    // bytes from any thread, GL side on the render thread
};
