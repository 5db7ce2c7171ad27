#pragma once

#include <string>

struct FLKError {
    std::string domain;
    long code = 0;
    std::string localizedDescription;
    std::string failureReason;
    std::string recoverySuggestion;

    static FLKError make(std::string domain, long code, std::string description, std::string reason = {},
                         std::string suggestion = {}) {
        return FLKError{std::move(domain), code, std::move(description), std::move(reason), std::move(suggestion)};
    }

    // Description, then reason and suggestion when present: what a user reads.
    std::string fullMessage() const {
        std::string s = localizedDescription;
        if (!failureReason.empty()) s += (s.empty() ? "" : " ") + failureReason;
        if (!recoverySuggestion.empty()) s += (s.empty() ? "" : " ") + recoverySuggestion;
        return s;
    }
};

namespace flk {
// Stores the error when the caller asked for it and keeps the first failure.
inline void setError(FLKError* out, const FLKError& error) {
    if (out && out->localizedDescription.empty() && out->code == 0) *out = error;
}
}  // namespace flk
