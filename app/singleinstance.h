// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>

/// Makes sure that the program runs once: whoever holds the name answers the connection attempt of the next start.
///
/// Nothing is sent over the connection. The name is a socket in the temporary folder; a lock file beside it, which is
/// there only during a claim, keeps two starts of one user from claiming it at the same moment.
/// Owner: the start-up code, for the whole run. Thread: GUI.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(QObject* parent = nullptr);

    /// Claims the name; false, with a critical log line, when another instance holds it or it cannot be claimed.
    /// Waits for another instance at most 500 ms, and for another claim at most four seconds.
    bool claim(const QString& name);

private:
    bool isHeldByAnother(const QString& name);
    void dropConnections();

    // The server goes first.
    QLocalSocket m_socket;
    QLocalServer m_server;
};
