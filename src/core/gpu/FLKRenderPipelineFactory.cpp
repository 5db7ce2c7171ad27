#include "core/gpu/FLKRenderPipelineFactory.h"

#include "core/platform/FLKLog.h"

namespace {
struct PipelineRecipe {
    const char* name;
    const char* vertexFunction;
    const char* fragmentFunction;
    bool builtAsYUV;  // the YUV recipe draws without blending
};

// The masked YUV pipeline is built with the blending recipe, the plain YUV one
// without: an opaque frame needs no blending, a masked one shows what is behind.
constexpr PipelineRecipe kRecipes[] = {
    {FLKPipelineNameVertexFragmentTexturedBGRA, "vertex_textured", "fragment_textured", false},
    {FLKPipelineNameVertexFragmentTexturedYUV, "vertex_textured", "fragment_textured_yuv", true},
    {FLKPipelineNameVertexFragmentColored, "vertex_colored", "fragment_colored", false},
    {FLKPipelineNameVertexFragmentTexturedMaskedBGRA, "vertex_textured", "fragment_textured_masked", false},
    {FLKPipelineNameVertexFragmentTexturedMaskedYUV, "vertex_textured", "fragment_textured_yuv_masked", false},
};
}  // namespace

FLKRenderPipelineFactory::FLKRenderPipelineFactory(std::shared_ptr<FLKContext> context)
    : context_(std::move(context)) {
    makePipelines();
}

void FLKRenderPipelineFactory::makePipelines() {
    for (const auto& recipe : kRecipes) {
        FLKError error;
        auto pipeline = recipe.builtAsYUV
                            ? yuvPipelineWithVertexFunctionNamed(recipe.vertexFunction, recipe.fragmentFunction, &error)
                            : bgraPipelineWithVertexFunctionNamed(recipe.vertexFunction, recipe.fragmentFunction, &error);
        if (!pipeline) {
            flk::log("Error occurred when creating render spritesPipeline state: %s", error.fullMessage().c_str());
            continue;
        }
        pipelinesDictionary_[recipe.name] = std::move(pipeline);
    }
}

FLKRenderPipeline* FLKRenderPipelineFactory::coveragePipelineStateWithName(const std::string& name) {
    auto found = coveragePipelines_.find(name);
    if (found != coveragePipelines_.end()) return found->second.get();
    std::unique_ptr<FLKRenderPipeline> pipeline;
    for (const auto& recipe : kRecipes) {
        if (name != recipe.name) continue;
        FLKError error;
        pipeline = FLKRenderPipeline::make(recipe.vertexFunction, recipe.fragmentFunction, true, &error, true);
        if (!pipeline) flk::log("Error occurred when creating render spritesPipeline state: %s", error.fullMessage().c_str());
    }
    // A failure is remembered as null, so it is neither retried nor logged again.
    return (coveragePipelines_[name] = std::move(pipeline)).get();
}

FLKRenderPipeline* FLKRenderPipelineFactory::pipelineStateWithName(const std::string& name) const {
    auto found = pipelinesDictionary_.find(name);
    return found == pipelinesDictionary_.end() ? nullptr : found->second.get();
}

std::unique_ptr<FLKRenderPipeline> FLKRenderPipelineFactory::bgraPipelineWithVertexFunctionNamed(
    const std::string& vertexFunctionName, const std::string& fragmentFunctionName, FLKError* error) const {
    return FLKRenderPipeline::make(vertexFunctionName, fragmentFunctionName, true, error);
}

std::unique_ptr<FLKRenderPipeline> FLKRenderPipelineFactory::yuvPipelineWithVertexFunctionNamed(
    const std::string& vertexFunctionName, const std::string& fragmentFunctionName, FLKError* error) const {
    return FLKRenderPipeline::make(vertexFunctionName, fragmentFunctionName, false, error);
}
