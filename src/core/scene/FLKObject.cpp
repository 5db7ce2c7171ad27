#include "core/scene/FLKObject.h"

#include "core/platform/FLKUniqueIdentifier.h"

#include <algorithm>
#include <cstdio>

#include "core/platform/FLKLog.h"
#include "core/scene/FLKObjectArrayTransformer.h"

FLK_REGISTER_SERIALIZABLE(FLKObject);

namespace {
// Placement adds to the parent's zOrder, which for an unplaced parent is the
// largest value: the sum wraps to very negative orders on purpose.
int64_t wrappingAdd(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

void sortByZOrder(std::vector<FLKObject::Ptr>& nodes) {
    std::stable_sort(nodes.begin(), nodes.end(),
                     [](const FLKObject::Ptr& a, const FLKObject::Ptr& b) { return a->zOrder() < b->zOrder(); });
}
}  // namespace

FLKObject::FLKObject() : identifier_(flk::uniqueIdentifier()) {}

// MARK: - Serialisation

std::shared_ptr<FLKObject> FLKObject::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    auto className = dictionary.find("className");
    if (className != dictionary.end() && className->is_string() && *className == "FLKObject") {
        return makeWithDictionary<FLKObject>(dictionary);
    }
    return flk::objectWithDictionary<FLKObject>(dictionary);
}

void FLKObject::initWithDictionary(const FLKJSON& dictionary) {
    auto identifier = dictionary.find("identifier");
    identifier_ = identifier != dictionary.end() && identifier->is_string()
                      ? std::optional<std::string>(identifier->get<std::string>())
                      : std::nullopt;
    auto name = dictionary.find("name");
    name_ = name != dictionary.end() && name->is_string() ? flk::makeName(name->get<std::string>()) : nullptr;
    auto zOrder = dictionary.find("zOrder");
    zOrder_ = zOrder != dictionary.end() ? flk::int64Value(*zOrder).value_or(0) : 0;
    auto children = dictionary.find("children");
    if (children == dictionary.end()) return;
    // Documents are untrusted: a tree nested absurdly deep is cut off rather
    // than allowed to exhaust the stack.
    constexpr int kMaximumDepth = 256;
    thread_local int depth = 0;
    if (depth >= kMaximumDepth) {
        flk::log("Ignoring scene nodes nested deeper than %d levels", kMaximumDepth);
        return;
    }
    ++depth;
    std::vector<Ptr> nodes;
    try {
        nodes = FLKObjectArrayTransformer::transformedValue(*children);
    } catch (...) {
        --depth;
        throw;
    }
    --depth;
    for (auto& child : nodes) addChild(child);
}

FLKJSON FLKObject::serialized() const {
    FLKJSON dictionary = FLKJSON::object();
    dictionary["className"] = className();
    if (identifier_) dictionary["identifier"] = *identifier_;
    if (name_) dictionary["name"] = *name_;
    dictionary["zOrder"] = zOrder_;
    dictionary["children"] = FLKObjectArrayTransformer::reverseTransformedValue(childrenSet_);
    return dictionary;
}

// MARK: - Tree

bool FLKObject::isAncestorOrSelf(const FLKObject* node) const {
    std::shared_ptr<const FLKObject> holder;
    for (const FLKObject* ancestor = node; ancestor; ancestor = holder.get()) {
        if (ancestor == this) return true;
        holder = ancestor->parent_.lock();
    }
    return false;
}

void FLKObject::addChild(const Ptr& child) {
    if (!child) return;
    if (child->isAncestorOrSelf(this)) {
        flk::log("Refusing to add node %s below itself", child->identifier_.value_or("(no identifier)").c_str());
        return;
    }
    if (std::find(childrenSet_.begin(), childrenSet_.end(), child) == childrenSet_.end()) childrenSet_.push_back(child);
    child->parent_ = weak_from_this();
    if (child->zOrder_ == kZOrderNotPlaced) {
        // Setting the order asks this node (the new parent) to re-sort.
        child->setZOrder(wrappingAdd(zOrder_, static_cast<int64_t>(childrenSet_.size())));
    } else {
        sortChildrenByZOrder();
    }
    refreshRecursiveAllChildren();
    notifyObservers(true, child);
}

void FLKObject::removeChild(const Ptr& child) {
    auto it = std::find(childrenSet_.begin(), childrenSet_.end(), child);
    if (it != childrenSet_.end()) childrenSet_.erase(it);
    refreshRecursiveAllChildren();
    notifyObservers(false, child);
}

void FLKObject::removeAllChildren() {
    childrenSet_.clear();
    refreshRecursiveAllChildren();
}

void FLKObject::removeFromParent() {
    // Keep this node alive while the parent lets go of it.
    auto self = weak_from_this().lock();
    if (auto parent = parent_.lock()) parent->removeChild(self);
    parent_.reset();
}

void FLKObject::setZOrder(int64_t zOrder) {
    zOrder_ = zOrder;
    if (auto parent = parent_.lock()) parent->sortChildrenByZOrder();
}

void FLKObject::sortChildrenByZOrder() {
    sortByZOrder(childrenSet_);
    refreshRecursiveAllChildren();
}

std::vector<FLKObject::Ptr> FLKObject::calculateRecursiveAllChildren() const {
    std::vector<Ptr> nodes = childrenSet_;
    for (const auto& child : childrenSet_) {
        nodes.insert(nodes.end(), child->recursiveAllChildren_.begin(), child->recursiveAllChildren_.end());
    }
    sortByZOrder(nodes);
    return nodes;
}

void FLKObject::setRecursiveAllChildren(std::vector<Ptr> nodes) {
    recursiveAllChildren_ = std::move(nodes);
    if (auto parent = parent_.lock()) parent->refreshRecursiveAllChildren();
}

void FLKObject::refreshRecursiveAllChildren() { setRecursiveAllChildren(calculateRecursiveAllChildren()); }

// MARK: - Searches

FLKObject::Ptr FLKObject::childWithIdentifier(const std::string& identifier) const {
    for (auto it = recursiveAllChildren_.rbegin(); it != recursiveAllChildren_.rend(); ++it) {
        if ((*it)->identifier_ == identifier) return *it;
    }
    return nullptr;
}

FLKObject::Ptr FLKObject::childWithClass(const std::type_info& type) const {
    for (auto it = recursiveAllChildren_.rbegin(); it != recursiveAllChildren_.rend(); ++it) {
        if (typeid(**it) == type) return *it;
    }
    return nullptr;
}

FLKObject::Ptr FLKObject::childWithName(const FLKName& name) const {
    if (!name) return nullptr;
    for (auto it = recursiveAllChildren_.rbegin(); it != recursiveAllChildren_.rend(); ++it) {
        if ((*it)->name_ == name) return *it;
    }
    return nullptr;
}

std::vector<FLKObject::Ptr> FLKObject::childrenWithClass(const std::type_info& type) const {
    std::vector<Ptr> nodes;
    for (const auto& node : recursiveAllChildren_) {
        if (typeid(*node) == type) nodes.push_back(node);
    }
    return nodes;
}

// MARK: - Observers

void FLKObject::addObserver(const std::shared_ptr<FLKObjectObserver>& observer) {
    if (!observer) return;
    for (const auto& existing : observers_) {
        if (existing.lock() == observer) return;
    }
    observers_.push_back(observer);
}

void FLKObject::removeObserver(const std::shared_ptr<FLKObjectObserver>& observer) {
    std::erase_if(observers_, [&](const auto& existing) {
        auto locked = existing.lock();
        return !locked || locked == observer;
    });
}

void FLKObject::removeAllObservers() { observers_.clear(); }

void FLKObject::notifyObservers(bool added, const Ptr& child) {
    std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
    // A snapshot: an observer may add or remove observers while being told.
    auto observers = observers_;
    for (const auto& weakObserver : observers) {
        auto observer = weakObserver.lock();
        if (!observer) continue;
        if (added) {
            observer->objectDidAddAChild(*this, child);
        } else {
            observer->objectDidRemoveAChild(*this, child);
        }
    }
}

// MARK: - Copying and equality

FLKObject::Ptr FLKObject::copy() const {
    auto node = newInstance();
    node->deepCopy(*this);
    return node;
}

void FLKObject::deepCopy(const FLKObject& source) {
    zOrder_ = source.zOrder_;
    name_ = source.name_;
    identifier_ = source.identifier_;
    for (const auto& child : source.childrenSet_) addChild(child->copy());
}

bool FLKObject::isEqual(const FLKObject& other) const {
    if (this == &other) return true;
    if (typeid(*this) != typeid(other)) return false;
    if (identifier_ != other.identifier_ || zOrder_ != other.zOrder_) return false;
    if (static_cast<bool>(name_) != static_cast<bool>(other.name_)) return false;
    if (name_ && *name_ != *other.name_) return false;
    if (childrenSet_.size() != other.childrenSet_.size()) return false;
    for (size_t i = 0; i < childrenSet_.size(); ++i) {
        if (!childrenSet_[i]->isEqual(*other.childrenSet_[i])) return false;
    }
    return true;
}

size_t FLKObject::hash() const { return identifier_ ? std::hash<std::string>{}(*identifier_) : 0; }
