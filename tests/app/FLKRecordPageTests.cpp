// The record page on the running program, with a stand-in adb that lists an
// unauthorized phone and a ready one streaming a real H.264 test pattern.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "FLKAppTestSupport.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKMainWindow.h"
#include "app/sidepanel/FLKRecentRecordingsList.h"
#include "app/sidepanel/FLKRecordPage.h"
#include "app/sidepanel/FLKSaveRecordingSheet.h"
#include "app/sidepanel/FLKSaveRecordingSheetPresenter.h"
#include "app/sidepanel/FLKSidePanel.h"
#include "core/capture/FLKDeviceFinder.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKLocalStore.h"
#include "core/scene/FLKRealtimeVideoSprite.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTimelineVideoSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKVideoClip.h"
#include "editing/FLKRecordButtonViewModel.h"
#include "editing/FLKRecordingPanelViewModel.h"

using Choice = FLKDocumentController::SaveChoice;
using State = FLKRecordButtonViewModel::RecordingState;

namespace {

constexpr const char* kPhone = "Standin Phone";

std::shared_ptr<FLKVideoContainer> screen() {
    return FLKSceneLoader::defaultSceneLoader().currentScene()->childWithClass<FLKVideoContainer>();
}

std::vector<std::filesystem::path> clipFiles() {
    std::vector<std::filesystem::path> files;
    for (const auto& track : FLKSceneLoader::defaultSceneLoader().currentTimeline()->tracks()) {
        for (const auto& clip : track->clips()) {
            if (auto video = std::dynamic_pointer_cast<FLKVideoClip>(clip)) {
                files.push_back(video->assetURL());
            }
        }
    }
    return files;
}

QMessageBox* alertSaying(const QString& text) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(widget);
        if (box && box->isVisible() && box->text() == text) return box;
    }
    return nullptr;
}

}  // namespace

class RecordPageTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void choosingThePhoneShowsItLiveAndTheUnauthorizedOneCannotBeChosen();
    void aNamedRecordingIsKeptLoadedAsTheClipRenamedAndTrashed();
    void unpluggingWhileRecordingSaysTheConnectionWasLost();

private:
    FLKRecordPage& page() const { return *window->recordPage(); }
    State state() const { return page().viewModel().recordButtonViewModel()->recordingState(); }
    int rowOf(const QString& title) const { return page().deviceBox()->findText(title); }
    void choosePhoneAndRecord();

    QTemporaryDir folder;
    std::unique_ptr<FLKMainWindow> window;
};

void RecordPageTests::initTestCase() {
    QVERIFY(folder.isValid());
    const std::string state = folder.filePath("standin").toStdString();
    std::filesystem::create_directories(state);
    const std::string pattern = state + "/pattern.h264";
    // Two seconds of a portrait phone screen per screenrecord run.
    const std::string command = "ffmpeg -nostdin -hide_banner -loglevel error -y -f lavfi -i testsrc2=size=180x320:rate=30"
                                " -frames:v 60 -c:v libx264 -bf 0 -g 1000 -pix_fmt yuv420p -f h264 '" + pattern + "'";
    QCOMPARE(std::system(command.c_str()), 0);
    ::setenv("FLICKWELL_ADB", FLK_ADB_STANDIN, 1);
    ::setenv("FLK_STANDIN_STREAM", pattern.c_str(), 1);
    ::setenv("FLK_STANDIN_STATE", state.c_str(), 1);
    ::setenv("FLK_STANDIN_DEVICES",
             "STANDIN02              unauthorized usb:1-2 transport_id:2\n"
             "STANDIN01              device product:standin model:Standin_Phone device:standin transport_id:1",
             1);
    // The trash of this test, not the user's.
    QVERIFY(QDir(folder.path()).mkpath("data"));
    ::setenv("XDG_DATA_HOME", qPrintable(folder.filePath("data")), 1);

    window = std::make_unique<FLKMainWindow>();
    window->documentController()->setAskToSave([](const QString&) { return Choice::Discard; });
    window->resize(1280, 900);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    window->showScene();
    window->showPanels();
}

void RecordPageTests::cleanupTestCase() { window.reset(); }

void RecordPageTests::choosingThePhoneShowsItLiveAndTheUnauthorizedOneCannotBeChosen() {
    // The first item of the panel, shown at start.
    QCOMPARE(window->sidePanel()->indexOfPage("Record"), 0);
    QCOMPARE(window->sidePanel()->currentPage(), static_cast<QWidget*>(&page()));
    QComboBox* devices = page().deviceBox();
    QTRY_VERIFY(rowOf(kPhone) > 0);
    QCOMPARE(devices->itemText(0), QString("No Device"));
    QVERIFY(!page().recordButton()->isVisible());

    // Listed with its state, and refused.
    const int unauthorized = rowOf("STANDIN02 (unauthorized)");
    QVERIFY(unauthorized > 0);
    auto* rows = qobject_cast<QStandardItemModel*>(devices->model());
    QVERIFY(!(rows->item(unauthorized)->flags() & Qt::ItemIsEnabled));
    QVERIFY(!page().chooseDeviceAtRow(unauthorized));
    QVERIFY(!page().viewModel().isPreviewing());
    QCOMPARE(devices->currentIndex(), 0);

    // The keyboard steps over it to the phone, as a user choosing from the drop-down.
    QCOMPARE(unauthorized, 1);
    QCOMPARE(rowOf(kPhone), 2);
    devices->setFocus();
    QTest::keyClick(devices, Qt::Key_Down);
    QCOMPARE(devices->currentIndex(), rowOf(kPhone));
    QVERIFY(page().viewModel().isPreviewing());

    // Live in the scene's screen, ready to record.
    QTRY_COMPARE(state(), FLKRecordButtonViewModel::kReady);
    QVERIFY(page().recordButton()->isVisible() && page().recordButton()->isEnabled());
    QCOMPARE(page().recordButton()->text(), QString("Record"));
    std::shared_ptr<FLKRealtimeVideoSprite> live;
    QTRY_VERIFY((live = std::dynamic_pointer_cast<FLKRealtimeVideoSprite>(screen()->video())) != nullptr);
    QTRY_VERIFY(live->imageBuffer() != nullptr);
    QCOMPARE(live->imageBuffer()->width, 180);
    QCOMPARE(live->imageBuffer()->height, 320);
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "side-panel-record.png"));
}

void RecordPageTests::choosePhoneAndRecord() {
    if (!page().viewModel().isPreviewing()) QVERIFY(page().chooseDeviceAtRow(rowOf(kPhone)));
    QTRY_COMPARE(state(), FLKRecordButtonViewModel::kReady);
    QTRY_VERIFY(page().viewModel().recorder()->hasPreview());
    QTest::mouseClick(page().recordButton(), Qt::LeftButton);
    QTRY_COMPARE(state(), FLKRecordButtonViewModel::kRecording);
    QCOMPARE(page().recordButton()->text(), QString("Stop"));
    // The source stays put while recording.
    QVERIFY(!page().deviceBox()->isEnabled());
    QTRY_VERIFY(page().viewModel().recorder()->framesRecorded() >= 10);
}

void RecordPageTests::aNamedRecordingIsKeptLoadedAsTheClipRenamedAndTrashed() {
    auto store = FLKDeviceScreenRecorder::recentlyRecordedStore();
    QVERIFY(store->fileURLs().empty());
    const size_t clipsBefore = clipFiles().size();
    choosePhoneAndRecord();
    QTest::mouseClick(page().recordButton(), Qt::LeftButton);

    QTRY_VERIFY(page().sheets().sheet() && page().sheets().sheet()->isVisible());
    FLKSaveRecordingSheet* sheet = page().sheets().sheet();
    QCOMPARE(sheet->objectName(), QString("FLKSaveRecordingSheet"));
    QCOMPARE(state(), FLKRecordButtonViewModel::kFinished);
    QVERIFY(!sheet->saveButton()->isEnabled());
    QTest::keyClicks(sheet->nameField(), "Launch Take");
    QTest::mouseClick(sheet->saveButton(), Qt::LeftButton);

    // Kept in the store, listed first, and loaded as the scene's clip; the live picture is gone.
    const auto kept = store->createFileURLWithName("Launch Take");
    QTRY_VERIFY(std::filesystem::exists(kept));
    FLKRecentRecordingsList* list = page().recordingsList();
    QTRY_COMPARE(list->count(), 1);
    QCOMPARE(list->item(0)->text(), QString("Launch Take"));
    // A copy in the document's media, added after the clips there were.
    QTRY_COMPARE(clipFiles().size(), clipsBefore + 1);
    QCOMPARE(std::filesystem::file_size(clipFiles().back()), std::filesystem::file_size(kept));
    QVERIFY(std::dynamic_pointer_cast<FLKTimelineVideoSprite>(screen()->video()));
    QCOMPARE(state(), FLKRecordButtonViewModel::kHidden);
    QCOMPARE(page().deviceBox()->currentIndex(), 0);
    QVERIFY(page().deviceBox()->isEnabled());
    QVERIFY(!page().sheets().sheet());
    QVERIFY(window->documentController()->isModified());
    // Its thumbnail is the pattern's first picture, not the empty square.
    QTRY_COMPARE(list->pendingThumbnails(), 0);
    const QImage thumbnail = list->item(0)->icon().pixmap(FLKRecentRecordingsList::kThumbnailSide).toImage();
    QVERIFY(flk_test::distinctColours(thumbnail, 8) >= 8);
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "side-panel-record-kept.png"));

    // Renamed through the same sheet, which starts from the current name.
    std::unique_ptr<QMenu> menu(list->makeContextMenu(0));
    QVERIFY(menu);
    auto action = [&menu](const QString& text) {
        for (QAction* candidate : menu->actions()) {
            if (candidate->text() == text) return candidate;
        }
        return static_cast<QAction*>(nullptr);
    };
    QVERIFY(action("Show in File Manager"));
    action("Rename...")->trigger();
    QTRY_VERIFY(page().sheets().sheet() && page().sheets().sheet()->isVisible());
    sheet = page().sheets().sheet();
    QCOMPARE(sheet->nameField()->text(), QString("Launch Take"));
    sheet->nameField()->setText("Store Take");
    QTest::mouseClick(sheet->saveButton(), Qt::LeftButton);
    QTRY_COMPARE(list->count() == 1 ? list->item(0)->text() : QString(), QString("Store Take"));
    QVERIFY(!std::filesystem::exists(kept));
    const auto renamed = store->createFileURLWithName("Store Take");
    QVERIFY(std::filesystem::exists(renamed));

    // Into this test's trash; the list follows the store.
    menu.reset(list->makeContextMenu(0));
    action("Move to Trash")->trigger();
    QTRY_COMPARE(list->count(), 0);
    QVERIFY(!std::filesystem::exists(renamed));
    QVERIFY(QFile::exists(folder.filePath("data/Trash/files/Store Take.mp4")));
}

void RecordPageTests::unpluggingWhileRecordingSaysTheConnectionWasLost() {
    choosePhoneAndRecord();
    const QString standin = qEnvironmentVariable("FLK_STANDIN_STATE");
    // Unplugged: adb no longer lists it and tells its tracking client so ...
    std::ofstream((standin + "/unplugged").toStdString()) << "gone\n";
    std::ofstream((standin + "/track-updates").toStdString(), std::ios::app) << "0000";
    QTRY_VERIFY(!page().deviceFinder().isDeviceAvailable(*page().viewModel().recorder()->device()));
    // ... and the phone's screenrecord ends.
    QFile pidFile(standin + "/screenrecord.pid");
    QVERIFY(pidFile.open(QIODevice::ReadOnly));
    const pid_t pid = pidFile.readAll().trimmed().toInt();
    QVERIFY(pid > 0);
    QCOMPARE(::kill(pid, SIGTERM), 0);

    QMessageBox* alert = nullptr;
    QTRY_VERIFY((alert = alertSaying("Device connection lost.")) != nullptr);
    QCOMPARE(alert->informativeText(),
             QString("The device has been plugged out.\n\nPlease plug in your device to continue your recording session."));
    QCOMPARE(state(), FLKRecordButtonViewModel::kHidden);
    QVERIFY(!page().viewModel().isPreviewing());
    QVERIFY(page().deviceBox()->isEnabled());
    QVERIFY(!std::dynamic_pointer_cast<FLKRealtimeVideoSprite>(screen()->video()));
    // The drop-down follows the finder: the phones are gone.
    QTRY_COMPARE(rowOf(kPhone), -1);
    QCOMPARE(page().deviceBox()->currentIndex(), 0);
    alert->accept();
}

int main(int argc, char** argv) { return flk_test::runTests<RecordPageTests>(argc, argv); }

#include "FLKRecordPageTests.moc"
