#pragma once

#include <compare>
#include <cstddef>

// A cell of the timeline panel: section is the track's index, item the clip's.
struct FLKIndexPath {
    size_t section = 0;
    size_t item = 0;

    static FLKIndexPath indexPathForItem(size_t item, size_t section) { return {section, item}; }

    friend auto operator<=>(const FLKIndexPath&, const FLKIndexPath&) = default;
};
