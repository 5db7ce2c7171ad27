#include "app/shell/FLKAutosave.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "app/shell/FLKDocumentController.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKAtomicFile.h"
#include "core/platform/FLKFolderLease.h"
#include "core/platform/FLKJSON.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"

namespace fs = std::filesystem;

namespace {
constexpr const char* kInfoFileName = "autosave.json";
constexpr int kDefaultIntervalMs = 60 * 1000;

fs::path toPath(const QString& path) { return fs::path(path.toStdString()); }

FLKJSON readInfo(const QString& folder) {
    std::ifstream in(toPath(QDir(folder).filePath(kInfoFileName)));
    std::stringstream text;
    text << in.rdbuf();
    auto info = FLKJSON::parse(text.str(), nullptr, false);
    return info.is_object() ? info : FLKJSON::object();
}
}  // namespace

FLKAutosave::FLKAutosave(FLKDocumentController& documents, QObject* parent)
    : QObject(parent), documents_(documents), writtenChangeCount_(documents.changeCount()) {
    timer_.setInterval(intervalMilliseconds());
    connect(&timer_, &QTimer::timeout, this, &FLKAutosave::writeNow);
    connect(&documents_, &FLKDocumentController::stateChanged, this, &FLKAutosave::documentStateDidChange);
}

FLKAutosave::~FLKAutosave() {
    if (sessionFolder_.isEmpty()) return;
    // The folder first: the lease keeps its lock file while the folder is there.
    QDir(sessionFolder_).removeRecursively();
    lease_.reset();
}

QString FLKAutosave::directory() { return QString::fromStdString((flk::stateHome() / "autosave").string()); }

int FLKAutosave::intervalMilliseconds() {
    const char* value = std::getenv(kIntervalVariable);
    if (!value || !*value) return kDefaultIntervalMs;
    char* end = nullptr;
    const double seconds = std::strtod(value, &end);
    if (*end != '\0' || !(seconds > 0) || seconds > 24 * 3600) return kDefaultIntervalMs;
    return std::max(1, static_cast<int>(seconds * 1000));
}

void FLKAutosave::start() { timer_.start(); }

QString FLKAutosave::autosavePath() const {
    return sessionFolder_.isEmpty() ? QString() : QDir(sessionFolder_).filePath(kDocumentFileName);
}

bool FLKAutosave::ensureSessionFolder() {
    if (!sessionFolder_.isEmpty()) return true;
    if (!QDir().mkpath(directory())) return false;
    const QString folder = QDir(directory()).filePath(
        QStringLiteral("%1-%2").arg(::getpid()).arg(QDateTime::currentMSecsSinceEpoch()));
    // Leased before it exists, so no other start ever takes it for a leftover.
    lease_ = FLKFolderLease::leaseForFolder(toPath(folder));
    if (!lease_ || !QDir().mkpath(folder)) {
        lease_.reset();
        return false;
    }
    sessionFolder_ = folder;
    return true;
}

bool FLKAutosave::writeNow() {
    if (!documents_.isModified()) return false;
    if (hasCopy_ && documents_.changeCount() == writtenChangeCount_) return true;
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    auto file = FLKFile::currentFile();
    if (!file || !loader.currentScene() || !ensureSessionFolder()) return false;
    const quint64 changeCount = documents_.changeCount();
    FLKError error;
    // Replaces the previous copy in one rename: a crash mid-write keeps it.
    if (!file->writeSnapshot(loader.currentScene(), loader.currentTimeline(), toPath(autosavePath()), &error)) {
        flk::log("Autosave failed: %s", error.fullMessage().c_str());
        return false;
    }
    FLKJSON info = {{"document", documents_.filePath().toStdString()},
                    {"savedAt", QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toStdString()}};
    if (!flk::writeFileAtomically(toPath(QDir(sessionFolder_).filePath(kInfoFileName)), info.dump(), &error)) {
        flk::log("Autosave could not note the document's name: %s", error.fullMessage().c_str());
    }
    writtenChangeCount_ = changeCount;
    hasCopy_ = true;
    return true;
}

void FLKAutosave::documentStateDidChange() {
    // Saved, or back where it was saved: the copy holds nothing to recover.
    if (!documents_.isModified()) removeCopy();
}

void FLKAutosave::removeCopy() {
    if (!hasCopy_) return;
    QFile::remove(autosavePath());
    QFile::remove(QDir(sessionFolder_).filePath(kInfoFileName));
    hasCopy_ = false;
}

std::vector<FLKAutosave::Leftover> FLKAutosave::leftovers() {
    std::vector<Leftover> found;
    const QDir root(directory());
    for (const auto& entry : root.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString folder = entry.absoluteFilePath();
        if (!FLKFolderLease::isAbandoned(toPath(folder))) continue;
        const QFileInfo copy(QDir(folder).filePath(kDocumentFileName));
        if (!copy.exists()) {
            // Ended before it ever had work to keep.
            removeLeftover({folder, {}, {}, {}});
            continue;
        }
        const FLKJSON info = readInfo(folder);
        Leftover leftover{folder, copy.absoluteFilePath(), {}, copy.lastModified()};
        if (info.contains("document") && info["document"].is_string()) {
            leftover.documentPath = QString::fromStdString(info["document"].get<std::string>());
        }
        if (info.contains("savedAt") && info["savedAt"].is_string()) {
            auto savedAt = QDateTime::fromString(QString::fromStdString(info["savedAt"].get<std::string>()),
                                                 Qt::ISODateWithMs);
            if (savedAt.isValid()) leftover.savedAt = savedAt;
        }
        found.push_back(leftover);
    }
    std::sort(found.begin(), found.end(), [](const Leftover& a, const Leftover& b) { return a.savedAt > b.savedAt; });
    return found;
}

void FLKAutosave::removeLeftover(const Leftover& leftover) {
    QDir(leftover.folder).removeRecursively();
    QFile::remove(leftover.folder + QStringLiteral(".lock"));
}

bool FLKAutosave::offerRecovery(const AskToRecover& ask) {
    const auto found = leftovers();
    if (found.empty()) return false;
    const Leftover& newest = found.front();
    if (!(ask ? ask(newest) : askWithDialog(newest))) {
        removeLeftover(newest);
        return false;
    }
    if (!documents_.recoverDocument(newest.autosavePath, newest.documentPath)) return false;
    // Only once it is safe again under this program's lease does the old copy go.
    if (writeNow()) removeLeftover(newest);
    return true;
}

bool FLKAutosave::askWithDialog(const Leftover& leftover) {
    const QString name =
        leftover.documentPath.isEmpty() ? QStringLiteral("Untitled") : QFileInfo(leftover.documentPath).completeBaseName();
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Flickwell"),
                    QStringLiteral("Flickwell quit unexpectedly while \"%1\" had unsaved changes.").arg(name),
                    QMessageBox::NoButton);
    box.setInformativeText(QStringLiteral("Do you want to recover the changes last kept at %1?")
                               .arg(QLocale().toString(leftover.savedAt.toLocalTime(), QLocale::ShortFormat)));
    QPushButton* recover = box.addButton(QStringLiteral("Recover"), QMessageBox::AcceptRole);
    box.addButton(QStringLiteral("Discard"), QMessageBox::DestructiveRole);
    box.setDefaultButton(recover);
    box.exec();
    return box.clickedButton() == recover;
}
