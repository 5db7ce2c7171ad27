#include "core/gpu/FLKGaussianBlur2DFilter.h"

#include <epoxy/gl.h>

#include <cmath>

namespace {
constexpr GLuint kWeightTextureUnit = 2;
constexpr const char* kFunctionName = "gaussian_blur_2d";

// The limit of a vanishing sigma, and the single weight of a window of one.
std::vector<float> centreOnly(int side) {
    std::vector<float> weights(static_cast<size_t>(side) * side, 0.0f);
    weights[weights.size() / 2] = 1.0f;
    return weights;
}
}  // namespace

FLK_REGISTER_SERIALIZABLE(FLKGaussianBlur2DFilter);

FLKGaussianBlur2DFilter::FLKGaussianBlur2DFilter(std::shared_ptr<FLKContext> context, float radius)
    : FLKImageFilter(kFunctionName, std::move(context)), radius_(radius), sigma_(radius * 0.5f) {}

FLKGaussianBlur2DFilter::~FLKGaussianBlur2DFilter() {
    FLKContext::releaseObject(FLKContext::ObjectKind::texture, blurWeightTexture_);
}

std::shared_ptr<FLKGaussianBlur2DFilter> FLKGaussianBlur2DFilter::filterWithRadius(float radius) {
    return filterWithRadius(radius, FLKContext::sharedContext());
}

std::shared_ptr<FLKGaussianBlur2DFilter> FLKGaussianBlur2DFilter::filterWithRadius(
    float radius, std::shared_ptr<FLKContext> context) {
    return built(std::shared_ptr<FLKGaussianBlur2DFilter>(new FLKGaussianBlur2DFilter(std::move(context), radius)));
}

std::shared_ptr<FLKGaussianBlur2DFilter> FLKGaussianBlur2DFilter::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object() || dictionary.value("functionName", "") != kFunctionName) return nullptr;
    return filterWithRadius(0);
}

float FLKGaussianBlur2DFilter::radius() const {
    std::lock_guard lock(mutex_);
    return radius_;
}

float FLKGaussianBlur2DFilter::sigma() const {
    std::lock_guard lock(mutex_);
    return sigma_;
}

void FLKGaussianBlur2DFilter::setRadius(float radius) {
    std::lock_guard lock(mutex_);
    radius_ = radius;
    sigma_ = radius * 0.5f;
    markDirtyLocked();
    dropWeightTextureLocked();
}

void FLKGaussianBlur2DFilter::setSigma(float sigma) {
    std::lock_guard lock(mutex_);
    sigma_ = sigma;
    markDirtyLocked();
    dropWeightTextureLocked();
}

unsigned int FLKGaussianBlur2DFilter::blurWeightTexture() const {
    std::lock_guard lock(mutex_);
    return blurWeightTexture_;
}

void FLKGaussianBlur2DFilter::dropWeightTextureLocked() {
    // Safe from any thread: without a current context the name is deleted later.
    FLKContext::releaseObject(FLKContext::ObjectKind::texture, blurWeightTexture_);
    blurWeightTexture_ = 0;
}

int FLKGaussianBlur2DFilter::blurWeightSide(float radius) {
    return radius > 0 ? static_cast<int>(std::roundf(radius)) * 2 + 1 : 1;
}

std::vector<float> FLKGaussianBlur2DFilter::blurWeights(float radius, float sigma) {
    const int n = blurWeightSide(radius);
    if (n == 1 || sigma <= 0) return centreOnly(n);
    const float k = -1.0f / (2.0f * sigma * sigma);
    const float step = 2.0f * radius / static_cast<float>(n - 1);
    std::vector<float> weights(static_cast<size_t>(n) * n);
    float sum = 0;
    for (int j = 0; j < n; ++j) {
        float y = -radius + static_cast<float>(j) * step;
        for (int i = 0; i < n; ++i) {
            float x = -radius + static_cast<float>(i) * step;
            float weight = std::exp((x * x + y * y) * k);
            weights[static_cast<size_t>(j) * n + i] = weight;
            sum += weight;
        }
    }
    float scale = 1.0f / sum;
    for (float& weight : weights) weight *= scale;
    return weights;
}

void FLKGaussianBlur2DFilter::generateBlurWeightTexture() {
    const int n = blurWeightSide(radius_);
    std::vector<float> weights = blurWeights(radius_, sigma_);
    GLuint texture = 0;
    glCreateTextures(GL_TEXTURE_2D, 1, &texture);
    glTextureStorage2D(texture, 1, GL_R32F, n, n);
    glTextureParameteri(texture, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTextureParameteri(texture, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glTextureSubImage2D(texture, 0, 0, 0, n, n, GL_RED, GL_FLOAT, weights.data());
    blurWeightTexture_ = texture;
}

bool FLKGaussianBlur2DFilter::setTextures(FLKTextureProvider& provider, FLKGPUTexture& source,
                                          FLKGPUTexture& output) {
    if (!FLKImageFilter::setTextures(provider, source, output)) return false;
    if (!blurWeightTexture_) generateBlurWeightTexture();
    glBindTextureUnit(kWeightTextureUnit, blurWeightTexture_);
    return true;
}
