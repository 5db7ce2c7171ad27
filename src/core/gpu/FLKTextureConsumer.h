#pragma once

#include <memory>

#include "core/gpu/FLKTextureProvider.h"

// Something that shows the texture of a provider it does not own.
class FLKTextureConsumer {
public:
    virtual ~FLKTextureConsumer() = default;
    virtual std::shared_ptr<FLKTextureProvider> provider() const = 0;
    // Held weakly.
    virtual void setProvider(const std::shared_ptr<FLKTextureProvider>& provider) = 0;
};
