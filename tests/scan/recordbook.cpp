// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/recordbook.h"

#include "scan/libraryrules.h"

#include <QFileInfo>

namespace {

const QString idKey = QStringLiteral("id");
const QString filePathKey = QStringLiteral("filePath");
const QString fileNameKey = QStringLiteral("fileName");
const QString fileTypeKey = QStringLiteral("fileType");
const QString libraryKey = QStringLiteral("library");
const QString playlistKey = QStringLiteral("playlist");

} // namespace

bool RecordBook::isAccepted(const QVariantMap& item) const
{
    if (item.value(QStringLiteral("duration")).toDouble() <= 0)
        return false;
    const QString path = item.value(filePathKey).toString();
    for (const QVariantMap& other : m_records) {
        // The generated paths are ASCII, as is the folding of the column.
        const bool isSamePath = other.value(filePathKey).toString().compare(path, Qt::CaseInsensitive) == 0;
        if (isSamePath && other.value(idKey) != item.value(idKey))
            return false;
    }
    return true;
}

void RecordBook::push(const MetaDataList& items, int failingWrite)
{
    int write = 0;
    for (const MetaData& item : items) {
        QVariantMap record = item.toVariantMap();
        if (item.id() > 0 && !m_records.contains(item.id()))
            continue;
        if (write++ == failingWrite || !isAccepted(record))
            continue;
        if (item.id() < 1)
            record.insert(idKey, ++m_lastId);
        m_records.insert(record.value(idKey).toLongLong(), record);
    }
}

void RecordBook::remove(const QVariantList& ids)
{
    for (const QVariant& id : ids)
        m_records.remove(id.toLongLong());
}

void RecordBook::setPlaylist(const QVariantList& ids, int value)
{
    for (const QVariant& id : ids) {
        if (m_records.contains(id.toLongLong()))
            m_records[id.toLongLong()].insert(playlistKey, value);
    }
}

void RecordBook::clear()
{
    m_records.clear();
}

void RecordBook::evaluate(const QString& rules)
{
    const LibraryRules parsedRules = parseLibraryRules(rules);
    for (QVariantMap& record : m_records)
        record.insert(libraryKey, evaluateLibrary(record.value(fileNameKey).toString(), parsedRules) + "");
}

void RecordBook::replace(const Replacing& replacing, int failingWrite)
{
    int write = 0;
    const QList<qint64> ids = m_records.keys();
    for (const qint64 id : ids) {
        QVariantMap record = m_records.value(id);
        if (replacing.playlistOnly && record.value(playlistKey).toInt() == 0)
            continue;
        bool isChanged = false;
        for (const QString& field : replacing.fields) {
            QString value = record.value(field).toString();
            if (!value.contains(replacing.before, replacing.caseSensitivity))
                continue;
            isChanged = true;
            record.insert(field, value.replace(replacing.before, replacing.after, replacing.caseSensitivity));
        }
        if (replacing.fields.contains(filePathKey) && isChanged) {
            const QFileInfo file(record.value(filePathKey).toString());
            record.insert(fileNameKey, file.fileName());
            record.insert(fileTypeKey, file.suffix().toLower());
        }
        if (isChanged && write++ != failingWrite && isAccepted(record))
            m_records.insert(id, record);
    }
}
