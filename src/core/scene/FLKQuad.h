#pragma once

#include <memory>

#include "core/scene/FLKPlane.h"

// The plane a textured sprite is given for a picture of known size.
class FLKQuad : public FLKPlane {
public:
    using FLKPlane::FLKPlane;

    static std::shared_ptr<FLKQuad> quadWithFrame(const FLKRect& frame);

    std::shared_ptr<FLKPlane> copy() const override;
    std::string className() const override { return "FLKQuad"; }
    static std::shared_ptr<FLKQuad> newWithDictionary(const FLKJSON& dictionary);
};
