#pragma once

#include <memory>

class FLKObject;

// Told when a node gains or loses a direct child. Nodes hold observers weakly.
class FLKObjectObserver {
public:
    virtual ~FLKObjectObserver() = default;
    virtual void objectDidAddAChild(FLKObject& object, const std::shared_ptr<FLKObject>& child) = 0;
    virtual void objectDidRemoveAChild(FLKObject& object, const std::shared_ptr<FLKObject>& child) = 0;
};
