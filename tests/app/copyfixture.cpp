// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/copyfixture.h"

#include <QDir>
#include <QFile>
#include <QThreadPool>
#include <QtConcurrent>

QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray someBytes(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = char(state >> 24);
    }
    return bytes;
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Cannot read %s", qPrintable(path));
    return file.readAll();
}

ClosedFolder::ClosedFolder(const QString& path)
    : m_path(path)
{
    if (!QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ExeOwner))
        qFatal("Cannot close %s", qPrintable(path));
    // A thread has the rights of the one that starts it, so those that wait for work have to go.
    QThreadPool::globalInstance()->waitForDone();
}

ClosedFolder::~ClosedFolder()
{
    QThreadPool::globalInstance()->waitForDone();
    QFile::setPermissions(m_path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

PoolHold::PoolHold()
    : m_earlierThreads(QThreadPool::globalInstance()->maxThreadCount())
{
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    QtConcurrent::run([released = m_released]() { released->acquire(); });
}

PoolHold::~PoolHold()
{
    m_released->release();
    QThreadPool::globalInstance()->setMaxThreadCount(m_earlierThreads);
}
