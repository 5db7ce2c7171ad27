#pragma once

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "core/capture/FLKCapturedFrame.h"
#include "core/media/FLKMediaSupport.h"
#include "core/platform/FLKError.h"

class FLKFrameScaler;

// Writes a recording so that a crash loses at most its last second: a
// fragmented MP4 ("<file>.part", a fragment at least every second, flushed
// to disk) that finish() turns into a normal MP4 by copying its packets.
// A source's own H.264 is kept as it came; plain pictures are encoded.
// Appending happens on a thread of the writer's own.
class FLKRecordingWriter {
public:
    struct Options {
        std::filesystem::path url;            // the finished MP4
        bool keepsSourceStream = false;       // frames carry H.264 packets to keep
        double frameRate = 30;                // for encoding, and the last picture's duration
        // Where a recording interrupted before finish() goes when it is recovered; `url` when empty.
        std::filesystem::path recoveryURL;
    };
    using Completion = std::function<void(std::optional<std::filesystem::path> url, const FLKError& error)>;

    explicit FLKRecordingWriter(Options options);
    ~FLKRecordingWriter();
    FLKRecordingWriter(const FLKRecordingWriter&) = delete;
    FLKRecordingWriter& operator=(const FLKRecordingWriter&) = delete;

    // Creates the part file and notes it for recovery; false with the error set.
    bool start(FLKError* error = nullptr);
    bool isWriting() const { return writing_; }
    // Queues the frame; for a kept stream, writing begins at its first key frame. Any thread.
    void append(FLKCapturedFrame frame);
    // Writes what is queued, closes the part file and makes the MP4; the
    // completion runs on the writer's thread.
    void finish(Completion completion);
    // Pictures written so far.
    uint64_t framesWritten() const { return framesWritten_; }
    // Pictures to encode dropped because the encoder fell a second behind.
    uint64_t picturesDropped() const { return dropped_; }

    static std::filesystem::path partURL(const std::filesystem::path& url);
    // Makes a normal MP4 of a part file (packets copied, index at the front);
    // `destination` must not exist. False with the error set when no picture can be read.
    static bool finalizePart(const std::filesystem::path& part, const std::filesystem::path& destination,
                             FLKError* error = nullptr);
    // Finalises the part files of recordings that ended without finish()
    // (a crash, kill -9) and are not being written by a running program.
    // The recovered files, each at its recovery location (or beside it when that is taken).
    static std::vector<std::filesystem::path> recoverInterruptedRecordings(std::vector<FLKError>* errors = nullptr);

private:
    void run();
    bool write(const FLKCapturedFrame& frame);
    bool openMuxer(const uint8_t* extradata, size_t size, int width, int height);
    bool writePacket(AVPacket* packet);
    bool encode(const FLKCapturedFrame* frame);
    void flushFragment();
    bool close(FLKError* error);

    const Options options_;
    std::filesystem::path partURL_;
    std::filesystem::path journalURL_;
    int journalLock_ = -1;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<FLKCapturedFrame> queue_;        // guarded by mutex_
    bool finishing_ = false;                    // guarded by mutex_
    Completion completion_;                     // guarded by mutex_
    std::thread thread_;                        // start()/destructor caller only
    std::atomic<bool> writing_ = false;
    std::atomic<uint64_t> framesWritten_ = 0;
    std::atomic<uint64_t> dropped_ = 0;

    // Writer thread only:
    flk::media::OutputContext output_;
    AVStream* stream_ = nullptr;
    flk::media::CodecContext encoder_;
    std::unique_ptr<FLKFrameScaler> scaler_;
    double startTime_ = -1;
    int64_t lastDts_ = AV_NOPTS_VALUE;
    bool unflushed_ = false;
    FLKError failure_;
};
