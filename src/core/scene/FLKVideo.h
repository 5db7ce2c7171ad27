#pragma once

class FLKVideo {
public:
    virtual ~FLKVideo() = default;
    // Seconds.
    virtual double duration() const = 0;
};
