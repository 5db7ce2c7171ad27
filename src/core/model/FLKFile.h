#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/model/FLKDocument.h"
#include "core/model/FLKMedia.h"
#include "core/model/FLKMetadata.h"
#include "core/model/FLKPreview.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKImage.h"
#include "core/platform/FLKTemporaryStore.h"

class FLKScene;
class FLKTimeline;
class FLKReadonlyFile;
class FLKFolderLease;

inline constexpr const char* kFLKDocumentErrorDomain = "FLKDocumentErrorDomain";

// An open document: a private working folder holding the unpacked package
// (document.json, metadata.json, scenes/, timelines/, media/, preview/).
// Saving writes the model into the folder and zips it to the destination;
// the object owns the folder and removes it when destroyed. Folders of
// processes that ended without that (a crash, a kill) are removed when this
// process makes its first working folder.
//
// Documents are saved and opened one at a time, on one thread.
class FLKFile : public FLKSerializationFile, public std::enable_shared_from_this<FLKFile> {
public:
    // A picture of the scene for the package's preview, made by a renderer
    // (a higher layer installs it); nullopt when none can be made.
    using PreviewSource = std::function<std::optional<FLKImage>(const std::shared_ptr<FLKScene>&)>;

    enum ErrorCode : long {
        kErrorReading = 1,
        kErrorWriting,
        kErrorUnsafeMediaPath,
        kErrorNotADocument,
    };

    FLKFile();
    ~FLKFile() override;
    FLKFile(const FLKFile&) = delete;
    FLKFile& operator=(const FLKFile&) = delete;

    // A new, empty document.
    static std::shared_ptr<FLKFile> temporaryFile();
    // The user's document at `url`; nullptr when the path is not a document.
    static std::shared_ptr<FLKReadonlyFile> fileWithURL(const std::filesystem::path& url);

    // The document being edited; replacing it releases the previous one.
    static std::shared_ptr<FLKFile> currentFile();
    static void setCurrentFile(std::shared_ptr<FLKFile> file);

    static void setPreviewSource(PreviewSource source);

    // The working folder: a new unique location in the temporary store when
    // first asked for.
    const std::filesystem::path& URL() const;
    std::filesystem::path folderURL() const override { return URL(); }

    const std::shared_ptr<FLKDocument>& document() const { return document_; }
    void setDocument(std::shared_ptr<FLKDocument> document) { document_ = std::move(document); }
    const std::shared_ptr<FLKMetadata>& metadata() const { return metadata_; }
    void setMetadata(std::shared_ptr<FLKMetadata> metadata) { metadata_ = std::move(metadata); }
    const std::shared_ptr<FLKMedia>& media() const { return media_; }
    const std::shared_ptr<FLKPreview>& preview() const { return preview_; }

    const std::shared_ptr<FLKTemporaryStore>& temporaryStore() const;
    std::shared_ptr<FLKTemporaryStore> temporarySceneStore() const;
    std::shared_ptr<FLKTemporaryStore> temporaryTimelineStore() const;
    std::string extension() const;

    std::filesystem::path documentURL() const { return URL() / "document.json"; }
    std::filesystem::path metadataURL() const { return URL() / "metadata.json"; }
    std::filesystem::path mediaURL() const { return URL() / "media"; }
    std::filesystem::path previewURL() const { return URL() / "preview"; }

    void createFolderStructure();
    // A new document whose working folder is a copy of this one's, with new,
    // empty records: callers set the scene and timeline they keep. nullptr
    // with the error set when the folder cannot be copied.
    virtual std::shared_ptr<FLKFile> temporaryFileCopy(FLKError* error = nullptr);

    // Loads the model from the working folder. On failure the file keeps the
    // model it had before, and the error names `shownAs` (the user's document
    // or template the folder was unpacked from) and says what is wrong.
    bool read(const std::filesystem::path& shownAs, FLKError* error = nullptr);
    bool read(FLKError* error = nullptr) { return read(URL(), error); }

    // Saves to `destination`. An existing file there is replaced in one
    // rename; on failure it is left as it was and nothing else is left behind.
    bool writeAtURL(const std::filesystem::path& destination, FLKError* error = nullptr);
    // Saves the scene and timeline with metadata describing this build.
    bool writeScene(const std::shared_ptr<FLKScene>& scene, const std::shared_ptr<FLKTimeline>& timeline,
                    const std::filesystem::path& destination, FLKError* error = nullptr);

    // A copy of the document at `destination` that leaves the working folder's
    // media and preview as they are: what an autosave writes while the undo
    // history may still need media nothing references at the moment.
    bool writeSnapshot(const std::shared_ptr<FLKScene>& scene, const std::shared_ptr<FLKTimeline>& timeline,
                       const std::filesystem::path& destination, FLKError* error = nullptr);

    // The steps of saving, in the order writeAtURL runs them.
    bool prepareForWriting(FLKError* error = nullptr);
    bool writeTempDirectory(FLKError* error = nullptr);
    bool writeDocument(FLKError* error = nullptr);
    bool writeMetadata(FLKError* error = nullptr);
    bool writeTimeline(FLKError* error = nullptr);
    bool writeCurrentScene(FLKError* error = nullptr);
    void removeUnreferencedResources();
    void writePreview();
    // The archive, written beside `destination` so it can be renamed onto it.
    std::optional<std::filesystem::path> createTempFile(const std::filesystem::path& destination,
                                                        FLKError* error = nullptr);
    bool copyTempFileAtPath(const std::filesystem::path& tempPath, const std::filesystem::path& destination,
                            FLKError* error = nullptr);
    bool replaceFileAtPath(const std::filesystem::path& destination, const std::filesystem::path& tempPath,
                           FLKError* error = nullptr);
    void deleteTempFileAtPath(const std::filesystem::path& tempPath);

    // The steps of reading. They throw std::invalid_argument saying in words
    // what is wrong ("its scene names an unknown kind of object ..."), without
    // a location: read() adds the name the user knows the document by.
    std::shared_ptr<FLKDocument> loadDocument();
    std::shared_ptr<FLKMetadata> loadMetadata();
    std::shared_ptr<FLKScene> loadCurrentScene();
    std::shared_ptr<FLKTimeline> loadTimeline();

    // Removes the working folder (only ever one inside the temporary store).
    virtual void cleanup();

protected:
    struct ReadOnlyTag {};
    FLKFile(ReadOnlyTag, std::filesystem::path url);

private:
    void setModel(const std::shared_ptr<FLKScene>& scene, const std::shared_ptr<FLKTimeline>& timeline);
    bool writeModelFiles(FLKError* error);
    bool writeArchive(const std::filesystem::path& destination, FLKError* error);
    bool writeModelFile(const FLKSerializable& object, const std::filesystem::path& url, FLKError* error);
    void removeOtherJSONFiles(const FLKTemporaryStore& store, const std::filesystem::path& keep);

    bool ownsWorkingFolder_ = true;
    mutable std::optional<std::filesystem::path> url_;
    // Tells other processes that the working folder is in use.
    mutable std::unique_ptr<FLKFolderLease> lease_;
    mutable std::shared_ptr<FLKTemporaryStore> temporaryStore_;
    std::shared_ptr<FLKDocument> document_;
    std::shared_ptr<FLKMetadata> metadata_;
    std::shared_ptr<FLKMedia> media_;
    std::shared_ptr<FLKPreview> preview_;
};
