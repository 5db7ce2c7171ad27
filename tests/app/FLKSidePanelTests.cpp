// The inspector panel on the running program: templates, background colours
// and masks with real clicks and real dialogs, the panel's place kept across
// starts, and the welcome window's recent documents.
#include <QApplication>
#include <QColorDialog>
#include <QDockWidget>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <memory>

#include "FLKAppTestSupport.h"
#include "app/canvas/FLKSceneView.h"
#include "app/sidepanel/FLKBackgroundPage.h"
#include "app/sidepanel/FLKSidePanel.h"
#include "app/sidepanel/FLKMasksPage.h"
#include "app/sidepanel/FLKTemplatesPage.h"
#include "app/shell/FLKBreadcrumbLog.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKFileHandler.h"
#include "app/shell/FLKMainMenu.h"
#include "app/shell/FLKMainWindow.h"
#include "app/shell/FLKTemplateGrid.h"
#include "app/shell/FLKWelcomeWindow.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKMasksManager.h"
#include "core/model/FLKMedia.h"
#include "core/model/FLKPackagePaths.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKSceneModifier.h"
#include "core/model/FLKTemplateManager.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKVideoClip.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKSelectionWidgetViewModel.h"

using Choice = FLKDocumentController::SaveChoice;

namespace {

FLKSceneLoader& loader() { return FLKSceneLoader::defaultSceneLoader(); }

std::vector<std::filesystem::path> clipFiles() {
    std::vector<std::filesystem::path> files;
    auto timeline = loader().currentTimeline();
    for (const auto& track : timeline ? timeline->tracks() : FLKTimeline::Tracks{}) {
        if (!std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) continue;
        for (const auto& clip : track->clips()) {
            if (auto video = std::dynamic_pointer_cast<FLKVideoClip>(clip)) files.push_back(video->assetURL());
        }
    }
    return files;
}

std::shared_ptr<FLKVideoContainer> screen() { return loader().currentScene()->childWithClass<FLKVideoContainer>(); }

std::vector<FLKColor> gradientColors() {
    auto gradient = FLKSceneModifier(loader().currentScene(), nullptr, nullptr).gradientSprite();
    return gradient ? gradient->colors() : std::vector<FLKColor>{};
}

std::shared_ptr<FLKTimelineVideoTrack> videoTrack() {
    for (const auto& track : loader().currentTimeline()->tracks()) {
        if (auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) return video;
    }
    return nullptr;
}

size_t undoDepth() { return FLKActionPipeline::sharedPipeline().undoQueue().size(); }

// Runs `answer` on the next modal dialog of type `Dialog` once it is up.
template <class Dialog>
void answerNextDialog(std::function<void(Dialog*)> answer) {
    auto* poll = new QTimer;
    poll->setInterval(0);
    QObject::connect(poll, &QTimer::timeout, [poll, answer] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible()) return;
        poll->deleteLater();
        answer(dialog);
    });
    poll->start();
}

// Types the colour into the dialog's hex field, as a user does.
void typeColor(QColorDialog* dialog, const QColor& color) {
    for (auto* field : dialog->findChildren<QLineEdit*>()) {
        if (!field->text().startsWith('#')) continue;
        field->selectAll();
        QTest::keyClicks(field, color.name());
        return;
    }
    QFAIL("The colour dialog has no hex field.");
}

QString lastLine(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return {};
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    return lines.isEmpty() ? QString() : lines.last();
}

// Counts the announcements of a new scene, each with the scene still shown at the time.
struct NewSceneWatch {
    NewSceneWatch() {
        auto& center = FLKNotificationCenter::defaultCenter();
        observation = FLKObservation(center, center.addObserver(kFLKAppWillStartNewSceneNotification, nullptr,
                                                                [this](const FLKNotification&) {
                                                                    scenesBefore.push_back(loader().currentScene());
                                                                }));
    }
    std::vector<std::shared_ptr<FLKScene>> scenesBefore;
    FLKObservation observation;
};

}  // namespace

class SidePanelTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void choosingATemplateInTheGridChangesTheSceneAndKeepsTheClip();
    void ownTemplatesAreSavedRenamedAndDeletedFromThePage();
    void aColourPickIsOneUndoStepAndCancellingChangesNothing();
    void masksGoOnTheSelectedScreenAndTheLibraryFollowsImports();
    void theWelcomeWindowOpensARecentDocumentAndStartsFromATemplate();
    void theDockLayoutSurvivesARestart();

private:
    // Chooses the panel's item with a click on it, as the user does.
    template <class Page>
    Page* showPage(const QString& title);
    void makeWindow();

    QTemporaryDir media;
    std::unique_ptr<FLKMainWindow> window;
};

void SidePanelTests::initTestCase() {
    FLKBreadcrumbLog::startLogging();
    QVERIFY(media.isValid());
    FLKSyntheticVideo::Options options;
    options.frameCount = 20;
    FLKError error;
    QVERIFY2(FLKSyntheticVideo::writeVideo(media.filePath("recording.mp4").toStdString(), options, &error),
             error.fullMessage().c_str());
    // A mask of our own: an opaque disc on transparency.
    QImage mask(64, 64, QImage::Format_ARGB32);
    mask.fill(Qt::transparent);
    QPainter painter(&mask);
    painter.setBrush(Qt::white);
    painter.drawEllipse(mask.rect());
    painter.end();
    QVERIFY(mask.save(media.filePath("Round.png")));

    makeWindow();
    QVERIFY(window->fileHandler().handleOpenURL(media.filePath("recording.mp4").toStdString()));
    QCOMPARE(int(clipFiles().size()), 1);
}

void SidePanelTests::cleanupTestCase() { window.reset(); }

void SidePanelTests::makeWindow() {
    window = std::make_unique<FLKMainWindow>();
    window->documentController()->setAskToSave([](const QString&) { return Choice::Discard; });
    window->resize(1280, 900);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    window->showScene();
    window->showPanels();
}

template <class Page>
Page* SidePanelTests::showPage(const QString& title) {
    FLKSidePanel* panel = window->sidePanel();
    const int index = panel->indexOfPage(title);
    if (index < 0) return nullptr;
    QTabBar* items = panel->itemBar();
    QTest::mouseClick(items, Qt::LeftButton, {}, items->tabRect(index).center());
    return qobject_cast<Page*>(panel->currentPage());
}

void SidePanelTests::choosingATemplateInTheGridChangesTheSceneAndKeepsTheClip() {
    QVERIFY(window->sidePanelDock()->isVisible());
    QCOMPARE(window->sidePanelDock()->objectName(), QString("sidePanelDock"));
    // The items can be seen and clicked: one per page.
    QTabBar* items = window->sidePanel()->itemBar();
    QVERIFY(items->isVisible());
    QVERIFY(items->height() >= items->fontMetrics().height());
    QCOMPARE(items->count(), window->sidePanel()->pageCount());
    QVERIFY(showPage<FLKBackgroundPage>("Background"));
    auto* page = showPage<FLKTemplatesPage>("Templates");
    QVERIFY(page);
    QCOMPARE(lastLine(FLKBreadcrumbLog::logPath()).section(" $ ", 1), QString("[INSPECTOR PANEL] -> (Templates)"));

    FLKTemplateGrid* grid = page->grid();
    const auto& templates = FLKTemplateManager::defaultManager().templates();
    QCOMPARE(grid->count(), int(templates.size()));
    QTRY_VERIFY(!grid->isLoadingPreviews());
    for (int row = 0; row < grid->count(); ++row) QVERIFY(!grid->item(row)->icon().isNull());
    // Built-in templates cannot be renamed or deleted.
    QVERIFY(!page->renameButton()->isEnabled());
    QVERIFY(!page->deleteButton()->isEnabled());

    const int chosen = 1;
    const auto chosenTemplate = templates[static_cast<size_t>(chosen)];
    QVERIFY(FLKTemplateManager::defaultManager().selectedTemplate() != chosenTemplate);
    const auto sceneBefore = loader().currentScene();
    const auto clipName = clipFiles().front().filename();
    // Cut first: the clip comes along as cut.
    auto clip = videoTrack()->videoClips().front();
    videoTrack()->trimClipRightFromTimelineTime(clip, clip->timeRange().start + clip->duration() / 2);
    const double cutDuration = videoTrack()->videoClips().front()->duration();
    QVERIFY(cutDuration < clip->duration());
    const auto screenBefore = screen()->shape()->bounds();
    NewSceneWatch watch;
    grid->scrollToItem(grid->item(chosen));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, grid->visualItemRect(grid->item(chosen)).center());

    QVERIFY(loader().currentScene() != sceneBefore);
    QCOMPARE(FLKTemplateManager::defaultManager().selectedTemplate(), chosenTemplate);
    QCOMPARE(window->sceneView()->scene(), loader().currentScene());
    QVERIFY(!(screen()->shape()->bounds() == screenBefore));
    // Announced once, while the old scene was still the current one.
    QCOMPARE(int(watch.scenesBefore.size()), 1);
    QCOMPARE(watch.scenesBefore.front(), sceneBefore);
    // The recording came along, into the new document's media, and plays in the new screen.
    const auto files = clipFiles();
    QCOMPARE(int(files.size()), 1);
    QCOMPARE(files.front().filename(), clipName);
    QCOMPARE(videoTrack()->videoClips().front()->duration(), cutDuration);
    QVERIFY(std::filesystem::exists(files.front()));
    QVERIFY(flk::isLexicallyInside(files.front(), FLKFile::currentFile()->media()->url()));
    QVERIFY(screen()->video());
    QTRY_COMPARE(grid->currentRow(), chosen);
    // The document keeps its changes: the template change is one of them.
    QVERIFY(window->documentController()->isModified());
    // Choosing the shown template again leaves the scene alone.
    const auto sceneNow = loader().currentScene();
    QVERIFY(!page->chooseTemplateAtRow(chosen));
    QCOMPARE(loader().currentScene(), sceneNow);

    QTRY_VERIFY(window->sceneView()->scene() == loader().currentScene());
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "side-panel-templates.png"));
}

void SidePanelTests::ownTemplatesAreSavedRenamedAndDeletedFromThePage() {
    auto* page = showPage<FLKTemplatesPage>("Templates");
    QVERIFY(page);
    FLKTemplateGrid* grid = page->grid();
    auto& manager = FLKTemplateManager::defaultManager();
    const int builtIn = grid->count();

    answerNextDialog<QInputDialog>([](QInputDialog* dialog) {
        dialog->setTextValue("My Promo");
        dialog->accept();
    });
    QTest::mouseClick(page->saveButton(), Qt::LeftButton);
    // The grid follows the manager's notice, the new template last and current.
    QTRY_COMPARE(grid->count(), builtIn + 1);
    QCOMPARE(grid->item(builtIn)->text(), QString("My Promo"));
    QCOMPARE(grid->currentRow(), builtIn);
    QVERIFY(page->renameButton()->isEnabled() && page->deleteButton()->isEnabled());

    answerNextDialog<QInputDialog>([](QInputDialog* dialog) {
        dialog->setTextValue("Launch Promo");
        dialog->accept();
    });
    QTest::mouseClick(page->renameButton(), Qt::LeftButton);
    QTRY_COMPARE(grid->item(builtIn)->text(), QString("Launch Promo"));
    QVERIFY(manager.templateWithName("Launch Promo"));
    QVERIFY(!manager.templateWithName("My Promo"));

    answerNextDialog<QMessageBox>([](QMessageBox* box) { box->button(QMessageBox::Yes)->click(); });
    grid->setCurrentRow(builtIn);
    QTest::mouseClick(page->deleteButton(), Qt::LeftButton);
    QTRY_COMPARE(grid->count(), builtIn);
    QVERIFY(!manager.templateWithName("Launch Promo"));
    QVERIFY(!page->deleteButton()->isEnabled());
}

void SidePanelTests::aColourPickIsOneUndoStepAndCancellingChangesNothing() {
    auto* page = showPage<FLKBackgroundPage>("Background");
    QVERIFY(page);
    const auto before = gradientColors();
    QCOMPARE(int(before.size()), 4);
    const size_t depth = undoDepth();
    const QColor picked(10, 200, 30);

    // The colour shows on the canvas while the dialog is still open.
    std::vector<FLKColor> whileOpen;
    answerNextDialog<QColorDialog>([&](QColorDialog* dialog) {
        typeColor(dialog, picked);
        whileOpen = gradientColors();
        dialog->accept();
    });
    QTest::mouseClick(page->cornerButton(1), Qt::LeftButton);
    QCOMPARE(int(whileOpen.size()), 4);
    QCOMPARE(QColor::fromRgbF(whileOpen[1].red, whileOpen[1].green, whileOpen[1].blue), picked);

    auto after = gradientColors();
    QCOMPARE(QColor::fromRgbF(after[1].red, after[1].green, after[1].blue), picked);
    for (size_t corner : {0, 2, 3}) QVERIFY(after[corner] == before[corner]);
    QCOMPARE(undoDepth(), depth + 1);
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "side-panel-background.png"));

    // Undo gives the colours back exactly; redo the pick.
    window->undoAction()->trigger();
    QVERIFY(gradientColors() == before);
    QCOMPARE(undoDepth(), depth);
    window->redoAction()->trigger();
    QVERIFY(gradientColors() == after);
    // The corner's swatch follows undo too.
    window->undoAction()->trigger();
    QTRY_COMPARE(page->cornerButton(1)->icon().pixmap(40, 24).toImage().pixelColor(20, 12),
                 QColor::fromRgbF(before[1].red, before[1].green, before[1].blue));

    // A cancelled pick puts the colour back and records nothing, whatever it showed meanwhile.
    answerNextDialog<QColorDialog>([&](QColorDialog* dialog) {
        typeColor(dialog, Qt::magenta);
        whileOpen = gradientColors();
        dialog->reject();
    });
    QTest::mouseClick(page->cornerButton(2), Qt::LeftButton);
    QCOMPARE(QColor::fromRgbF(whileOpen[2].red, whileOpen[2].green, whileOpen[2].blue), QColor(Qt::magenta));
    QVERIFY(gradientColors() == before);
    QCOMPARE(undoDepth(), depth);

    // A picture instead, taken as a dropped one is, and taken away again.
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QVERIFY(picture.save(media.filePath("backdrop.png")));
    QVERIFY(!page->removeImageButton()->isEnabled());
    answerNextDialog<QFileDialog>([this](QFileDialog* dialog) {
        dialog->selectFile(media.filePath("backdrop.png"));
        static_cast<QDialog*>(dialog)->accept();
    });
    QTest::mouseClick(page->imageButton(), Qt::LeftButton);
    auto pictures = [] {
        int count = 0;
        for (const auto& node : loader().currentScene()->childrenWithClass(typeid(FLKTexturedSprite))) {
            count += node->name() && *node->name() == FLKSceneModifier::kBackgroundSpriteName;
        }
        return count;
    };
    QCOMPARE(pictures(), 1);
    QVERIFY(page->removeImageButton()->isEnabled());
    QTest::mouseClick(page->removeImageButton(), Qt::LeftButton);
    QCOMPARE(pictures(), 0);
    QVERIFY(!page->removeImageButton()->isEnabled());
    QVERIFY(window->canvasViewModels()->selecting()->selectedObjects().empty());
}

void SidePanelTests::masksGoOnTheSelectedScreenAndTheLibraryFollowsImports() {
    auto* page = showPage<FLKMasksPage>("Masks");
    QVERIFY(page);
    QListWidget* list = page->maskList();
    const auto& manager = FLKMasksManager::defaultManager();
    QCOMPARE(list->count(), int(manager.masks().size()));
    QVERIFY(list->count() >= 1);
    QVERIFY(!page->removeButton()->isEnabled());

    // Select the screen with a click on the canvas.
    window->enableUserInteraction(true);
    auto target = screen();
    const auto templateMask = target->videoMaskImageURL();
    QTest::mouseClick(window->sceneView(), Qt::LeftButton, {},
                      window->sceneView()->widgetPointForScenePoint(target->shape()->bounds().center()).toPoint());
    const auto& selected = window->canvasViewModels()->selecting()->selectedObjects();
    QCOMPARE(int(selected.size()), 1);
    QCOMPARE(selected.front(), std::static_pointer_cast<FLKObject>(target));

    const size_t depth = undoDepth();
    // The landscape screen's own shape when the library has one.
    const int row = std::min(1, list->count() - 1);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
    QCOMPARE(list->currentRow(), row);
    QTest::mouseClick(page->applyButton(), Qt::LeftButton);
    QVERIFY(target->videoMaskImageURL() && target->videoMaskImageURL() != templateMask);
    const auto applied = *target->videoMaskImageURL();
    // A copy in the document, so the saved document carries it.
    QVERIFY(std::filesystem::exists(applied));
    QVERIFY(flk::isLexicallyInside(applied, FLKFile::currentFile()->media()->url()));
    QCOMPARE(undoDepth(), depth + 1);
    QVERIFY(target->video() && target->video()->maskTexture());
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "side-panel-masks.png"));
    window->undoAction()->trigger();
    QVERIFY(target->videoMaskImageURL() == templateMask);
    window->redoAction()->trigger();
    QVERIFY(target->videoMaskImageURL() == applied);
    QTest::mouseClick(page->clearButton(), Qt::LeftButton);
    QVERIFY(!target->videoMaskImageURL());
    QCOMPARE(undoDepth(), depth + 2);

    // Importing through the page's file dialog lists the mask, which may then be removed.
    const int builtIn = list->count();
    answerNextDialog<QFileDialog>([this](QFileDialog* dialog) {
        dialog->selectFile(media.filePath("Round.png"));
        static_cast<QDialog*>(dialog)->accept();
    });
    QTest::mouseClick(page->importButton(), Qt::LeftButton);
    QTRY_COMPARE(list->count(), builtIn + 1);
    QCOMPARE(list->item(builtIn)->text(), QString("Round"));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(builtIn)).center());
    QVERIFY(page->removeButton()->isEnabled());
    const auto imported = page->maskAtRow(builtIn);
    QVERIFY(std::filesystem::exists(imported));
    answerNextDialog<QMessageBox>([](QMessageBox* box) { box->button(QMessageBox::Yes)->click(); });
    QTest::mouseClick(page->removeButton(), Qt::LeftButton);
    QTRY_COMPARE(list->count(), builtIn);
    QVERIFY(!std::filesystem::exists(imported));
}

void SidePanelTests::theWelcomeWindowOpensARecentDocumentAndStartsFromATemplate() {
    FLKDocumentController& documents = *window->documentController();
    const QString saved = media.filePath("Recent.flickwell");
    QVERIFY(documents.saveToPath(saved));
    QVERIFY(documents.newDocument());
    QVERIFY(documents.filePath().isEmpty());
    QVERIFY(clipFiles().empty());

    window->mainMenu()->welcomeAction()->trigger();
    FLKWelcomeWindow* welcome = window->welcomeWindow();
    QVERIFY(welcome);
    QVERIFY(QTest::qWaitForWindowExposed(welcome));
    QListWidget* recent = welcome->recentList();
    QVERIFY(recent->count() >= 1);
    QCOMPARE(recent->item(0)->text(), QString("Recent"));
    QTRY_VERIFY(!welcome->isLoadingPreviews());
    QVERIFY(welcome->grab().save(flk_test::artifactPath("welcome-window-recent.png")));
    const QPoint itemCentre = recent->visualItemRect(recent->item(0)).center();
    QTest::mouseClick(recent->viewport(), Qt::LeftButton, {}, itemCentre);
    QTest::mouseDClick(recent->viewport(), Qt::LeftButton, {}, itemCentre);
    QTRY_VERIFY(!window->welcomeWindow());
    QCOMPARE(documents.filePath(), QFileInfo(saved).absoluteFilePath());
    QCOMPARE(int(clipFiles().size()), 1);
    QCOMPARE(window->sceneView()->scene(), loader().currentScene());

    // Any document through its Open button.
    QVERIFY(documents.newDocument());
    window->mainMenu()->welcomeAction()->trigger();
    QVERIFY(window->welcomeWindow());
    answerNextDialog<QFileDialog>([saved](QFileDialog* dialog) {
        dialog->selectFile(saved);
        static_cast<QDialog*>(dialog)->accept();
    });
    QTest::mouseClick(window->welcomeWindow()->openButton(), Qt::LeftButton);
    QTRY_VERIFY(!window->welcomeWindow());
    QCOMPARE(documents.filePath(), QFileInfo(saved).absoluteFilePath());
    QCOMPARE(int(clipFiles().size()), 1);

    // Starting from a template again announces the new scene before it replaces this one.
    window->mainMenu()->welcomeAction()->trigger();
    welcome = window->welcomeWindow();
    QVERIFY(welcome);
    const auto before = loader().currentScene();
    NewSceneWatch watch;
    welcome->templateList()->setCurrentRow(0);
    QTest::mouseClick(welcome->startButton(), Qt::LeftButton);
    QTRY_VERIFY(!window->welcomeWindow());
    QCOMPARE(int(watch.scenesBefore.size()), 1);
    QCOMPARE(watch.scenesBefore.front(), before);
    QVERIFY(loader().currentScene() != before);
    QVERIFY(documents.filePath().isEmpty());
}

void SidePanelTests::theDockLayoutSurvivesARestart() {
    QCOMPARE(window->dockWidgetArea(window->sidePanelDock()), Qt::RightDockWidgetArea);
    // Moved to the other side, and the timeline made to float.
    window->addDockWidget(Qt::LeftDockWidgetArea, window->sidePanelDock());
    window->timelineDock()->setFloating(true);
    QVERIFY(window->close());
    QVERIFY(QFile::exists(FLKMainWindow::windowLayoutPath()));
    window.reset();

    makeWindow();
    QCOMPARE(window->dockWidgetArea(window->sidePanelDock()), Qt::LeftDockWidgetArea);
    QVERIFY(window->timelineDock()->isFloating());
    QVERIFY(!window->sidePanelDock()->isFloating());
    // The pages are there again as well.
    for (const char* title : {"Templates", "Background", "Masks"}) QVERIFY(window->sidePanel()->indexOfPage(title) >= 0);

    // Closed, it stays closed at the next start, and the View menu brings it back.
    window->sidePanelDock()->close();
    QVERIFY(window->close());
    window.reset();
    makeWindow();
    window->setupPanels();
    window->showPanels();
    QVERIFY(!window->sidePanelDock()->isVisible());
    QVERIFY(window->timelineDock()->isVisible());
    QAction* showItem = nullptr;
    for (QAction* menu : window->menuBar()->actions()) {
        if (menu->text() != "&View") continue;
        for (QAction* item : menu->menu()->actions()) {
            if (item->text() == "Inspector") showItem = item;
        }
    }
    QVERIFY(showItem);
    showItem->trigger();
    QVERIFY(window->sidePanelDock()->isVisible());
}

int main(int argc, char** argv) { return flk_test::runTests<SidePanelTests>(argc, argv); }

#include "FLKSidePanelTests.moc"
