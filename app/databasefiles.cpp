// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasefiles.h"

#include "app/filesystem.h"
#include "store/database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

const char* const journalSuffix = "-journal";
const char* const writeAheadLogSuffix = "-wal";
const char* const companionSuffixes[] = { journalSuffix, writeAheadLogSuffix, "-shm" };

const QString safetyCopySuffix = QStringLiteral("backup");
const QString stagingSuffix = QStringLiteral("restoring");

// What a restore left beside the catalogue under a name with this ending, sorted by time. The user's own files may have
// names much like these.
QStringList leftovers(const QFileInfo& database, const QString& ending)
{
    const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(database.fileName()) + QStringLiteral(R"(\.\d{4}(\.\d\d){5}\.\d{3}\.)") + ending));
    const QDir folder = database.dir();
    QStringList paths;
    for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden, QDir::Name)) {
        if (pattern.match(name).hasMatch())
            paths.append(folder.filePath(name));
    }
    return paths;
}

} // namespace

QString DatabaseFiles::fileBehindLinks(const QString& filePath)
{
    const QString path = QFileInfo(filePath).canonicalFilePath();
    return path.isEmpty() ? filePath : path;
}

bool DatabaseFiles::isPartOfDatabase(const QString& path, const QString& databaseFilePath)
{
    if (FileSystem::isSameFile(path, databaseFilePath))
        return true;
    const QFileInfo file(path);
    const QFileInfo database(databaseFilePath);
    return file.absoluteDir().canonicalPath() == database.absoluteDir().canonicalPath()
        && std::any_of(std::begin(companionSuffixes), std::end(companionSuffixes),
            [&](const char* suffix) { return file.fileName() == database.fileName() + QLatin1String(suffix); });
}

bool DatabaseFiles::isPartOfDatabase(const QString& path, const Database* database)
{
    return database && isPartOfDatabase(path, database->databaseFilePath());
}

bool DatabaseFiles::hasCompanions(const QString& databaseFilePath)
{
    return std::any_of(std::begin(companionSuffixes), std::end(companionSuffixes),
        [&](const char* suffix) { return FileSystem::isNameTaken(databaseFilePath + QLatin1String(suffix)); });
}

QString DatabaseFiles::journalPath(const QString& databaseFilePath)
{
    return databaseFilePath + QLatin1String(journalSuffix);
}

bool DatabaseFiles::hasWriteAheadLog(const QString& databaseFilePath)
{
    return FileSystem::isNameTaken(databaseFilePath + QLatin1String(writeAheadLogSuffix));
}

void DatabaseFiles::remove(const QString& databaseFilePath)
{
    QFile::remove(databaseFilePath);
    for (const char* suffix : companionSuffixes)
        QFile::remove(databaseFilePath + QLatin1String(suffix));
}

QString DatabaseFiles::safetyCopyPath(const QString& databaseFilePath, const QString& time)
{
    return QStringLiteral("%1.%2.%3").arg(databaseFilePath, time, safetyCopySuffix);
}

QString DatabaseFiles::stagingPath(const QString& databaseFilePath, const QString& time)
{
    return QStringLiteral("%1.%2.%3").arg(databaseFilePath, time, stagingSuffix);
}

void DatabaseFiles::recoverFromInterruptedRestore(const QString& databaseFilePath)
{
    const QFileInfo database(fileBehindLinks(databaseFilePath));
    const QStringList safetyCopies = leftovers(database, safetyCopySuffix);
    if (!safetyCopies.isEmpty())
        FileSystem::renameToNew(safetyCopies.last(), database.filePath());
    for (const QString& path : safetyCopies) {
        if (FileSystem::isSameFile(path, database.filePath()))
            QFile::remove(path);
    }
    for (const QString& path : leftovers(database, stagingSuffix))
        remove(path);
    const QString unfinished = stagingSuffix + QStringLiteral(R"((-.*|\.[0-9a-f]+\.part(-journal)?))");
    for (const QString& path : leftovers(database, unfinished))
        QFile::remove(path);
}
