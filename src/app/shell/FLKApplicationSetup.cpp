#include "app/shell/FLKApplicationSetup.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QOpenGLContext>
#include <QSurfaceFormat>

#include <malloc.h>

#include <cstdlib>
#include <memory>

#include "app/bridge/FLKQtMainQueue.h"
#include "app/bridge/FLKQtRefreshSource.h"
#include "app/bridge/FLKQtUserFeedback.h"
#include "app/canvas/FLKSceneView.h"
#include "core/gpu/FLKContext.h"
#include "core/model/FLKCoreServices.h"
#include "core/platform/FLKClock.h"
#include "core/platform/FLKPerformanceSettings.h"

void FLKApplicationSetup::prepareEnvironment() {
    // Decoded frames are made on decoding threads and let go of on others;
    // with an arena per thread, the memory they free stays with the arena
    // that made them and is seldom reused (about 110 MB more at the peak).
    mallopt(M_ARENA_MAX, 2);
    ::setenv("QT_XCB_GL_INTEGRATION", "xcb_egl", 0);
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(4, 5);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QSurfaceFormat::setDefaultFormat(format);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
}

bool FLKApplicationSetup::bindCore(QObject* application, std::string* reason) {
    flk::installCoreServices();
    FLKMainQueue::setMain(std::make_shared<FLKQtMainQueue>(application));
    FLKUserFeedback::setShared(std::make_shared<FLKQtUserFeedback>(application));
    auto clock = FLKClock::clock();
    clock->setRefreshSource(std::make_shared<FLKQtRefreshSource>(application));
    clock->start();

    QOpenGLContext* global = QOpenGLContext::globalShareContext();
    auto* egl = global ? global->nativeInterface<QNativeInterface::QEGLContext>() : nullptr;
    if (!egl) {
        if (reason) *reason = "Qt has no EGL context to share with.";
        return false;
    }
    const QSurfaceFormat format = global->format();
    if (format.version() < qMakePair(4, 5)) {
        if (reason) *reason = "OpenGL 4.5 not supported.";
        return false;
    }
    FLKContext::useNativePlatform({egl->display(), egl->config(), egl->nativeContext()});
    if (!FLKContext::isGPUSupported(reason)) return false;
    // Drawn on the processor, 4x multisampling alone costs more than the
    // preview rate leaves; the user can still pick a higher level.
    if (drawsInSoftware()) {
        FLKPerformanceSettings::globalSettings().setPerformanceLevel(kSoftwarePerformanceLevel);
        FLKSceneView::setDefaultPresentation(FLKSceneView::Presentation::readBack);
    }
    return true;
}

bool FLKApplicationSetup::drawsInSoftware() {
    const QString device = QString::fromStdString(FLKContext::sharedContext()->deviceName());
    for (const char* rasteriser : {"llvmpipe", "softpipe", "swrast", "SwiftShader"}) {
        if (device.contains(rasteriser, Qt::CaseInsensitive)) return true;
    }
    return false;
}

void FLKApplicationSetup::showOpenGLNotSupportedAlert() {
    QMessageBox alert(QMessageBox::Critical, "Flickwell", "OpenGL 4.5 not supported.", QMessageBox::Ok);
    alert.setInformativeText("This device does not support OpenGL 4.5 rendering and cannot run Flickwell.");
    alert.exec();
}
