#include "core/model/FLKFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>
#include <set>
#include <stdexcept>

#include "core/media/FLKImageIO.h"
#include "core/model/FLKPackagePaths.h"
#include "core/model/FLKReadonlyFile.h"
#include "core/model/FLKZipArchive.h"
#include "core/platform/FLKAtomicFile.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKFolderLease.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/timeline/FLKTimeline.h"

namespace fs = std::filesystem;

namespace {

std::mutex& sharedStateMutex() {
    static std::mutex mutex;
    return mutex;
}
std::shared_ptr<FLKFile>& currentFileStorage() {  // guarded by sharedStateMutex()
    static auto* file = new std::shared_ptr<FLKFile>;
    return *file;
}
FLKFile::PreviewSource& previewSourceStorage() {  // guarded by sharedStateMutex()
    static auto* source = new FLKFile::PreviewSource;
    return *source;
}

FLKError writingError(const fs::path& url, const std::string& reason) {
    return FLKError::make(kFLKDocumentErrorDomain, FLKFile::kErrorWriting,
                          "The document could not be saved to " + flk::absoluteString(url) + ".", reason);
}

std::optional<fs::path> firstFile(const FLKTemporaryStore& store) {
    auto files = store.fileURLs();
    if (files.empty()) return std::nullopt;
    return files.front();
}

// The keys under which model objects store paths into the media folder.
bool isMediaKey(const std::string& key) {
    return key == "resourceURL" || key == "videoMaskImageURL" || key == "assetURL";
}

void collectMediaPaths(const FLKJSON& value, std::vector<std::string>& paths) {
    if (value.is_array()) {
        for (const auto& element : value) collectMediaPaths(element, paths);
    } else if (value.is_object()) {
        for (auto it = value.begin(); it != value.end(); ++it) {
            if (isMediaKey(it.key()) && it->is_string()) paths.push_back(it->get<std::string>());
            else collectMediaPaths(*it, paths);
        }
    }
}

// One model file of a package as messages name it: "its scene".
struct ModelPart {
    const char* name;
    const char* kind;
};
constexpr ModelPart kDocumentPart{"its document record (document.json)", "a document record"};
constexpr ModelPart kMetadataPart{"its metadata (metadata.json)", "metadata"};
constexpr ModelPart kScenePart{"its scene", "a scene"};
constexpr ModelPart kTimelinePart{"its timeline", "a timeline"};

[[noreturn]] void damaged(const ModelPart& part, const std::string& problem) {
    throw std::invalid_argument(std::string(part.name) + " " + problem);
}

// What flk::serializableFromJSONAtURL does, checked step by step so that the
// error can say what is wrong; media paths must stay in the package's media
// folder before anything resolves them.
template <class T>
std::shared_ptr<T> modelObjectAtURL(const fs::path& url, const ModelPart& part, const fs::path& packageFolder) {
    auto json = flk::dictionaryFromJSONAtURL(url);
    if (!json) damaged(part, flk::exists(url) ? "is not valid JSON" : "is missing");
    if (auto unknown = flk::unknownClassName(*json)) damaged(part, "names an unknown kind of object \"" + *unknown + "\"");
    std::vector<std::string> paths;
    collectMediaPaths(*json, paths);
    for (const auto& path : paths) {
        if (!flk::isConfinedMediaPath(path, packageFolder)) {
            damaged(part, "refers to the media file \"" + path + "\", which lies outside the document's media folder");
        }
    }
    std::shared_ptr<FLKSerializable> object;
    try {
        object = flk::objectWithDictionary(*json);
    } catch (const FLKJSON::exception&) {
        damaged(part, "holds values of the wrong type");
    }
    auto typed = std::dynamic_pointer_cast<T>(object);
    if (!typed) damaged(part, std::string("holds something other than ") + part.kind);
    return typed;
}

// Once a process, before its first working folder: what crashed processes left.
void removeAbandonedWorkingFolders(const fs::path& store) {
    static std::once_flag once;
    std::call_once(once, [&] { FLKFolderLease::removeAbandonedFolders(store); });
}

}  // namespace

// --- Creation and the shared current file ---

FLKFile::FLKFile() = default;

FLKFile::FLKFile(ReadOnlyTag, fs::path url) : ownsWorkingFolder_(false), url_(std::move(url)) {}

FLKFile::~FLKFile() {
    // Not virtual from here: a read-only file never owns what its URL names.
    if (ownsWorkingFolder_) FLKFile::cleanup();
}

std::shared_ptr<FLKFile> FLKFile::temporaryFile() {
    auto file = std::make_shared<FLKFile>();
    file->createFolderStructure();
    return file;
}

std::shared_ptr<FLKReadonlyFile> FLKFile::fileWithURL(const fs::path& url) {
    return FLKReadonlyFile::fileWithURL(url);
}

std::shared_ptr<FLKFile> FLKFile::currentFile() {
    std::lock_guard lock(sharedStateMutex());
    return currentFileStorage();
}

void FLKFile::setCurrentFile(std::shared_ptr<FLKFile> file) {
    std::shared_ptr<FLKFile> previous;
    {
        std::lock_guard lock(sharedStateMutex());
        previous = std::exchange(currentFileStorage(), std::move(file));
    }
    // `previous` is released here, outside the lock: its folder may go with it.
}

void FLKFile::setPreviewSource(PreviewSource source) {
    std::lock_guard lock(sharedStateMutex());
    previewSourceStorage() = std::move(source);
}

// --- Locations ---

const fs::path& FLKFile::URL() const {
    if (!url_) {
        removeAbandonedWorkingFolders(temporaryStore()->directoryURL());
        url_ = temporaryStore()->createUniqueFileURL();
        lease_ = FLKFolderLease::leaseForFolder(*url_);
        if (!lease_) flk::log("No lock beside the working folder %s: a crash would leave it behind", url_->c_str());
    }
    return *url_;
}

const std::shared_ptr<FLKTemporaryStore>& FLKFile::temporaryStore() const {
    if (!temporaryStore_) temporaryStore_ = FLKTemporaryStore::storeWithDirectory("Files", "tmp");
    return temporaryStore_;
}

std::shared_ptr<FLKTemporaryStore> FLKFile::temporarySceneStore() const {
    return FLKTemporaryStore::storeWithDirectory("scenes", "json", URL());
}

std::shared_ptr<FLKTemporaryStore> FLKFile::temporaryTimelineStore() const {
    return FLKTemporaryStore::storeWithDirectory("timelines", "json", URL());
}

std::string FLKFile::extension() const { return kFLKFileExtensionFlickwell; }

void FLKFile::createFolderStructure() {
    document_ = std::make_shared<FLKDocument>();
    metadata_ = std::make_shared<FLKMetadata>();
    media_ = FLKMedia::mediaWithURL(mediaURL());
    preview_ = FLKPreview::previewWithURL(previewURL());
}

std::shared_ptr<FLKFile> FLKFile::temporaryFileCopy(FLKError* error) {
    auto copy = std::make_shared<FLKFile>();
    std::error_code ec;
    if (fs::exists(URL(), ec) && !flk::copyItem(URL(), copy->URL(), error)) return nullptr;
    copy->createFolderStructure();
    return copy;
}

void FLKFile::cleanup() {
    if (!url_) return;
    // Only ever a working folder of ours, whatever URL was set.
    if (!flk::isLexicallyInside(*url_, temporaryStore()->directoryURL())) return;
    std::error_code ignored;
    fs::remove_all(*url_, ignored);
}

// --- Saving ---

bool FLKFile::writeScene(const std::shared_ptr<FLKScene>& scene, const std::shared_ptr<FLKTimeline>& timeline,
                         const fs::path& destination, FLKError* error) {
    setModel(scene, timeline);
    return writeAtURL(destination, error);
}

void FLKFile::setModel(const std::shared_ptr<FLKScene>& scene, const std::shared_ptr<FLKTimeline>& timeline) {
    if (!document_) createFolderStructure();
    document_->setCurrentScene(scene);
    document_->setCurrentTimeline(timeline);
    // Written files describe the build that wrote them.
    metadata_ = std::make_shared<FLKMetadata>();
}

bool FLKFile::writeSnapshot(const std::shared_ptr<FLKScene>& scene, const std::shared_ptr<FLKTimeline>& timeline,
                            const fs::path& destination, FLKError* error) {
    setModel(scene, timeline);
    return writeModelFiles(error) && writeArchive(destination, error);
}

bool FLKFile::writeAtURL(const fs::path& destination, FLKError* error) {
    return prepareForWriting(error) && writeArchive(destination, error);
}

bool FLKFile::writeArchive(const fs::path& destination, FLKError* error) {
    auto archive = createTempFile(destination, error);
    if (!archive) return false;
    std::error_code ec;
    bool replacing = fs::exists(fs::symlink_status(destination, ec));
    bool placed = replacing ? replaceFileAtPath(destination, *archive, error)
                            : copyTempFileAtPath(*archive, destination, error);
    if (!placed) deleteTempFileAtPath(*archive);
    return placed;
}

bool FLKFile::prepareForWriting(FLKError* error) {
    if (!writeModelFiles(error)) return false;
    removeUnreferencedResources();
    writePreview();
    return true;
}

bool FLKFile::writeModelFiles(FLKError* error) {
    if (!document_ || !metadata_) createFolderStructure();
    return writeTempDirectory(error) && writeDocument(error) && writeMetadata(error) && writeTimeline(error) &&
           writeCurrentScene(error);
}

bool FLKFile::writeTempDirectory(FLKError* error) {
    std::error_code ec;
    fs::create_directories(URL(), ec);
    if (ec) {
        flk::setError(error, writingError(URL(), "The working folder cannot be made: " + ec.message()));
        return false;
    }
    return (media_ ? media_->createDirectoryIfNeeded(error) : true) &&
           (preview_ ? preview_->createDirectoryIfNeeded(error) : true);
}

bool FLKFile::writeModelFile(const FLKSerializable& object, const fs::path& url, FLKError* error) {
    FLKError local;
    if (flk::writeToJSONAtURL(object, url, &local)) return true;
    flk::setError(error, writingError(url, local.fullMessage()));
    return false;
}

bool FLKFile::writeDocument(FLKError* error) { return writeModelFile(*document_, documentURL(), error); }

bool FLKFile::writeMetadata(FLKError* error) { return writeModelFile(*metadata_, metadataURL(), error); }

bool FLKFile::writeTimeline(FLKError* error) {
    auto timeline = document_->currentTimeline();
    if (!timeline) return true;
    auto store = temporaryTimelineStore();
    auto url = store->createFileURLWithName(timeline->identifier());
    if (!writeModelFile(*timeline, url, error)) return false;
    removeOtherJSONFiles(*store, url);
    return true;
}

bool FLKFile::writeCurrentScene(FLKError* error) {
    auto scene = document_->currentScene();
    if (!scene) return true;
    if (!scene->identifier() || !flk::isValidFileName(*scene->identifier())) {
        flk::setError(error, writingError(URL(), "The scene has no usable identifier."));
        return false;
    }
    auto store = temporarySceneStore();
    auto url = store->createFileURLWithName(*scene->identifier());
    if (!writeModelFile(*scene, url, error)) return false;
    removeOtherJSONFiles(*store, url);
    return true;
}

// A package holds one scene and one timeline; files of ones it held before go.
void FLKFile::removeOtherJSONFiles(const FLKTemporaryStore& store, const fs::path& keep) {
    std::error_code ignored;
    for (const auto& file : store.fileURLs()) {
        if (file != keep) fs::remove(file, ignored);
    }
}

void FLKFile::removeUnreferencedResources() {
    std::set<std::string> fileNames;
    if (auto scene = document_->currentScene()) {
        for (const auto& url : scene->resourceURLs()) fileNames.insert(url.filename().string());
        for (const auto& node : scene->recursiveAllChildren()) {
            for (const auto& url : node->resourceURLs()) fileNames.insert(url.filename().string());
        }
    }
    if (auto timeline = document_->currentTimeline()) {
        for (const auto& url : timeline->allResourceURLs()) fileNames.insert(url.filename().string());
    }
    if (!media_) media_ = FLKMedia::mediaWithURL(mediaURL());
    media_->cleanForFileReferences(fileNames);
}

void FLKFile::writePreview() {
    if (!preview_) preview_ = FLKPreview::previewWithURL(previewURL());
    preview_->clear();
    auto scene = document_->currentScene();
    if (!scene) return;
    PreviewSource source;
    {
        std::lock_guard lock(sharedStateMutex());
        source = previewSourceStorage();
    }
    FLKError error;
    if (source) {
        auto picture = source(scene);
        if (picture && !flk::writePNG(*picture, preview_->uniqueURLWithExtension("png"), &error)) {
            flk::log("Could not write the document preview: %s", error.fullMessage().c_str());
        }
        if (picture) return;
    }
    auto sprite = scene->childWithClass<FLKTexturedSprite>();
    if (!sprite || !sprite->resourceURL()) return;
    if (!preview_->addFile(*sprite->resourceURL(), &error)) {
        flk::log("Could not write the document preview: %s", error.fullMessage().c_str());
    }
}

std::optional<fs::path> FLKFile::createTempFile(const fs::path& destination, FLKError* error) {
    auto archive = flk::siblingTemporaryURL(destination);
    FLKError zipError;
    if (!FLKZipArchive::createZipFileAtPath(archive, URL(), &zipError)) {
        flk::setError(error, writingError(destination, zipError.failureReason));
        return std::nullopt;
    }
    // On disk before it replaces anything, so a crash leaves one whole file.
    int fd = ::open(archive.c_str(), O_RDONLY | O_CLOEXEC);
    bool synced = fd >= 0 && ::fsync(fd) == 0;
    if (fd >= 0) ::close(fd);
    if (!synced) {
        flk::setError(error, writingError(destination, "The archive could not be flushed to disk."));
        deleteTempFileAtPath(archive);
        return std::nullopt;
    }
    return archive;
}

bool FLKFile::copyTempFileAtPath(const fs::path& tempPath, const fs::path& destination, FLKError* error) {
    // The archive already lies beside the destination: placing it is a rename.
    std::error_code ec;
    fs::rename(tempPath, destination, ec);
    if (ec) flk::setError(error, writingError(destination, ec.message()));
    return !ec;
}

bool FLKFile::replaceFileAtPath(const fs::path& destination, const fs::path& tempPath, FLKError* error) {
    std::error_code ec;
    if (!fs::is_regular_file(destination, ec)) {
        flk::setError(error, writingError(destination, "Something other than a document is in the way."));
        return false;
    }
    return copyTempFileAtPath(tempPath, destination, error);
}

void FLKFile::deleteTempFileAtPath(const fs::path& tempPath) {
    std::error_code ignored;
    fs::remove(tempPath, ignored);
}

// --- Reading ---

bool FLKFile::read(const fs::path& shownAs, FLKError* error) {
    const std::string reason = "It is damaged or was not made by this application.";
    try {
        FLKFileSerializationContextScope context(shared_from_this());
        auto document = loadDocument();
        auto metadata = loadMetadata();
        document->setCurrentScene(loadCurrentScene());
        document->setCurrentTimeline(loadTimeline());
        document_ = std::move(document);
        metadata_ = std::move(metadata);
        media_ = FLKMedia::mediaWithURL(mediaURL());
        preview_ = FLKPreview::previewWithURL(previewURL());
        return true;
    } catch (const std::invalid_argument& e) {
        flk::setError(error, FLKError::make(kFLKDocumentErrorDomain, kErrorReading,
                                            shownAs.string() + ": " + e.what() + ".", reason));
    } catch (const std::exception&) {
        // Other failures may name our working folder, which means nothing to the user.
        flk::setError(error, FLKError::make(kFLKDocumentErrorDomain, kErrorReading,
                                            shownAs.string() + " could not be read.", reason));
    }
    return false;
}

std::shared_ptr<FLKDocument> FLKFile::loadDocument() {
    return modelObjectAtURL<FLKDocument>(documentURL(), kDocumentPart, URL());
}

std::shared_ptr<FLKMetadata> FLKFile::loadMetadata() {
    return modelObjectAtURL<FLKMetadata>(metadataURL(), kMetadataPart, URL());
}

std::shared_ptr<FLKScene> FLKFile::loadCurrentScene() {
    auto url = firstFile(*temporarySceneStore());
    return url ? modelObjectAtURL<FLKScene>(*url, kScenePart, URL()) : nullptr;
}

std::shared_ptr<FLKTimeline> FLKFile::loadTimeline() {
    auto url = firstFile(*temporaryTimelineStore());
    return url ? modelObjectAtURL<FLKTimeline>(*url, kTimelinePart, URL()) : FLKTimeline::masterTimeline();
}
