// The running program: its main window on a virtual X display, drawn with
// real GL and driven with real mouse and key events. Results are read from
// the models and from the canvas's pixels.
#include <QApplication>
#include <QCursor>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QWheelEvent>
#include <QEventLoop>
#include <QImage>
#include <QLabel>
#include <QOpenGLWidget>
#include <QPainter>
#include <QPixmap>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>

#include "FLKAppTestSupport.h"
#include "app/bridge/FLKQtCursorDisplay.h"
#include "app/bridge/FLKQtMainWindowLocator.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKAppNotifications.h"
#include "app/shell/FLKMainWindow.h"
#include "app/shell/FLKRenderLoopController.h"
#include "core/exporter/FLKExportQueue.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTimelineClipFactory.h"
#include "core/platform/FLKMainQueue.h"
#include "core/model/FLKTemplateManager.h"
#include "core/render/FLKOffScreenRenderer.h"
#include "core/render/FLKRenderOutput.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKInteractable.h"
#include "core/scene/FLKShape.h"
#include "core/scene/FLKShapeEditable.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKTooltipsDispatcher.h"
#include "editing/FLKHoverWidgetViewModel.h"
#include "editing/FLKSceneViewActionsNotifier.h"
#include "editing/FLKSelectionEditingWidgetViewModel.h"
#include "editing/FLKSelectionWidgetViewModel.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"

using flk_test::artifactPath;
using flk_test::distinctColours;
using flk_test::FrameCapture;
using flk_test::psnr;

class AppTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void firstFrameMatchesTheOffScreenRenderer();
    void draggingAScreenCornerMovesOnlyThatCornerAndUndoRedoRestoreIt();
    void draggingInsideTheSelectionFrameMovesTheScreenInOneStep();
    void tasksPostedFromAnotherThreadRunOnTheMainThreadInOrder();
    void minimisingPausesTheLoopUntilRestoredAndAnExportKeepsItPaused();
    void captureSeesWhereTheMainWindowIs();
    void clickingTheDeviceScreenSelectsItThroughTheArtwork();
    void aCornerDragThatWouldMakeTheQuadConcaveIsRefused();
    void draggingTheRightHandleStretchesTheScreenInOneStep();
    void eachCtrlWheelBurstIsOneUndoStep();
    void aCtrlPinchScalesTheSelectionInOneStep();
    void hoveringOutlinesTheObjectAndMarksTheCornerUnderThePointer();
    void handlesShowDrawnResizeCursorsCentredOnTheirHotSpot();
    void deleteAndArrowKeysReachTheWidgetsAsKeyEvents();

private:
    std::shared_ptr<FLKVideoContainer> screen() const;
    // Starts a test from a clean canvas: nothing selected, no corner editing, no history.
    void resetCanvas();
    void sendWheel(QPoint at, int notches, Qt::KeyboardModifiers modifiers);
    // A pointer move with no button held. QTest would warp the X pointer and
    // leave the move to arrive whenever the server sends it.
    void hover(QPoint at);
    void sendPinch(QPoint at, const std::vector<double>& steps, Qt::KeyboardModifiers modifiers);
    QPoint widgetPoint(FLKPoint scenePoint) const;

    std::unique_ptr<FLKMainWindow> window;
};

void AppTests::initTestCase() {
    window = std::make_unique<FLKMainWindow>();
    // A fixed size and style keep the screenshots comparable between runs.
    window->setFixedSize(900, 700);
    window->show();
    QApplication::setActiveWindow(window.get());
    window->showScene();
    QVERIFY(window->canvasViewModels());
    QVERIFY(window->sceneView()->scene());
}

void AppTests::cleanupTestCase() { window.reset(); }

std::shared_ptr<FLKVideoContainer> AppTests::screen() const {
    auto scene = window->sceneView()->scene();
    return std::dynamic_pointer_cast<FLKVideoContainer>(scene->childWithClass(typeid(FLKVideoContainer)));
}

QPoint AppTests::widgetPoint(FLKPoint scenePoint) const {
    return window->sceneView()->widgetPointForScenePoint(scenePoint).toPoint();
}

void AppTests::firstFrameMatchesTheOffScreenRenderer() {
    auto selected = FLKTemplateManager::defaultManager().selectedTemplate();
    QVERIFY(selected);
    QCOMPARE(QString::fromStdString(selected->name()), QString("Phone Portrait"));

    FLKSceneView* view = window->sceneView();
    if (view->presentation() == FLKSceneView::Presentation::readBack) {
        // One GL widget anywhere and Qt composes the whole window in GL again.
        QVERIFY(window->findChildren<QOpenGLWidget*>().isEmpty());
    } else {
        QCOMPARE(window->findChildren<QOpenGLWidget*>().size(), 1);
    }
    const QImage canvas = view->grabFramebuffer();
    QCOMPARE(canvas.size(), view->size() * view->devicePixelRatio());

    auto scene = view->scene();
    auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(
        *scene, scene->mainCamera()->frame(), 30, 1,
        {static_cast<double>(canvas.width()), static_cast<double>(canvas.height())});
    QVERIFY(renderer);
    auto capture = std::make_shared<FrameCapture>();
    renderer->setRenderOutput(capture);
    renderer->renderAllFrames();
    renderer->waitUntilFinished();
    QVERIFY(!renderer->failure());
    QCOMPARE(capture->frame.size(), canvas.size());

    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "main-window.png"));
    const double decibels = psnr(canvas, capture->frame);
    qInfo("canvas against the off-screen frame: %.1f dB", decibels);
    if (decibels < 30) {
        canvas.save(flk_test::artifactPath("canvas-first-frame.png"));
        capture->frame.save(flk_test::artifactPath("offscreen-first-frame.png"));
    }
    QVERIFY2(decibels >= 30, qPrintable(QString("PSNR %1 dB").arg(decibels)));
    // Two blank frames would match too: the template's gradient and device show.
    QVERIFY(distinctColours(canvas, 50) >= 50);
}

void AppTests::draggingAScreenCornerMovesOnlyThatCornerAndUndoRedoRestoreIt() {
    FLKSceneView* view = window->sceneView();
    auto container = screen();
    QVERIFY(container);
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    QVERIFY(!window->undoAction()->isEnabled());

    // Selected directly; clicking it through the device artwork is tested on its own.
    window->canvasViewModels()->selecting()->selectObject(container);
    window->editVerticesAction()->trigger();
    QCOMPARE(window->canvasViewModels()->cornering()->sprite(), std::dynamic_pointer_cast<FLKShapeEditable>(container));

    const std::vector<FLKPoint> before = container->shape()->createPoints();
    const std::string json = container->serialized().dump();
    const QPoint grab = widgetPoint(before.at(2));  // bottom right
    const QPoint release = grab + QPoint(-40, -25);
    const FLKPoint grabInScene = view->scenePointForWidgetPoint(grab);
    const FLKPoint releaseInScene = view->scenePointForWidgetPoint(release);

    QTest::mousePress(view, Qt::LeftButton, {}, grab);
    QTest::mouseMove(view, grab + QPoint(-20, -10));
    QTest::mouseMove(view, release);
    QTest::mouseRelease(view, Qt::LeftButton, {}, release);

    const std::vector<FLKPoint> after = container->shape()->createPoints();
    QCOMPARE(after.size(), before.size());
    for (size_t i = 0; i < after.size(); ++i) {
        if (i == 2) continue;
        QVERIFY2(after[i] == before[i], qPrintable(QString("corner %1 moved").arg(i)));
    }
    const FLKPoint expected = before[2] + (releaseInScene - grabInScene);
    QVERIFY(std::abs(after[2].x - expected.x) < 1e-9 && std::abs(after[2].y - expected.y) < 1e-9);
    QVERIFY(!(after[2] == before[2]));
    QCOMPARE(pipeline.undoQueue().size(), size_t(1));
    QVERIFY(window->undoAction()->isEnabled());
    QCOMPARE(window->undoAction()->text(), QString("Undo"));
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "main-window-corner-drag.png"));

    QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(container->shape()->createPoints() == before);
    QCOMPARE(container->serialized().dump(), json);
    QVERIFY(!window->undoAction()->isEnabled());
    QVERIFY(window->redoAction()->isEnabled());

    QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(container->shape()->createPoints() == after);
    QVERIFY(window->undoAction()->isEnabled());
    QVERIFY(!window->redoAction()->isEnabled());

    // Escape leaves corner editing.
    QTest::keyClick(view, Qt::Key_Escape);
    QVERIFY(!window->canvasViewModels()->cornering()->sprite());
}

void AppTests::draggingInsideTheSelectionFrameMovesTheScreenInOneStep() {
    FLKSceneView* view = window->sceneView();
    auto container = screen();
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    pipeline.clear();
    window->canvasViewModels()->selecting()->selectObject(container);
    const FLKRect before = container->shape()->bounds();
    const QPoint grab = widgetPoint({before.origin.x + before.size.width / 2, before.origin.y + before.size.height / 3});
    const QPoint release = grab + QPoint(30, 20);
    const FLKPoint travel = view->scenePointForWidgetPoint(release) - view->scenePointForWidgetPoint(grab);

    QTest::mousePress(view, Qt::LeftButton, {}, grab);
    QTest::mouseMove(view, grab + QPoint(10, 5));
    QTest::mouseMove(view, release);
    QTest::mouseRelease(view, Qt::LeftButton, {}, release);

    const FLKRect after = container->shape()->bounds();
    QVERIFY(std::abs(after.origin.x - (before.origin.x + travel.x)) < 1e-9);
    QVERIFY(std::abs(after.origin.y - (before.origin.y + travel.y)) < 1e-9);
    QVERIFY(after.size == before.size);
    QCOMPARE(pipeline.undoQueue().size(), size_t(1));
    QCOMPARE(window->canvasViewModels()->selecting()->selectedObjects(), std::vector<FLKObject::Ptr>{container});
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "main-window-selection.png"));

    window->undoAction()->trigger();
    QVERIFY(container->shape()->bounds() == before);
}

void AppTests::tasksPostedFromAnotherThreadRunOnTheMainThreadInOrder() {
    auto queue = FLKMainQueue::main();
    QVERIFY(queue->isMainThread());
    std::vector<std::string> ran;  // main thread only
    bool allOnMain = true;         // main thread only
    QEventLoop loop;
    auto record = [&](std::string name) {
        return [&, name] {
            allOnMain = allOnMain && queue->isMainThread();
            ran.push_back(name);
            if (ran.size() == 4) loop.quit();
        };
    };
    bool workerIsMain = true;
    std::thread worker([&] {
        workerIsMain = queue->isMainThread();
        // A timer started on this thread, which has no event loop, would never fire.
        queue->postAfter(0.001, record("later"));
        queue->post(record("first"));
        queue->post(record("second"));
        queue->postAfter(0, record("soon"));
    });
    worker.join();
    loop.exec();
    QVERIFY(!workerIsMain);
    QVERIFY(allOnMain);
    QCOMPARE(ran.at(0), std::string("first"));
    QCOMPARE(ran.at(1), std::string("second"));
    QCOMPARE(ran.size(), size_t(4));
}

int colourDistance(const QColor& a, const QColor& b) {
    return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue());
}

// Counts one notification by name for as long as it lives.
class NotificationCounter {
public:
    explicit NotificationCounter(const char* name) {
        auto& center = FLKNotificationCenter::defaultCenter();
        observation_ = FLKObservation(center, center.addObserver(name, nullptr, [this](const FLKNotification&) { ++count; }));
    }
    int count = 0;  // posted on the main thread here

private:
    FLKObservation observation_;
};

void AppTests::minimisingPausesTheLoopUntilRestoredAndAnExportKeepsItPaused() {
    FLKRenderLoopController* loop = window->renderLoop();
    FLKSceneView* view = window->sceneView();
    auto timeline = FLKTimeline::masterTimeline();
    QCOMPARE(timeline, FLKSceneLoader::defaultSceneLoader().currentTimeline());
    QVERIFY(!loop->isPaused());
    QVERIFY(!view->isPaused());
    const QPoint screenCentre = widgetPoint(screen()->shape()->bounds().center());
    const QColor emptyScreen = view->grabFramebuffer().pixelColor(screenCentre);
    // A looping clip keeps the timeline playing for as long as the loop runs.
    QTemporaryDir media;
    const std::string recording = media.filePath("recording.mp4").toStdString();
    FLKSyntheticVideo::Options options;
    options.frameCount = 60;
    QVERIFY(FLKSyntheticVideo::writeVideo(recording, options));
    QVERIFY(FLKTimelineClipFactory::clipFactoryWithTimeline(timeline)->makeClip(recording));
    QVERIFY(timeline->duration() > 1.9);
    timeline->setLooping(true);
    timeline->play();
    QTRY_VERIFY(timeline->isPlaying());
    // The recording's frames show on the screen, not the empty screen's background.
    QTRY_VERIFY(colourDistance(view->grabFramebuffer().pixelColor(screenCentre), emptyScreen) > 40);
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "main-window-playing.png"));
    NotificationCounter pauses(FLKAppWillWillPauseNotification);
    NotificationCounter resumes(FLKAppDidUnPauseNotification);

    window->showMinimized();
    QTRY_VERIFY(loop->isPaused());
    QCOMPARE(pauses.count, 1);
    QVERIFY(view->isPaused());
    QVERIFY(!timeline->isPlaying());
    // A paused canvas hands out its last frame without drawing a new one.
    const uint64_t drawn = view->framesDrawn();
    QVERIFY(!view->grabFramebuffer().isNull());
    QCOMPARE(view->framesDrawn(), drawn);

    window->showNormal();
    QApplication::setActiveWindow(window.get());
    QTRY_VERIFY(!loop->isPaused());
    QCOMPARE(resumes.count, 1);
    QTRY_VERIFY(timeline->isPlaying());
    QTRY_VERIFY(view->framesDrawn() > drawn);

    // An export pauses the loop, and restoring the window meanwhile does not resume it.
    auto& center = FLKNotificationCenter::defaultCenter();
    center.post(FLKExportQueueDidStartNotification, FLKExportQueue::sharedQueue().get());
    QTRY_VERIFY(loop->isPaused());
    QVERIFY(loop->isExporting());
    QCOMPARE(pauses.count, 2);
    window->showMinimized();
    window->showNormal();
    QApplication::setActiveWindow(window.get());
    QCoreApplication::processEvents();
    QVERIFY(loop->isPaused());
    QVERIFY(!timeline->isPlaying());
    QCOMPARE(pauses.count, 2);
    center.post(FLKExportQueueDidFinishNotification, FLKExportQueue::sharedQueue().get());
    QTRY_VERIFY(!loop->isPaused());
    QCOMPARE(resumes.count, 2);
    QTRY_VERIFY(timeline->isPlaying());
    timeline->pause();
    timeline->setLooping(false);
}

void AppTests::captureSeesWhereTheMainWindowIs() {
    // Asked from capture threads: it answers from what the main thread recorded.
    FLKQtMainWindowLocator locator(window.get());
    auto expected = [this] {
        const QRect frame = window->frameGeometry();
        return FLKRect(frame.x(), frame.y(), frame.width(), frame.height());
    };
    QCOMPARE(locator.mainWindowFrame().value_or(FLKRect()), expected());
    window->move(window->pos() + QPoint(7, 5));
    QTRY_COMPARE(locator.mainWindowFrame().value_or(FLKRect()), expected());
    window->showMinimized();
    QTRY_VERIFY(!locator.mainWindowFrame());
    window->showNormal();
    QApplication::setActiveWindow(window.get());
    QTRY_COMPARE(locator.mainWindowFrame().value_or(FLKRect()), expected());
}

void AppTests::resetCanvas() {
    auto* models = window->canvasViewModels();
    if (models->cornering()->sprite()) window->editVerticesAction()->trigger();
    models->selecting()->deselectAll();
    FLKActionPipeline::sharedPipeline().clear();
    // Park the pointer away from every widget.
    hover(QPoint(2, 2));
}

void AppTests::hover(QPoint at) {
    FLKSceneView* view = window->sceneView();
    QMouseEvent move(QEvent::MouseMove, QPointF(at), view->mapToGlobal(QPointF(at)), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(view, &move);
}

void AppTests::sendWheel(QPoint at, int notches, Qt::KeyboardModifiers modifiers) {
    FLKSceneView* view = window->sceneView();
    const QPointF global = view->mapToGlobal(QPointF(at));
    for (int i = 0; i < notches; ++i) {
        QWheelEvent wheel(QPointF(at), global, QPoint(), QPoint(0, 120), Qt::NoButton, modifiers, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(view, &wheel);
    }
}

void AppTests::sendPinch(QPoint at, const std::vector<double>& steps, Qt::KeyboardModifiers modifiers) {
    FLKSceneView* view = window->sceneView();
    auto send = [&](Qt::NativeGestureType type, double value) {
        QNativeGestureEvent gesture(type, QPointingDevice::primaryPointingDevice(), 2, QPointF(at), QPointF(at),
                                    view->mapToGlobal(QPointF(at)), value, QPointF());
        gesture.setModifiers(modifiers);
        QApplication::sendEvent(view, &gesture);
    };
    send(Qt::BeginNativeGesture, 0);
    for (double step : steps) send(Qt::ZoomNativeGesture, step);
    send(Qt::EndNativeGesture, 0);
}

void AppTests::aCtrlPinchScalesTheSelectionInOneStep() {
    resetCanvas();
    auto container = screen();
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    window->canvasViewModels()->selecting()->selectObject(container);
    const FLKRect before = container->shape()->bounds();
    const QPoint over = widgetPoint(before.center());

    sendPinch(over, {0.2, 0.1}, Qt::NoModifier);
    QVERIFY(container->shape()->bounds() == before);
    QCOMPARE(pipeline.undoQueue().size(), size_t(0));

    // Each step magnifies by one plus its value, about the selection's centre.
    sendPinch(over, {0.2, -0.1}, Qt::ControlModifier);
    const FLKRect after = container->shape()->bounds();
    QVERIFY(std::abs(after.size.width - before.size.width * 1.2 * 0.9) < 1e-6 * before.size.width);
    QVERIFY(std::abs(after.center().x - before.center().x) < 1e-6);
    QCOMPARE(pipeline.undoQueue().size(), size_t(1));
    window->undoAction()->trigger();
    QVERIFY(container->shape()->bounds() == before);
}

void AppTests::clickingTheDeviceScreenSelectsItThroughTheArtwork() {
    resetCanvas();
    FLKSceneView* view = window->sceneView();
    auto container = screen();
    auto selecting = window->canvasViewModels()->selecting();
    const FLKRect screenBounds = container->shape()->bounds();
    const FLKPoint middle{screenBounds.origin.x + screenBounds.size.width / 2,
                          screenBounds.origin.y + screenBounds.size.height / 2};
    // The artwork above the screen is what a plain top-down search finds there.
    const auto& nodes = view->scene()->recursiveAllChildren();
    const auto artwork = std::find_if(nodes.rbegin(), nodes.rend(), [&](const FLKObject::Ptr& node) {
        auto interactable = std::dynamic_pointer_cast<FLKInteractable>(node);
        return interactable && interactable->isInteractable() && interactable->hitTest(middle);
    });
    QVERIFY(artwork != nodes.rend());
    QVERIFY2(*artwork != container, "the template has no artwork over its screen");

    QTest::mouseClick(view, Qt::LeftButton, {}, widgetPoint(middle));
    QCOMPARE(selecting->selectedObjects(), std::vector<FLKObject::Ptr>{container});

    // Just outside the screen, on the device's rim, the artwork is clicked.
    const auto artworkBounds = std::dynamic_pointer_cast<FLKShapeEditable>(*artwork)->shape()->bounds();
    const FLKPoint rim{(artworkBounds.origin.x + screenBounds.origin.x) / 2, middle.y};
    QVERIFY(!container->hitTest(rim));
    QTest::mouseClick(view, Qt::LeftButton, {}, widgetPoint(rim));
    QCOMPARE(selecting->selectedObjects(), std::vector<FLKObject::Ptr>{*artwork});
    QCOMPARE(FLKActionPipeline::sharedPipeline().undoQueue().size(), size_t(0));
}

void AppTests::aCornerDragThatWouldMakeTheQuadConcaveIsRefused() {
    resetCanvas();
    FLKSceneView* view = window->sceneView();
    auto container = screen();
    window->canvasViewModels()->selecting()->selectObject(container);
    window->editVerticesAction()->trigger();
    QVERIFY(window->canvasViewModels()->cornering()->sprite());

    const std::vector<FLKPoint> before = container->shape()->createPoints();
    const QPoint grab = widgetPoint(before.at(2));
    const QPoint convex = grab + QPoint(-30, -20);
    // Beyond the diagonal through corners 1 and 3: corner 2 would fold the quad in.
    const QPoint folded = widgetPoint(before.at(0) + (before.at(2) - before.at(0)) * 0.2);
    QTest::mousePress(view, Qt::LeftButton, {}, grab);
    QTest::mouseMove(view, convex);
    QTest::mouseMove(view, folded);
    QVERIFY(container->shape()->isConvex());
    QTest::mouseRelease(view, Qt::LeftButton, {}, folded);

    const std::vector<FLKPoint> after = container->shape()->createPoints();
    const FLKPoint expected = before[2] + (view->scenePointForWidgetPoint(convex) - view->scenePointForWidgetPoint(grab));
    QVERIFY(std::abs(after[2].x - expected.x) < 1e-9 && std::abs(after[2].y - expected.y) < 1e-9);
    for (size_t i : {0, 1, 3}) QVERIFY(after[i] == before[i]);
    // The convex part of the drag is still one step.
    QCOMPARE(FLKActionPipeline::sharedPipeline().undoQueue().size(), size_t(1));
    window->undoAction()->trigger();
    QVERIFY(container->shape()->createPoints() == before);
}

void AppTests::draggingTheRightHandleStretchesTheScreenInOneStep() {
    resetCanvas();
    FLKSceneView* view = window->sceneView();
    auto container = screen();
    window->canvasViewModels()->selecting()->selectObject(container);
    const FLKRect before = container->shape()->bounds();
    const FLKPoint handle{before.origin.x + before.size.width, before.origin.y + before.size.height / 2};
    const QPoint grab = widgetPoint(handle);
    const QPoint release = grab + QPoint(45, 0);

    hover(grab);
    QCOMPARE(window->canvasViewModels()->framing()->currentEdge(), size_t(3));
    QTest::mousePress(view, Qt::LeftButton, {}, grab);
    QTest::mouseMove(view, grab + QPoint(20, 0));
    QTest::mouseMove(view, release);
    QTest::mouseRelease(view, Qt::LeftButton, {}, release);

    const double dx = view->scenePointForWidgetPoint(release).x - view->scenePointForWidgetPoint(grab).x;
    const FLKRect after = container->shape()->bounds();
    QVERIFY(dx > 1);
    QVERIFY(std::abs(after.size.width - (before.size.width + dx)) < 1e-6);
    QVERIFY(std::abs(after.origin.x - before.origin.x) < 1e-6);
    QVERIFY(std::abs(after.origin.y - before.origin.y) < 1e-6);
    QVERIFY(std::abs(after.size.height - before.size.height) < 1e-6);
    QCOMPARE(FLKActionPipeline::sharedPipeline().undoQueue().size(), size_t(1));
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "main-window-stretch.png"));
    window->undoAction()->trigger();
    QVERIFY(container->shape()->bounds() == before);
}

void AppTests::eachCtrlWheelBurstIsOneUndoStep() {
    resetCanvas();
    auto container = screen();
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    window->canvasViewModels()->selecting()->selectObject(container);
    const FLKRect before = container->shape()->bounds();
    const FLKPoint centre = before.center();
    const QPoint over = widgetPoint(centre);

    // Without Ctrl the wheel leaves the selection alone.
    sendWheel(over, 2, Qt::NoModifier);
    QVERIFY(container->shape()->bounds() == before);

    // Three notches at once: the burst is still open until its timer fires.
    sendWheel(over, 3, Qt::ControlModifier);
    const FLKRect zoomed = container->shape()->bounds();
    QVERIFY(std::abs(zoomed.size.width - before.size.width * std::pow(1.1, 3)) < 1e-6 * before.size.width);
    QVERIFY(std::abs(zoomed.center().x - centre.x) < 1e-6 && std::abs(zoomed.center().y - centre.y) < 1e-6);
    QCOMPARE(pipeline.undoQueue().size(), size_t(0));
    QTRY_COMPARE(pipeline.undoQueue().size(), size_t(1));

    sendWheel(over, 2, Qt::ControlModifier);
    QTRY_COMPARE(pipeline.undoQueue().size(), size_t(2));
    window->undoAction()->trigger();
    QVERIFY(container->shape()->bounds() == zoomed);
    window->undoAction()->trigger();
    QVERIFY(container->shape()->bounds() == before);
}

namespace {
// Whether a pixel within `reach` of `at` is close to `colour` in every channel.
bool hasColourNear(const QImage& image, QPoint at, QColor colour, int reach = 1, int tolerance = 40) {
    for (int y = at.y() - reach; y <= at.y() + reach; ++y) {
        for (int x = at.x() - reach; x <= at.x() + reach; ++x) {
            if (!image.rect().contains(x, y)) continue;
            const QColor c = image.pixelColor(x, y);
            if (std::abs(c.red() - colour.red()) <= tolerance && std::abs(c.green() - colour.green()) <= tolerance &&
                std::abs(c.blue() - colour.blue()) <= tolerance) {
                return true;
            }
        }
    }
    return false;
}
const QColor kAccent(64, 156, 255);
}  // namespace

void AppTests::hoveringOutlinesTheObjectAndMarksTheCornerUnderThePointer() {
    resetCanvas();
    FLKSceneView* view = window->sceneView();
    auto container = screen();
    auto* models = window->canvasViewModels();
    const std::vector<FLKPoint> corners = container->shape()->createPoints();
    const FLKRect bounds = container->shape()->bounds();

    hover(widgetPoint(bounds.center()));
    QCOMPARE(models->hovering()->highlightedObject(), FLKObject::Ptr(container));
    // The hint beside the pointer, inside the canvas.
    auto* tooltip = view->findChild<QLabel*>("tooltipsPanel");
    QVERIFY(tooltip && tooltip->isVisible());
    QVERIFY(!tooltip->text().isEmpty());
    QCOMPARE(tooltip->text().toStdString(), models->tooltips()->tooltip());
    QVERIFY(view->rect().contains(tooltip->geometry()));
    QVERIFY(tooltip->geometry().left() > widgetPoint(bounds.center()).x());
    const QImage hovered = view->grabFramebuffer();
    const qreal ratio = hovered.devicePixelRatio();
    auto pixel = [&](FLKPoint scenePoint) { return (view->widgetPointForScenePoint(scenePoint) * ratio).toPoint(); };
    // The outline runs along the screen's left side.
    const FLKPoint leftMiddle = (corners[0] + corners[3]) * 0.5;
    QVERIFY(hasColourNear(hovered, pixel(leftMiddle), kAccent));
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "canvas-hover-highlight.png"));
    hover(QPoint(2, 2));
    QVERIFY(!models->hovering()->highlightedObject());
    QVERIFY(!tooltip->isVisible());
    QVERIFY(!hasColourNear(view->grabFramebuffer(), pixel(leftMiddle), kAccent));

    // Over a corner in corner editing: a crosshair and a larger, white marker.
    models->selecting()->selectObject(container);
    window->editVerticesAction()->trigger();
    hover(widgetPoint(corners[1]) + QPoint(2, 1));
    QCOMPARE(models->cornering()->currentCornerIndex(), size_t(1));
    QCOMPARE(view->cursor().shape(), Qt::CrossCursor);
    QCOMPARE(tooltip->text(), QString(FLKTooltipsDispatcher::kMoveCorner));
    const QImage marked = view->grabFramebuffer();
    QVERIFY(hasColourNear(marked, pixel(corners[1]), Qt::white, 0, 10));
    QVERIFY(hasColourNear(marked, pixel(corners[3]), kAccent, 0, 10));
    QVERIFY(flk_test::saveScreenshot(*window, *window->sceneView(), "canvas-hovered-corner.png"));
    window->editVerticesAction()->trigger();
}

void AppTests::handlesShowDrawnResizeCursorsCentredOnTheirHotSpot() {
    resetCanvas();
    FLKSceneView* view = window->sceneView();
    auto container = screen();
    window->canvasViewModels()->selecting()->selectObject(container);
    const FLKRect b = container->shape()->bounds();
    const double maxX = b.origin.x + b.size.width, maxY = b.origin.y + b.size.height;
    const QSize side(FLKQtCursorDisplay::kCursorSide, FLKQtCursorDisplay::kCursorSide);
    // Corners first, then sides: each handle's cursor is a drawn double arrow.
    const FLKPoint handles[] = {{maxX, maxY}, {b.origin.x + b.size.width / 2, maxY}, {maxX, b.origin.y}, {maxX, b.center().y}};
    QList<QImage> shapes;
    for (const FLKPoint& handle : handles) {
        hover(widgetPoint(handle));
        const QCursor cursor = view->cursor();
        QCOMPARE(cursor.shape(), Qt::BitmapCursor);
        QCOMPARE(cursor.pixmap().deviceIndependentSize().toSize(), side);
        QCOMPARE(cursor.hotSpot(), QPoint(side.width() / 2, side.height() / 2));
        shapes << cursor.pixmap().toImage();
    }
    // Four directions, four different pictures.
    for (int i = 0; i < shapes.size(); ++i)
        for (int j = i + 1; j < shapes.size(); ++j) QVERIFY(shapes[i] != shapes[j]);
    hover(widgetPoint(b.center()));
    QCOMPARE(view->cursor().shape(), Qt::OpenHandCursor);

    // Drawn at the device-pixel ratio: at 2 a crisp 48-pixel image, black
    // through the middle, clear at the corners.
    const QPixmap sharp = FLKQtCursorDisplay::cursorPixmap("CursorUpLeftDownRight", 2);
    QCOMPARE(sharp.size(), side * 2);
    QCOMPARE(sharp.devicePixelRatio(), 2.0);
    const QImage image = sharp.toImage();
    QCOMPARE(image.pixelColor(24, 24), QColor(Qt::black));
    QCOMPARE(image.pixelColor(47, 0).alpha(), 0);
    QVERIFY(image.pixelColor(8, 8).alpha() > 0);  // the up-left head
    QVERIFY(sharp.save(flk_test::artifactPath("cursor-up-left-down-right@2x.png")));
    QVERIFY(FLKQtCursorDisplay::cursorPixmap("CursorLeftRight", 1).save(flk_test::artifactPath("cursor-left-right.png")));
    QVERIFY(FLKQtCursorDisplay::cursorPixmap("NoSuchCursor", 1).isNull());
}

namespace {
class KeyLog : public FLKCanvasEventObserver {
public:
    void canvasViewDidReceiveKeyDownEvent(FLKCanvasView*, const FLKEvent& event) override { down.push_back(event.keyCode); }
    void canvasViewDidReceiveKeyUpEvent(FLKCanvasView*, const FLKEvent& event) override { up.push_back(event.keyCode); }
    std::vector<uint16_t> down, up;
};
}  // namespace

void AppTests::deleteAndArrowKeysReachTheWidgetsAsKeyEvents() {
    resetCanvas();
    FLKSceneView* view = window->sceneView();
    auto log = std::make_shared<KeyLog>();
    window->canvasViewModels()->notifier().addObserver(log);
    for (Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Down, Qt::Key_Up, Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_A})
        QTest::keyClick(view, key);
    window->canvasViewModels()->notifier().removeObserver(log);
    const std::vector<uint16_t> expected{123, 124, 125, 126, 117, 51};
    QCOMPARE(log->down, expected);
    QCOMPARE(log->up, expected);
}

int main(int argc, char** argv) { return flk_test::runTests<AppTests>(argc, argv); }

#include "FLKAppTests.moc"
