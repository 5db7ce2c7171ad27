#pragma once

#include <map>
#include <memory>
#include <string>

#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKPipelineNames.h"
#include "core/gpu/FLKRenderPipeline.h"

// Builds the named pipelines on one context. Construct it with that context
// current (inside an FLKContext::Scope) and use it only there.
class FLKRenderPipelineFactory {
public:
    explicit FLKRenderPipelineFactory(std::shared_ptr<FLKContext> context);

    const std::shared_ptr<FLKContext>& context() const { return context_; }

    // Null for a name that is not in the table (or whose pipeline failed).
    FLKRenderPipeline* pipelineStateWithName(const std::string& name) const;
    // The same pipeline built for analytic coverage (see FLKRenderPipeline::make),
    // made on first use; null where the table has no such name or it fails.
    FLKRenderPipeline* coveragePipelineStateWithName(const std::string& name);
    const std::map<std::string, std::shared_ptr<FLKRenderPipeline>>& pipelinesDictionary() const {
        return pipelinesDictionary_;
    }

    std::unique_ptr<FLKRenderPipeline> bgraPipelineWithVertexFunctionNamed(const std::string& vertexFunctionName,
                                                                          const std::string& fragmentFunctionName,
                                                                          FLKError* error = nullptr) const;
    std::unique_ptr<FLKRenderPipeline> yuvPipelineWithVertexFunctionNamed(const std::string& vertexFunctionName,
                                                                         const std::string& fragmentFunctionName,
                                                                         FLKError* error = nullptr) const;

private:
    void makePipelines();

    std::shared_ptr<FLKContext> context_;
    std::map<std::string, std::shared_ptr<FLKRenderPipeline>> pipelinesDictionary_;
    std::map<std::string, std::unique_ptr<FLKRenderPipeline>> coveragePipelines_;
};
