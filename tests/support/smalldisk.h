// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTemporaryDir>

namespace TestSupport {

/// A folder that holds only so many bytes, for tests of a full disk.
///
/// Where the process may mount, it is a small disk of the process's own, seen by nobody else. Elsewhere no file of the
/// process can grow beyond that size while the object lives.
///
/// Owner: the stack of one test, one at a time. Thread: the test's; every thread of the process sees the disk.
class SmallDisk final
{
public:
    explicit SmallDisk(qint64 bytes);
    ~SmallDisk();
    Q_DISABLE_COPY(SmallDisk)

    QString filePath(const QString& name) const { return m_folder.filePath(name); }
    QString path() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
    bool m_isMounted = false;
    quint64 m_earlierLimit = 0;
};

} // namespace TestSupport
