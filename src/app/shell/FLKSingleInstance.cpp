#include "app/shell/FLKSingleInstance.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

#include "core/platform/FLKPaths.h"

namespace {
// A start that hands over waits this long for the first program; it never
// runs on the first program's UI thread.
constexpr int kHandOffTimeoutMs = 5000;
// The first program acknowledges with this byte once it has every path.
constexpr char kAcknowledgement = '\n';
}  // namespace

FLKSingleInstance::FLKSingleInstance(QObject* parent) : QObject(parent) {}

FLKSingleInstance::~FLKSingleInstance() = default;

QString FLKSingleInstance::socketName() {
    const QByteArray key = QByteArray::number(::getuid()) + '\0' + QByteArray::fromStdString(flk::stateHome().string());
    return QStringLiteral("flickwell-") +
           QString::fromLatin1(QCryptographicHash::hash(key, QCryptographicHash::Sha256).toHex().left(16));
}

bool FLKSingleInstance::handOff(const QStringList& files) {
    QLocalSocket socket;
    socket.connectToServer(socketName());
    if (!socket.waitForConnected(kHandOffTimeoutMs)) return false;
    QByteArray message;
    // One path a line; a path holding a line break cannot be handed over.
    for (const auto& file : files) message += QFileInfo(file).absoluteFilePath().toUtf8() + '\n';
    message += '\n';
    socket.write(message);
    if (!socket.waitForBytesWritten(kHandOffTimeoutMs)) return false;
    while (socket.bytesAvailable() == 0) {
        if (!socket.waitForReadyRead(kHandOffTimeoutMs)) return false;
    }
    return socket.read(1) == QByteArray(1, kAcknowledgement);
}

bool FLKSingleInstance::listen() {
    server_ = new QLocalServer(this);
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    connect(server_, &QLocalServer::newConnection, this, &FLKSingleInstance::acceptConnection);
    if (server_->listen(socketName())) return true;
    // A socket file left by a program that crashed: nobody answered handOff().
    QLocalServer::removeServer(socketName());
    return server_->listen(socketName());
}

void FLKSingleInstance::acceptConnection() {
    while (QLocalSocket* socket = server_->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            // The list ends with an empty line; until then keep what came.
            QByteArray pending = socket->property("pending").toByteArray() + socket->readAll();
            if (!pending.endsWith("\n\n") && pending != "\n") {
                socket->setProperty("pending", pending);
                return;
            }
            socket->setProperty("pending", QByteArray());
            QStringList files;
            for (const auto& line : pending.split('\n')) {
                if (!line.isEmpty()) files << QString::fromUtf8(line);
            }
            socket->write(QByteArray(1, kAcknowledgement));
            socket->flush();
            // Not from inside the socket's signal: opening a file may ask the user.
            QMetaObject::invokeMethod(this, [this, files] { emit filesReceived(files); }, Qt::QueuedConnection);
        });
    }
}
