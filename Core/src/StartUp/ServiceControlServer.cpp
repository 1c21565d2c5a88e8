#include "StartUp/ServiceControlServer.h"

#include <QDebug>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>

namespace corvane {
namespace base {
namespace business {

ServiceControlServer::ServiceControlServer(QObject* parent)
    : QObject(parent), server(new QLocalServer(this))
{
    connect(server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* connection = server->nextPendingConnection()) {
            connect(connection, &QLocalSocket::readyRead, this,
                    [this, connection] { answer(connection); });
            connect(connection, &QLocalSocket::disconnected, connection, &QObject::deleteLater);
            answer(connection);
        }
    });
}

ServiceControlServer::~ServiceControlServer() = default;

bool ServiceControlServer::listen(const QString& path)
{
    if (request(path, QStringLiteral("status"), 1000)) {
        qCritical().noquote() << QStringLiteral("listen: a running service answers on ") + path;
        return false;
    }
    QLocalServer::removeServer(path); // a socket file that nobody answers on is stale
    server->setSocketOptions(QLocalServer::UserAccessOption);
    return server->listen(path);
}

bool ServiceControlServer::request(const QString& path, const QString& text, int timeout)
{
    if (!QFile::exists(path)) {
        return false;
    }
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(timeout)) {
        return false;
    }
    socket.write((text + QLatin1Char('\n')).toUtf8());
    if (!socket.waitForBytesWritten(timeout)) {
        return false;
    }
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeout)) {
            return false;
        }
    }
    return socket.readLine().trimmed() == "ok";
}

void ServiceControlServer::answer(QLocalSocket* connection)
{
    while (connection->canReadLine()) {
        const QString line = QString::fromUtf8(connection->readLine()).trimmed();
        bool known = true;
        if (line == QLatin1String("status")) {
        } else if (line == QLatin1String("stop")) {
            emit stopRequested();
        } else if (line == QLatin1String("pause")) {
            emit pauseRequested();
        } else if (line == QLatin1String("resume")) {
            emit resumeRequested();
        } else if (line.startsWith(QLatin1String("command "))) {
            bool ok = false;
            const int number = line.mid(8).toInt(&ok);
            known = ok;
            if (ok) {
                emit commandRequested(number);
            }
        } else {
            known = false;
        }
        connection->write(known ? "ok\n" : "unknown\n");
        connection->flush();
    }
    if (connection->bytesAvailable() > 1024) {
        connection->abort(); // no line ends in sight: not a client of ours
    }
}

} // namespace business
} // namespace base
} // namespace corvane
