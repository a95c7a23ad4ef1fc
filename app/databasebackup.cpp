// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasebackup.h"

#include "app/databasefiles.h"
#include "app/filecopy.h"
#include "store/database.h"

#include <QCoreApplication>

namespace {

QString text(const char* pattern, const QString& path)
{
    return QCoreApplication::translate("DatabaseBackup", pattern).arg(path);
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
    m_database.close();
    m_isClosed = true;
    if (DatabaseFiles::hasCompanions(source))
        return failedReply(text(QT_TRANSLATE_NOOP("DatabaseBackup", "Database file is in use: %1"), source));
    return copyFile(source, targetFilePath, ExistingTarget::Replace);
}

bool DatabaseBackup::end()
{
    if (m_isClosed) {
        m_isClosed = false;
        m_database.open();
    }
    return m_database.isOpened();
}
