// The timeline panel in the running program: real clicks, drags, keys,
// wheel turns and drops on the real widget over the main window's timeline,
// with recordings made at test time. Results are read from the timeline, the
// undo history and the pixels of the panel and the canvas.
#include <QAction>
#include <QDockWidget>
#include <QFile>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QUrl>
#include <QWheelEvent>

#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "FLKAppTestSupport.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKMainMenu.h"
#include "app/shell/FLKMainWindow.h"
#include "app/timeline/FLKTimelinePanel.h"
#include "app/timeline/FLKTimelineView.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKMedia.h"
#include "core/render/FLKOffScreenRenderer.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKTimelinePanelViewModel.h"

using flk_test::artifactPath;
using flk_test::distinctColours;
using flk_test::psnr;

namespace {
// The middle of the first row of cells.
constexpr int kRowY = static_cast<int>(FLKTimelineView::kTopInset + 40);

std::vector<std::string> identifiers(const FLKTimelineTrack& track) {
    std::vector<std::string> ids;
    for (const auto& clip : track.clips()) ids.push_back(clip->identifier());
    return ids;
}

std::vector<FLKTimeRange> ranges(const FLKTimelineTrack& track) {
    std::vector<FLKTimeRange> result;
    for (const auto& clip : track.clips()) result.push_back(clip->timeRange());
    return result;
}

bool isPlayHeadColour(QColor colour) { return colour.red() > 200 && colour.green() < 110 && colour.blue() < 110; }

QAction* menuAction(const QMenu& menu, const QString& text) {
    for (QAction* action : menu.actions()) {
        if (action->text() == text) return action;
    }
    return nullptr;
}
}  // namespace

class TimelinePanelTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void pickingAPositionMovesThePlayHeadExceptAtTheStart();
    void droppedVideoFilesBecomeClipsWithThumbnails();
    void clickingOnTheClipShowsThatMomentsFrame();
    void draggingAClipReordersTheRowInOneUndoStep();
    void editDeleteRemovesTheSelectedClipInOneStep();
    void contextMenuCommandsEditTheClipUnderThePointer();
    void spacePlaysAndThePlayHeadFollowsTheTimeline();
    void ctrlWheelZoomsAroundThePointerAndTheWheelScrolls();

private:
    FLKTimelineView* view() const { return window->timelinePanel()->timelineView(); }
    FLKTimelinePanelViewModel& panel() const { return *window->timelinePanel()->viewModel(); }
    std::shared_ptr<FLKTimeline> timeline() const { return panel().timeline(); }
    std::shared_ptr<FLKTimelineVideoTrack> track() const {
        return panel().draggableTrackViewModelAtIndex(0)->videoTrack();
    }
    QScrollBar* horizontalBar() const { return window->timelinePanel()->scrollArea()->horizontalScrollBar(); }
    void scrollTo(int x) const { window->timelinePanel()->scrollArea()->ensureVisible(x, kRowY, 60, 0); }

    QImage canvasAsShown() const;
    QRect screenRect() const;
    void renderReference(double time, QImage* frame);
    void drop(const std::vector<std::filesystem::path>& files, bool* accepted);

    std::unique_ptr<FLKMainWindow> window;
    // The last canvas compared and what it should have shown, written side
    // by side when the comparison fails.
    QImage comparedCanvas;
    QImage expectedCanvas;
    QTemporaryDir media;
    std::filesystem::path longRecording;
    std::filesystem::path shortRecording;
};

void TimelinePanelTests::initTestCase() {
    QVERIFY(media.isValid());
    FLKSyntheticVideo::Options options;
    options.frameCount = 20 * options.fps;
    longRecording = std::filesystem::path(media.filePath("twenty-seconds.mp4").toStdString());
    FLKError error;
    QVERIFY2(FLKSyntheticVideo::writeVideo(longRecording.string(), options, &error),
             error.localizedDescription.c_str());
    options.width = 240;
    options.height = 320;
    options.frameCount = 6 * options.fps;
    shortRecording = std::filesystem::path(media.filePath("six-seconds.mp4").toStdString());
    QVERIFY2(FLKSyntheticVideo::writeVideo(shortRecording.string(), options, &error),
             error.localizedDescription.c_str());

    window = std::make_unique<FLKMainWindow>();
    // A fixed size and style keep the screenshots comparable between runs.
    window->setFixedSize(1000, 760);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QApplication::setActiveWindow(window.get());
    window->showScene();
    // A loaded timeline starts playing; these tests move the play head themselves.
    QCoreApplication::processEvents();
    FLKTimeline::masterTimeline()->pause();
    QVERIFY(window->timelinePanel()->viewModel());
    QCOMPARE(window->timelineDock()->objectName(), QString("timelineDock"));
    QCOMPARE(window->dockWidgetArea(window->timelineDock()), Qt::BottomDockWidgetArea);
    // The scene's screen shows the editor's timeline.
    QCOMPARE(FLKTimeline::masterTimeline(), timeline());
    QCOMPARE(panel().trackViewModels().size(), size_t(1));
}

void TimelinePanelTests::cleanup() {
    if (QTest::currentTestFailed() && !comparedCanvas.isNull()) {
        QImage pair(comparedCanvas.width() + expectedCanvas.width(), comparedCanvas.height(), QImage::Format_RGB32);
        QPainter painter(&pair);
        painter.drawImage(0, 0, comparedCanvas);
        painter.drawImage(comparedCanvas.width(), 0, expectedCanvas);
        painter.end();
        pair.save(artifactPath(QString("timeline-canvas-vs-expected-%1.png").arg(QTest::currentTestFunction())));
    }
    comparedCanvas = expectedCanvas = QImage();
}

void TimelinePanelTests::cleanupTestCase() {
    if (window && window->timelinePanel()->viewModel()) timeline()->pause();
    window.reset();
}

// The canvas as the screen shows it. Grabbing the widget would draw the
// canvas again, showing a frame the program itself never asked for.
QImage TimelinePanelTests::canvasAsShown() const {
    FLKSceneView* canvas = window->sceneView();
    const QPoint origin = canvas->mapTo(window.get(), QPoint());
    return window->screen()
        ->grabWindow(window->winId(), origin.x(), origin.y(), canvas->width(), canvas->height())
        .toImage();
}

// The part of the canvas where the scene's screen shows the video.
QRect TimelinePanelTests::screenRect() const {
    auto container = window->sceneView()->scene()->childWithClass<FLKVideoContainer>();
    const FLKRect bounds = container->shape()->bounds();
    const QPointF a = window->sceneView()->widgetPointForScenePoint(bounds.origin);
    const QPointF b = window->sceneView()->widgetPointForScenePoint(
        {bounds.origin.x + bounds.size.width, bounds.origin.y + bounds.size.height});
    return QRectF(a, b).normalized().toAlignedRect().intersected(window->sceneView()->rect());
}

// The off-screen renderer's frame of the scene with a copy of the timeline
// at `time`, at the canvas's size.
void TimelinePanelTests::renderReference(double time, QImage* frame) {
    auto scene = window->sceneView()->scene();
    const QSize size = window->sceneView()->size();
    auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(
        *scene, scene->mainCamera()->frame(), 30, 1,
        {static_cast<double>(size.width()), static_cast<double>(size.height())});
    QVERIFY(renderer);
    // The screen's video holds its track weakly: the copy lives until the frame is drawn.
    auto copy = timeline()->copyWithTimer({});
    copy->mapScene(renderer->renderedScene());
    copy->setCurrentTime(time);
    auto copyTrack = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(copy->tracks().at(0));
    QVERIFY(copyTrack);
    QTRY_VERIFY_WITH_TIMEOUT(copyTrack->hasTextureAtTime(time), 30000);
    auto capture = std::make_shared<flk_test::FrameCapture>();
    renderer->setRenderOutput(capture);
    renderer->renderAllFrames();
    renderer->waitUntilFinished();
    QVERIFY(!renderer->failure());
    QCOMPARE(capture->frame.size(), size);
    *frame = capture->frame;
}

// Drags the files onto the panel and drops them, as a file manager would.
void TimelinePanelTests::drop(const std::vector<std::filesystem::path>& files, bool* accepted) {
    QMimeData mimeData;
    QList<QUrl> urls;
    for (const auto& file : files) urls << QUrl::fromLocalFile(QString::fromStdString(file.string()));
    mimeData.setUrls(urls);
    const QPoint position(200, kRowY);
    QDragEnterEvent enter(position, Qt::CopyAction, &mimeData, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view(), &enter);
    *accepted = enter.isAccepted();
    if (!*accepted) return;
    QDropEvent dropped(QPointF(position), Qt::CopyAction, &mimeData, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view(), &dropped);
}

void TimelinePanelTests::pickingAPositionMovesThePlayHeadExceptAtTheStart() {
    QCOMPARE(timeline()->currentTime(), 0.0);
    QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(250, 12));
    QCOMPARE(timeline()->currentTime(), 2.5);
    QCOMPARE(panel().currentCursorLocation(), 250.0);
    // The very start of the panel is no position to pick, on the ruler or a row.
    QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(0, 12));
    QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(0, kRowY));
    QCOMPARE(timeline()->currentTime(), 2.5);

    // A drag along the ruler scrubs.
    QTest::mousePress(view(), Qt::LeftButton, {}, QPoint(100, 12));
    QCOMPARE(timeline()->currentTime(), 1.0);
    QTest::mouseMove(view(), QPoint(180, 12));
    QCOMPARE(timeline()->currentTime(), 1.8);
    QTest::mouseRelease(view(), Qt::LeftButton, {}, QPoint(330, 12));
    QCOMPARE(timeline()->currentTime(), 1.8);

    // The zoom stretches the view only: at twice the scale 250 is 1.25 s.
    view()->setZoom(2);
    QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(250, 12));
    QCOMPARE(timeline()->currentTime(), 1.25);
    view()->setZoom(1);
    QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(250, 12));
    QCOMPARE(timeline()->currentTime(), 2.5);
    // Nothing of this is an edit.
    QVERIFY(FLKActionPipeline::sharedPipeline().undoQueue().empty());
}

void TimelinePanelTests::droppedVideoFilesBecomeClipsWithThumbnails() {
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    const size_t steps = pipeline.undoQueue().size();
    bool accepted = false;
    drop({longRecording}, &accepted);
    QVERIFY(accepted);
    QCOMPARE(track()->clips().size(), size_t(1));
    QCOMPARE(pipeline.undoQueue().size(), steps + 1);
    auto clip = track()->videoClips().at(0);
    QVERIFY(std::abs(clip->duration() - 20.0) < 0.05);
    // The file was copied into the document, which keeps its own media.
    auto document = FLKFile::currentFile();
    QVERIFY(document && document->media());
    QCOMPARE(clip->assetURL().parent_path(), document->media()->url());
    QCOMPARE(std::filesystem::file_size(clip->assetURL()), std::filesystem::file_size(longRecording));
    // 100 points a second, 80 high.
    const QRectF cell = view()->cellRect({0, 0});
    QCOMPARE(cell.left(), 0.0);
    QCOMPARE(cell.width(), static_cast<double>(std::floor(static_cast<float>(clip->duration() * 100))));
    QCOMPARE(cell.height(), 80.0);

    // Pictures of the recording fill the cell once they are made: a plain
    // cell is one colour where the pictures show a gradient.
    const QRect pictures(20, static_cast<int>(cell.top()) + 24, 600, 30);
    QTRY_VERIFY_WITH_TIMEOUT(distinctColours(view()->grab(pictures).toImage(), 30) >= 30, 20000);

    // A file that is no video is refused by name and adds nothing.
    const auto broken = std::filesystem::path(media.filePath("broken.mp4").toStdString());
    {
        QFile file(QString::fromStdString(broken.string()));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("this is not a video");
    }
    drop({broken}, &accepted);
    QVERIFY(accepted);
    QMessageBox* alert = nullptr;
    QTRY_VERIFY([&] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(widget);
            if (box && box->isVisible() && box->text().contains("broken.mp4")) alert = box;
        }
        return alert != nullptr;
    }());
    alert->close();
    // What a window manager does once the alert is gone; without it the
    // program would count as in the background and pause its canvas.
    QApplication::setActiveWindow(window.get());
    QCOMPARE(track()->clips().size(), size_t(1));
    QCOMPARE(pipeline.undoQueue().size(), steps + 1);

    // Files that are not movies are not taken at all.
    const auto text = std::filesystem::path(media.filePath("notes.txt").toStdString());
    drop({text}, &accepted);
    QVERIFY(!accepted);
}

void TimelinePanelTests::clickingOnTheClipShowsThatMomentsFrame() {
    QCOMPARE(track()->clips().size(), size_t(1));
    const QRect screen = screenRect();
    QVERIFY(screen.width() > 40 && screen.height() > 40);
    for (double moment : {10.5, 3.3}) {
        QImage expected;
        renderReference(moment, &expected);
        if (QTest::currentTestFailed()) return;
        QImage elsewhere;
        renderReference(moment + 0.5, &elsewhere);
        if (QTest::currentTestFailed()) return;
        // Frames half a second apart look different on the screen, so a match
        // below says which moment the canvas shows.
        QVERIFY(psnr(expected.copy(screen), elsewhere.copy(screen)) < 25);

        const int x = static_cast<int>(std::lround(moment * 100));
        scrollTo(x);
        QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(x, kRowY));
        QCOMPARE(timeline()->currentTime(), moment);
        QCOMPARE(panel().selectedClipIndexes(), (std::set<FLKIndexPath>{{0, 0}}));
        // Decoding happens off the main thread; the canvas draws the frame
        // once it is there, without waiting on it.
        double decibels = 0;
        expectedCanvas = expected;
        auto shown = [&] {
            comparedCanvas = canvasAsShown();
            return decibels = psnr(comparedCanvas.copy(screen), expected.copy(screen));
        };
        QTRY_VERIFY_WITH_TIMEOUT(shown() >= 30, 1000);
        qInfo("canvas at %.1f s against the off-screen frame: %.1f dB", moment, decibels);
    }
    QVERIFY(FLKActionPipeline::sharedPipeline().undoQueue().size() == 1);  // the drop only
}

void TimelinePanelTests::draggingAClipReordersTheRowInOneUndoStep() {
    panel().loadVideoClipWithURL(shortRecording);
    QCOMPARE(track()->clips().size(), size_t(2));
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    pipeline.clear();
    const std::string before = track()->serialized().dump();
    const auto first = identifiers(*track());
    const double longDuration = track()->clips()[0]->duration();
    const double shortDuration = track()->clips()[1]->duration();

    // The short clip, picked up at the end of the row, goes to the front.
    const QPoint grab = view()->cellRect({0, 1}).center().toPoint();
    scrollTo(grab.x());
    QTest::mousePress(view(), Qt::LeftButton, {}, grab);
    QTest::mouseMove(view(), grab - QPoint(30, 0));
    QVERIFY(panel().isDragging());
    QTest::mouseMove(view(), QPoint(1000, kRowY));
    QTest::mouseMove(view(), QPoint(400, kRowY));
    QVERIFY(pipeline.undoQueue().empty());
    QTest::mouseRelease(view(), Qt::LeftButton, {}, QPoint(400, kRowY));
    QVERIFY(!panel().isDragging());

    QCOMPARE(identifiers(*track()), (std::vector<std::string>{first[1], first[0]}));
    const auto after = ranges(*track());
    QCOMPARE(after[0].start, 0.0);
    QVERIFY(std::abs(after[0].end - shortDuration) < 1e-9);
    QVERIFY(std::abs(after[1].end - (shortDuration + longDuration)) < 1e-9);
    QCOMPARE(pipeline.undoQueue().size(), size_t(1));
    const std::string reordered = track()->serialized().dump();

    window->undoAction()->trigger();
    QCOMPARE(track()->serialized().dump(), before);
    QCOMPARE(view()->cellRect({0, 1}).left(),
             static_cast<double>(std::floor(static_cast<float>(track()->clips()[1]->timeRange().start * 100))));
    window->redoAction()->trigger();
    QCOMPARE(track()->serialized().dump(), reordered);
}

void TimelinePanelTests::editDeleteRemovesTheSelectedClipInOneStep() {
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    pipeline.clear();
    horizontalBar()->setValue(0);
    const std::string before = track()->serialized().dump();
    const auto ids = identifiers(*track());
    QTest::mouseClick(view(), Qt::LeftButton, {}, view()->cellRect({0, 0}).center().toPoint());
    QCOMPARE(panel().selectedClipIndexes(), (std::set<FLKIndexPath>{{0, 0}}));

    QAction* remove = window->mainMenu()->deleteAction();
    QVERIFY(remove->isEnabled());
    remove->trigger();
    QCOMPARE(identifiers(*track()), (std::vector<std::string>{ids[1]}));
    QCOMPARE(pipeline.undoQueue().size(), size_t(1));
    window->undoAction()->trigger();
    QCOMPARE(track()->serialized().dump(), before);
}

void TimelinePanelTests::contextMenuCommandsEditTheClipUnderThePointer() {
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    pipeline.clear();
    horizontalBar()->setValue(0);
    const std::string start = track()->serialized().dump();
    const auto ids = identifiers(*track());  // the short clip, then the long one
    const double shortEnd = track()->clips()[0]->timeRange().end;

    // The play head at 3 s, inside the short clip.
    QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(300, kRowY));
    QCOMPARE(timeline()->currentTime(), 3.0);
    const QPoint onShort(200, kRowY);
    const QPoint onLong(static_cast<int>(shortEnd * 100) + 400, kRowY);

    {
        auto menu = view()->contextMenuAt(onShort);
        for (const char* text : {"Trim Left", "Trim Right", "Split", "Delete", "Add Transition"}) {
            QVERIFY2(menuAction(*menu, text) && menuAction(*menu, text)->isEnabled(), text);
        }
        QVERIFY(!menuAction(*menu, "Remove Transition")->isEnabled());
        QCOMPARE(panel().selectedClipIndexes(), (std::set<FLKIndexPath>{{0, 0}}));
        menuAction(*menu, "Split")->trigger();
    }
    QCOMPARE(track()->clips().size(), size_t(3));
    QCOMPARE(ranges(*track())[0], (FLKTimeRange{0, 3}));
    QCOMPARE(pipeline.undoQueue().size(), size_t(1));
    window->undoAction()->trigger();
    QCOMPARE(track()->serialized().dump(), start);

    // Trimming on the left keeps the part after the play head, at the start.
    menuAction(*view()->contextMenuAt(onShort), "Trim Left")->trigger();
    QCOMPARE(track()->videoClips()[0]->clipRange(), (FLKTimeRange{3, shortEnd}));
    QCOMPARE(ranges(*track())[0], (FLKTimeRange{0, shortEnd - 3}));
    window->undoAction()->trigger();
    QCOMPARE(track()->serialized().dump(), start);

    // The play head is not inside the long clip: nothing there to trim.
    {
        auto menu = view()->contextMenuAt(onLong);
        QVERIFY(!menuAction(*menu, "Trim Left")->isEnabled());
        QVERIFY(!menuAction(*menu, "Split")->isEnabled());
        QVERIFY(!menuAction(*menu, "Add Transition")->isEnabled());  // nothing after it
    }

    menuAction(*view()->contextMenuAt(onShort), "Trim Right")->trigger();
    QCOMPARE(ranges(*track())[0], (FLKTimeRange{0, 3}));
    QVERIFY(std::abs(ranges(*track())[1].start - 3) < 1e-9);
    const std::string trimmed = track()->serialized().dump();

    menuAction(*view()->contextMenuAt(onShort), "Add Transition")->trigger();
    QCOMPARE(track()->transitionClips().size(), size_t(1));
    auto transition = track()->transitionClips()[0];
    QCOMPARE(transition->fromVideoClipIdentifier(), ids[0]);
    QCOMPARE(transition->toVideoClipIdentifier(), ids[1]);
    QCOMPARE(transition->timeRange(), (FLKTimeRange{1, 3}));
    // The transition's cell spans its two seconds, over the seam.
    QCOMPARE(view()->cellRect({0, 1}), QRectF(100, kRowY - 40, 200, 80));
    // The trimmed clip gets pictures of its own range.
    QTRY_VERIFY_WITH_TIMEOUT(distinctColours(view()->grab(QRect(4, kRowY - 16, 90, 30)).toImage(), 20) >= 20, 20000);
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "main-window-timeline.png"));

    // Removing it from its own cell puts the incoming clip back.
    {
        auto menu = view()->contextMenuAt(QPoint(200, kRowY));
        QVERIFY(menuAction(*menu, "Remove Transition")->isEnabled());
        menuAction(*menu, "Remove Transition")->trigger();
    }
    QCOMPARE(track()->serialized().dump(), trimmed);

    menuAction(*view()->contextMenuAt(QPoint(1000, kRowY)), "Delete")->trigger();
    QCOMPARE(identifiers(*track()), (std::vector<std::string>{ids[0]}));
    // Past the last clip every command is off.
    {
        auto menu = view()->contextMenuAt(QPoint(900, kRowY));
        for (QAction* action : menu->actions()) QVERIFY(!action->isEnabled());
    }

    // Each command was one step, and undoing them all restores the row.
    QCOMPARE(pipeline.undoQueue().size(), size_t(4));
    for (int i = 0; i < 4; ++i) window->undoAction()->trigger();
    QCOMPARE(track()->serialized().dump(), start);
}

void TimelinePanelTests::spacePlaysAndThePlayHeadFollowsTheTimeline() {
    horizontalBar()->setValue(0);
    QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(250, 12));
    QCOMPARE(timeline()->currentTime(), 2.5);
    QTest::keyClick(view(), Qt::Key_Space);
    QVERIFY(timeline()->isPlaying());
    QVERIFY(panel().isPlaying());
    // Picking a position while playing does nothing.
    QTest::mouseClick(view(), Qt::LeftButton, {}, QPoint(600, 12));
    QCOMPARE(timeline()->currentTime(), 2.5);

    // The clock moves the time on its own queue (a time set while it plays
    // is overtaken by its next tick): stopped, the panel follows a time set there.
    QTest::keyClick(view(), Qt::Key_Space);
    QVERIFY(!timeline()->isPlaying());
    timeline()->setCurrentTime(4.0);
    QTRY_VERIFY(isPlayHeadColour(view()->grab().toImage().pixelColor(400, 3)));
    QVERIFY(!isPlayHeadColour(view()->grab().toImage().pixelColor(250, 3)));
    QCOMPARE(panel().currentCursorLocation(), 400.0);

    // Playing on from past the visible part scrolls the rows along.
    const int far = 1500;
    QVERIFY(far > horizontalBar()->value() + window->timelinePanel()->scrollArea()->viewport()->width());
    timeline()->setCurrentTime(far / 100.0);
    QTest::keyClick(view(), Qt::Key_Space);
    QVERIFY(timeline()->isPlaying());
    QTRY_VERIFY(horizontalBar()->value() > 0);

    // The clock goes on moving the play head: stop it where it is, then look.
    // (Space could land while the timeline waits for frames, when it reads as
    // stopped and Space plays.)
    timeline()->pause();
    QTRY_VERIFY(!panel().isPlaying());
    const double head = panel().currentCursorLocation();
    QVERIFY(head >= far);
    QVERIFY(horizontalBar()->value() <= head &&
            head < horizontalBar()->value() + window->timelinePanel()->scrollArea()->viewport()->width());
}

void TimelinePanelTests::ctrlWheelZoomsAroundThePointerAndTheWheelScrolls() {
    horizontalBar()->setValue(0);
    QCOMPARE(view()->zoom(), 1.0);
    const double cellWidth = view()->cellRect({0, 0}).width();
    const QPointF pointer(300, kRowY);
    auto turn = [&](QPointF position, int steps, Qt::KeyboardModifiers modifiers) {
        QWheelEvent wheel(position, view()->mapToGlobal(position), QPoint(), QPoint(0, steps * 120), Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view(), &wheel);
    };

    turn(pointer, 1, Qt::ControlModifier);
    QVERIFY(view()->zoom() > 1.2);
    QCOMPARE(view()->cellRect({0, 0}).width(), cellWidth * view()->zoom());
    // The moment under the pointer stays under it.
    QVERIFY(std::abs(view()->pointsForX(horizontalBar()->value() + pointer.x()) - 300) <= 1);
    QVERIFY(horizontalBar()->value() > 0);

    const int scrolled = horizontalBar()->value();
    turn(QPointF(scrolled + 300, kRowY), -1, Qt::NoModifier);
    QCOMPARE(horizontalBar()->value(), scrolled + 120);
    QVERIFY(view()->zoom() > 1.2);

    // A pinch zooms too.
    const double zoom = view()->zoom();
    QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2, pointer,
                              view()->mapToGlobal(pointer), view()->mapToGlobal(pointer), 0.5, QPointF(), 0);
    QApplication::sendEvent(view(), &pinch);
    QVERIFY(std::abs(view()->zoom() - zoom * 1.5) < 1e-9);

    view()->setZoom(1);
    QCOMPARE(view()->cellRect({0, 0}).width(), cellWidth);
}

int main(int argc, char** argv) { return flk_test::runTests<TimelinePanelTests>(argc, argv); }

#include "FLKTimelinePanelTests.moc"
