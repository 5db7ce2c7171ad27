#include "core/capture/FLKRecordingWriter.h"

#include <chrono>
#include <cmath>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <unistd.h>

#include "core/capture/FLKCaptureError.h"
#include "core/media/FLKFrameScaler.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUniqueIdentifier.h"

extern "C" {
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

namespace {
constexpr AVRational kTimeBase = {1, 90000};

std::filesystem::path journalDirectory() { return flk::dataHome() / "recordings-in-progress"; }

// Parameter sets (SPS 7, PPS 8) of an Annex-B access unit, with their start codes.
std::vector<uint8_t> parameterSets(const std::vector<uint8_t>& data) {
    std::vector<uint8_t> sets;
    size_t i = 0;
    auto nextStart = [&](size_t from) {
        for (size_t k = from; k + 3 <= data.size(); ++k) {
            if (data[k] == 0 && data[k + 1] == 0 && data[k + 2] == 1) return k;
        }
        return data.size();
    };
    i = nextStart(0);
    while (i < data.size()) {
        size_t payload = i + 3;
        size_t next = nextStart(payload);
        size_t end = next;
        while (end > payload && data[end - 1] == 0) --end;  // trailing zeros belong to the next start code
        if (payload < data.size()) {
            int type = data[payload] & 0x1F;
            if (type == 7 || type == 8) {
                sets.insert(sets.end(), {0, 0, 0, 1});
                sets.insert(sets.end(), data.begin() + static_cast<long>(payload), data.begin() + static_cast<long>(end));
            }
        }
        i = next;
    }
    return sets;
}
}  // namespace

FLKRecordingWriter::FLKRecordingWriter(Options options) : options_(std::move(options)) {
    partURL_ = partURL(options_.url);
}

FLKRecordingWriter::~FLKRecordingWriter() {
    if (thread_.joinable()) {
        {
            std::lock_guard lock(mutex_);
            finishing_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }
    if (journalLock_ >= 0) ::close(journalLock_);
}

std::filesystem::path FLKRecordingWriter::partURL(const std::filesystem::path& url) {
    return url.string() + ".part";
}

bool FLKRecordingWriter::start(FLKError* error) {
    if (writing_) return true;
    std::error_code ec;
    std::filesystem::create_directories(options_.url.parent_path(), ec);
    std::filesystem::create_directories(journalDirectory(), ec);
    if (flk::exists(options_.url) || flk::exists(partURL_)) {
        flk::setError(error, flk::capture::captureFailedError("\"" + options_.url.string() + "\" already exists."));
        return false;
    }
    // The journal entry names the part and where a recovered recording goes; the
    // lock on it tells a later start that this recording is still being written.
    journalURL_ = journalDirectory() / (flk::uniqueIdentifier() + ".txt");
    {
        std::ofstream journal(journalURL_);
        journal << partURL_.string() << "\n"
                << (options_.recoveryURL.empty() ? options_.url : options_.recoveryURL).string() << "\n";
        if (!journal) {
            flk::setError(error, flk::capture::captureFailedError("Cannot write \"" + journalURL_.string() + "\"."));
            return false;
        }
    }
    journalLock_ = ::open(journalURL_.c_str(), O_RDONLY | O_CLOEXEC);
    if (journalLock_ >= 0) ::flock(journalLock_, LOCK_EX);
    writing_ = true;
    thread_ = std::thread([this] { run(); });
    return true;
}

void FLKRecordingWriter::append(FLKCapturedFrame frame) {
    {
        std::lock_guard lock(mutex_);
        if (finishing_) return;
        // Pictures waiting to be encoded are dropped past a second's worth; a
        // kept stream's packets never are (they are small, and the stream needs every one).
        if (!options_.keepsSourceStream && static_cast<double>(queue_.size()) >= options_.frameRate) {
            ++dropped_;
            return;
        }
        queue_.push_back(std::move(frame));
    }
    wake_.notify_all();
}

void FLKRecordingWriter::finish(Completion completion) {
    {
        std::lock_guard lock(mutex_);
        if (finishing_) return;
        finishing_ = true;
        completion_ = std::move(completion);
    }
    wake_.notify_all();
}

void FLKRecordingWriter::run() {
    bool failed = false;
    for (;;) {
        FLKCapturedFrame frame;
        {
            std::unique_lock lock(mutex_);
            // At least once a second what was written reaches the disk as a fragment.
            wake_.wait_for(lock, std::chrono::seconds(1), [&] { return finishing_ || !queue_.empty(); });
            if (queue_.empty()) {
                if (finishing_) break;
                lock.unlock();
                flushFragment();
                continue;
            }
            frame = std::move(queue_.front());
            queue_.pop_front();
        }
        if (!failed && !write(frame)) failed = true;
    }
    FLKError error = failure_;
    std::optional<std::filesystem::path> url;
    if (close(&error)) url = options_.url;
    Completion completion;
    {
        std::lock_guard lock(mutex_);
        completion = std::move(completion_);
    }
    writing_ = false;
    if (completion) completion(url, error);
}

bool FLKRecordingWriter::write(const FLKCapturedFrame& frame) {
    if (options_.keepsSourceStream) {
        for (const auto& packet : frame.packets) {
            if (!output_) {
                // A kept stream can only start on a key frame, with the picture's size known.
                if (!packet->keyFrame || !frame.pixels) continue;
                auto sets = parameterSets(packet->data);
                if (sets.empty()) continue;
                if (!openMuxer(sets.data(), sets.size(), frame.pixels->width, frame.pixels->height)) return false;
                startTime_ = packet->arrivalTime;
            }
            flk::media::Packet out(av_packet_alloc());
            if (av_new_packet(out.get(), static_cast<int>(packet->data.size())) < 0) return false;
            std::copy(packet->data.begin(), packet->data.end(), out->data);
            if (packet->keyFrame) out->flags |= AV_PKT_FLAG_KEY;
            out->pts = out->dts = std::llround((packet->arrivalTime - startTime_) * kTimeBase.den);
            if (!writePacket(out.get())) return false;
            ++framesWritten_;
        }
        return true;
    }
    if (!frame.pixels) return true;
    if (!encoder_) {
        const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
        if (!codec) codec = avcodec_find_encoder(AV_CODEC_ID_H264);
        encoder_.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
        if (!encoder_) {
            failure_ = flk::capture::captureFailedError("No H.264 encoder is available.");
            return false;
        }
        encoder_->width = frame.pixels->width & ~1;
        encoder_->height = frame.pixels->height & ~1;
        encoder_->pix_fmt = AV_PIX_FMT_YUV420P;
        encoder_->time_base = kTimeBase;
        encoder_->framerate = AVRational{static_cast<int>(std::lround(options_.frameRate)), 1};
        encoder_->gop_size = static_cast<int>(std::lround(options_.frameRate));
        encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        av_opt_set(encoder_->priv_data, "preset", "fast", 0);
        // Frames held back for look-ahead would be lost with the process.
        av_opt_set(encoder_->priv_data, "tune", "zerolatency", 0);
        int rc = avcodec_open2(encoder_.get(), codec, nullptr);
        if (rc < 0) {
            failure_ = flk::capture::captureFailedError("Cannot open the H.264 encoder: " + flk::media::avErrorText(rc));
            encoder_.reset();
            return false;
        }
        if (!openMuxer(encoder_->extradata, static_cast<size_t>(encoder_->extradata_size), encoder_->width,
                       encoder_->height)) {
            return false;
        }
        scaler_ = std::make_unique<FLKFrameScaler>(encoder_->width, encoder_->height, AV_PIX_FMT_YUV420P, SWS_BILINEAR);
        startTime_ = frame.arrivalTime;
    }
    return encode(&frame);
}

bool FLKRecordingWriter::encode(const FLKCapturedFrame* frame) {
    flk::media::Frame yuv;
    if (frame) {
        flk::media::Frame source(av_frame_alloc());
        source->format = AV_PIX_FMT_BGRA;
        source->width = frame->pixels->width;
        source->height = frame->pixels->height;
        source->data[0] = const_cast<uint8_t*>(frame->pixels->bgra.data());
        source->linesize[0] = frame->pixels->stride;
        yuv = scaler_->scale(source.get());
        if (!yuv) return true;
        int64_t pts = std::llround((frame->arrivalTime - startTime_) * kTimeBase.den);
        if (lastDts_ != AV_NOPTS_VALUE && pts <= lastDts_) pts = lastDts_ + 1;
        lastDts_ = pts;
        yuv->pts = pts;
    }
    int rc = avcodec_send_frame(encoder_.get(), yuv.get());
    if (rc < 0 && rc != AVERROR_EOF) {
        failure_ = flk::capture::captureFailedError("Encoding failed: " + flk::media::avErrorText(rc));
        return false;
    }
    flk::media::Packet packet(av_packet_alloc());
    while (avcodec_receive_packet(encoder_.get(), packet.get()) == 0) {
        av_packet_rescale_ts(packet.get(), encoder_->time_base, stream_->time_base);
        packet->duration = av_rescale_q(1, AVRational{1, encoder_->framerate.num}, stream_->time_base);
        bool ok = av_write_frame(output_.get(), packet.get()) >= 0;
        av_packet_unref(packet.get());
        if (!ok) {
            failure_ = flk::capture::captureFailedError("Cannot write \"" + partURL_.string() + "\".");
            return false;
        }
        unflushed_ = true;
        ++framesWritten_;
    }
    return true;
}

bool FLKRecordingWriter::openMuxer(const uint8_t* extradata, size_t size, int width, int height) {
    std::string reason;
    output_ = flk::media::openOutput(partURL_.string(), &reason);
    if (!output_) {
        failure_ = flk::capture::captureFailedError(reason);
        return false;
    }
    stream_ = avformat_new_stream(output_.get(), nullptr);
    stream_->time_base = kTimeBase;
    AVCodecParameters* parameters = stream_->codecpar;
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = AV_CODEC_ID_H264;
    parameters->width = width;
    parameters->height = height;
    parameters->extradata = static_cast<uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    std::copy(extradata, extradata + size, parameters->extradata);
    parameters->extradata_size = static_cast<int>(size);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "frag_keyframe+empty_moov+default_base_moof", 0);
    av_dict_set(&options, "frag_duration", "1000000", 0);
    int rc = avformat_write_header(output_.get(), &options);
    av_dict_free(&options);
    if (rc < 0) {
        failure_ = flk::capture::captureFailedError("Cannot start \"" + partURL_.string() +
                                                    "\": " + flk::media::avErrorText(rc));
        output_.reset();
        return false;
    }
    avio_flush(output_->pb);
    return true;
}

bool FLKRecordingWriter::writePacket(AVPacket* packet) {
    packet->stream_index = 0;
    if (lastDts_ != AV_NOPTS_VALUE && packet->dts <= lastDts_) packet->pts = packet->dts = lastDts_ + 1;
    lastDts_ = packet->dts;
    packet->duration = std::llround(kTimeBase.den / options_.frameRate);
    if (av_write_frame(output_.get(), packet) < 0) {
        failure_ = flk::capture::captureFailedError("Cannot write \"" + partURL_.string() + "\".");
        return false;
    }
    unflushed_ = true;
    return true;
}

void FLKRecordingWriter::flushFragment() {
    if (!output_ || !unflushed_) return;
    // A null packet makes the MP4 writer close the fragment it holds.
    av_write_frame(output_.get(), nullptr);
    avio_flush(output_->pb);
    unflushed_ = false;
}

bool FLKRecordingWriter::close(FLKError* error) {
    bool ok = output_ != nullptr && failure_.code == 0;
    if (output_) {
        if (encoder_) encode(nullptr);
        if (av_write_trailer(output_.get()) < 0) ok = false;
        output_.reset();
    }
    std::error_code ec;
    bool wrote = ok;
    if (ok) {
        ok = finalizePart(partURL_, options_.url, error);
    } else if (error && error->code == 0) {
        *error = flk::capture::captureFailedError("No picture was recorded.");
    }
    // A part that could not be finished stays, with its journal entry, for the next start.
    if (ok || !wrote) {
        std::filesystem::remove(partURL_, ec);
        std::filesystem::remove(journalURL_, ec);
    }
    return ok;
}

bool FLKRecordingWriter::finalizePart(const std::filesystem::path& part, const std::filesystem::path& destination,
                                      FLKError* error) {
    std::string reason;
    auto input = flk::media::openInput(part.string(), &reason);
    int videoIndex = input ? av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0) : -1;
    if (videoIndex < 0) {
        flk::setError(error, flk::capture::captureFailedError("\"" + part.string() + "\" holds no readable picture. " + reason));
        return false;
    }
    // Written beside the destination and renamed into place: never half a file.
    std::filesystem::path temporary = destination.string() + ".finishing";
    std::error_code ec;
    std::filesystem::remove(temporary, ec);
    auto output = flk::media::openOutput(temporary.string(), &reason);
    if (!output) {
        flk::setError(error, flk::capture::captureFailedError(reason));
        return false;
    }
    AVStream* in = input->streams[videoIndex];
    AVStream* out = avformat_new_stream(output.get(), nullptr);
    avcodec_parameters_copy(out->codecpar, in->codecpar);
    out->codecpar->codec_tag = 0;
    out->time_base = in->time_base;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "+faststart", 0);
    int rc = avformat_write_header(output.get(), &options);
    av_dict_free(&options);
    int64_t packets = 0;
    flk::media::Packet packet(av_packet_alloc());
    while (rc >= 0 && av_read_frame(input.get(), packet.get()) >= 0) {
        if (packet->stream_index == videoIndex) {
            packet->stream_index = 0;
            av_packet_rescale_ts(packet.get(), in->time_base, out->time_base);
            packet->pos = -1;
            if (av_write_frame(output.get(), packet.get()) >= 0) ++packets;
        }
        av_packet_unref(packet.get());
    }
    bool ok = rc >= 0 && packets > 0 && av_write_trailer(output.get()) >= 0;
    output.reset();
    if (ok && !flk::exists(destination)) {
        std::filesystem::rename(temporary, destination, ec);
        ok = !ec;
    } else {
        ok = false;
    }
    if (!ok) {
        std::filesystem::remove(temporary, ec);
        flk::setError(error, flk::capture::captureFailedError("Cannot make \"" + destination.string() +
                                                              "\" from the recording."));
    }
    return ok;
}

std::vector<std::filesystem::path> FLKRecordingWriter::recoverInterruptedRecordings(std::vector<FLKError>* errors) {
    std::vector<std::filesystem::path> recovered;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(journalDirectory(), ec)) {
        if (entry.path().extension() != ".txt") continue;
        int fd = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) continue;
        // A running program still holds its lock: not ours to touch.
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            ::close(fd);
            continue;
        }
        std::ifstream journal(entry.path());
        std::string part;
        std::string destination;
        std::getline(journal, part);
        std::getline(journal, destination);
        if (!part.empty() && !destination.empty() && flk::exists(part)) {
            auto target = flk::uniqueFileURL(destination);
            FLKError error;
            if (finalizePart(part, target, &error)) {
                recovered.push_back(target);
                std::filesystem::remove(part, ec);
            } else if (errors) {
                errors->push_back(error);
            }
        }
        std::filesystem::remove(entry.path(), ec);
        ::close(fd);
    }
    return recovered;
}
