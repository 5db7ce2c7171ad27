#pragma once

#include <QImage>
#include <QSizeF>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class FLKVideoClip;
class FLKVideoClipStaticFramesGrabber;

// Pictures of each clip for its cell, made by the core's frame grabber on a
// thread of its own and handed over on the main queue. One grabber per clip
// and media range: a trimmed clip gets new pictures, an unchanged one keeps
// its own across zooms and redraws.
//
// Threads: main thread only. The grabbers' threads never see this object;
// their results reach it through the main queue, guarded by a weak entry.
class FLKTimelineThumbnails {
public:
    struct Thumbnail {
        double time = 0;  // seconds of the clip's media
        QImage image;
    };
    using Thumbnails = std::vector<Thumbnail>;  // in time order

    // Called on the main thread whenever a picture arrives.
    explicit FLKTimelineThumbnails(std::function<void()> didArrive);
    ~FLKTimelineThumbnails();
    FLKTimelineThumbnails(const FLKTimelineThumbnails&) = delete;
    FLKTimelineThumbnails& operator=(const FLKTimelineThumbnails&) = delete;

    // What has arrived for the clip so far; the first call for a clip asks
    // for enough pictures to cover a cell of `cellSize` points.
    const Thumbnails& thumbnailsForClip(const std::shared_ptr<FLKVideoClip>& clip, QSizeF cellSize);
    // Lets go of every clip not in `clips`; a grabber at work finishes the
    // picture in hand (the main thread waits for it) and makes no more.
    void keepOnly(const std::vector<std::shared_ptr<FLKVideoClip>>& clips);

    // The picture whose time is nearest to `time`; null when none arrived.
    static const Thumbnail* nearest(const Thumbnails& thumbnails, double time);

private:
    struct Entry;
    static std::string keyOf(const FLKVideoClip& clip);

    const std::function<void()> didArrive_;
    std::map<std::string, std::shared_ptr<Entry>> entries_;
};
