#pragma once

struct FLKSize {
    double width = 0;
    double height = 0;

    friend bool operator==(const FLKSize&, const FLKSize&) = default;
    FLKSize operator*(double f) const { return {width * f, height * f}; }
    bool isEmpty() const { return !(width > 0) || !(height > 0); }
};
