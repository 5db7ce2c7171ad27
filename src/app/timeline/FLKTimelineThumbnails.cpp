#include "app/timeline/FLKTimelineThumbnails.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "core/timeline/FLKVideoClip.h"
#include "core/timeline/FLKVideoClipStaticFramesGrabber.h"

namespace {
// A long clip at a high zoom would ask for hundreds; the cell repeats the
// nearest picture where it has fewer than it could show.
constexpr double kMaximumRequestedWidth = 4000;
}  // namespace

struct FLKTimelineThumbnails::Entry {
    std::shared_ptr<FLKVideoClipStaticFramesGrabber> grabber;
    Thumbnails thumbnails;
};

FLKTimelineThumbnails::FLKTimelineThumbnails(std::function<void()> didArrive) : didArrive_(std::move(didArrive)) {}

FLKTimelineThumbnails::~FLKTimelineThumbnails() = default;

std::string FLKTimelineThumbnails::keyOf(const FLKVideoClip& clip) {
    return clip.identifier() + '\n' + clip.assetURL().string() + '\n' + std::to_string(clip.clipRange().start) + '\n' +
           std::to_string(clip.clipRange().end);
}

const FLKTimelineThumbnails::Thumbnails& FLKTimelineThumbnails::thumbnailsForClip(
    const std::shared_ptr<FLKVideoClip>& clip, QSizeF cellSize) {
    auto& entry = entries_[keyOf(*clip)];
    if (entry) return entry->thumbnails;
    entry = std::make_shared<Entry>();
    const auto& track = clip->videoTrack();
    if (!track || !clip->asset() || !(track->presentationSize().height > 0) || cellSize.isEmpty()) {
        return entry->thumbnails;
    }
    const FLKSize timelineSize{std::min(cellSize.width(), kMaximumRequestedWidth), cellSize.height()};
    entry->grabber = std::make_shared<FLKVideoClipStaticFramesGrabber>(clip);
    std::weak_ptr<Entry> weakEntry = entry;
    auto didArrive = didArrive_;
    entry->grabber->grabFramesFromTime(
        clip->clipRange().start, clip->clipRange().end, timelineSize,
        [weakEntry, didArrive](const std::shared_ptr<FLKVideoClipStaticFrame>& frame) {
            auto entry = weakEntry.lock();
            if (!entry) return;
            if (!frame || !frame->image() || frame->image()->isEmpty()) return;
            const FLKImage& image = *frame->image();
            QImage picture(image.rgba.data(), image.width, image.height, image.width * 4, QImage::Format_RGBA8888);
            Thumbnail thumbnail{frame->time(), picture.copy()};
            auto at = std::upper_bound(entry->thumbnails.begin(), entry->thumbnails.end(), thumbnail.time,
                                       [](double time, const Thumbnail& other) { return time < other.time; });
            entry->thumbnails.insert(at, std::move(thumbnail));
            if (didArrive) didArrive();
        });
    return entry->thumbnails;
}

void FLKTimelineThumbnails::keepOnly(const std::vector<std::shared_ptr<FLKVideoClip>>& clips) {
    std::set<std::string> kept;
    for (const auto& clip : clips) kept.insert(keyOf(*clip));
    std::erase_if(entries_, [&](const auto& item) { return !kept.contains(item.first); });
}

const FLKTimelineThumbnails::Thumbnail* FLKTimelineThumbnails::nearest(const Thumbnails& thumbnails, double time) {
    const Thumbnail* best = nullptr;
    for (const auto& thumbnail : thumbnails) {
        if (!best || std::abs(thumbnail.time - time) < std::abs(best->time - time)) best = &thumbnail;
    }
    return best;
}
