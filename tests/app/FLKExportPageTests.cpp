// The export page and Preferences in the running program: real clicks on
// the page's check boxes and buttons, real exports through the shared queue
// into a scratch folder, the files read back with ffprobe.
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QToolButton>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "FLKAppTestSupport.h"
#include "app/canvas/FLKSceneView.h"
#include "app/sidepanel/FLKExportPage.h"
#include "app/sidepanel/FLKExportOperationRow.h"
#include "app/shell/FLKFileHandler.h"
#include "app/shell/FLKMainMenu.h"
#include "app/sidepanel/FLKSidePanel.h"
#include "app/shell/FLKMainWindow.h"
#include "app/shell/FLKApplicationSetup.h"
#include "app/shell/FLKPreferencesDialog.h"
#include "core/render/FLKRenderer.h"
#include "app/shell/FLKRenderLoopController.h"
#include "core/exporter/FLKExportOperation.h"
#include "core/exporter/FLKExportQueue.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKPerformanceSettings.h"
#include "core/platform/FLKUserDefaultsKeys.h"
#include "core/timeline/FLKTimeline.h"

namespace {
// Exports render through llvmpipe, and under the sanitizers.
constexpr int kExportTimeout = 240000;

// What ffprobe reads from a file: its streams and its length; empty when it
// cannot read it.
struct Probe {
    double duration = 0;
    QJsonArray streams;
    QJsonObject stream(const QString& type) const {
        for (const auto& stream : streams) {
            if (stream.toObject()["codec_type"].toString() == type) return stream.toObject();
        }
        return {};
    }
};

Probe probe(const QString& path) {
    QProcess ffprobe;
    ffprobe.start("ffprobe", {"-v", "error", "-show_entries", "format=duration:stream=codec_type,codec_name,width,height",
                              "-of", "json", path});
    if (!ffprobe.waitForFinished(60000) || ffprobe.exitCode() != 0) return {};
    const QJsonObject json = QJsonDocument::fromJson(ffprobe.readAllStandardOutput()).object();
    return {json["format"].toObject()["duration"].toString().toDouble(), json["streams"].toArray()};
}

void click(QAbstractButton* button) {
    QVERIFY(button);
    QVERIFY(button->isVisible());
    QVERIFY(button->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

QStringList filesIn(const QTemporaryDir& folder) { return QDir(folder.path()).entryList(QDir::Files); }

// The alert the program shows, or null.
QMessageBox* alert() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(widget);
        if (box && box->isVisible()) return box;
    }
    return nullptr;
}
}  // namespace

class ExportPageTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void presetsShowTheirLimitsAndWhatTheyWillNotLike();
    void twoPresetsExportTwoFilesWhileThePreviewIsPaused();
    void cancellingAnExportLeavesNoFile();
    void cancelAllStopsEveryExport();
    void badDestinationsAreRefusedBeforeStarting();
    void preferencesChangeTheLevelAndTheDefaults();

private:
    FLKExportPage& page() const { return *window->exportPage(); }
    double timelineDuration() const { return FLKSceneLoader::defaultSceneLoader().currentTimeline()->duration(); }
    void exportInto(const QTemporaryDir& folder);
    void waitUntilExporting(FLKExportOperationRow* row);

    std::unique_ptr<FLKMainWindow> window;
    QTemporaryDir media;
};

void ExportPageTests::initTestCase() {
    QVERIFY(media.isValid());
    FLKSyntheticVideo::Options options;
    options.width = 240;
    options.height = 320;
    options.frameCount = 2 * options.fps;
    const std::string recording = media.filePath("recording.mp4").toStdString();
    FLKError error;
    QVERIFY2(FLKSyntheticVideo::writeVideo(recording, options, &error), error.localizedDescription.c_str());

    window = std::make_unique<FLKMainWindow>();
    window->setFixedSize(1200, 900);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QApplication::setActiveWindow(window.get());
    window->showScene();
    QVERIFY(window->fileHandler().handleOpenURL(recording));
    QTRY_VERIFY_WITH_TIMEOUT(std::abs(timelineDuration() - 2.0) < 0.05, 30000);
    // The page is an item of the inspector, chosen as a user would.
    FLKSidePanel* inspector = window->sidePanel();
    const int index = inspector->indexOfPage("Export");
    QVERIFY(index >= 0);
    QCOMPARE(inspector->pageAt(index), &page());
    QTest::mouseClick(inspector->itemBar(), Qt::LeftButton, {}, inspector->itemBar()->tabRect(index).center());
    QCOMPARE(inspector->currentPage(), &page());
    QVERIFY(page().isVisible());
}

void ExportPageTests::cleanup() {
    // Each test ticks what it exports.
    for (auto* box : page().findChildren<QCheckBox*>()) box->setChecked(false);
}

void ExportPageTests::cleanupTestCase() {
    FLKExportQueue::sharedQueue()->cancelAllOperations();
    QTRY_VERIFY_WITH_TIMEOUT(!FLKExportQueue::sharedQueue()->currentOperation(), kExportTimeout);
    window.reset();
}

void ExportPageTests::exportInto(const QTemporaryDir& folder) {
    page().folderField()->setText(folder.path());
    page().nameField()->setText("Demo");
}

void ExportPageTests::waitUntilExporting(FLKExportOperationRow* row) {
    QVERIFY(row);
    QTRY_VERIFY_WITH_TIMEOUT(row->operation()->isExecuting() && row->progressBar()->value() > 0, kExportTimeout);
}

// Every preset of both types has its box with its size, durations and rate;
// a store preset on this short video with a device frame warns twice, on
// the page and again before anything starts.
void ExportPageTests::presetsShowTheirLimitsAndWhatTheyWillNotLike() {
    QTemporaryDir folder;
    exportInto(folder);
    QVERIFY(page().presetCheckBox("Chat Message"));
    QVERIFY(page().presetCheckBox("Social Square"));
    QVERIFY(!page().presetCheckBox("No Such Preset"));
    QStringList details;
    for (auto* label : page().findChildren<QLabel*>()) details << label->text();
    QVERIFY2(details.contains("480 × 480 · 1–10 s · 15 fps"), qPrintable(details.join(" | ")));
    QVERIFY(details.contains("886 × 1920 · 15–30 s · 30 fps"));
    QVERIFY(!page().exportButton()->isEnabled());
    QVERIFY(page().warningsLabel()->isHidden());

    click(page().presetCheckBox("Chat Message"));
    QVERIFY(page().exportButton()->isEnabled());
    QVERIFY(page().warningsLabel()->isHidden());

    click(page().presetCheckBox("App Preview Phone Portrait"));
    QVERIFY(page().warningsLabel()->isVisible());
    const QString warnings = page().warningsLabel()->text();
    QVERIFY2(warnings.contains("The video is too short at 2.0s for App Preview Phone Portrait."), qPrintable(warnings));
    QVERIFY(warnings.contains("Minimum duration is 15.0s, make a longer video."));
    QVERIFY(warnings.contains("\"App Preview Phone Portrait\" is a store preview"));
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "export-page-presets.png"));

    const size_t rowsBefore = page().rows().size();
    click(page().exportButton());
    QMessageBox* ask = nullptr;
    QTRY_VERIFY((ask = page().findChild<QMessageBox*>("exportWarnings")) && ask->isVisible());
    QVERIFY(ask->informativeText().contains("too short at 2.0s"));
    QVERIFY(ask->informativeText().contains("store preview"));
    click(qobject_cast<QAbstractButton*>(ask->button(QMessageBox::Cancel)));
    QTRY_VERIFY(!page().findChild<QMessageBox*>("exportWarnings"));
    QCOMPARE(page().rows().size(), rowsBefore);
    QVERIFY(!FLKExportQueue::sharedQueue()->currentOperation());
    QVERIFY(filesIn(folder).isEmpty());

    click(page().presetCheckBox("App Preview Phone Portrait"));
    QVERIFY(page().warningsLabel()->isHidden());
}

// A GIF preset and a custom MP4 size: two files that ffprobe reads, as long
// as the timeline, at their sizes; the canvas draws nothing from the queue's
// start to its end and plays again afterwards.
void ExportPageTests::twoPresetsExportTwoFilesWhileThePreviewIsPaused() {
    QTemporaryDir folder;
    exportInto(folder);
    click(page().presetCheckBox("Chat Message"));
    click(page().customSizeCheckBox());
    page().customTypeBox()->setCurrentIndex(page().customTypeBox()->findText("MP4"));
    page().customWidthBox()->setValue(320);
    page().customHeightBox()->setValue(240);
    QVERIFY(page().warningsLabel()->isHidden());
    FLKTimeline::masterTimeline()->play();

    // Read as each export reports, up to the last one's end; the canvas
    // resumes when the queue's end follows.
    auto* renderLoop = window->renderLoop();
    FLKSceneView* canvas = window->sceneView();
    bool pausedAtEveryUpdate = true;
    int updates = 0;
    std::uint64_t framesAtFirstUpdate = 0;
    std::uint64_t framesAtEnd = 0;
    auto& center = FLKNotificationCenter::defaultCenter();
    FLKObservation updated(center, center.addObserver(FLKExportOperationDidUpdateNotification, nullptr,
                                                      [&](const FLKNotification&) {
                                                          if (updates++ == 0) framesAtFirstUpdate = canvas->framesDrawn();
                                                          pausedAtEveryUpdate &= renderLoop->isPaused();
                                                      }));
    FLKObservation finished(center, center.addObserver(FLKExportOperationDidFinishNotification, nullptr,
                                                       [&](const FLKNotification&) {
                                                           framesAtEnd = canvas->framesDrawn();
                                                           pausedAtEveryUpdate &= renderLoop->isPaused();
                                                       }));
    QSignalSpy done(&page(), &FLKExportPage::exportsDidFinish);
    click(page().exportButton());
    QCOMPARE(page().rows().size(), size_t(2));
    QTRY_VERIFY(renderLoop->isPaused());
    QVERIFY(page().cancelAllButton()->isEnabled());
    QVERIFY(done.wait(kExportTimeout) || done.count() == 1);

    QVERIFY(updates > 0);
    QVERIFY(pausedAtEveryUpdate);
    QCOMPARE(framesAtEnd, framesAtFirstUpdate);
    QTRY_VERIFY(!renderLoop->isPaused());
    QTRY_VERIFY(canvas->framesDrawn() > framesAtEnd);  // playing again
    QVERIFY(!page().cancelAllButton()->isEnabled());
    QCOMPARE(page().summaryLabel()->text(), QString("2 exported."));
    for (auto* row : page().rows()) {
        QCOMPARE(row->statusLabel()->text(), QString("Done"));
        QVERIFY(row->showInFolderButton()->isVisible());
        QVERIFY(!row->cancelButton()->isVisible());
    }
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "export-page-done.png"));

    QCOMPARE(filesIn(folder), QStringList({"Demo 320x240.mp4", "Demo Chat Message.gif"}));
    const Probe gif = probe(folder.filePath("Demo Chat Message.gif"));
    QCOMPARE(gif.stream("video")["codec_name"].toString(), QString("gif"));
    QCOMPARE(gif.stream("video")["width"].toInt(), 480);
    QCOMPARE(gif.stream("video")["height"].toInt(), 480);
    QVERIFY2(std::abs(gif.duration - timelineDuration()) < 0.15, qPrintable(QString::number(gif.duration)));
    const Probe mp4 = probe(folder.filePath("Demo 320x240.mp4"));
    QCOMPARE(mp4.stream("video")["codec_name"].toString(), QString("h264"));
    QCOMPARE(mp4.stream("video")["width"].toInt(), 320);
    QCOMPARE(mp4.stream("video")["height"].toInt(), 240);
    QCOMPARE(mp4.stream("audio")["codec_name"].toString(), QString("aac"));
    QVERIFY2(std::abs(mp4.duration - timelineDuration()) < 0.1, qPrintable(QString::number(mp4.duration)));
    FLKTimeline::masterTimeline()->pause();
}

// A big export cancelled from its row once it is writing, after a GIF:
// nothing of it, the GIF written, no error.
void ExportPageTests::cancellingAnExportLeavesNoFile() {
    QTemporaryDir folder;
    exportInto(folder);
    click(page().customSizeCheckBox());
    page().customTypeBox()->setCurrentIndex(page().customTypeBox()->findText("MP4"));
    page().customWidthBox()->setValue(1920);
    page().customHeightBox()->setValue(1920);
    click(page().presetCheckBox("Chat Message"));
    QSignalSpy done(&page(), &FLKExportPage::exportsDidFinish);
    click(page().exportButton());
    const auto rows = page().rows();
    QCOMPARE(rows.size(), size_t(2));
    // Rows follow the order of the boxes: presets first, the custom size last.
    FLKExportOperationRow* big = rows.at(1);
    QCOMPARE(big->operation()->name(), std::string("1920x1920"));
    QVERIFY(done.count() == 0);
    waitUntilExporting(big);
    click(big->cancelButton());
    QVERIFY(done.wait(kExportTimeout) || done.count() == 1);

    QCOMPARE(big->statusLabel()->text(), QString("Cancelled"));
    QCOMPARE(rows.at(0)->statusLabel()->text(), QString("Done"));
    QCOMPARE(filesIn(folder), QStringList({"Demo Chat Message.gif"}));
    QVERIFY(FLKExportQueue::sharedQueue()->exportErrors().empty());
    QCOMPARE(page().summaryLabel()->text(), QString("1 exported, 1 cancelled."));
}

void ExportPageTests::cancelAllStopsEveryExport() {
    QTemporaryDir folder;
    exportInto(folder);
    click(page().presetCheckBox("Chat Message"));
    click(page().presetCheckBox("README"));
    QSignalSpy done(&page(), &FLKExportPage::exportsDidFinish);
    click(page().exportButton());
    QCOMPARE(page().rows().size(), size_t(2));
    waitUntilExporting(page().rows().at(0));
    click(page().cancelAllButton());
    QVERIFY(done.wait(kExportTimeout) || done.count() == 1);

    for (auto* row : page().rows()) QCOMPARE(row->statusLabel()->text(), QString("Cancelled"));
    QVERIFY(filesIn(folder).isEmpty());
    QVERIFY(FLKExportQueue::sharedQueue()->exportErrors().empty());
    QTRY_VERIFY(!window->renderLoop()->isPaused());
}

// A missing folder or a name that cannot be a file: an alert naming it, and
// nothing queued.
void ExportPageTests::badDestinationsAreRefusedBeforeStarting() {
    QTemporaryDir folder;
    exportInto(folder);
    click(page().presetCheckBox("Chat Message"));
    const size_t rowsBefore = page().rows().size();
    const QString missing = folder.filePath("missing");
    page().folderField()->setText(missing);
    click(page().exportButton());
    QTRY_VERIFY(alert());
    QCOMPARE(alert()->text(), QString("The folder \"%1\" does not exist.").arg(missing));
    alert()->close();
    QTRY_VERIFY(!alert());

    page().folderField()->setText(folder.path());
    page().nameField()->setText("a/b");
    click(page().exportButton());
    QTRY_VERIFY(alert());
    QCOMPARE(alert()->text(), QString("\"a/b\" cannot name a file."));
    alert()->close();
    QTRY_VERIFY(!alert());

    QCOMPARE(page().rows().size(), rowsBefore);
    QVERIFY(!FLKExportQueue::sharedQueue()->currentOperation());
    QVERIFY(filesIn(folder).isEmpty());
    QVERIFY(!QDir(missing).exists());
}

void ExportPageTests::preferencesChangeTheLevelAndTheDefaults() {
    QAction* item = window->mainMenu()->preferencesAction();
    QCOMPARE(item->shortcut(), QKeySequence(QKeySequence::Preferences));
    item->trigger();
    FLKPreferencesDialog* dialog = window->mainMenu()->preferencesDialog();
    QVERIFY(dialog);
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    auto& settings = FLKPerformanceSettings::globalSettings();
    // Mesa's software rasteriser here: the preview starts lower, and says so.
    QVERIFY(FLKApplicationSetup::drawsInSoftware());
    QCOMPARE(settings.performanceLevel(), FLKApplicationSetup::kSoftwarePerformanceLevel);
    QVERIFY(dialog->levelButton(FLKApplicationSetup::kSoftwarePerformanceLevel)->isChecked());
    QVERIFY(dialog->findChild<QLabel*>("softwareRenderingNote"));
    FLKSceneView* canvas = window->sceneView();
    QCOMPARE(canvas->sampleCount(), 1u);
    QVERIFY(canvas->isFixedResolution());

    int posted = 0;
    auto& center = FLKNotificationCenter::defaultCenter();
    FLKObservation level(center, center.addObserver(FLKPerformanceSettingsDidUpdatePerformanceLevel, &settings,
                                                    [&](const FLKNotification&) { ++posted; }));
    click(dialog->levelButton(3));
    QCOMPARE(settings.performanceLevel(), 3u);
    QCOMPARE(posted, 1);
    // The canvas takes the level's samples and resolution, and its renderer draws with them.
    QTRY_COMPARE(canvas->sampleCount(), 4u);
    QVERIFY(!canvas->isFixedResolution());
    QCOMPARE(canvas->renderer()->antialiasing(), FLKRenderer::Antialiasing::multisample);
    QCOMPARE(canvas->renderer()->multisampleCount(), 4);
    click(dialog->levelButton(1));
    QCOMPARE(settings.performanceLevel(), 1u);
    QCOMPARE(settings.msaaSampleCount(), 1u);
    QVERIFY(settings.fixedResolution());
    QCOMPARE(posted, 2);
    QTRY_COMPARE(canvas->sampleCount(), 1u);
    QVERIFY(canvas->isFixedResolution());
    QCOMPARE(canvas->renderer()->antialiasing(), FLKRenderer::Antialiasing::analyticCoverage);
    QCOMPARE(canvas->renderer()->multisampleCount(), 1);
    // A fixed resolution ignores the screen's density and caps large canvases, keeping their shape.
    QCOMPARE(FLKSceneView::frameSizeFor({1920, 1200}, 2, false), QSize(3840, 2400));
    QCOMPARE(FLKSceneView::frameSizeFor({800, 600}, 2, true), QSize(800, 600));
    const QSize capped = FLKSceneView::frameSizeFor({1920, 1200}, 2, true);
    QVERIFY(capped.width() * capped.height() <= FLKSceneView::kFixedResolutionPixels);
    QVERIFY(capped.width() >= 1212 && std::abs(capped.width() * 1200 - capped.height() * 1920) <= 1920);
    // Set elsewhere, the dialog follows.
    settings.setPerformanceLevel(2);
    QTRY_VERIFY(dialog->levelButton(2)->isChecked());
    QCOMPARE(posted, 3);
    dialog->grab().save(flk_test::artifactPath("preferences.png"));

    auto& defaults = FLKUserDefaults::standardUserDefaults();
    const bool welcome = flk::shouldShowWelcomeScreen(defaults);
    QCOMPARE(dialog->welcomeCheckBox()->isChecked(), welcome);
    click(dialog->welcomeCheckBox());
    QCOMPARE(flk::shouldShowWelcomeScreen(defaults), !welcome);
    const bool sound = flk::isSoundOn(defaults);
    click(dialog->soundCheckBox());
    QCOMPARE(flk::isSoundOn(defaults), !sound);

    click(dialog->levelButton(1));
    QCOMPARE(settings.performanceLevel(), 1u);
    dialog->close();
    QTRY_VERIFY(!window->mainMenu()->preferencesDialog());
}

int main(int argc, char** argv) { return flk_test::runTests<ExportPageTests>(argc, argv); }

#include "FLKExportPageTests.moc"
