#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class QLocalServer;

// One running program per user and per home folder: a second start hands the
// files it was given to the first over a local socket and ends. The socket's
// name is derived from the user and the state folder, so programs with
// different FLICKWELL_HOMEs (tests) never meet. An instance lives on the main
// thread; handOff() may be called from any thread, as it makes its own socket.
class FLKSingleInstance : public QObject {
    Q_OBJECT

public:
    explicit FLKSingleInstance(QObject* parent = nullptr);
    ~FLKSingleInstance() override;

    static QString socketName();

    // Gives absolute paths of `files` to a running program and waits until it
    // has read them. False when no program answers (this one is the first).
    static bool handOff(const QStringList& files);

    // Starts answering later starts. False when the socket cannot be made;
    // the program then runs on alone.
    bool listen();

signals:
    // Files a later start handed over, in the order it was given them.
    void filesReceived(const QStringList& files);

private:
    void acceptConnection();

    QLocalServer* server_ = nullptr;
};
