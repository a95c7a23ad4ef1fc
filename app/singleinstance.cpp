// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/singleinstance.h"

namespace {

constexpr int connectTimeout = 500; // milliseconds

}

SingleInstance::SingleInstance(QObject* parent)
    : QObject(parent)
{
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::dropConnections);
}

bool SingleInstance::claim(const QString& name)
{
    m_socket.connectToServer(name, QIODevice::ReadWrite);
    if (m_socket.waitForConnected(connectTimeout)) {
        m_socket.close();
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
