#pragma once

// Something a finished frame is shown on (the on-screen view's surface).
class FLKDrawable {
public:
    virtual ~FLKDrawable() = default;
    virtual void present() = 0;
};
