#pragma once

#include <memory>
#include <optional>
#include <string>

// A node's name is compared by identity in searches (see FLKObject::childWithName),
// so it is carried as a shared string object rather than a plain value.
using FLKName = std::shared_ptr<const std::string>;

namespace flk {
inline FLKName makeName(std::string text) { return std::make_shared<const std::string>(std::move(text)); }
}  // namespace flk

class FLKIdentifiable {
public:
    virtual ~FLKIdentifiable() = default;
    virtual const FLKName& name() const = 0;
    virtual void setName(FLKName name) = 0;
    // Absent only for a node read from a dictionary without one.
    virtual const std::optional<std::string>& identifier() const = 0;
};
