#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <filesystem>
#include <functional>
#include <memory>

#include "core/platform/FLKNotificationCenter.h"

class FLKAction;
struct FLKError;
class FLKTemplate;
class QWidget;

inline constexpr const char* kFLKAppWillStartNewSceneNotification = "FLKAppWillStartNewSceneNotification";

// The document being edited as the user knows it: where it is saved, whether
// it has unsaved changes, and the commands that replace or write it. The
// window's title follows it ("Name[*] - Flickwell" with Qt's unsaved marker).
//
// Unsaved changes: the undo history is compared with the one at the last save
// or load (undoing back to that point makes the document clean again), and
// changes that bypass the history (drops, imports, turning the video, a new
// template under the same document) count until the next save.
//
// Main thread only.
class FLKDocumentController : public QObject {
    Q_OBJECT

public:
    enum class SaveChoice { Save, Discard, Cancel };
    // Asks whether to save the named document's changes before they are lost.
    using AskToSave = std::function<SaveChoice(const QString& documentName)>;
    // Where to save the named document; empty when the user cancelled.
    using AskForSavePath = std::function<QString(const QString& documentName)>;

    explicit FLKDocumentController(QWidget* window, QObject* parent = nullptr);
    ~FLKDocumentController() override;

    // The saved location; empty for a document never saved.
    const QString& filePath() const { return filePath_; }
    QString displayName() const;
    bool isModified() const;
    // Bumped by every change, saved or not: autosave writes when it moved.
    quint64 changeCount() const { return changeCount_; }

    // The questions the commands put to the user; unset, they are dialogs.
    void setAskToSave(AskToSave ask) { askToSave_ = std::move(ask); }
    void setAskForSavePath(AskForSavePath ask) { askForSavePath_ = std::move(ask); }

    // Each answers whether it did what it says. Those that replace the
    // document first offer to save unsaved changes; a failure leaves the
    // current document as it was and tells the user.
    bool newDocument(const std::shared_ptr<FLKTemplate>& aTemplate = nullptr);
    bool openDocument(const QString& path);
    // Asks for the document to open with a file dialog over `parent`.
    bool openWithDialog(QWidget* parent);
    // Loads the document as recovered work: unsaved, to be saved at `savePath`
    // (empty when it never was saved). Does not ask to save: nothing is open yet.
    bool recoverDocument(const QString& autosavePath, const QString& savePath);
    // Puts the document's scene on another template, keeping its media and
    // its place on disk: a change like any other. Both this and a new
    // document announce the new scene before it replaces the current one.
    bool changeTemplate(const std::shared_ptr<FLKTemplate>& aTemplate);
    bool save();
    bool saveAs();
    bool saveToPath(const QString& path);
    // True when the document may be let go: it had no unsaved changes, or the
    // user saved or discarded them.
    bool maybeSave();

    // A change that bypassed the undo history.
    void noteChange();

    // Most recent first; the ones that no longer exist are left out.
    QStringList recentDocuments() const;
    void clearRecentDocuments();

signals:
    // The path, the unsaved state or the name changed.
    void stateChanged();

private:
    // Selects and loads the template; the selection stays as it was on failure.
    bool loadTemplate(const std::shared_ptr<FLKTemplate>& aTemplate, FLKError* error);
    void markClean(const QString& path);
    // After a load the controller did not start: an untitled, clean document.
    void sceneDidLoad();
    void historyDidChange();
    void refreshTitle();
    void rememberRecent(const QString& path);
    SaveChoice askToSaveWithDialog(const QString& name) const;
    QString askForSavePathWithDialog(const QString& name) const;

    QWidget* const window_;
    QString filePath_;
    // The undo history at the last save or load: its depth and newest action.
    size_t savedDepth_ = 0;
    std::weak_ptr<FLKAction> savedTop_;
    bool changedOutsideHistory_ = false;
    bool wasModified_ = false;
    quint64 changeCount_ = 0;
    AskToSave askToSave_;
    AskForSavePath askForSavePath_;
    FLKObservation historyObservation_;
    FLKObservation loadObservation_;
};
