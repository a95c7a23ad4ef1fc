// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/scan/permissions.h"

#include <QString>

#include <functional>
#include <optional>

class Database;

/// A new folder that a store cannot read while this lives, also when the tests run as root.
/// Owner: the stack of a test; made while no operation runs and destroyed before the store. Thread: the test's.
class LockedFolder final
{
public:
    LockedFolder(Database& database, const QString& path);
    ~LockedFolder();
    Q_DISABLE_COPY(LockedFolder)

    const QString& path() const { return m_path; }

private:
    void runInStoreThread(const std::function<void()>& run);

    Database& m_database;
    QString m_path;
    std::optional<PermissionsCount> m_permissionsCount;
};
