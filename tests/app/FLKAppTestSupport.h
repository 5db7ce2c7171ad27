#pragma once

// What the tests of the running program share: the program's start-up
// around a QtTest object, frames from the off-screen renderer as images, and
// image comparisons.
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QOpenGLWidget>
#include <QPainter>
#include <QPixmap>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <dlfcn.h>
#include <link.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <string_view>

#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKApplicationSetup.h"
#include "core/model/FLKCoreServices.h"
#include "core/render/FLKRenderOutput.h"

namespace flk_test {

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
inline double psnr(const QImage& a, const QImage& b) {
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
inline int distinctColours(const QImage& image, int cap) {
    QSet<QRgb> colours;
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    for (int row = 0; row < rgb.height() && colours.size() < cap; row += 7) {
        const auto* p = reinterpret_cast<const QRgb*>(rgb.constScanLine(row));
        for (int col = 0; col < rgb.width() && colours.size() < cap; col += 7) colours.insert(p[col]);
    }
    return colours.size();
}

// Where a test's screenshot goes; the folder is made on first use.
inline QString artifactPath(const QString& name) {
    QDir().mkpath(FLK_TEST_ARTIFACTS);
    return QDir(FLK_TEST_ARTIFACTS).filePath(name);
}

// The main window as the user sees it, saved under build/test-artifacts.
// The window's grab is drawn without the canvas's current frame; the
// canvas's own grab draws it, so it goes on top, and the canvas's child
// widgets (the tooltip) over that.
inline bool saveScreenshot(QWidget& window, FLKSceneView& canvas, const QString& name) {
    QPixmap shot = window.grab();
    QPainter painter(&shot);
    painter.drawImage(QRect(canvas.mapTo(&window, QPoint()), canvas.size()), canvas.grabFramebuffer());
    for (QWidget* child : canvas.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        // The GL surface is what the canvas's own grab drew.
        if (!child->isVisible() || qobject_cast<QOpenGLWidget*>(child)) continue;
        child->render(&painter, canvas.mapTo(&window, child->pos()));
    }
    painter.end();
    return shot.save(artifactPath(name));
}

// Qt terminates its EGL display at exit, which unloads Mesa's driver before
// LeakSanitizer looks: what the driver keeps would be reported from an
// unknown module, out of reach of the suppressions. Keep it loaded.
inline void pinGLDriver() {
    dl_iterate_phdr(
        [](dl_phdr_info* info, size_t, void*) {
            const std::string_view name = info->dlpi_name ? info->dlpi_name : "";
            if (name.ends_with("_dri.so")) dlopen(info->dlpi_name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
            return 0;
        },
        nullptr);
}

// Starts the program as main() does, under a fresh home with the build's
// resources, and runs the tests of `Tests`.
template <class Tests>
int runTests(int argc, char** argv) {
    QTemporaryDir home;
    ::setenv("FLICKWELL_HOME", qPrintable(home.path()), 1);
    ::setenv("FLICKWELL_RESOURCES", FLK_TEST_RESOURCES, 0);
    // The record page looks for phones: never the machine's own adb (its server
    // would outlive the test) unless a test brings a stand-in.
    ::setenv("FLICKWELL_ADB", "/nonexistent/adb", 0);
    FLKApplicationSetup::prepareEnvironment();
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    std::string reason;
    if (!FLKApplicationSetup::bindCore(&application, &reason)) {
        qCritical("No OpenGL 4.5 through Qt: %s", reason.c_str());
        return 1;
    }
    pinGLDriver();
    // The canvas's other way to the screen, which a machine with a GPU takes.
    if (qEnvironmentVariable("FLK_TEST_CANVAS_PRESENTATION") == "openGL")
        FLKSceneView::setDefaultPresentation(FLKSceneView::Presentation::openGL);
    int status = 0;
    {
        Tests tests;
        status = QTest::qExec(&tests, argc, argv);
    }
    // As main() does: none of our threads may outlive it.
    flk::shutdownCoreServices();
    return status;
}

}  // namespace flk_test
