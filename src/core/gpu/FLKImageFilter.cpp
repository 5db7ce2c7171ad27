#include "core/gpu/FLKImageFilter.h"

#include <epoxy/gl.h>

#include <vector>

#include "core/gpu/FLKShaderLibrary.h"
#include "core/platform/FLKLog.h"

namespace {
constexpr GLuint kSourceTextureUnit = 0;
constexpr GLuint kOutputImageUnit = 1;
constexpr int kGroupSide = 8;

GLuint compileComputeProgram(const std::string& functionName) {
    const auto* function = FLKShaderLibrary::functionWithName(functionName);
    if (!function || function->stage != FLKShaderLibrary::Stage::compute) return 0;
    const std::string source = FLKShaderLibrary::expandedSource(*function);
    const char* text = source.c_str();
    GLuint shader = glCreateShader(GL_COMPUTE_SHADER);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint ok = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (!ok) {
        std::vector<char> text(4096, '\0');
        glGetShaderInfoLog(shader, static_cast<GLsizei>(text.size()), nullptr, text.data());
        flk::log("%s: %s", functionName.c_str(), text.data());
        glDeleteShader(shader);
        return 0;
    }
    GLuint program = glCreateProgram();
    glAttachShader(program, shader);
    glLinkProgram(program);
    glDetachShader(program, shader);
    glDeleteShader(shader);
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (!ok) {
        glDeleteProgram(program);
        return 0;
    }
    return program;
}
}  // namespace

FLK_REGISTER_SERIALIZABLE(FLKImageFilter);

FLKImageFilter::FLKImageFilter(std::string functionName, std::shared_ptr<FLKContext> context)
    : functionName_(std::move(functionName)), context_(std::move(context)) {}

FLKImageFilter::~FLKImageFilter() { FLKContext::releaseObject(FLKContext::ObjectKind::program, pipeline_); }

std::shared_ptr<FLKImageFilter> FLKImageFilter::filterWithFunctionName(const std::string& functionName,
                                                                       std::shared_ptr<FLKContext> context) {
    return built(std::shared_ptr<FLKImageFilter>(new FLKImageFilter(functionName, std::move(context))));
}

std::shared_ptr<FLKImageFilter> FLKImageFilter::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    auto className = dictionary.find("className");
    if (className == dictionary.end() || !className->is_string()) return nullptr;
    // A subclass's own factory answers for it.
    if (*className != "FLKImageFilter") return flk::objectWithDictionary<FLKImageFilter>(dictionary);
    auto functionName = dictionary.find("functionName");
    if (functionName == dictionary.end() || !functionName->is_string()) return nullptr;
    return filterWithFunctionName(functionName->get<std::string>(), FLKContext::sharedContext());
}

bool FLKImageFilter::buildPipeline() {
    // Programs are shared by the whole context group: any current member will do.
    if (context_ && context_->isValid()) {
        if (FLKContext::current()) {
            pipeline_ = compileComputeProgram(functionName_);
        } else {
            FLKContext::Scope scope(*context_);
            if (scope.isCurrent()) pipeline_ = compileComputeProgram(functionName_);
        }
    }
    if (!pipeline_) {
        flk::log("Error occurred when building compute pipeline for function %s", functionName_.c_str());
        return false;
    }
    return true;
}

bool FLKImageFilter::isDirty() const {
    std::lock_guard lock(mutex_);
    return dirty_;
}

void FLKImageFilter::setDirty() {
    std::lock_guard lock(mutex_);
    dirty_ = true;
}

std::shared_ptr<FLKTextureProvider> FLKImageFilter::provider() const {
    std::lock_guard lock(mutex_);
    return provider_.lock();
}

void FLKImageFilter::setProvider(const std::shared_ptr<FLKTextureProvider>& provider) {
    std::lock_guard lock(mutex_);
    provider_ = provider;
    dirty_ = true;
}

std::shared_ptr<FLKGPUTexture> FLKImageFilter::texture() const {
    // The pass only changes the filter's output, never its observable settings.
    const_cast<FLKImageFilter*>(this)->applyIfDirty();
    std::lock_guard lock(mutex_);
    return internalTexture_;
}

void FLKImageFilter::applyIfDirty() {
    if (!FLKContext::current() || !isDirty()) return;
    applyFilter();
}

void FLKImageFilter::applyFilter() {
    if (!FLKContext::current()) return;
    std::lock_guard lock(mutex_);
    auto provider = provider_.lock();
    std::shared_ptr<FLKGPUTexture> source = provider ? provider->texture() : nullptr;
    if (!source || !source->name() || !hasOtherInputs(*provider)) return;
    if (!ensureOutput(source->width(), source->height())) return;

    glUseProgram(pipeline_);
    if (!setTextures(*provider, *source, *internalTexture_)) return;
    setBuffers();
    // Whole groups only; the last partial band is left as it is.
    glDispatchCompute(static_cast<GLuint>(source->width() / kGroupSide),
                      static_cast<GLuint>(source->height() / kGroupSide), 1);
    // Later draws, copies and passes on this context see the result without waiting.
    glMemoryBarrier(GL_ALL_BARRIER_BITS);
    dirty_ = false;
}

bool FLKImageFilter::ensureOutput(int width, int height) {
    if (internalTexture_ && internalTexture_->width() == width && internalTexture_->height() == height) return true;
    auto output = FLKGPUTexture::renderTarget(width, height, FLKPixelFormat::RGBA8);
    if (!output) return false;
    glClearTexImage(output->name(), 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    internalTexture_ = std::move(output);
    return true;
}

bool FLKImageFilter::setTextures(FLKTextureProvider& /*provider*/, FLKGPUTexture& source, FLKGPUTexture& output) {
    glBindTextureUnit(kSourceTextureUnit, source.name());
    glBindImageTexture(kOutputImageUnit, output.name(), 0, GL_FALSE, 0, GL_WRITE_ONLY, GL_RGBA8);
    return true;
}

FLKJSON FLKImageFilter::serialized() const {
    FLKJSON dictionary = FLKJSON::object();
    dictionary["className"] = className();
    dictionary["functionName"] = functionName_;
    return dictionary;
}
