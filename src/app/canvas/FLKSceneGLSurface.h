#pragma once

#include <QOpenGLExtraFunctions>
#include <QOpenGLWidget>

class FLKSceneView;

// Shows a scene view's frames through OpenGL: the view's renderer draws in
// this widget's context and the frame is copied onto the widget's framebuffer
// on the GPU, the on-canvas widgets painted over it. Fills the view and takes
// no input of its own: the pointer, keys and drops reach the view.
class FLKSceneGLSurface : public QOpenGLWidget, protected QOpenGLExtraFunctions {
    Q_OBJECT

public:
    explicit FLKSceneGLSurface(FLKSceneView& view);
    ~FLKSceneGLSurface() override;

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void releaseGL();

    FLKSceneView& view_;
    unsigned int readFramebuffer_ = 0;  // with this widget's context current only
    QMetaObject::Connection contextDestruction_;
};
