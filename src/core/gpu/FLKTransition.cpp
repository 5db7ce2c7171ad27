#include "core/gpu/FLKTransition.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace {
constexpr GLuint kIncomingTextureUnit = 1;
constexpr GLuint kOutputImageUnit = 2;
constexpr GLuint kProgressBinding = 0;
// A std140 block holding one float still occupies a whole vec4 slot.
constexpr size_t kUniformBufferLength = 16;

struct Offered {
    const char* functionName;
    const char* title;
};
constexpr std::array<Offered, 3> kOffered{{{"crossZoom", "CrossZoom"}, {"crosshatch", "Crosshatch"}, {"fade", "Fade"}}};
}  // namespace

FLK_REGISTER_SERIALIZABLE(FLKTransition);

std::vector<std::string> FLKTransition::transitionFunctionNames() {
    std::vector<std::string> names;
    for (const auto& offered : kOffered) names.emplace_back(offered.functionName);
    std::sort(names.begin(), names.end());  // byte order: case-sensitive
    return names;
}

std::string FLKTransition::titleForFunctionName(const std::string& functionName) {
    for (const auto& offered : kOffered) {
        if (functionName == offered.functionName) return offered.title;
    }
    return {};
}

FLKTransition::FLKTransition(const std::string& functionName, std::shared_ptr<FLKContext> context)
    : FLKImageFilter(functionName, std::move(context)),
      uniformBuffer_(std::vector<uint8_t>(kUniformBufferLength, 0)) {}

std::shared_ptr<FLKTransition> FLKTransition::transitionWithFunctionName(const std::string& functionName) {
    return transitionWithFunctionName(functionName, FLKContext::sharedContext());
}

std::shared_ptr<FLKTransition> FLKTransition::transitionWithFunctionName(const std::string& functionName,
                                                                         std::shared_ptr<FLKContext> context) {
    return built(std::shared_ptr<FLKTransition>(new FLKTransition(functionName, std::move(context))));
}

std::shared_ptr<FLKTransition> FLKTransition::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    auto functionName = dictionary.find("functionName");
    if (functionName == dictionary.end() || !functionName->is_string()) return nullptr;
    return transitionWithFunctionName(functionName->get<std::string>());
}

std::shared_ptr<FLKTextureProvider> FLKTransition::toProvider() const {
    std::lock_guard lock(mutex_);
    return toProvider_.lock();
}

void FLKTransition::setToProvider(const std::shared_ptr<FLKTextureProvider>& provider) {
    std::lock_guard lock(mutex_);
    toProvider_ = provider;
    markDirtyLocked();
}

float FLKTransition::progress() const {
    std::lock_guard lock(mutex_);
    return progress_;
}

void FLKTransition::setProgress(float progress) {
    std::lock_guard lock(mutex_);
    progress_ = progress;
    markDirtyLocked();
}

void FLKTransition::updateUniforms() {
    std::vector<uint8_t> bytes(kUniformBufferLength, 0);
    std::memcpy(bytes.data(), &progress_, sizeof progress_);
    uniformBuffer_.setContents(bytes.data(), bytes.size());
}

bool FLKTransition::hasOtherInputs(FLKTextureProvider& /*provider*/) {
    auto incomingProvider = toProvider_.lock();
    auto incoming = incomingProvider ? incomingProvider->texture() : nullptr;
    return incoming && incoming->name();
}

bool FLKTransition::setTextures(FLKTextureProvider& /*provider*/, FLKGPUTexture& source, FLKGPUTexture& output) {
    auto incomingProvider = toProvider_.lock();
    std::shared_ptr<FLKGPUTexture> incoming = incomingProvider ? incomingProvider->texture() : nullptr;
    if (!incoming || !incoming->name()) return false;
    glBindTextureUnit(0, source.name());
    glBindTextureUnit(kIncomingTextureUnit, incoming->name());
    // The kernels sample between texels: the textures' own linear, clamped filtering applies.
    glBindSampler(0, 0);
    glBindSampler(kIncomingTextureUnit, 0);
    glBindImageTexture(kOutputImageUnit, output.name(), 0, GL_FALSE, 0, GL_WRITE_ONLY, GL_RGBA8);
    return true;
}

void FLKTransition::setBuffers() {
    updateUniforms();
    glBindBufferBase(GL_UNIFORM_BUFFER, kProgressBinding, uniformBuffer_.name());
}
