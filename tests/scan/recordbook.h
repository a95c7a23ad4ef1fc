// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <QVector>

/// One search and replace; `before` is not empty.
struct Replacing
{
    QStringList fields;
    QString before;
    QString after;
    Qt::CaseSensitivity caseSensitivity;
    bool playlistOnly;
};

/// What a table should hold after any sequence of writes, kept as plainly as possible beside the store.
///
/// `failingWrite` is the number, from 0, of the one write that is refused; -1 for none. Owner and thread: one test.
class RecordBook final
{
public:
    /// Updates records with an id and adds those without; refuses a path that another record has, and no duration.
    void push(const MetaDataList& items, int failingWrite);
    void remove(const QVariantList& ids);
    void setPlaylist(const QVariantList& ids, int value);
    void clear();
    void evaluate(const QString& rules);
    void replace(const Replacing& replacing, int failingWrite);

    QList<qint64> ids() const { return m_records.keys(); }
    MetaData record(qint64 id) const { return MetaData(m_records.value(id)); }
    /// In the order of the ids.
    QVector<QVariantMap> maps() const { return m_records.values().toVector(); }

private:
    bool isAccepted(const QVariantMap& item) const;

    QMap<qint64, QVariantMap> m_records;
    qint64 m_lastId = 0;
};
