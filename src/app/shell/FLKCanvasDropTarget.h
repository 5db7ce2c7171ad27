#pragma once

#include <QObject>

class FLKFileHandler;
class QWidget;

// Makes a widget (the canvas) take files dropped on it and hands each to the
// file handler, which decides what it becomes or says why it cannot be used.
// Every local file is let in, so an unusable one gets its message too.
class FLKCanvasDropTarget : public QObject {
    Q_OBJECT

public:
    FLKCanvasDropTarget(QWidget* canvas, FLKFileHandler& files);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    FLKFileHandler& files_;
};
