// Documents as the running program handles them: saving and opening, the
// window title's unsaved marker, asking before unsaved work is lost, files
// dropped on the canvas or handed over by a later start, the menus'
// breadcrumbs, and autosaved work surviving a killed program.
#include <QAbstractButton>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QImage>
#include <QInputDialog>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <memory>
#include <thread>

#include "FLKAppTestSupport.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKAutosave.h"
#include "app/shell/FLKBreadcrumbLog.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKFileHandler.h"
#include "app/shell/FLKMainMenu.h"
#include "app/shell/FLKMainWindow.h"
#include "app/shell/FLKSingleInstance.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKSceneModifier.h"
#include "core/model/FLKTemplateManager.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKVideoClip.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKSelection.h"
#include "editing/FLKSelectionTransformingAction.h"

using Choice = FLKDocumentController::SaveChoice;

namespace {

std::shared_ptr<FLKScene> currentScene() { return FLKSceneLoader::defaultSceneLoader().currentScene(); }

std::vector<std::shared_ptr<FLKVideoClip>> clips() {
    std::vector<std::shared_ptr<FLKVideoClip>> found;
    auto timeline = FLKSceneLoader::defaultSceneLoader().currentTimeline();
    for (const auto& track : timeline ? timeline->tracks() : FLKTimeline::Tracks{}) {
        if (!std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) continue;
        for (const auto& clip : track->clips()) {
            if (auto video = std::dynamic_pointer_cast<FLKVideoClip>(clip)) found.push_back(video);
        }
    }
    return found;
}

std::shared_ptr<FLKVideoContainer> screen() { return currentScene()->childWithClass<FLKVideoContainer>(); }

std::shared_ptr<FLKTexturedSprite> background() {
    for (const auto& node : currentScene()->childrenWithClass(typeid(FLKTexturedSprite))) {
        const auto& name = node->name();
        if (name && *name == FLKSceneModifier::kBackgroundSpriteName) {
            return std::dynamic_pointer_cast<FLKTexturedSprite>(node);
        }
    }
    return nullptr;
}

bool isInside(const std::filesystem::path& file, const std::filesystem::path& folder) {
    const auto relative = file.lexically_relative(folder);
    return !relative.empty() && *relative.begin() != "..";
}

// The alerts on screen, newest last, as their text and informative text.
QStringList alertTexts() {
    QStringList texts;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(widget);
        if (box && box->isVisible()) texts << box->text() + "\n" + box->informativeText();
    }
    return texts;
}

void closeAlerts() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* box = qobject_cast<QMessageBox*>(widget); box && box->isVisible()) box->close();
    }
}

// Answers the next modal question with `button`, recording its text.
void answerNextQuestion(QMessageBox::StandardButton button, QString* asked) {
    auto* poll = new QTimer;
    poll->setInterval(0);
    QObject::connect(poll, &QTimer::timeout, [poll, button, asked] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->button(button)) return;
        *asked = box->text();
        poll->deleteLater();
        box->button(button)->click();
    });
    poll->start();
}

// Fills in and accepts the next text question.
void answerNextTextQuestion(const QString& text) {
    auto* poll = new QTimer;
    poll->setInterval(0);
    QObject::connect(poll, &QTimer::timeout, [poll, text] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        if (!dialog) return;
        poll->deleteLater();
        dialog->setTextValue(text);
        dialog->accept();
    });
    poll->start();
}

// The menu's items as it shows them when opened.
QAction* itemNamed(QMenu* menu, const QString& text) {
    emit menu->aboutToShow();
    for (QAction* action : menu->actions()) {
        if (action->text() == text) return action;
    }
    return nullptr;
}

QString lastLine(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return {};
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    return lines.isEmpty() ? QString() : lines.last();
}

}  // namespace

class DocumentTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void titleMarksUnsavedChangesAndUndoingBackToTheSaveClearsIt();
    void saveAndOpenRoundTripTheDocument();
    void replacingUnsavedWorkAsksFirst();
    void closingTheWindowAsksWithARealDialog();
    void damagedDocumentShowsAnAlertAndKeepsTheCurrentOne();
    void dropsOfEachKindChangeTheDocument();
    void unusableDropsGetAMessageAndChangeNothing();
    void laterStartHandsItsFilesToTheRunningProgram();
    void savedTemplatesAndRecentDocumentsAreOfferedInTheFileMenu();
    void menusListsAndSpritesLeaveBreadcrumbs();
    void viewAndPlaybackItemsDriveTheCameraAndTimeline();
    void autosaveSurvivesAKillAndIsOfferedAtTheNextStart();

private:
    FLKDocumentController& documents() const { return *window->documentController(); }
    QString fixture(const QString& name) const { return QDir(media.path()).filePath(name); }
    QString newPath(const QString& name) const { return QDir(saved.path()).filePath(name); }
    void makeUnsavedChange();
    bool drop(const QStringList& files);

    std::unique_ptr<FLKMainWindow> window;
    QTemporaryDir media;
    QTemporaryDir saved;
    int asked = 0;
    Choice answer = Choice::Cancel;
    QString savePathAnswer;
};

void DocumentTests::initTestCase() {
    QVERIFY(media.isValid() && saved.isValid());
    FLKSyntheticVideo::Options options;
    options.frameCount = 20;
    FLKError error;
    QVERIFY2(FLKSyntheticVideo::writeVideo(fixture("recording.mp4").toStdString(), options, &error),
             error.fullMessage().c_str());
    QVERIFY2(FLKSyntheticVideo::writeTone(fixture("music.m4a").toStdString(), 1.0, 440.0, &error),
             error.fullMessage().c_str());
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QVERIFY(picture.save(fixture("picture.png")));
    auto write = [this](const QString& name, const QByteArray& bytes) {
        QFile file(fixture(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    };
    QVERIFY(write("Broken.flickwell", "PK\x03\x04 this is no archive"));
    QVERIFY(write("Damaged.mp4", "no movie in here"));
    QVERIFY(write("notes.txt", "just words"));
    QVERIFY(QDir(media.path()).mkdir("Plain folder"));

    window = std::make_unique<FLKMainWindow>();
    window->resize(900, 700);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    window->showScene();
    QVERIFY(currentScene());
    documents().setAskToSave([this](const QString&) {
        ++asked;
        return answer;
    });
    documents().setAskForSavePath([this](const QString&) { return savePathAnswer; });
}

void DocumentTests::init() {
    closeAlerts();
    answer = Choice::Discard;
    QVERIFY(documents().newDocument());
    QVERIFY(!documents().isModified());
    asked = 0;
}

void DocumentTests::cleanupTestCase() {
    closeAlerts();
    window.reset();
}

void DocumentTests::makeUnsavedChange() {
    QVERIFY(window->fileHandler().handleOpenURL(fixture("recording.mp4").toStdString()));
    QVERIFY(documents().isModified());
}

// Through the canvas's own drag-and-drop events; true when it let the drag in.
bool DocumentTests::drop(const QStringList& files) {
    QMimeData data;
    QList<QUrl> urls;
    for (const auto& file : files) urls << QUrl::fromLocalFile(file);
    data.setUrls(urls);
    const QPoint centre = window->sceneView()->rect().center();
    QDragEnterEvent enter(centre, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window->sceneView(), &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent dropped(QPointF(centre), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window->sceneView(), &dropped);
    return dropped.isAccepted();
}

void DocumentTests::titleMarksUnsavedChangesAndUndoingBackToTheSaveClearsIt() {
    QCOMPARE(window->windowTitle(), QString("Untitled[*] - Flickwell"));
    QVERIFY(!window->isWindowModified());

    auto& pipeline = FLKActionPipeline::sharedPipeline();
    auto moveScreen = [] {
        FLKSelection selection;
        selection.addObject(screen());
        auto action = FLKSelectionTransformingAction::actionWithSelection(selection);
        screen()->moveBy({12, 7});
        action->finalize();
        return FLKActionPipeline::sharedPipeline().execute(action) != nullptr;
    };
    QVERIFY(moveScreen());
    QVERIFY(window->isWindowModified());
    pipeline.undo();
    QVERIFY(!window->isWindowModified());
    pipeline.redo();
    QVERIFY(window->isWindowModified());

    QVERIFY(documents().saveToPath(newPath("Marked.flickwell")));
    QCOMPARE(window->windowTitle(), QString("Marked[*] - Flickwell"));
    QVERIFY(!window->isWindowModified());
    // The saved state is the one after the move: undoing it is a change...
    pipeline.undo();
    QVERIFY(window->isWindowModified());
    pipeline.redo();
    QVERIFY(!window->isWindowModified());
    // ...and so is a new edit made after undoing, though the history is as deep.
    pipeline.undo();
    QVERIFY(moveScreen());
    QCOMPARE(pipeline.undoQueue().size(), size_t(1));
    QVERIFY(window->isWindowModified());
}

void DocumentTests::saveAndOpenRoundTripTheDocument() {
    makeUnsavedChange();
    const QString movedOutOf = QString::fromStdString(clips().at(0)->assetURL().string());
    savePathAnswer = newPath("Round Trip");  // the extension comes by itself
    QVERIFY(documents().saveAs());
    const QString path = newPath("Round Trip.flickwell");
    QVERIFY(QFileInfo::exists(path));
    QCOMPARE(documents().filePath(), path);
    QVERIFY(!documents().isModified());

    QVERIFY(documents().newDocument());
    QCOMPARE(clips().size(), size_t(0));
    QCOMPARE(documents().filePath(), QString());

    QVERIFY(documents().openDocument(path));
    QCOMPARE(documents().filePath(), path);
    QVERIFY(!documents().isModified());
    QCOMPARE(window->windowTitle(), QString("Round Trip[*] - Flickwell"));
    QCOMPARE(clips().size(), size_t(1));
    // The clip plays from the opened document's own folder, not the old one.
    QVERIFY(isInside(clips().at(0)->assetURL(), FLKFile::currentFile()->URL()));
    QVERIFY(QString::fromStdString(clips().at(0)->assetURL().string()) != movedOutOf);
    QVERIFY(QFileInfo::exists(QString::fromStdString(clips().at(0)->assetURL().string())));
    QCOMPARE(documents().recentDocuments().value(0), path);
}

void DocumentTests::replacingUnsavedWorkAsksFirst() {
    makeUnsavedChange();
    const auto before = currentScene();
    answer = Choice::Cancel;
    QVERIFY(!documents().newDocument());
    QCOMPARE(asked, 1);
    QCOMPARE(currentScene(), before);
    QVERIFY(documents().isModified());

    // Saving first, to a place the user picks.
    answer = Choice::Save;
    savePathAnswer = newPath("Asked.flickwell");
    QVERIFY(documents().openDocument(newPath("Marked.flickwell")));
    QCOMPARE(asked, 2);
    QVERIFY(QFileInfo::exists(newPath("Asked.flickwell")));
    QCOMPARE(documents().filePath(), newPath("Marked.flickwell"));

    // A clean document is let go without a question.
    QVERIFY(documents().newDocument());
    QCOMPARE(asked, 2);

    makeUnsavedChange();
    answer = Choice::Discard;
    QVERIFY(documents().newDocument());
    QCOMPARE(asked, 3);
    QCOMPARE(clips().size(), size_t(0));
}

void DocumentTests::closingTheWindowAsksWithARealDialog() {
    makeUnsavedChange();
    documents().setAskToSave({});
    QString question;
    answerNextQuestion(QMessageBox::Cancel, &question);
    QVERIFY(!window->close());
    QVERIFY(question.contains("Untitled"));
    QVERIFY(window->isVisible());
    QVERIFY(documents().isModified());

    question.clear();
    answerNextQuestion(QMessageBox::Discard, &question);
    QVERIFY(window->close());
    QVERIFY(!question.isEmpty());
    QVERIFY(!window->isVisible());

    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    documents().setAskToSave([this](const QString&) {
        ++asked;
        return answer;
    });
}

void DocumentTests::damagedDocumentShowsAnAlertAndKeepsTheCurrentOne() {
    QVERIFY(documents().openDocument(newPath("Marked.flickwell")));
    const auto scene = currentScene();
    const auto file = FLKFile::currentFile();
    QVERIFY(!documents().openDocument(fixture("Broken.flickwell")));
    QTRY_VERIFY(alertTexts().join("\n").contains("Broken.flickwell"));
    QCOMPARE(currentScene(), scene);
    QCOMPARE(FLKFile::currentFile(), file);
    QCOMPARE(documents().filePath(), newPath("Marked.flickwell"));
    QVERIFY(!documents().isModified());
}

void DocumentTests::dropsOfEachKindChangeTheDocument() {
    QVERIFY(documents().saveToPath(newPath("Dropped.flickwell")));
    const auto media = FLKFile::currentFile()->mediaURL();

    QVERIFY(drop({fixture("recording.mp4")}));
    QTRY_COMPARE(clips().size(), size_t(1));
    QVERIFY(isInside(clips().at(0)->assetURL(), media));
    QVERIFY(documents().isModified());

    QVERIFY(drop({fixture("music.m4a")}));
    QTRY_VERIFY(screen()->audio());

    QVERIFY(drop({fixture("picture.png")}));
    QTRY_VERIFY(background());
    QVERIFY(background()->resourceURL() && isInside(*background()->resourceURL(), media));

    // Another template takes the scene; the document keeps its name and media.
    auto& templates = FLKTemplateManager::defaultManager();
    QVERIFY(!templates.templates().empty());
    const auto other = templates.templates().back();
    const auto before = currentScene();
    const auto recording = clips().at(0)->assetURL().filename();
    QVERIFY(drop({QString::fromStdString(other->URL().string())}));
    QTRY_VERIFY(currentScene() != before);
    QCOMPARE(documents().filePath(), newPath("Dropped.flickwell"));
    QVERIFY(documents().isModified());
    QVERIFY(std::filesystem::exists(FLKFile::currentFile()->mediaURL() / recording));

    // A document opens in place of this one (its changes discarded here).
    QVERIFY(drop({newPath("Marked.flickwell")}));
    QTRY_COMPARE(documents().filePath(), newPath("Marked.flickwell"));
    QCOMPARE(asked, 1);
    QVERIFY(alertTexts().isEmpty());
}

void DocumentTests::unusableDropsGetAMessageAndChangeNothing() {
    makeUnsavedChange();
    const auto scene = currentScene();
    const auto changes = documents().changeCount();
    const auto mediaBefore = FLKFile::currentFile()->media()->allFiles().size();
    for (const QString& name : {QString("notes.txt"), QString("Damaged.mp4"), QString("Plain folder")}) {
        QVERIFY2(drop({fixture(name)}), qPrintable(name));
        QTRY_VERIFY2(alertTexts().join("\n").contains(name), qPrintable(name));
        closeAlerts();
    }
    QCOMPARE(currentScene(), scene);
    QCOMPARE(clips().size(), size_t(1));
    QCOMPARE(documents().changeCount(), changes);
    QCOMPARE(FLKFile::currentFile()->media()->allFiles().size(), mediaBefore);
    // Drags that carry no file are not let in at all.
    QMimeData text;
    text.setText("words");
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window->sceneView(), &enter);
    QVERIFY(!enter.isAccepted());
}

void DocumentTests::laterStartHandsItsFilesToTheRunningProgram() {
    QVERIFY(!FLKSingleInstance::handOff({fixture("recording.mp4")}));  // nobody listens yet
    FLKSingleInstance instance;
    QVERIFY(instance.listen());
    QSignalSpy received(&instance, &FLKSingleInstance::filesReceived);
    connect(&instance, &FLKSingleInstance::filesReceived, window.get(), &FLKMainWindow::openHandedFiles);

    bool handedOver = false;
    const QString relative = QDir::current().relativeFilePath(fixture("recording.mp4"));
    std::thread later([&] { handedOver = FLKSingleInstance::handOff({relative, fixture("picture.png")}); });
    QTRY_COMPARE(received.count(), 1);
    later.join();
    QVERIFY(handedOver);
    QCOMPARE(received.at(0).at(0).toStringList(), QStringList({fixture("recording.mp4"), fixture("picture.png")}));
    QCOMPARE(clips().size(), size_t(1));
    QVERIFY(background());
    QVERIFY(documents().isModified());
}

void DocumentTests::savedTemplatesAndRecentDocumentsAreOfferedInTheFileMenu() {
    makeUnsavedChange();
    answerNextTextQuestion("My Promo");
    window->mainMenu()->saveAsTemplateAction()->trigger();
    auto& templates = FLKTemplateManager::defaultManager();
    QVERIFY(templates.templateWithName("My Promo"));
    QCOMPARE(templates.selectedTemplate(), templates.templateWithName("My Promo"));

    // A new document from it carries its recording, as a clip.
    QAction* fromTemplate = itemNamed(window->mainMenu()->newFromTemplateMenu(), "My Promo");
    QVERIFY(fromTemplate);
    fromTemplate->trigger();
    QCOMPARE(asked, 1);  // the unsaved change was asked about first
    QCOMPARE(documents().filePath(), QString());
    QCOMPARE(clips().size(), size_t(1));
    QVERIFY(!documents().isModified());

    // Recent documents: the most recent first, and only files still there.
    QVERIFY(documents().saveToPath(newPath("Recent One.flickwell")));
    QVERIFY(documents().saveToPath(newPath("Recent Two.flickwell")));
    QVERIFY(QFile::remove(newPath("Recent One.flickwell")));
    QMenu* recent = window->mainMenu()->openRecentMenu();
    QVERIFY(!itemNamed(recent, "Recent One.flickwell"));
    QCOMPARE(recent->actions().value(0)->text(), QString("Recent Two.flickwell"));
    QVERIFY(documents().newDocument());
    itemNamed(recent, "Recent Two.flickwell")->trigger();
    QCOMPARE(documents().filePath(), newPath("Recent Two.flickwell"));
    itemNamed(recent, "&Clear Menu")->trigger();
    QVERIFY(documents().recentDocuments().isEmpty());
    QVERIFY(itemNamed(recent, "&Clear Menu") == nullptr);
}

void DocumentTests::menusListsAndSpritesLeaveBreadcrumbs() {
    FLKBreadcrumbLog::startLogging();
    QVERIFY(FLKBreadcrumbLog::logPath().startsWith(qEnvironmentVariable("FLICKWELL_HOME")));
    window->mainMenu()->zoomInAction()->trigger();
    QVERIFY(QRegularExpression(R"(^\w+ line \d+ \$ \[MENU\] View -> \(Zoom In\)$)")
                .match(lastLine(FLKBreadcrumbLog::logPath()))
                .hasMatch());

    QWidget panel;
    auto* button = new QPushButton("Export", &panel);
    panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(lastLine(FLKBreadcrumbLog::logPath()).endsWith("$ [BUTTON] Export -> (QWidget -clicked)"));

    QListWidget list;
    list.addItems({"First", "Second", "Third"});
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualItemRect(list.item(2)).center());
    QVERIFY(lastLine(FLKBreadcrumbLog::logPath()).endsWith("$ [COLLECTION VIEW] -> (0 - 2)"));

    // Logged before loading: a picture that fails to load is the one to know about.
    FLKError error;
    QVERIFY(!FLKTexturedSprite::spriteWithResourceURL(newPath("Missing Badge.png").toStdString(), &error));
    QVERIFY(lastLine(FLKBreadcrumbLog::logPath()).endsWith("$ [LOADING SPRITE] Missing Badge.png"));
}

void DocumentTests::viewAndPlaybackItemsDriveTheCameraAndTimeline() {
    auto camera = currentScene()->mainCamera();
    const double scale = camera->scale();
    window->mainMenu()->zoomInAction()->trigger();
    QCOMPARE(camera->scale(), scale * FLKMainMenu::kZoomStep);
    window->mainMenu()->zoomOutAction()->trigger();
    QCOMPARE(camera->scale(), scale);

    auto timeline = FLKTimeline::masterTimeline();
    const bool playing = timeline->isPlaying();
    window->mainMenu()->playPauseAction()->trigger();
    QCOMPARE(timeline->isPlaying(), !playing);
    window->mainMenu()->playPauseAction()->trigger();
    QCOMPARE(timeline->isPlaying(), playing);
    window->mainMenu()->loopAction()->trigger();
    QVERIFY(timeline->isLooping());
    window->mainMenu()->loopAction()->trigger();
    QVERIFY(!timeline->isLooping());

    // Standard keys reach the menu items.
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QTest::keySequence(window.get(), QKeySequence::ZoomIn);
    QCOMPARE(camera->scale(), scale * FLKMainMenu::kZoomStep);
}

void DocumentTests::autosaveSurvivesAKillAndIsOfferedAtTheNextStart() {
    QVERIFY(documents().saveToPath(newPath("Killed.flickwell")));
    QVERIFY(documents().newDocument());
    QVERIFY(FLKAutosave::leftovers().empty());

    // The real program opens the document and adds a recording: unsaved work.
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(FLKAutosave::kIntervalVariable, "0.2");
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    program.start(FLK_PROGRAM, {newPath("Killed.flickwell"), fixture("recording.mp4")});
    QVERIFY(program.waitForStarted());
    // What the program last noted about its copy; empty before the first.
    auto autosaveNote = [] {
        for (const auto& folder : QDir(FLKAutosave::directory()).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile note(QDir(folder.filePath()).filePath("autosave.json"));
            if (note.open(QIODevice::ReadOnly)) return note.readAll();
        }
        return QByteArray();
    };
    QTRY_VERIFY_WITH_TIMEOUT(!autosaveNote().isEmpty() || program.state() == QProcess::NotRunning, 120000);
    QCOMPARE(program.state(), QProcess::Running);
    // A running program's work is not up for recovery.
    QVERIFY(FLKAutosave::leftovers().empty());

    // A second start hands its picture to the first and ends; the change is autosaved too.
    const QByteArray firstNote = autosaveNote();
    QProcess second;
    // This start never makes a GL context, so Mesa unloads its driver before
    // the leak check and what the driver kept reads as ours; only the slow
    // unwinder gets past the driver (no frame pointers) to the suppressed callers.
    QProcessEnvironment handingOff = environment;
    handingOff.insert("LSAN_OPTIONS", environment.value("LSAN_OPTIONS") + ":fast_unwind_on_malloc=0");
    second.setProcessEnvironment(handingOff);
    second.setProcessChannelMode(QProcess::ForwardedChannels);
    second.start(FLK_PROGRAM, {fixture("picture.png")});
    QTRY_VERIFY_WITH_TIMEOUT(second.state() == QProcess::NotRunning, 60000);
    QCOMPARE(second.exitStatus(), QProcess::NormalExit);
    QCOMPARE(second.exitCode(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(autosaveNote() != firstNote || program.state() == QProcess::NotRunning, 60000);
    QCOMPARE(program.state(), QProcess::Running);
    program.kill();
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::CrashExit);

    const auto leftovers = FLKAutosave::leftovers();
    QCOMPARE(leftovers.size(), size_t(1));
    QCOMPARE(leftovers.front().documentPath, newPath("Killed.flickwell"));

    FLKAutosave autosave(documents());
    QString offered;
    QVERIFY(autosave.offerRecovery([&](const FLKAutosave::Leftover& leftover) {
        offered = leftover.documentPath;
        return true;
    }));
    QCOMPARE(offered, newPath("Killed.flickwell"));
    QCOMPARE(clips().size(), size_t(1));
    QVERIFY(background());
    QCOMPARE(documents().filePath(), newPath("Killed.flickwell"));
    QVERIFY(documents().isModified());
    // Kept under this program's lease before the old copy went.
    QVERIFY(QFileInfo::exists(autosave.autosavePath()));
    QVERIFY(FLKAutosave::leftovers().empty());
    QVERIFY(!QFileInfo::exists(leftovers.front().folder));

    // Saved, the copy goes; a normal end leaves nothing to recover.
    QVERIFY(documents().save());
    QVERIFY(!QFileInfo::exists(autosave.autosavePath()));
}

int main(int argc, char** argv) { return flk_test::runTests<DocumentTests>(argc, argv); }

#include "FLKDocumentTests.moc"
