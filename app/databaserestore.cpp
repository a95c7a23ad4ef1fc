// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databaserestore.h"

#include "app/databasecheck.h"
#include "app/databasefiles.h"
#include "app/filecopy.h"
#include "app/filesystem.h"
#include "store/database.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>

namespace {

QString text(const char* pattern, const QString& path)
{
    return QCoreApplication::translate("DatabaseRestore", pattern).arg(path);
}

} // namespace

DatabaseRestore::DatabaseRestore(Database& database)
    : m_database(database)
    , m_databaseFilePath(DatabaseFiles::fileBehindLinks(database.databaseFilePath()))
{
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy.MM.dd.hh.mm.ss.zzz"));
    m_safetyCopyPath = DatabaseFiles::safetyCopyPath(m_databaseFilePath, time);
    m_stagingPath = DatabaseFiles::stagingPath(m_databaseFilePath, time);
}

DatabaseRestore::~DatabaseRestore()
{
    end(false);
}

OperationReply* DatabaseRestore::start(const QString& sourceFilePath)
{
    if (DatabaseFiles::isPartOfDatabase(sourceFilePath, m_databaseFilePath))
        return failedReply(text(
            QT_TRANSLATE_NOOP("DatabaseRestore", "The database cannot be restored from itself: %1"), sourceFilePath));
    if (DatabaseFiles::hasWriteAheadLog(DatabaseFiles::fileBehindLinks(sourceFilePath)))
        return failedReply(text(QT_TRANSLATE_NOOP("DatabaseRestore", "Database file is in use: %1"), sourceFilePath));
    m_sourceFilePath = sourceFilePath;
    m_database.close();
    m_isClosed = true;
    if (DatabaseFiles::hasCompanions(m_databaseFilePath))
        return failedReply(
            text(QT_TRANSLATE_NOOP("DatabaseRestore", "Database file is in use: %1"), m_databaseFilePath));
    // A second name: the database is never missing. Where the file system has none, it is renamed at the last moment.
    m_hasSafetyCopy = FileSystem::addName(m_databaseFilePath, m_safetyCopyPath);
    const QString folder = QFileInfo(m_databaseFilePath).absolutePath();
    if (!m_hasSafetyCopy && !FileSystem::isWritableFolder(folder))
        return failedReply(
            text(QT_TRANSLATE_NOOP("DatabaseRestore", "Unable to make safety copy: %1"), m_safetyCopyPath));
    // A copy of no catalogue, or of a damaged one, is told about only when the restore ends.
    return copyFile(sourceFilePath, m_stagingPath, ExistingTarget::Refuse,
        [damage = m_damage, sourceFilePath](const QString& filePath) {
            *damage = rollBackInCopy(sourceFilePath, filePath);
            if (damage->isEmpty())
                *damage = damageOfDatabase(filePath);
            return QString();
        });
}

DatabaseRestore::Outcome DatabaseRestore::end(bool isCopied)
{
    if (!m_isClosed)
        return Outcome::NotCopied;
    m_isClosed = false;
    const bool isRestored = isCopied && replaceDatabase();
    tidyUp(isRestored);
    // Never an empty catalogue in the place of one that is kept elsewhere.
    if (!isRestored && QFileInfo::exists(m_databaseFilePath))
        m_database.open();
    if (isRestored)
        return Outcome::Restored;
    return isCopied ? Outcome::Failed : Outcome::NotCopied;
}

bool DatabaseRestore::replaceDatabase()
{
    if (!opens(m_stagingPath) || !isSound() || !makeSafetyCopy())
        return false;
    if (!FileSystem::renameReplacing(m_stagingPath, m_databaseFilePath)) {
        m_errorText = text(QT_TRANSLATE_NOOP("DatabaseRestore", "Unable to write target file: %1"), m_databaseFilePath);
        putSafetyCopyBack();
        return false;
    }
    FileSystem::syncFolderOf(m_databaseFilePath);
    if (m_database.open())
        return true;
    m_errorText = m_database.lastError();
    putSafetyCopyBack();
    return false;
}

// Tried with a store of its own, so that a file that is no catalogue never takes the database's place.
bool DatabaseRestore::opens(const QString& filePath)
{
    // A store makes a new catalogue where it finds no file.
    if (!QFileInfo::exists(filePath)) {
        m_errorText = text(QT_TRANSLATE_NOOP("DatabaseRestore", "Unable to write target file: %1"), filePath);
        return false;
    }
    Database candidate(filePath);
    const bool isOpened = candidate.open();
    m_errorText = candidate.lastError();
    candidate.close();
    return isOpened;
}

// A catalogue opens also when the pages with its records cannot be read any more.
bool DatabaseRestore::isSound()
{
    if (m_damage->isEmpty())
        return true;
    m_errorText = text(QT_TRANSLATE_NOOP("DatabaseRestore", "The backup file is damaged: %1"), m_sourceFilePath)
        + QLatin1Char('\n') + *m_damage;
    return false;
}

bool DatabaseRestore::makeSafetyCopy()
{
    if (m_hasSafetyCopy)
        return true;
    m_hasSafetyCopy = FileSystem::renameToNew(m_databaseFilePath, m_safetyCopyPath);
    if (!m_hasSafetyCopy)
        m_errorText = text(QT_TRANSLATE_NOOP("DatabaseRestore", "Unable to make safety copy: %1"), m_safetyCopyPath);
    return m_hasSafetyCopy;
}

void DatabaseRestore::putSafetyCopyBack()
{
    if (FileSystem::isSameFile(m_safetyCopyPath, m_databaseFilePath))
        return;
    if (!FileSystem::renameReplacing(m_safetyCopyPath, m_databaseFilePath))
        m_errorText += QLatin1Char('\n')
            + text(QT_TRANSLATE_NOOP("DatabaseRestore", "The previous database is kept in %1"), m_safetyCopyPath);
}

// Removes only what this restore has made, and the previous database only when the new one is open.
void DatabaseRestore::tidyUp(bool isRestored)
{
    DatabaseFiles::remove(m_stagingPath);
    if (m_hasSafetyCopy && (isRestored || FileSystem::isSameFile(m_safetyCopyPath, m_databaseFilePath)))
        QFile::remove(m_safetyCopyPath);
}
