#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "core/platform/FLKNotificationCenter.h"

TEST(FLKNotificationCenter, DeliversByNameAndSenderInOrderOfAdding) {
    FLKNotificationCenter center;
    int sender = 0, otherSender = 0;
    std::vector<std::string> calls;
    FLKObservation fromSender(center, center.addObserver("Changed", &sender, [&](const FLKNotification& n) {
        calls.push_back("filtered:" + std::get<std::string>(n.userInfo.at("what")));
    }));
    FLKObservation fromAnyone(center, center.addObserver("Changed", nullptr, [&](const FLKNotification& n) {
        calls.push_back(n.object == &otherSender ? "any:other" : "any:sender");
    }));

    center.post("Changed", &otherSender, {{"what", std::string("x")}});
    center.post("Changed", &sender, {{"what", std::string("y")}});
    center.post("Unrelated", &sender);
    EXPECT_EQ(calls, (std::vector<std::string>{"any:other", "filtered:y", "any:sender"}));

    fromSender.reset();
    calls.clear();
    center.post("Changed", &sender, {{"what", std::string("z")}});
    EXPECT_EQ(calls, std::vector<std::string>{"any:sender"});
}

TEST(FLKNotificationCenter, ObserversMayRemoveObserversAndPostFromACallback) {
    FLKNotificationCenter center;
    std::vector<std::string> calls;
    FLKNotificationCenter::Token first = 0, second = 0;
    first = center.addObserver("Tick", nullptr, [&](const FLKNotification&) {
        calls.push_back("first");
        center.removeObserver(first);
        center.removeObserver(second);
        center.post("Nested");
    });
    second = center.addObserver("Tick", nullptr, [&](const FLKNotification&) { calls.push_back("second"); });
    FLKObservation nested(center, center.addObserver("Nested", nullptr, [&](const FLKNotification&) {
        calls.push_back("nested");
    }));

    center.post("Tick");
    center.post("Tick");
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "nested"}));
}

TEST(FLKNotificationCenter, PostingAndObservingFromManyThreads) {
    FLKNotificationCenter center;
    std::atomic<int> received = 0;
    FLKObservation steady(center, center.addObserver("Work", nullptr, [&](const FLKNotification&) { ++received; }));
    std::vector<std::thread> posters;
    for (int t = 0; t < 4; ++t) {
        posters.emplace_back([&] {
            for (int i = 0; i < 500; ++i) center.post("Work");
        });
    }
    for (int i = 0; i < 200; ++i) {
        FLKObservation passing(center, center.addObserver("Work", nullptr, [](const FLKNotification&) {}));
    }
    for (auto& poster : posters) poster.join();
    EXPECT_EQ(received.load(), 2000);
}
