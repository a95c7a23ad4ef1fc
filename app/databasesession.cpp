// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasesession.h"

#include "scan/storeoperations.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

DatabaseSession::DatabaseSession(const QString& databaseFilePath)
    : m_database(std::make_unique<Database>(databaseFilePath))
{
    m_database->setBulkOperations(scanBulkOperations());
    m_database->moveToThread(&m_thread);
    m_thread.start(QThread::InheritPriority);
}

DatabaseSession::~DatabaseSession()
{
    end();
}

void DatabaseSession::end()
{
    m_database->close();
    m_thread.quit();
    m_thread.wait();
}

bool moveDatabaseToBackup(const QString& databaseFilePath)
{
    const QFileInfo file(databaseFilePath);
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd-hh-mm-ss-zzz"));
    const QString folder = QStringLiteral("Backup/") + time;
    if (!file.dir().mkpath(folder))
        return false;
    const auto moved = [&file, &folder](const QString& suffix) {
        const QString name = file.fileName() + suffix;
        return QFile::rename(file.dir().filePath(name), file.dir().filePath(folder + QLatin1Char('/') + name));
    };
    if (!moved(QString()))
        return false;
    // A journal left behind would be played into the new file.
    for (const auto* companion : { "-journal", "-wal", "-shm" })
        moved(QLatin1String(companion));
    return true;
}
