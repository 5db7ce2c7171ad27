#pragma once

#include <array>
#include <memory>
#include <string>

#include "core/platform/FLKError.h"

class FLKGPUBuffer;
class FLKGPUTexture;

// Where the renderer binds things; the shaders use the same numbers.
inline constexpr unsigned kFLKVertexBufferBinding = 0;   // the sprite's vertices
inline constexpr unsigned kFLKCameraUniformBinding = 1;  // the camera's 64-byte matrix (std140 mat4)
inline constexpr unsigned kFLKColorTextureUnit = 0;      // BGRA texture, or luma for YUV
inline constexpr unsigned kFLKMaskTextureUnit = 1;       // mask (masked pipelines)
inline constexpr unsigned kFLKChromaTextureUnit = 2;     // interleaved CbCr (YUV pipelines)

// Vertex records the pipelines read.
enum class FLKVertexLayout {
    textured,  // 32 bytes: float4 position, float2 texcoord, 2 floats reserved
    colored,   // 48 bytes: float4 position, float4 colour, float2 texcoord, 2 floats reserved
};

// A linked GLSL program with its vertex layout and blend state. The vertex
// array object belongs to the context the pipeline was made on: use a
// pipeline only while that context is current.
class FLKRenderPipeline {
public:
    // Needs a current context. Null with `error` set when a function is
    // missing or the program does not compile or link. With analytic
    // coverage the fragment shader weighs each pixel by the share of its 4x
    // sample positions inside the quad given by setCoverageEdges(), and
    // blending is on, for drawing antialiased into a single-sampled target.
    static std::unique_ptr<FLKRenderPipeline> make(const std::string& vertexFunctionName,
                                                   const std::string& fragmentFunctionName, bool blendingEnabled,
                                                   FLKError* error = nullptr, bool analyticCoverage = false);
    ~FLKRenderPipeline();
    FLKRenderPipeline(const FLKRenderPipeline&) = delete;
    FLKRenderPipeline& operator=(const FLKRenderPipeline&) = delete;

    const std::string& vertexFunctionName() const { return vertexFunctionName_; }
    const std::string& fragmentFunctionName() const { return fragmentFunctionName_; }
    bool isBlendingEnabled() const { return blendingEnabled_; }
    FLKVertexLayout vertexLayout() const { return layout_; }
    unsigned vertexStride() const { return layout_ == FLKVertexLayout::textured ? 32u : 48u; }
    unsigned int program() const { return program_; }
    bool hasAnalyticCoverage() const { return analyticCoverage_; }

    // Program, vertex array and blend state (premultiplied "over" when on).
    void apply() const;
    void setVertexBuffer(FLKGPUBuffer& buffer) const;
    // The quad's four edges in window coordinates, (a, b, c, unused) each with
    // a x + b y + c >= 0 inside and (a, b) of unit length. Analytic coverage only.
    void setCoverageEdges(const std::array<float, 16>& edges) const;
    static void setCameraUniformBuffer(FLKGPUBuffer& buffer);
    // The colorimetry of the frame planes the YUV pipelines sample.
    static void setColorimetryUniformBuffer(FLKGPUBuffer& buffer);
    static void setFragmentTexture(FLKGPUTexture& texture, unsigned unit);
    static void setFragmentSampler(unsigned int sampler, unsigned unit);
    // Triangles with 16-bit indices: length / 2 of them.
    void drawIndexed(FLKGPUBuffer& indexBuffer) const;

private:
    FLKRenderPipeline() = default;

    std::string vertexFunctionName_;
    std::string fragmentFunctionName_;
    bool blendingEnabled_ = false;
    bool analyticCoverage_ = false;
    FLKVertexLayout layout_ = FLKVertexLayout::textured;
    unsigned int program_ = 0;
    unsigned int vertexArray_ = 0;
    const void* owningContext_ = nullptr;  // the context whose vertex array this is
};
