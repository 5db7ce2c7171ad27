#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/media/FLKVideoOrientation.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKLentPixels.h"
#include "core/platform/FLKPixelBuffer.h"

class FLKVideoEncoderSession;

// Writes BGRA frames to an H.264 MP4 (libx264, High profile, yuv420p, BT.709
// tags, limited range). Frame n is shown at n / fps, or from the time given
// with it (a variable frame rate, as screen recorders write).
//
// With `threaded` set, append() copies the frame into a bounded queue (a
// lent frame is queued as it lies) and returns; one worker thread converts
// frames to YUV and another encodes and writes them, so rendering,
// conversion and encoding overlap. append() then blocks only while the
// queue is full. append() and finish() are to be called from one thread (the
// producer).
class FLKVideoEncoder {
public:
    struct Options {
        int width = 0;
        int height = 0;
        int fps = 30;
        std::string preset = "medium";
        // 0 keeps the encoder's default quality.
        int crf = 0;
        // "yuv420p", or "yuv420p10le" for a 10-bit High 10 stream.
        std::string pixelFormat = "yuv420p";
        // Written as the stream's display matrix.
        FLKVideoOrientation orientation;
        bool threaded = false;
        size_t queueCapacity = 4;
        // Frames the rate control looks ahead; each is held in full. -1 keeps the preset's.
        int lookaheadFrames = -1;
        // Ticks a second of the times given to append(); 0 takes fps.
        int timeScale = 0;
    };

    FLKVideoEncoder(std::string path, Options options);
    ~FLKVideoEncoder();  // an unfinished file is removed
    FLKVideoEncoder(const FLKVideoEncoder&) = delete;
    FLKVideoEncoder& operator=(const FLKVideoEncoder&) = delete;

    // Creates the file and the encoder. False with the error set when it cannot.
    bool start(FLKError* error = nullptr);
    // Frames of another size than the options' are rejected with an error.
    bool append(const FLKPixelBuffer& frame, FLKError* error = nullptr);
    // Shown from `ticks` of the time scale on; times must increase. The
    // duration counts for the last frame only (the others last until the
    // next one); 0 is one frame at the nominal rate.
    bool append(const FLKPixelBuffer& frame, int64_t ticks, int64_t durationTicks = 0, FLKError* error = nullptr);
    // A frame lent where it was read back: threaded, it is queued as it is and
    // its lease dropped once converted; otherwise it is encoded at once.
    bool append(FLKLentPixels frame, FLKError* error = nullptr);
    // Flushes the encoder and completes the file.
    bool finish(FLKError* error = nullptr);
    // Stops and removes the partial file.
    void cancel();

    // Frames handed to the encoder so far (producer's view).
    uint64_t framesAppended() const { return framesAppended_; }
    const std::string& path() const { return path_; }
    const Options& options() const { return options_; }

private:
    struct QueuedFrame {
        FLKPixelBuffer pixels;
        FLKLentPixels lent;  // instead of `pixels` when its bgra is set
        int64_t ticks = 0;
        int64_t durationTicks = 0;
    };
    bool encodeNow(const FLKPixelBuffer& frame, int64_t ticks, int64_t durationTicks, FLKError* error);
    bool encodeNow(const QueuedFrame& frame, FLKError* error);
    // Waits for room in the queue and takes the next frame's time; false with the error set.
    bool admit(int64_t ticks, FLKError* error, std::unique_lock<std::mutex>& lock);
    // A frame's nominal length in ticks of the options' time scale.
    static int64_t ticksPerFrame(const Options& options);
    struct ConvertedPicture {
        int index = 0;  // of the session's pictures
        int64_t ticks = 0;
        int64_t durationTicks = 0;
    };
    // Threaded: one thread converts queued frames into the session's
    // pictures, the other encodes and writes them.
    void convertLoop();
    void encodeLoop();
    bool failed() const { return !workerError_.localizedDescription.empty(); }  // queueMutex_ held
    void failWorkersLocked(const FLKError& error);
    bool stopWorker();

    const std::string path_;
    const Options options_;
    // The producer's; while the workers run, the converter uses its converting
    // side and the encoding worker the rest.
    std::unique_ptr<FLKVideoEncoderSession> session_;
    uint64_t framesAppended_ = 0;                      // producer thread only
    int64_t lastTicks_ = -1;                           // producer thread only
    bool started_ = false;                             // producer thread only
    bool finished_ = false;                            // producer thread only

    std::thread converter_;
    std::thread worker_;  // encodes
    std::mutex queueMutex_;  // guards everything below
    std::condition_variable queueChanged_;
    std::deque<QueuedFrame> queue_;
    std::vector<FLKPixelBuffer> spares_;  // converted frames' storage, to be filled again
    std::deque<ConvertedPicture> converted_;
    std::vector<int> freePictures_;
    bool conversionEnded_ = false;
    bool stopRequested_ = false;
    FLKError workerError_;
};
