// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>

/// Finds paths of one run that differ only in the case of ASCII letters.
///
/// The tables compare paths without case, the file system does not, so two such files share one record and the later
/// one overwrites the first. Only hashes are kept: a run may hold a million paths.
/// Owner: the stack of one scan. Thread: its creator's.
class PathSpellings final
{
public:
    /// True when another spelling of this path was added before.
    bool add(const QString& path);

private:
    QHash<quint64, quint64> m_firstSpellings;
};
