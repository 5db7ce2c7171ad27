#include "app/shell/FLKDocumentController.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QWidget>

#include "core/model/FLKFile.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTemplate.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"
#include "core/platform/FLKUserDefaults.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "editing/FLKActionPipeline.h"

namespace {
constexpr const char* kRecentDocumentsKey = "FLKRecentDocuments";
constexpr int kRecentDocumentsLimit = 10;
constexpr const char* kErrorDomain = "FLKDocumentControllerErrorDomain";

std::filesystem::path toPath(const QString& path) { return std::filesystem::path(path.toStdString()); }

std::shared_ptr<FLKTimelineVideoTrack> firstVideoTrack(const std::shared_ptr<FLKTimeline>& timeline) {
    for (const auto& track : timeline ? timeline->tracks() : FLKTimeline::Tracks{}) {
        if (auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) return video;
    }
    return nullptr;
}

QString withDocumentExtension(const QString& path) {
    const QString suffix = QString(".") + kFLKFileExtensionFlickwell;
    return path.endsWith(suffix, Qt::CaseInsensitive) ? path : path + suffix;
}
}  // namespace

FLKDocumentController::FLKDocumentController(QWidget* window, QObject* parent)
    : QObject(parent), window_(window) {
    auto& center = FLKNotificationCenter::defaultCenter();
    historyObservation_ = FLKObservation(
        center, center.addObserver(FLKActionPipelineDidUpdateNotification, nullptr,
                                   [this](const FLKNotification&) { historyDidChange(); }));
    loadObservation_ = FLKObservation(
        center, center.addObserver(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                   [this](const FLKNotification&) { sceneDidLoad(); }));
    refreshTitle();
}

FLKDocumentController::~FLKDocumentController() = default;

QString FLKDocumentController::displayName() const {
    return filePath_.isEmpty() ? QStringLiteral("Untitled") : QFileInfo(filePath_).completeBaseName();
}

bool FLKDocumentController::isModified() const {
    if (changedOutsideHistory_) return true;
    const auto& undo = FLKActionPipeline::sharedPipeline().undoQueue();
    const auto top = undo.empty() ? nullptr : undo.back();
    // A saved action that is gone (dropped with the redo history) never
    // compares equal to the newest one, even at a reused address.
    return undo.size() != savedDepth_ || savedTop_.lock() != top;
}

void FLKDocumentController::noteChange() {
    changedOutsideHistory_ = true;
    historyDidChange();
}

void FLKDocumentController::historyDidChange() {
    ++changeCount_;
    if (isModified() != wasModified_) refreshTitle();
}

void FLKDocumentController::markClean(const QString& path) {
    const auto& undo = FLKActionPipeline::sharedPipeline().undoQueue();
    savedDepth_ = undo.size();
    savedTop_ = undo.empty() ? nullptr : undo.back();
    changedOutsideHistory_ = false;
    filePath_ = path;
    refreshTitle();
}

void FLKDocumentController::sceneDidLoad() {
    // Every load starts a fresh history, whether or not it is emptied yet.
    savedDepth_ = 0;
    savedTop_.reset();
    changedOutsideHistory_ = false;
    filePath_.clear();
    refreshTitle();
}

void FLKDocumentController::refreshTitle() {
    wasModified_ = isModified();
    if (window_) {
        window_->setWindowTitle(displayName() + QStringLiteral("[*] - Flickwell"));
        window_->setWindowModified(wasModified_);
    }
    emit stateChanged();
}

bool FLKDocumentController::newDocument(const std::shared_ptr<FLKTemplate>& aTemplate) {
    if (!maybeSave()) return false;
    FLKNotificationCenter::defaultCenter().post(kFLKAppWillStartNewSceneNotification, this);
    FLKError error;
    if (!(aTemplate ? loadTemplate(aTemplate, &error)
                    : FLKSceneLoader::defaultSceneLoader().loadFirstScene(&error) != nullptr)) {
        FLKUserFeedback::shared().presentError(error);
        return false;
    }
    return true;
}

bool FLKDocumentController::openDocument(const QString& path) {
    if (!maybeSave()) return false;
    const QString absolute = QFileInfo(path).absoluteFilePath();
    FLKError error;
    if (!FLKSceneLoader::defaultSceneLoader().loadSceneFromFileURL(toPath(absolute), &error)) {
        FLKUserFeedback::shared().presentError(error);
        return false;
    }
    markClean(absolute);
    rememberRecent(absolute);
    return true;
}

bool FLKDocumentController::openWithDialog(QWidget* parent) {
    const QString path = QFileDialog::getOpenFileName(
        parent, "Open", QDir::homePath(), QStringLiteral("Flickwell documents (*.%1)").arg(kFLKFileExtensionFlickwell));
    return !path.isEmpty() && openDocument(path);
}

bool FLKDocumentController::recoverDocument(const QString& autosavePath, const QString& savePath) {
    FLKError error;
    if (!FLKSceneLoader::defaultSceneLoader().loadSceneFromFileURL(toPath(autosavePath), &error)) {
        FLKUserFeedback::shared().presentError(error);
        return false;
    }
    filePath_ = savePath;
    noteChange();
    return true;
}

bool FLKDocumentController::changeTemplate(const std::shared_ptr<FLKTemplate>& aTemplate) {
    const QString path = filePath_;
    // The recordings' clips come along with their cuts and transitions. The
    // loader copies the media to the same places in the new document, where
    // the track's stored form reads back.
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    auto track = firstVideoTrack(loader.currentTimeline());
    const FLKJSON clips = track && !track->clips().empty() ? flk::serializedArray(track->clips()) : FLKJSON();
    FLKNotificationCenter::defaultCenter().post(kFLKAppWillStartNewSceneNotification, this);
    FLKError error;
    if (!loadTemplate(aTemplate, &error)) {
        FLKUserFeedback::shared().presentError(error);
        return false;
    }
    if (!clips.is_null() && loader.currentTimeline()) {
        FLKFileSerializationContextScope context(FLKFile::currentFile());
        auto into = firstVideoTrack(loader.currentTimeline());
        if (!into) into = loader.currentTimeline()->createVideoTrack();
        into->setClips(flk::arrayWithSerializedArray<FLKTimelineClip>(clips));
    }
    filePath_ = path;
    noteChange();
    return true;
}

bool FLKDocumentController::loadTemplate(const std::shared_ptr<FLKTemplate>& aTemplate, FLKError* error) {
    // The chosen template is the selected one, unless it cannot be loaded.
    auto& templates = FLKTemplateManager::defaultManager();
    const size_t previous = templates.selectedTemplateIndex();
    templates.selectTemplateNamed(aTemplate->name());
    if (FLKSceneLoader::defaultSceneLoader().loadSceneFromTemplate(aTemplate, error)) return true;
    templates.setSelectedTemplateIndex(previous);
    return false;
}

bool FLKDocumentController::save() { return filePath_.isEmpty() ? saveAs() : saveToPath(filePath_); }

bool FLKDocumentController::saveAs() {
    const QString path = askForSavePath_ ? askForSavePath_(displayName()) : askForSavePathWithDialog(displayName());
    return !path.isEmpty() && saveToPath(withDocumentExtension(path));
}

bool FLKDocumentController::saveToPath(const QString& path) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    auto file = FLKFile::currentFile();
    FLKError error;
    if (!file || !loader.currentScene()) {
        error = FLKError::make(kErrorDomain, 1, "There is no document to save.");
    } else if (file->writeScene(loader.currentScene(), loader.currentTimeline(), toPath(absolute), &error)) {
        markClean(absolute);
        rememberRecent(absolute);
        return true;
    }
    FLKUserFeedback::shared().presentError(
        FLKError::make(kErrorDomain, 2, "The document could not be saved as " + absolute.toStdString() + ".",
                       error.fullMessage()));
    return false;
}

bool FLKDocumentController::maybeSave() {
    if (!isModified()) return true;
    switch (askToSave_ ? askToSave_(displayName()) : askToSaveWithDialog(displayName())) {
        case SaveChoice::Save: return save();
        case SaveChoice::Discard: return true;
        case SaveChoice::Cancel: return false;
    }
    return false;
}

QStringList FLKDocumentController::recentDocuments() const {
    QStringList paths;
    auto stored = FLKUserDefaults::standardUserDefaults().objectForKey(kRecentDocumentsKey);
    if (!stored || !stored->is_array()) return paths;
    for (const auto& entry : *stored) {
        if (!entry.is_string()) continue;
        const QString path = QString::fromStdString(entry.get<std::string>());
        if (QFileInfo::exists(path) && !paths.contains(path)) paths << path;
    }
    return paths;
}

void FLKDocumentController::rememberRecent(const QString& path) {
    QStringList paths = recentDocuments();
    paths.removeAll(path);
    paths.prepend(path);
    FLKJSON list = FLKJSON::array();
    for (const auto& entry : paths.mid(0, kRecentDocumentsLimit)) list.push_back(entry.toStdString());
    auto& defaults = FLKUserDefaults::standardUserDefaults();
    defaults.setObject(kRecentDocumentsKey, list);
    defaults.synchronize();
}

void FLKDocumentController::clearRecentDocuments() {
    auto& defaults = FLKUserDefaults::standardUserDefaults();
    defaults.removeObjectForKey(kRecentDocumentsKey);
    defaults.synchronize();
}

FLKDocumentController::SaveChoice FLKDocumentController::askToSaveWithDialog(const QString& name) const {
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Flickwell"),
                    QStringLiteral("Do you want to save the changes made to the document \"%1\"?").arg(name),
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, window_);
    box.setInformativeText(QStringLiteral("Your changes will be lost if you don't save them."));
    box.setDefaultButton(QMessageBox::Save);
    switch (box.exec()) {
        case QMessageBox::Save: return SaveChoice::Save;
        case QMessageBox::Discard: return SaveChoice::Discard;
        default: return SaveChoice::Cancel;
    }
}

QString FLKDocumentController::askForSavePathWithDialog(const QString& name) const {
    const QString folder = filePath_.isEmpty() ? QDir::homePath() : QFileInfo(filePath_).absolutePath();
    return QFileDialog::getSaveFileName(window_, QStringLiteral("Save"), QDir(folder).filePath(name),
                                        QStringLiteral("Flickwell documents (*.%1)").arg(kFLKFileExtensionFlickwell));
}
