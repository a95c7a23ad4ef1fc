// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataexporter.h"

#include "app/databasefiles.h"
#include "store/fieldcatalogue.h"
#include "store/valuetext.h"

#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <iterator>

#include <unistd.h>

namespace {

const QLatin1Char separator('\t');
const QLatin1Char lineEnd('\n');

QString exportedText(const QString& field, const QVariant& value)
{
    QString text = field == QLatin1String("duration") ? durationText(value.toDouble()) : value.toString();
    return text.replace(separator, QLatin1Char(' '));
}

// A device, a pipe or a folder takes no file in its place, and the catalogue is never given for a text.
bool isReplaceable(const QString& filePath, const Database* database)
{
    const QFileInfo file(filePath);
    return (!file.exists() || file.isFile()) && !DatabaseFiles::isPartOfDatabase(filePath, database);
}

} // namespace

MetaDataExporter::MetaDataExporter(QObject* parent)
    : MetaDataHandler(parent)
{
}

MetaDataExporter::~MetaDataExporter() = default;

void MetaDataExporter::setFilePath(const QString& filePath)
{
    m_filePath = filePath;
}

void MetaDataExporter::setExportFields(const QStringList& fields)
{
    m_exportFields.clear();
    const QStringList& known = allFieldNames();
    std::copy_if(fields.begin(), fields.end(), std::back_inserter(m_exportFields),
        [&known](const QString& field) { return known.contains(field); });
}

void MetaDataExporter::beginOutput()
{
    if (QFileInfo(m_filePath).isRelative()) {
        fail(tr("Invalid file name: %1").arg(m_filePath));
        return;
    }
    m_file = std::make_unique<QSaveFile>(m_filePath);
    m_file->setDirectWriteFallback(true);
    if (!isReplaceable(m_filePath, database()) || !m_file->open(QIODevice::WriteOnly)) {
        fail(tr("Unable to open file: %1").arg(m_filePath));
        return;
    }
    write((m_exportFields.join(separator) + lineEnd).toUtf8());
}

void MetaDataExporter::handlePage(const MetaDataList& items)
{
    QByteArray lines;
    for (const MetaData& record : items)
        lines += lineOf(record);
    write(lines);
}

void MetaDataExporter::completeOutput()
{
    // Each step tells of failures that the one before cannot see yet.
    if (!m_file->flush() || ::fsync(m_file->handle()) != 0 || !m_file->commit())
        fail(tr("Unable to write file: %1").arg(m_filePath));
}

void MetaDataExporter::releaseOutput()
{
    m_file.reset();
}

QByteArray MetaDataExporter::lineOf(const MetaData& record) const
{
    const QVariantMap values = record.toVariantMap();
    QStringList texts;
    texts.reserve(m_exportFields.size());
    for (const QString& field : m_exportFields)
        texts.append(exportedText(field, values.value(field)));
    return (texts.join(separator) + lineEnd).toUtf8();
}

void MetaDataExporter::write(const QByteArray& bytes)
{
    if (m_file->write(bytes) != bytes.size())
        fail(tr("Unable to write file: %1").arg(m_filePath));
}
