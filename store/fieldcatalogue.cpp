// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/fieldcatalogue.h"

#include <QCoreApplication>

namespace {

// In the order of sortableFieldNames().
const char* const sortableFieldLabels[] = {
    QT_TRANSLATE_NOOP("FieldCatalogue", "File Path"),
    QT_TRANSLATE_NOOP("FieldCatalogue", "File Name"),
    QT_TRANSLATE_NOOP("FieldCatalogue", "Type"),
    QT_TRANSLATE_NOOP("FieldCatalogue", "Library"),
    QT_TRANSLATE_NOOP("FieldCatalogue", "Description"),
    QT_TRANSLATE_NOOP("FieldCatalogue", "Duration"),
    QT_TRANSLATE_NOOP("FieldCatalogue", "Rating"),
};

QStringList splitNames(const QString& names)
{
    return names.split(QLatin1Char(';'));
}

} // namespace

const QStringList& allFieldNames()
{
    static const QStringList names = splitNames(QStringLiteral(
        "id;filePath;fileName;fileType;library;description;duration;rating;sampleRate;channelsCount;bitsPerSample;"
        "originReference;artist;title;album;comments;genre;year;bitrate;playlist;scanTimestamp"));
    return names;
}

const QStringList& sortableFieldNames()
{
    static const QStringList names
        = splitNames(QStringLiteral("filePath;fileName;fileType;library;description;duration;rating"));
    return names;
}

QString fieldLabel(const QString& fieldName)
{
    const int index = sortableFieldNames().indexOf(fieldName);
    return index < 0 ? QString() : QCoreApplication::translate("FieldCatalogue", sortableFieldLabels[index]);
}
