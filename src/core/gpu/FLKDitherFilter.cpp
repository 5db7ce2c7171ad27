#include "core/gpu/FLKDitherFilter.h"

namespace {
constexpr const char* kFunctionName = "dither_2d";
}

FLK_REGISTER_SERIALIZABLE(FLKDitherFilter);

FLKDitherFilter::FLKDitherFilter(std::shared_ptr<FLKContext> context)
    : FLKImageFilter(kFunctionName, std::move(context)) {}

std::shared_ptr<FLKDitherFilter> FLKDitherFilter::filter() { return filter(FLKContext::sharedContext()); }

std::shared_ptr<FLKDitherFilter> FLKDitherFilter::filter(std::shared_ptr<FLKContext> context) {
    return built(std::shared_ptr<FLKDitherFilter>(new FLKDitherFilter(std::move(context))));
}

std::shared_ptr<FLKDitherFilter> FLKDitherFilter::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object() || dictionary.value("functionName", "") != kFunctionName) return nullptr;
    return filter();
}
