#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "core/gpu/FLKContext.h"

// Every GL test runs inside a Scope on the shared context; without a usable
// OpenGL 4.5 driver they fail with the reason rather than skip silently.
class FLKGLTest : public ::testing::Test {
protected:
    void SetUp() override {
        context = FLKContext::sharedContext();
        ASSERT_TRUE(context->isValid()) << context->errorDescription();
        scope = std::make_unique<FLKContext::Scope>(*context);
        ASSERT_TRUE(scope->isCurrent());
    }
    void TearDown() override { scope.reset(); }

    std::shared_ptr<FLKContext> context;
    std::unique_ptr<FLKContext::Scope> scope;
};
