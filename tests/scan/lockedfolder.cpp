// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/lockedfolder.h"

#include "store/database.h"

#include <QDir>
#include <QFile>

LockedFolder::LockedFolder(Database& database, const QString& path)
    : m_database(database)
    , m_path(path)
{
    if (!QDir().mkdir(path) || !QFile::setPermissions(path, {}))
        qFatal("Cannot make the folder");
    runInStoreThread([this]() { m_permissionsCount.emplace(); });
}

LockedFolder::~LockedFolder()
{
    runInStoreThread([this]() { m_permissionsCount.reset(); });
    QFile::setPermissions(m_path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

void LockedFolder::runInStoreThread(const std::function<void()>& run)
{
    QMetaObject::invokeMethod(&m_database, run, Qt::BlockingQueuedConnection);
}
