// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/scan/permissions.h"

#include <QByteArray>
#include <QSemaphore>
#include <QStringList>

#include <memory>

/// What the tests of the commands that copy files share. Thread: the test's.

/// Bytes of one chunk of a copy.
constexpr int chunk = 10485760;

/// Everything in a folder, sorted.
QStringList namesIn(const QString& folder);

/// Bytes of which no two chunks are the same.
QByteArray someBytes(int size);

/// The bytes of a file; fails the program when it cannot be read.
QByteArray contents(const QString& path);

/// Nothing can be made, renamed or removed in a folder while this lives, also not by root or by the threads of the
/// pool.
class ClosedFolder final
{
public:
    explicit ClosedFolder(const QString& path);
    ~ClosedFolder();
    Q_DISABLE_COPY(ClosedFolder)

private:
    const QString m_path;
    const PermissionsCount m_permissionsCount;
};

/// What is started on the global thread pool waits while this lives.
class PoolHold final
{
public:
    PoolHold();
    ~PoolHold();
    Q_DISABLE_COPY(PoolHold)

private:
    int m_earlierThreads;
    std::shared_ptr<QSemaphore> m_released = std::make_shared<QSemaphore>();
};
