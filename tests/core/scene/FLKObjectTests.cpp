#include <gtest/gtest.h>

#include <limits>

#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKObject.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKSprite.h"
#include "core/scene/FLKTexturedSprite.h"

namespace {
using Ptr = FLKObject::Ptr;

Ptr node(int64_t zOrder = FLKObject::kZOrderNotPlaced, const char* name = nullptr) {
    auto n = std::make_shared<FLKObject>();
    if (zOrder != FLKObject::kZOrderNotPlaced) n->setZOrder(zOrder);
    if (name) n->setName(name);
    return n;
}

std::vector<int64_t> zOrders(const std::vector<Ptr>& nodes) {
    std::vector<int64_t> out;
    for (const auto& n : nodes) out.push_back(n->zOrder());
    return out;
}

struct RecordingObserver : FLKObjectObserver {
    std::vector<std::pair<bool, FLKObject*>> events;  // (added, child)
    void objectDidAddAChild(FLKObject&, const Ptr& child) override { events.emplace_back(true, child.get()); }
    void objectDidRemoveAChild(FLKObject&, const Ptr& child) override { events.emplace_back(false, child.get()); }
};
}  // namespace

TEST(FLKObjectTree, UnplacedChildIsPlacedAfterTheParentsOrderPlusChildCount) {
    auto parent = node(5);
    parent->addChild(node(1));
    parent->addChild(node(2));
    auto child = node();
    EXPECT_EQ(child->zOrder(), FLKObject::kZOrderNotPlaced);
    parent->addChild(child);
    EXPECT_EQ(child->zOrder(), 8);
    EXPECT_EQ(zOrders(parent->children()), (std::vector<int64_t>{1, 2, 8}));
    EXPECT_EQ(child->parent(), parent);
}

TEST(FLKObjectTree, ChildrenOfAnUnplacedRootWrapToVeryNegativeOrders) {
    auto root = node();
    auto first = node();
    auto second = node();
    root->addChild(first);
    root->addChild(second);
    constexpr int64_t min = std::numeric_limits<int64_t>::min();
    EXPECT_EQ(first->zOrder(), min);
    EXPECT_EQ(second->zOrder(), min + 1);
    // A placed child with an ordinary order sorts after both.
    auto placed = node(0);
    root->addChild(placed);
    EXPECT_EQ(root->children().back(), placed);
}

TEST(FLKObjectTree, AddingTwiceKeepsOneEntryButTellsObserversTwice) {
    auto parent = node(0);
    auto observer = std::make_shared<RecordingObserver>();
    parent->addObserver(observer);
    parent->addObserver(observer);  // a set: still told once per change
    auto child = node();
    parent->addChild(child);
    parent->addChild(child);
    EXPECT_EQ(parent->children().size(), 1u);
    EXPECT_EQ(parent->recursiveAllChildren().size(), 1u);
    ASSERT_EQ(observer->events.size(), 2u);
    EXPECT_TRUE(observer->events[0].first && observer->events[1].first);

    parent->removeChild(child);
    ASSERT_EQ(observer->events.size(), 3u);
    EXPECT_FALSE(observer->events[2].first);
    EXPECT_EQ(observer->events[2].second, child.get());
    // removeChild leaves the parent link; removeFromParent clears it.
    EXPECT_EQ(child->parent(), parent);
    parent->addChild(child);
    child->removeFromParent();
    EXPECT_EQ(child->parent(), nullptr);
    EXPECT_TRUE(parent->children().empty());
    EXPECT_EQ(observer->events.size(), 5u);
}

TEST(FLKObjectTree, ObserversAreHeldWeaklyAndRemoveAllChildrenIsSilent) {
    auto parent = node(0);
    auto kept = std::make_shared<RecordingObserver>();
    auto dropped = std::make_shared<RecordingObserver>();
    parent->addObserver(kept);
    parent->addObserver(dropped);
    std::weak_ptr<RecordingObserver> weakDropped = dropped;
    dropped.reset();
    EXPECT_TRUE(weakDropped.expired());
    parent->addChild(node());
    EXPECT_EQ(kept->events.size(), 1u);

    parent->removeAllChildren();
    EXPECT_TRUE(parent->children().empty());
    EXPECT_TRUE(parent->recursiveAllChildren().empty());
    EXPECT_EQ(kept->events.size(), 1u);

    parent->removeObserver(kept);
    parent->addChild(node());
    EXPECT_EQ(kept->events.size(), 1u);
}

TEST(FLKObjectTree, RecursiveChildrenInterleaveTheSubtreeByOrderAndFollowChangesDeepDown) {
    auto root = node(0);
    auto a = node(10);
    auto b = node(20);
    auto a1 = node(25);
    auto b1 = node(15);
    a->addChild(a1);
    b->addChild(b1);
    root->addChild(b);
    root->addChild(a);
    EXPECT_EQ(zOrders(root->recursiveAllChildren()), (std::vector<int64_t>{10, 15, 20, 25}));
    EXPECT_EQ(zOrders(a->recursiveAllChildren()), (std::vector<int64_t>{25}));

    // A grandchild added below b1 reaches the root's cached list.
    auto deep = node(12);
    b1->addChild(deep);
    EXPECT_EQ(zOrders(root->recursiveAllChildren()), (std::vector<int64_t>{10, 12, 15, 20, 25}));
    EXPECT_EQ(zOrders(b->recursiveAllChildren()), (std::vector<int64_t>{12, 15}));

    // Re-ordering a deep node re-sorts every ancestor's list.
    deep->setZOrder(30);
    EXPECT_EQ(zOrders(root->recursiveAllChildren()), (std::vector<int64_t>{10, 15, 20, 25, 30}));

    deep->removeFromParent();
    EXPECT_EQ(zOrders(root->recursiveAllChildren()), (std::vector<int64_t>{10, 15, 20, 25}));
    a->removeFromParent();
    EXPECT_EQ(zOrders(root->recursiveAllChildren()), (std::vector<int64_t>{15, 20}));
}

TEST(FLKObjectTree, EqualOrdersKeepTheirRelativeOrder) {
    auto root = node(0);
    auto first = node(3, "first");
    auto second = node(3, "second");
    root->addChild(first);
    root->addChild(second);
    root->addChild(node(1));
    EXPECT_EQ(root->children()[1], first);
    EXPECT_EQ(root->children()[2], second);
}

TEST(FLKObjectTree, ANodeCannotBecomeItsOwnDescendant) {
    auto root = node(0);
    auto child = node(1);
    root->addChild(child);
    child->addChild(root);
    child->addChild(child);
    EXPECT_TRUE(child->children().empty());
    EXPECT_EQ(root->recursiveAllChildren().size(), 1u);
}

TEST(FLKObjectSearch, IdentityRules) {
    auto root = node(0);
    auto named = node(1, "Screen");
    root->addChild(named);
    // Same text, different string object: no match.
    EXPECT_EQ(root->childWithName(flk::makeName("Screen")), nullptr);
    EXPECT_EQ(root->childWithName(named->name()), named);

    auto textured = std::make_shared<FLKTexturedSprite>();
    named->addChild(textured);
    EXPECT_EQ(root->childWithClass<FLKSprite>(), nullptr);
    EXPECT_EQ(root->childWithClass<FLKTexturedSprite>(), textured);
    EXPECT_TRUE(root->childrenWithClass<FLKSprite>().empty());

    // Two nodes with one identifier: the higher zOrder wins.
    auto original = node(2);
    auto duplicate = original->copyAs<FLKObject>();
    duplicate->setZOrder(7);
    root->addChild(duplicate);
    root->addChild(original);
    EXPECT_EQ(root->childWithIdentifier(*original->identifier()), duplicate);
    EXPECT_EQ(root->childWithIdentifier("no such node"), nullptr);
}

TEST(FLKObjectSearch, ChildrenWithClassAreInAscendingOrder) {
    auto root = node(0);
    auto high = std::make_shared<FLKColorGradientSprite>();
    high->setZOrder(9);
    auto low = std::make_shared<FLKColorGradientSprite>();
    low->setZOrder(4);
    auto middle = node(6);
    middle->addChild(high);
    root->addChild(middle);
    root->addChild(low);
    auto found = root->childrenWithClass<FLKColorGradientSprite>();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0], low);
    EXPECT_EQ(found[1], high);
    EXPECT_EQ(root->childWithClass<FLKColorGradientSprite>(), high);
}

TEST(FLKObjectCopy, DeepCopyIsIndependentAndKeepsIdentifiers) {
    auto root = node(0, "root");
    auto child = node(3, "child");
    child->addChild(node(4));
    root->addChild(child);

    auto copy = root->copy();
    EXPECT_TRUE(copy->isEqual(*root));
    EXPECT_EQ(copy->hash(), root->hash());
    EXPECT_EQ(copy->identifier(), root->identifier());
    ASSERT_EQ(copy->children().size(), 1u);
    auto childCopy = copy->children()[0];
    EXPECT_NE(childCopy, child);
    EXPECT_EQ(childCopy->parent(), copy);
    EXPECT_EQ(copy->recursiveAllChildren().size(), 2u);

    childCopy->addChild(node(5));
    childCopy->setName("changed");
    EXPECT_EQ(child->children().size(), 1u);
    EXPECT_EQ(*child->name(), "child");
    EXPECT_FALSE(copy->isEqual(*root));
}

TEST(FLKObjectCopy, EqualityNeedsSameClassIdentifierOrderNameAndChildren) {
    auto a = node(1, "n");
    auto b = a->copy();
    EXPECT_TRUE(a->isEqual(*b));
    b->setZOrder(2);
    EXPECT_FALSE(a->isEqual(*b));
    b->setZOrder(1);
    b->setName(FLKName());
    EXPECT_FALSE(a->isEqual(*b));
    b->setName("n");  // same text, another string object: still equal
    EXPECT_TRUE(a->isEqual(*b));
    EXPECT_FALSE(a->isEqual(*node(1, "n")));  // fresh identifier

    auto sprite = std::make_shared<FLKSprite>();
    EXPECT_FALSE(sprite->isEqual(*node()));
}

TEST(FLKObjectSerialization, KeysAndMinimalDictionary) {
    auto root = node(2, "root");
    root->addChild(node(3));
    auto dictionary = root->serialized();
    EXPECT_EQ(dictionary["className"], "FLKObject");
    EXPECT_EQ(dictionary["identifier"], *root->identifier());
    EXPECT_EQ(dictionary["name"], "root");
    EXPECT_EQ(dictionary["zOrder"], 2);
    ASSERT_EQ(dictionary["children"].size(), 1u);
    EXPECT_FALSE(node()->serialized().contains("name"));

    auto back = FLKObject::newWithDictionary(dictionary);
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(back->isEqual(*root));

    auto bare = FLKObject::newWithDictionary({{"className", "FLKObject"}});
    ASSERT_NE(bare, nullptr);
    EXPECT_FALSE(bare->identifier().has_value());
    EXPECT_EQ(bare->zOrder(), 0);
    EXPECT_EQ(bare->name(), nullptr);

    EXPECT_EQ(FLKObject::newWithDictionary({{"className", "FLKNoSuchNode"}}), nullptr);
    EXPECT_EQ(FLKObject::newWithDictionary({{"className", "FLKObject"}, {"zOrder", "high"}})->zOrder(), 0);
}

TEST(FLKObjectIdentifier, EveryNodeGetsItsOwnIdentifier) {
    EXPECT_NE(FLKObject().identifier(), FLKObject().identifier());
}

TEST(FLKObjectSerialization, AbsurdlyDeepTreesAreCutOff) {
    FLKJSON dictionary = {{"className", "FLKObject"}, {"zOrder", 0}};
    FLKJSON* innermost = &dictionary;
    for (int i = 0; i < 400; ++i) {
        (*innermost)["children"] = FLKJSON::array({FLKJSON{{"className", "FLKObject"}, {"zOrder", 0}}});
        innermost = &(*innermost)["children"][0];
    }
    auto root = FLKObject::newWithDictionary(dictionary);
    ASSERT_NE(root, nullptr);
    size_t depth = 0;
    for (auto n = root; !n->children().empty(); n = n->children()[0]) ++depth;
    EXPECT_EQ(depth, 256u);
    EXPECT_EQ(root->recursiveAllChildren().size(), 256u);
}

// Found by fuzzing the scene reader: a zOrder too large for 64 bits, or not a
// whole number, was converted regardless (undefined behaviour). Such a value
// reads as no order; one in range is kept, whichever JSON number type holds it.
TEST(FLKObjectTree, ZOrdersOutsideSixtyFourBitsReadAsNoOrder) {
    auto zOrderOf = [](const std::string& number) {
        return FLKObject::newWithDictionary(FLKJSON::parse(R"({"className":"FLKObject","zOrder":)" + number + "}"))
            ->zOrder();
    };
    EXPECT_EQ(zOrderOf("92233782036854775807"), 0);
    EXPECT_EQ(zOrderOf("18446744073709551615"), 0);
    EXPECT_EQ(zOrderOf("-1e300"), 0);
    EXPECT_EQ(zOrderOf("2.5"), 0);
    EXPECT_EQ(zOrderOf("9223372036854775807"), std::numeric_limits<int64_t>::max());
    EXPECT_EQ(zOrderOf("-9223372036854775808"), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(zOrderOf("42.0"), 42);
}
