#pragma once

#include <memory>

#include "core/scene/FLKShape.h"

// Nodes whose geometry the editor reshapes. Shapes are values: a node keeps
// its own copy of what it is given and is changed by assigning a new shape.
class FLKShapeEditable {
public:
    virtual ~FLKShapeEditable() = default;
    virtual std::shared_ptr<FLKShape> shape() const = 0;
    virtual void setShape(const std::shared_ptr<FLKShape>& shape) = 0;
};
