#include "app/canvas/FLKSceneGLSurface.h"

#include <QPainter>

#include "app/canvas/FLKSceneView.h"
#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUTexture.h"

FLKSceneGLSurface::FLKSceneGLSurface(FLKSceneView& view) : QOpenGLWidget(&view), view_(view) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    // Opaque: where the scene leaves the frame transparent the canvas is
    // dark, not the window's background composed through it.
    setTextureFormat(GL_RGB8);
    connect(this, &QOpenGLWidget::frameSwapped, &view, &FLKSceneView::framePresented);
}

FLKSceneGLSurface::~FLKSceneGLSurface() {
    // QOpenGLWidget's own destructor destroys the context: this surface is gone by then.
    disconnect(contextDestruction_);
    if (!readFramebuffer_) return;  // never shown, or its context already went
    makeCurrent();
    releaseGL();
    doneCurrent();
}

void FLKSceneGLSurface::releaseGL() {
    view_.releaseRenderer();
    glDeleteFramebuffers(1, &readFramebuffer_);
    readFramebuffer_ = 0;
}

void FLKSceneGLSurface::initializeGL() {
    initializeOpenGLFunctions();
    // The renderer's Scope makes this context current again through Qt,
    // which also binds the widget's framebuffer; leaving it current
    // afterwards is what Qt expects during paintGL.
    view_.startRenderer(FLKContext::adoptCurrentContext({static_cast<double>(width()), static_cast<double>(height())},
                                                        [this] {
                                                            makeCurrent();
                                                            return true;
                                                        },
                                                        [] {}));
    glGenFramebuffers(1, &readFramebuffer_);
    // The context goes away before the widget when it is reparented or closed.
    contextDestruction_ = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        releaseGL();
        doneCurrent();
    });
}

void FLKSceneGLSurface::paintGL() {
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    if (FLKGPUTexture* frame = view_.drawFrame()) {
        const QSize frameSize(frame->width(), frame->height());
        const QSize pixelSize = view_.canvasPixelSize();
        // The frame's rows run top first; the widget's framebuffer is bottom-up.
        glBindFramebuffer(GL_READ_FRAMEBUFFER, readFramebuffer_);
        glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, frame->name(), 0);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, defaultFramebufferObject());
        glBlitFramebuffer(0, 0, frameSize.width(), frameSize.height(), 0, pixelSize.height(), pixelSize.width(), 0,
                          GL_COLOR_BUFFER_BIT, frameSize == pixelSize ? GL_NEAREST : GL_LINEAR);
        glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
    }
    QPainter painter(this);
    view_.paintOverlay(painter);
}
