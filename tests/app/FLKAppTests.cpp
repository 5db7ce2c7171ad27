// The running program: its main window on a virtual X display, drawn with
// real GL and driven with real mouse and key events. Results are read from
// the models and from the canvas's pixels.
#include <QApplication>
#include <QEventLoop>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>

#include "FLKAppTestSupport.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKApplicationSetup.h"
#include "app/shell/FLKMainWindow.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKMainQueue.h"
#include "core/model/FLKTemplateManager.h"
#include "core/render/FLKOffScreenRenderer.h"
#include "core/render/FLKRenderOutput.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKShape.h"
#include "core/scene/FLKVideoContainer.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKSelectionWidgetViewModel.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"

namespace {

// The one frame an off-screen renderer hands over, as an image.
class FrameCapture : public FLKRenderOutput {
public:
    void didRenderToBuffer(FLKRenderer&, const FLKPixelBuffer& buffer) override {
        // Premultiplied colour with its alpha ignored: the frame as the opaque
        // canvas shows it, over black.
        QImage image(buffer.bgra.data(), buffer.width, buffer.height, buffer.stride, QImage::Format_RGB32);
        frame = image.copy();
    }
    QImage frame;  // written on the render thread before waitUntilFinished() returns
};

// Peak signal-to-noise ratio of the colour channels, in dB.
double psnr(const QImage& a, const QImage& b) {
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    double squares = 0;
    for (int row = 0; row < x.height(); ++row) {
        const auto* p = reinterpret_cast<const QRgb*>(x.constScanLine(row));
        const auto* q = reinterpret_cast<const QRgb*>(y.constScanLine(row));
        for (int col = 0; col < x.width(); ++col) {
            const double dr = qRed(p[col]) - qRed(q[col]);
            const double dg = qGreen(p[col]) - qGreen(q[col]);
            const double db = qBlue(p[col]) - qBlue(q[col]);
            squares += dr * dr + dg * dg + db * db;
        }
    }
    const double mean = squares / (3.0 * x.width() * x.height());
    return mean == 0 ? INFINITY : 10 * std::log10(255.0 * 255.0 / mean);
}

// How many distinct colours, up to a cap: a blank frame has one or two.
int distinctColours(const QImage& image, int cap) {
    QSet<QRgb> colours;
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    for (int row = 0; row < rgb.height() && colours.size() < cap; row += 7) {
        const auto* p = reinterpret_cast<const QRgb*>(rgb.constScanLine(row));
        for (int col = 0; col < rgb.width() && colours.size() < cap; col += 7) colours.insert(p[col]);
    }
    return colours.size();
}

QString artifactPath(const QString& name) {
    QDir().mkpath(FLK_TEST_ARTIFACTS);
    return QDir(FLK_TEST_ARTIFACTS).filePath(name);
}

}  // namespace

class AppTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void firstFrameMatchesTheOffScreenRenderer();
    void draggingAScreenCornerMovesOnlyThatCornerAndUndoRedoRestoreIt();
    void draggingInsideTheSelectionFrameMovesTheScreenInOneStep();
    void tasksPostedFromAnotherThreadRunOnTheMainThreadInOrder();

private:
    std::shared_ptr<FLKVideoContainer> screen() const;
    QPoint widgetPoint(FLKPoint scenePoint) const;
    void saveScreenshot(const QString& name) const;

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

// The window grabbed as it is composed holds the canvas's last presented
// frame; the canvas's own grab draws the current one, so it goes on top.
void AppTests::saveScreenshot(const QString& name) const {
    QPixmap shot = window->grab();
    QPainter painter(&shot);
    FLKSceneView* view = window->sceneView();
    painter.drawImage(QRect(view->mapTo(window.get(), QPoint()), view->size()), view->grabFramebuffer());
    painter.end();
    QVERIFY(shot.save(artifactPath(name)));
}

void AppTests::firstFrameMatchesTheOffScreenRenderer() {
    auto selected = FLKTemplateManager::defaultManager().selectedTemplate();
    QVERIFY(selected);
    QCOMPARE(QString::fromStdString(selected->name()), QString("Phone Portrait"));

    FLKSceneView* view = window->sceneView();
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

    saveScreenshot("main-window.png");
    const double decibels = psnr(canvas, capture->frame);
    qInfo("canvas against the off-screen frame: %.1f dB", decibels);
    if (decibels < 30) {
        canvas.save(artifactPath("canvas-first-frame.png"));
        capture->frame.save(artifactPath("offscreen-first-frame.png"));
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

    // The screen lies under the device artwork, so it is picked, not clicked.
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
    saveScreenshot("main-window-corner-drag.png");

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
    saveScreenshot("main-window-selection.png");

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

int main(int argc, char** argv) { return flktest::runApplicationTests<AppTests>(argc, argv); }

#include "FLKAppTests.moc"
