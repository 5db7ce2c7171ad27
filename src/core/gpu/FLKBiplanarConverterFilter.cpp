#include "core/gpu/FLKBiplanarConverterFilter.h"

#include <epoxy/gl.h>

#include "core/gpu/FLKYCbCrColorimetry.h"

namespace {
constexpr const char* kFunctionName = "yCbCrColorConversion";
constexpr GLuint kChromaTextureUnit = 2;
}  // namespace

FLK_REGISTER_SERIALIZABLE(FLKBiplanarConverterFilter);

FLKBiplanarConverterFilter::FLKBiplanarConverterFilter(std::shared_ptr<FLKContext> context)
    : FLKImageFilter(kFunctionName, std::move(context)) {}

FLKBiplanarConverterFilter::~FLKBiplanarConverterFilter() {
    FLKContext::releaseObject(FLKContext::ObjectKind::buffer, uniformBuffer_);
}

std::shared_ptr<FLKBiplanarConverterFilter> FLKBiplanarConverterFilter::filter() {
    return filter(FLKContext::sharedContext());
}

std::shared_ptr<FLKBiplanarConverterFilter> FLKBiplanarConverterFilter::filter(std::shared_ptr<FLKContext> context) {
    return built(std::shared_ptr<FLKBiplanarConverterFilter>(new FLKBiplanarConverterFilter(std::move(context))));
}

std::shared_ptr<FLKBiplanarConverterFilter> FLKBiplanarConverterFilter::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object() || dictionary.value("functionName", "") != kFunctionName) return nullptr;
    return filter();
}

std::shared_ptr<FLKBiplanarTexture> FLKBiplanarConverterFilter::biplanarTexture() const {
    return std::dynamic_pointer_cast<FLKBiplanarTexture>(provider());
}

FLKColorMatrix FLKBiplanarConverterFilter::colorMatrix() const {
    std::lock_guard lock(mutex_);
    return colorMatrix_;
}

FLKColorRange FLKBiplanarConverterFilter::colorRange() const {
    std::lock_guard lock(mutex_);
    return colorRange_;
}

void FLKBiplanarConverterFilter::setColorMatrix(FLKColorMatrix matrix) { setColorimetry(matrix, colorRange()); }

void FLKBiplanarConverterFilter::setColorRange(FLKColorRange range) { setColorimetry(colorMatrix(), range); }

void FLKBiplanarConverterFilter::setColorimetry(FLKColorMatrix matrix, FLKColorRange range) {
    std::lock_guard lock(mutex_);
    if (matrix == colorMatrix_ && range == colorRange_) return;
    colorMatrix_ = matrix;
    colorRange_ = range;
    markDirtyLocked();
}

bool FLKBiplanarConverterFilter::hasOtherInputs(FLKTextureProvider& provider) {
    auto* biplanar = dynamic_cast<FLKBiplanarTexture*>(&provider);
    auto chroma = biplanar ? biplanar->texture1() : nullptr;
    return chroma && chroma->name();
}

bool FLKBiplanarConverterFilter::setTextures(FLKTextureProvider& provider, FLKGPUTexture& source,
                                             FLKGPUTexture& output) {
    auto* biplanar = dynamic_cast<FLKBiplanarTexture*>(&provider);
    std::shared_ptr<FLKGPUTexture> chroma = biplanar ? biplanar->texture1() : nullptr;
    if (!chroma || !chroma->name()) return false;
    if (!FLKImageFilter::setTextures(provider, source, output)) return false;
    glBindTextureUnit(kChromaTextureUnit, chroma->name());
    return true;
}

void FLKBiplanarConverterFilter::setBuffers() {
    const auto values = FLKYCbCrColorimetry::of(colorMatrix_, colorRange_);
    if (!uniformBuffer_) glCreateBuffers(1, &uniformBuffer_);
    glNamedBufferData(uniformBuffer_, sizeof values, &values, GL_DYNAMIC_DRAW);
    glBindBufferBase(GL_UNIFORM_BUFFER, FLKYCbCrColorimetry::kBinding, uniformBuffer_);
}
