#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKIdentifiable.h"
#include "core/scene/FLKObjectObserver.h"

// Base of every scene node: an ordered, duplicate-free tree of children with a
// weak parent. Nodes live in std::shared_ptr (the tree hands out weak
// references to its nodes), so create them with std::make_shared or a factory.
//
// Scene nodes are used from the main thread; nothing here is locked.
class FLKObject : public FLKSerializable, public FLKIdentifiable, public std::enable_shared_from_this<FLKObject> {
public:
    using Ptr = std::shared_ptr<FLKObject>;

    // zOrder of a node that no parent has placed yet.
    static constexpr int64_t kZOrderNotPlaced = std::numeric_limits<int64_t>::max();

    FLKObject();
    ~FLKObject() override = default;
    FLKObject(const FLKObject&) = delete;
    FLKObject& operator=(const FLKObject&) = delete;

    // Serialisation. `newWithDictionary` builds the class named under
    // "className" (nullptr when no such scene class is known).
    static std::shared_ptr<FLKObject> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKObject"; }

    // Identity.
    const FLKName& name() const override { return name_; }
    void setName(FLKName name) override { name_ = std::move(name); }
    void setName(std::string name) { name_ = flk::makeName(std::move(name)); }
    const std::optional<std::string>& identifier() const override { return identifier_; }

    // Tree.
    const std::vector<Ptr>& children() const { return childrenSet_; }
    std::shared_ptr<FLKObject> parent() const { return parent_.lock(); }
    int64_t zOrder() const { return zOrder_; }
    void setZOrder(int64_t zOrder);
    virtual void addChild(const Ptr& child);
    void removeChild(const Ptr& child);
    void removeAllChildren();
    void removeFromParent();
    void sortChildrenByZOrder();
    // The whole subtree below this node (not the node), ascending zOrder.
    const std::vector<Ptr>& recursiveAllChildren() const { return recursiveAllChildren_; }
    std::vector<Ptr> calculateRecursiveAllChildren() const;
    void setRecursiveAllChildren(std::vector<Ptr> nodes);

    // Searches of the subtree, highest zOrder first. Classes match exactly (a
    // subclass instance does not match); names match by identity of the
    // string object, not by text.
    Ptr childWithIdentifier(const std::string& identifier) const;
    Ptr childWithClass(const std::type_info& type) const;
    Ptr childWithName(const FLKName& name) const;
    // Ascending zOrder.
    std::vector<Ptr> childrenWithClass(const std::type_info& type) const;

    template <class T>
    std::shared_ptr<T> childWithClass() const {
        return std::static_pointer_cast<T>(childWithClass(typeid(T)));
    }
    template <class T>
    std::vector<std::shared_ptr<T>> childrenWithClass() const {
        std::vector<std::shared_ptr<T>> out;
        for (auto& node : childrenWithClass(typeid(T))) out.push_back(std::static_pointer_cast<T>(node));
        return out;
    }

    // Observers are held weakly; adding one twice keeps one entry.
    void addObserver(const std::shared_ptr<FLKObjectObserver>& observer);
    void removeObserver(const std::shared_ptr<FLKObjectObserver>& observer);
    void removeAllObservers();

    // A new node of the receiver's class with the same identifier, name,
    // zOrder and a copy of every child; subclasses add their own properties.
    virtual Ptr copy() const;
    template <class T>
    std::shared_ptr<T> copyAs() const {
        return std::dynamic_pointer_cast<T>(copy());
    }
    void deepCopy(const FLKObject& source);

    virtual bool isEqual(const FLKObject& other) const;
    virtual size_t hash() const;

    // Media files the node refers to (empty when none).
    virtual std::vector<std::filesystem::path> resourceURLs() const { return {}; }

protected:
    // The object a copy starts from: a fresh node of the receiver's class.
    virtual Ptr newInstance() const { return std::make_shared<FLKObject>(); }
    // Fills a freshly made node from its dictionary; subclasses read the
    // base's keys first and then their own.
    virtual void initWithDictionary(const FLKJSON& dictionary);

    template <class T>
    static std::shared_ptr<T> makeWithDictionary(const FLKJSON& dictionary) {
        auto node = std::make_shared<T>();
        static_cast<FLKObject&>(*node).initWithDictionary(dictionary);
        return node;
    }

private:
    void notifyObservers(bool added, const Ptr& child);
    bool isAncestorOrSelf(const FLKObject* node) const;
    void refreshRecursiveAllChildren();

    std::vector<Ptr> childrenSet_;
    FLKName name_;
    std::weak_ptr<FLKObject> parent_;
    int64_t zOrder_ = kZOrderNotPlaced;
    std::vector<Ptr> recursiveAllChildren_;
    std::vector<std::weak_ptr<FLKObjectObserver>> observers_;
    std::optional<std::string> identifier_;
};

