// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/databasesettings.h"

#include <QDebug>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

const char* const selectValue = "SELECT value FROM Settings WHERE key=:key";
const char* const selectKey = "SELECT 1 FROM Settings WHERE key=:key";
const char* const updateValue = "UPDATE Settings SET value=:value WHERE key=:key";
const char* const insertValue = "INSERT INTO Settings (key, value) VALUES (:key, :value)";

enum class KeyState
{
    Missing,
    Present,
    Unknown
};

KeyState lookUpKey(const QSqlDatabase& connection, const QString& key)
{
    QSqlQuery query(connection);
    const bool isPrepared = query.prepare(QString::fromLatin1(selectKey));
    query.bindValue(QStringLiteral(":key"), key);
    // To execute what could not be prepared would put another error in the place of the reason.
    if (!isPrepared || !query.exec()) {
        qCritical().noquote() << "Unable to check Settings value:" << query.lastError().text();
        return KeyState::Unknown;
    }
    return query.next() ? KeyState::Present : KeyState::Missing;
}

} // namespace

QByteArray readSettingsValue(const QSqlDatabase& connection, const QString& key)
{
    QSqlQuery query(connection);
    query.prepare(QString::fromLatin1(selectValue));
    query.bindValue(QStringLiteral(":key"), key);
    if (!query.exec() || !query.next())
        return QByteArray();
    return query.value(0).toByteArray();
}

bool writeSettingsValue(const QSqlDatabase& connection, const QString& key, const QByteArray& value)
{
    const KeyState state = lookUpKey(connection, key);
    if (state == KeyState::Unknown)
        return false;
    QSqlQuery query(connection);
    const bool isPrepared = query.prepare(QString::fromLatin1(state == KeyState::Present ? updateValue : insertValue));
    query.bindValue(QStringLiteral(":key"), key);
    query.bindValue(QStringLiteral(":value"), value);
    if (isPrepared && query.exec())
        return true;
    qCritical().noquote() << "Unable to write Settings value:" << query.lastError().text();
    return false;
}
