// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasebackup.h"

#include "app/databasecheck.h"
#include "app/databasefiles.h"
#include "app/filecopy.h"
#include "app/filesystem.h"
#include "store/database.h"

#include <QCoreApplication>

namespace {

QString text(const char* pattern, const QString& path)
{
    return QCoreApplication::translate("DatabaseBackup", pattern).arg(path);
}

// Why a damaged copy does not get the chosen name; empty when it takes nothing away there.
QString refusalToReplace(const QString& targetFilePath, const QString& damage)
{
    if (!FileSystem::isNameTaken(targetFilePath))
        return {};
    return text(
               QT_TRANSLATE_NOOP("DatabaseBackup",
                   "The database is damaged, and the existing file was not replaced: %1\nChoose another name to keep a "
                   "copy of the damaged database."),
               targetFilePath)
        + QLatin1Char('\n') + damage;
}

} // namespace

DatabaseBackup::DatabaseBackup(Database& database)
    : m_database(database)
{
}

DatabaseBackup::~DatabaseBackup()
{
    end();
}

OperationReply* DatabaseBackup::start(const QString& targetFilePath)
{
    const QString source = m_database.databaseFilePath();
    if (DatabaseFiles::isPartOfDatabase(targetFilePath, source))
        return failedReply(
            text(QT_TRANSLATE_NOOP("DatabaseBackup", "The database cannot be its own backup: %1"), targetFilePath));
    // They would be taken for those of the copy.
    if (DatabaseFiles::hasCompanions(targetFilePath))
        return failedReply(text(QT_TRANSLATE_NOOP("DatabaseBackup", "Database file is in use: %1"), targetFilePath));
    m_database.close();
    m_isClosed = true;
    if (DatabaseFiles::hasCompanions(source))
        return failedReply(text(QT_TRANSLATE_NOOP("DatabaseBackup", "Database file is in use: %1"), source));
    return copyFile(
        source, targetFilePath, ExistingTarget::Replace, [damage = m_damage, targetFilePath](const QString& filePath) {
            *damage = damageOfDatabase(filePath);
            return damage->isEmpty() ? QString() : refusalToReplace(targetFilePath, *damage);
        });
}

bool DatabaseBackup::end()
{
    if (m_isClosed) {
        m_isClosed = false;
        m_database.open();
    }
    return m_database.isOpened();
}
