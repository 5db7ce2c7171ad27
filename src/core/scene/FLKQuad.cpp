#include "core/scene/FLKQuad.h"

FLK_REGISTER_SERIALIZABLE(FLKQuad);

std::shared_ptr<FLKQuad> FLKQuad::quadWithFrame(const FLKRect& frame) { return std::make_shared<FLKQuad>(frame); }

std::shared_ptr<FLKPlane> FLKQuad::copy() const { return std::make_shared<FLKQuad>(*this); }

std::shared_ptr<FLKQuad> FLKQuad::newWithDictionary(const FLKJSON& dictionary) {
    FLKPoint corners[4];
    if (!cornersFromDictionary(dictionary, corners)) return nullptr;
    return std::make_shared<FLKQuad>(corners[0], corners[1], corners[2], corners[3]);
}
