#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "core/platform/FLKError.h"

class FLKDocumentController;
class FLKObject;

// What a file given to the program becomes, whether dropped on the canvas,
// imported from the File menu or named on a command line: a document opens,
// a template folder takes the scene, a recording becomes a clip, a sound the
// soundtrack, a picture the background. Anything else is refused with a
// message and changes nothing. Main thread only.
class FLKFileHandler {
public:
    enum class Kind { Document, Template, Video, Audio, Image, Unsupported };

    // Told of the scene object a file became, to select and show it.
    using DidAdd = std::function<void(const std::shared_ptr<FLKObject>&)>;

    FLKFileHandler(FLKDocumentController& documents, DidAdd didAdd);

    // By name and, for recordings, by what the file holds: a movie file
    // without a picture but with sound is a sound.
    static Kind kindOfFile(const std::filesystem::path& url);
    // Whether a drop of this file would be taken, judged by its name alone.
    static bool acceptsFileNamed(const std::filesystem::path& url);

    // True when the file was taken; otherwise the user was told why.
    bool handleOpenURL(const std::filesystem::path& url);

private:
    bool addVideo(const std::filesystem::path& url, FLKError* error);
    bool addAudio(const std::filesystem::path& url, FLKError* error);
    bool addImage(const std::filesystem::path& url, FLKError* error);

    FLKDocumentController& documents_;
    const DidAdd didAdd_;
};
