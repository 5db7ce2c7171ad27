#include "app/shell/FLKFileHandler.h"

#include <QString>

#include <algorithm>
#include <array>
#include <string_view>

#include "app/bridge/FLKCurrentSceneModifier.h"
#include "app/shell/FLKDocumentController.h"
#include "core/media/FLKAsset.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKSceneBounds.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKSceneModifier.h"
#include "core/model/FLKTemplate.h"
#include "core/model/FLKTimelineClipFactory.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/scene/FLKShape.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoTrack.h"

namespace fs = std::filesystem;

namespace {
constexpr const char* kDomain = "FLKFileHandlerErrorDomain";

bool hasAudioExtension(const fs::path& url) {
    static constexpr std::array<std::string_view, 8> kAudio = {"mp3", "m4a", "aac", "wav", "flac", "ogg", "oga", "opus"};
    return std::any_of(kAudio.begin(), kAudio.end(),
                       [&](std::string_view extension) { return flk::hasExtension(url, std::string(extension)); });
}

std::string quoted(const fs::path& url) { return "\"" + url.filename().string() + "\""; }

FLKError cannotUse(const fs::path& url, const std::string& reason) {
    return FLKError::make(kDomain, 1, "The file " + quoted(url) + " cannot be used.", reason);
}

size_t clipCount(const FLKTimeline& timeline) {
    size_t count = 0;
    for (const auto& track : timeline.tracks()) {
        if (std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) count += track->clips().size();
    }
    return count;
}

FLKSceneModifier currentModifier() { return FLKCurrentSceneModifier::modifierOfLoadedScene(); }
}  // namespace

FLKFileHandler::FLKFileHandler(FLKDocumentController& documents, DidAdd didAdd)
    : documents_(documents), didAdd_(std::move(didAdd)) {}

bool FLKFileHandler::acceptsFileNamed(const fs::path& url) {
    return flk::isFlickwellFile(url) || flk::isFlickwellTemplateFile(url) || flk::isImage(url) ||
           FLKTimelineClipFactory::isMovieFile(url) || hasAudioExtension(url);
}

FLKFileHandler::Kind FLKFileHandler::kindOfFile(const fs::path& url) {
    std::error_code ec;
    const bool isFolder = fs::is_directory(url, ec);
    if (flk::isFlickwellTemplateFile(url) && isFolder) return Kind::Template;
    if (isFolder) return Kind::Unsupported;
    if (flk::isFlickwellFile(url)) return Kind::Document;
    if (flk::isImage(url)) return Kind::Image;
    if (hasAudioExtension(url)) return Kind::Audio;
    if (!FLKTimelineClipFactory::isMovieFile(url)) return Kind::Unsupported;
    FLKAsset asset(url.string());
    if (asset.isReadable() && !asset.hasVideo() && asset.hasAudio()) return Kind::Audio;
    return Kind::Video;
}

bool FLKFileHandler::handleOpenURL(const fs::path& url) {
    FLKError error;
    bool handled = false;
    if (!flk::exists(url)) {
        error = cannotUse(url, "It does not exist (" + url.string() + ").");
    } else {
        switch (kindOfFile(url)) {
            case Kind::Document: return documents_.openDocument(QString::fromStdString(url.string()));
            case Kind::Template: {
                auto aTemplate = FLKTemplate::fileWithURL(url);
                if (aTemplate) return documents_.changeTemplate(aTemplate);
                error = cannotUse(url, "It is not a template folder.");
                break;
            }
            case Kind::Video: handled = addVideo(url, &error); break;
            case Kind::Audio: handled = addAudio(url, &error); break;
            case Kind::Image: handled = addImage(url, &error); break;
            case Kind::Unsupported:
                error = cannotUse(url, "Flickwell takes recordings, sounds, pictures, documents (.flickwell) "
                                       "and template folders (.flickwelltemplate).");
                break;
        }
    }
    if (handled) {
        documents_.noteChange();
        return true;
    }
    FLKUserFeedback::shared().presentError(error);
    return false;
}

bool FLKFileHandler::addVideo(const fs::path& url, FLKError* error) {
    // Read first: a damaged recording must not reach the document's media.
    FLKAsset asset(url.string());
    if (!asset.isReadable() || !asset.hasVideo() || !(asset.duration() > 0)) {
        flk::setError(error, cannotUse(url, asset.isReadable() ? "It holds no video." : asset.failureReason()));
        return false;
    }
    auto timeline = FLKSceneLoader::defaultSceneLoader().currentTimeline();
    if (!timeline || !FLKFile::currentFile()) {
        flk::setError(error, cannotUse(url, "No document is open to hold it."));
        return false;
    }
    const size_t before = clipCount(*timeline);
    auto container = currentModifier().loadVideoWithURL(url);
    if (clipCount(*timeline) == before) {
        flk::setError(error, cannotUse(url, "It could not be copied into the document."));
        return false;
    }
    if (didAdd_) didAdd_(container);
    return true;
}

bool FLKFileHandler::addAudio(const fs::path& url, FLKError* error) {
    FLKAsset asset(url.string());
    if (!asset.isReadable() || !asset.hasAudio()) {
        flk::setError(error, cannotUse(url, asset.isReadable() ? "It holds no sound." : asset.failureReason()));
        return false;
    }
    auto modifier = currentModifier();
    auto file = FLKFile::currentFile();
    if (!modifier.videoContainer() || !file || !file->media()) {
        flk::setError(error, cannotUse(url, "The scene has no screen to carry a soundtrack."));
        return false;
    }
    auto copy = file->media()->addFile(url, error);
    if (!copy) return false;
    return modifier.loadAudioWithURL(*copy) != nullptr;
}

bool FLKFileHandler::addImage(const fs::path& url, FLKError* error) {
    auto modifier = currentModifier();
    auto file = FLKFile::currentFile();
    if (!modifier.scene() || !file || !file->media()) {
        flk::setError(error, cannotUse(url, "No document is open to hold it."));
        return false;
    }
    // The picture covers the background's area, or everything when there is none.
    auto gradient = modifier.gradientSprite();
    const FLKRect frame = gradient && gradient->shape() ? gradient->shape()->bounds()
                                                        : FLKSceneBounds(modifier.scene()).bounds();
    auto copy = file->media()->addFile(url, error);
    if (!copy) return false;
    auto sprite = modifier.loadBackgroundSpriteWithImageURL(*copy, frame, error);
    if (!sprite) return false;
    if (didAdd_) didAdd_(sprite);
    return true;
}
