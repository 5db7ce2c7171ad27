#include "core/gpu/FLKRenderPipeline.h"

#include <epoxy/gl.h>

#include <vector>

#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUBuffer.h"
#include "core/gpu/FLKGPUTexture.h"
#include "core/gpu/FLKShaderLibrary.h"
#include "core/gpu/FLKYCbCrColorimetry.h"

namespace {
constexpr const char* kErrorDomain = "FLKRenderPipelineErrorDomain";
constexpr const char* kAnalyticCoverageFunction = "analytic_coverage";
constexpr int kCoverageEdgesLocation = 0;  // coverageEdges in analytic_coverage

std::string infoLog(GLuint object, bool isProgram) {
    GLint length = 0;
    if (isProgram) {
        glGetProgramiv(object, GL_INFO_LOG_LENGTH, &length);
    } else {
        glGetShaderiv(object, GL_INFO_LOG_LENGTH, &length);
    }
    std::vector<char> text(static_cast<size_t>(length > 0 ? length : 1), '\0');
    if (isProgram) {
        glGetProgramInfoLog(object, static_cast<GLsizei>(text.size()), nullptr, text.data());
    } else {
        glGetShaderInfoLog(object, static_cast<GLsizei>(text.size()), nullptr, text.data());
    }
    return text.data();
}

GLuint compile(const FLKShaderLibrary::Function& function, FLKError* error, const char* prelude = nullptr) {
    GLenum type = function.stage == FLKShaderLibrary::Stage::vertex     ? GL_VERTEX_SHADER
                  : function.stage == FLKShaderLibrary::Stage::fragment ? GL_FRAGMENT_SHADER
                                                                        : GL_COMPUTE_SHADER;
    std::string source = FLKShaderLibrary::expandedSource(function);
    if (prelude) {
        // After the #version line, which must come first.
        size_t lineEnd = source.find('\n');
        source.insert(lineEnd == std::string::npos ? source.size() : lineEnd + 1, std::string(prelude) + "\n");
    }
    const char* text = source.c_str();
    GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint ok = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (!ok) {
        flk::setError(error, FLKError::make(kErrorDomain, 2, std::string("Compiling ") + function.name + " failed.",
                                            infoLog(shader, false)));
        glDeleteShader(shader);
        return 0;
    }
    return shader;
}

const FLKShaderLibrary::Function* lookUp(const std::string& name, FLKShaderLibrary::Stage stage, FLKError* error) {
    const auto* function = FLKShaderLibrary::functionWithName(name);
    if (!function || function->stage != stage) {
        flk::setError(error, FLKError::make(kErrorDomain, 1, "No shader function named " + name + "."));
        return nullptr;
    }
    return function;
}

GLuint link(GLuint vertexShader, GLuint fragmentShader, FLKError* error) {
    GLuint program = glCreateProgram();
    glAttachShader(program, vertexShader);
    glAttachShader(program, fragmentShader);
    glLinkProgram(program);
    glDetachShader(program, vertexShader);
    glDetachShader(program, fragmentShader);
    GLint ok = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (!ok) {
        flk::setError(error, FLKError::make(kErrorDomain, 3, "Linking the program failed.", infoLog(program, true)));
        glDeleteProgram(program);
        return 0;
    }
    return program;
}

void describeAttribute(GLuint vertexArray, GLuint location, GLint components, GLuint offset) {
    glEnableVertexArrayAttrib(vertexArray, location);
    glVertexArrayAttribFormat(vertexArray, location, components, GL_FLOAT, GL_FALSE, offset);
    glVertexArrayAttribBinding(vertexArray, location, kFLKVertexBufferBinding);
}

GLuint makeVertexArray(FLKVertexLayout layout) {
    GLuint vertexArray = 0;
    glCreateVertexArrays(1, &vertexArray);
    describeAttribute(vertexArray, 0, 4, 0);  // position
    if (layout == FLKVertexLayout::textured) {
        describeAttribute(vertexArray, 1, 2, 16);  // texcoord
    } else {
        describeAttribute(vertexArray, 1, 4, 16);  // colour
        describeAttribute(vertexArray, 2, 2, 32);  // texcoord
    }
    return vertexArray;
}
}  // namespace

std::unique_ptr<FLKRenderPipeline> FLKRenderPipeline::make(const std::string& vertexFunctionName,
                                                           const std::string& fragmentFunctionName,
                                                           bool blendingEnabled, FLKError* error,
                                                           bool analyticCoverage) {
    if (!FLKContext::current()) {
        flk::setError(error, FLKError::make(kErrorDomain, 4, "No OpenGL context is current."));
        return nullptr;
    }
    const auto* vertexFunction = lookUp(vertexFunctionName, FLKShaderLibrary::Stage::vertex, error);
    const auto* fragmentFunction = lookUp(fragmentFunctionName, FLKShaderLibrary::Stage::fragment, error);
    const auto* coverageFunction =
        analyticCoverage ? lookUp(kAnalyticCoverageFunction, FLKShaderLibrary::Stage::fragment, error) : nullptr;
    if (!vertexFunction || !fragmentFunction || (analyticCoverage && !coverageFunction)) return nullptr;

    GLuint vertexShader = compile(*vertexFunction, error);
    GLuint fragmentShader =
        vertexShader ? compile(*fragmentFunction, error, coverageFunction ? coverageFunction->source : nullptr) : 0;
    GLuint program = fragmentShader ? link(vertexShader, fragmentShader, error) : 0;
    glDeleteShader(vertexShader);
    glDeleteShader(fragmentShader);
    if (!program) return nullptr;

    std::unique_ptr<FLKRenderPipeline> pipeline(new FLKRenderPipeline());
    pipeline->vertexFunctionName_ = vertexFunctionName;
    pipeline->fragmentFunctionName_ = fragmentFunctionName;
    // Partly covered pixels blend over what is behind, as the resolve of the samples would.
    pipeline->blendingEnabled_ = blendingEnabled || analyticCoverage;
    pipeline->analyticCoverage_ = analyticCoverage;
    pipeline->layout_ = vertexFunctionName == "vertex_colored" ? FLKVertexLayout::colored : FLKVertexLayout::textured;
    pipeline->program_ = program;
    pipeline->vertexArray_ = makeVertexArray(pipeline->layout_);
    pipeline->owningContext_ = FLKContext::current();
    return pipeline;
}

FLKRenderPipeline::~FLKRenderPipeline() {
    FLKContext::releaseObject(FLKContext::ObjectKind::program, program_);
    // Vertex arrays are not shared: with another context current the name could be
    // someone else's, so it is left to die with its context.
    if (vertexArray_ && FLKContext::current() == owningContext_) glDeleteVertexArrays(1, &vertexArray_);
}

void FLKRenderPipeline::apply() const {
    glUseProgram(program_);
    glBindVertexArray(vertexArray_);
    if (blendingEnabled_) {
        glEnable(GL_BLEND);
        glBlendEquationSeparate(GL_FUNC_ADD, GL_FUNC_ADD);
        glBlendFuncSeparate(GL_ONE, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    } else {
        glDisable(GL_BLEND);
    }
}

void FLKRenderPipeline::setCoverageEdges(const std::array<float, 16>& edges) const {
    if (analyticCoverage_) glProgramUniform4fv(program_, kCoverageEdgesLocation, 4, edges.data());
}

void FLKRenderPipeline::setVertexBuffer(FLKGPUBuffer& buffer) const {
    glVertexArrayVertexBuffer(vertexArray_, kFLKVertexBufferBinding, buffer.name(), 0,
                              static_cast<GLsizei>(vertexStride()));
}

void FLKRenderPipeline::setCameraUniformBuffer(FLKGPUBuffer& buffer) {
    glBindBufferBase(GL_UNIFORM_BUFFER, kFLKCameraUniformBinding, buffer.name());
}

void FLKRenderPipeline::setColorimetryUniformBuffer(FLKGPUBuffer& buffer) {
    glBindBufferBase(GL_UNIFORM_BUFFER, FLKYCbCrColorimetry::kBinding, buffer.name());
}

void FLKRenderPipeline::setFragmentTexture(FLKGPUTexture& texture, unsigned unit) {
    glBindTextureUnit(unit, texture.name());
}

void FLKRenderPipeline::setFragmentSampler(unsigned int sampler, unsigned unit) { glBindSampler(unit, sampler); }

void FLKRenderPipeline::drawIndexed(FLKGPUBuffer& indexBuffer) const {
    GLsizei count = static_cast<GLsizei>(indexBuffer.length() / 2);
    if (count == 0) return;
    glVertexArrayElementBuffer(vertexArray_, indexBuffer.name());
    glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_SHORT, nullptr);
}
