// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/singleinstance.h"

#include <QDir>
#include <QLockFile>

#include <unistd.h>

namespace {

constexpr int connectTimeout = 500; // milliseconds
// A lock file says whose it is, and goes with its process; one cut off while it was written goes with time alone.
constexpr int staleLockTime = 3000; // milliseconds
constexpr int lockTimeout = 4000; // milliseconds

// Another user's lock could not be removed, and need not be: neither could that user's socket.
QString lockFilePath(const QString& name)
{
    return QDir(QDir::tempPath()).filePath(QStringLiteral("%1.%2.lock").arg(name, QString::number(::getuid())));
}

} // namespace

SingleInstance::SingleInstance(QObject* parent)
    : QObject(parent)
{
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::dropConnections);
}

bool SingleInstance::claim(const QString& name)
{
    // Between the question and the claim another start would see no holder either, and remove the socket of this one.
    QLockFile lock(lockFilePath(name));
    lock.setStaleLockTime(staleLockTime);
    const bool isClaimedByAnother = !lock.tryLock(lockTimeout) && lock.error() == QLockFile::LockFailedError;
    if (isClaimedByAnother || isHeldByAnother(name)) {
        qCritical("Application is already started");
        return false;
    }
    // A crashed instance leaves its socket behind.
    QLocalServer::removeServer(name);
    if (!m_server.listen(name)) {
        qCritical("Unable to start single instance server");
        return false;
    }
    return true;
}

bool SingleInstance::isHeldByAnother(const QString& name)
{
    m_socket.connectToServer(name, QIODevice::ReadWrite);
    const bool isHeld = m_socket.waitForConnected(connectTimeout);
    m_socket.close();
    return isHeld;
}

// Left pending, they would fill the queue, and a later start would find nobody answering.
void SingleInstance::dropConnections()
{
    while (QLocalSocket* connection = m_server.nextPendingConnection()) {
        connect(connection, &QLocalSocket::disconnected, connection, &QObject::deleteLater);
        connection->disconnectFromServer();
        if (connection->state() == QLocalSocket::UnconnectedState)
            connection->deleteLater();
    }
}
