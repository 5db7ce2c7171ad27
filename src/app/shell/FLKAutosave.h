#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

class FLKDocumentController;
class FLKFolderLease;

// Keeps a copy of unsaved work in the state folder ("autosave/"), so a crash
// costs at most one interval of work (60 s; FLICKWELL_AUTOSAVE_INTERVAL in
// seconds overrides it). Each running program writes into a folder of its
// own, leased while it runs; it removes the copy once the document is saved
// or the program ends normally. A folder whose lease nobody holds and that
// still has a copy was left by a program that crashed or was killed: the
// next start offers to recover it. Main thread only.
class FLKAutosave : public QObject {
    Q_OBJECT

public:
    static constexpr const char* kIntervalVariable = "FLICKWELL_AUTOSAVE_INTERVAL";
    static constexpr const char* kDocumentFileName = "Autosave.flickwell";

    // Work a program that ended abnormally left behind.
    struct Leftover {
        QString folder;
        QString autosavePath;
        // Where the document was saved before; empty for an untitled one.
        QString documentPath;
        QDateTime savedAt;
    };
    // Answers whether to recover the leftover.
    using AskToRecover = std::function<bool(const Leftover&)>;

    explicit FLKAutosave(FLKDocumentController& documents, QObject* parent = nullptr);
    // The normal end: this program's copy goes.
    ~FLKAutosave() override;

    static QString directory();
    static int intervalMilliseconds();

    void start();
    // Writes the copy when the document has changes not written yet; true
    // when a copy of the current state is on disk afterwards.
    bool writeNow();
    const QString& sessionFolder() const { return sessionFolder_; }
    QString autosavePath() const;

    // Newest first.
    static std::vector<Leftover> leftovers();
    static void removeLeftover(const Leftover& leftover);
    // Offers the newest leftover; a recovered one is written again at once
    // under this program's lease before the old folder goes. True when work
    // was recovered. `ask` defaults to a dialog.
    bool offerRecovery(const AskToRecover& ask = {});

private:
    bool ensureSessionFolder();
    void documentStateDidChange();
    void removeCopy();
    static bool askWithDialog(const Leftover& leftover);

    FLKDocumentController& documents_;
    QTimer timer_;
    QString sessionFolder_;
    std::unique_ptr<FLKFolderLease> lease_;
    quint64 writtenChangeCount_ = 0;
    bool hasCopy_ = false;
};
