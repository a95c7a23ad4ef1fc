// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

class QSqlDatabase;

/// The key and value pairs that belong to one database file. Thread: that of the connection.

/// The value of a key; empty when there is none or it cannot be read.
QByteArray readSettingsValue(const QSqlDatabase& connection, const QString& key);

/// Inserts or replaces the value of a key. A failure is written to the log with critical level and gives false.
bool writeSettingsValue(const QSqlDatabase& connection, const QString& key, const QByteArray& value);
