// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/metadatareader.h"

#include "audio/mediainput.h"
#include "scan/tagstream.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <taglib/fileref.h>
#include <taglib/tag.h>
#include <taglib/tpropertymap.h>
#include <taglib/tstringlist.h>

#include <utility>

namespace {

constexpr double ratingOfNewFile = 1.0;

struct ReaderTexts
{
    Q_DECLARE_TR_FUNCTIONS(MetaDataReader)

public:
    static QString failureText(MediaInput::Failure failure);
};

QString ReaderTexts::failureText(MediaInput::Failure failure)
{
    switch (failure) {
    case MediaInput::Failure::None:
        break;
    case MediaInput::Failure::OpenInput:
        return tr("Unable to open input");
    case MediaInput::Failure::FindStreamInfo:
        return tr("Cannot find stream info");
    case MediaInput::Failure::FindAudioStream:
        return tr("No audio stream found");
    case MediaInput::Failure::FindDecoder:
        return tr("Unable to find decoder");
    case MediaInput::Failure::OpenCodec:
        return tr("Unable to open codec");
    }
    return {};
}

QVariantMap failedProbe(const QString& error)
{
    return { { QStringLiteral("error"), error } };
}

QString text(const QVariantMap& map, const QString& key)
{
    return map.value(key).toString();
}

QString dictionaryText(const QVariantMap& probe, const char* key)
{
    return text(probe, QStringLiteral("metadata/") + QLatin1String(key));
}

QString description(const QVariantMap& probe, const QVariantMap& tags, const QString& format, const QString& fileName)
{
    QStringList candidates{ text(tags, QStringLiteral("comment")).trimmed(), dictionaryText(probe, "description"),
        dictionaryText(probe, "comment"), dictionaryText(probe, "title") };
    if (format == QLatin1String("aiff"))
        candidates.append(dictionaryText(probe, "genre"));
    for (const QString& candidate : std::as_const(candidates)) {
        if (!candidate.isEmpty())
            return candidate;
    }
    return ReaderTexts::tr("%1 (No description found)").arg(fileName);
}

QString originReference(const QVariantMap& probe, const QString& format)
{
    QString reference = dictionaryText(probe, "publisher");
    if (reference.isEmpty()) {
        reference = dictionaryText(probe, "encoded_by");
    } else if (const QString volume = dictionaryText(probe, "toal"); !volume.isEmpty()) {
        reference += QLatin1Char(' ') + volume;
    }
    if (reference.isEmpty())
        reference = dictionaryText(probe, "encoder");
    const QString originator = dictionaryText(probe, "originator_reference");
    if (format != QLatin1String("wav") || originator.isEmpty())
        return reference;
    return reference.isEmpty() ? originator : reference + QLatin1Char(' ') + originator;
}

void insertTagTexts(QVariantMap& fields, const QVariantMap& probe, const QVariantMap& tags)
{
    // Record field and the key of both sources.
    static const QVector<QPair<QString, QString>> sources{
        { QStringLiteral("artist"), QStringLiteral("artist") },
        { QStringLiteral("title"), QStringLiteral("title") },
        { QStringLiteral("album"), QStringLiteral("album") },
        { QStringLiteral("comments"), QStringLiteral("comment") },
        { QStringLiteral("genre"), QStringLiteral("genre") },
        { QStringLiteral("year"), QStringLiteral("year") },
        { QStringLiteral("bitrate"), QStringLiteral("bitrate") },
    };
    for (const auto& [field, key] : sources) {
        const QString tag = text(tags, key);
        fields.insert(field, tag.isEmpty() ? text(probe, QStringLiteral("metadata/") + key) : tag);
    }
}

QVariantMap pathFields(const QString& path)
{
    const QFileInfo info(path);
    return { { QStringLiteral("filePath"), path }, { QStringLiteral("fileName"), info.fileName() },
        { QStringLiteral("fileType"), fileTypeOf(info) } };
}

void copyStreamProperties(QVariantMap& fields, const QVariantMap& probe)
{
    for (const char* name : { "duration", "sampleRate", "channelsCount", "bitsPerSample" }) {
        const QString key = QLatin1String(name);
        if (probe.contains(key))
            fields.insert(key, probe.value(key));
    }
}

} // namespace

QString fileTypeOf(const QFileInfo& file)
{
    const QString suffix = file.suffix().toLower();
    return suffix.isNull() ? QStringLiteral("") : suffix;
}

MetaData unreadMetaData(const QString& path, const QString& error)
{
    QVariantMap fields = pathFields(path);
    fields.insert(QStringLiteral("error"), error.isEmpty() ? ReaderTexts::tr("Unable to open input") : error);
    return MetaData(fields);
}

MetaData readMetaData(const QString& path)
{
    const QVariantMap probe = probeStreamInfo(path);
    if (const QString error = text(probe, QStringLiteral("error")); !error.isEmpty())
        return unreadMetaData(path, error);

    QVariantMap fields = pathFields(path);
    const QString fileName = text(fields, QStringLiteral("fileName"));
    const QString fileType = text(fields, QStringLiteral("fileType"));

    const QVariantMap tags = readTagProperties(path);
    const QString probedFormat = text(probe, QStringLiteral("format"));
    const QString format = probedFormat.isEmpty() ? fileType : probedFormat;
    fields.insert(QStringLiteral("description"), description(probe, tags, format, fileName));
    fields.insert(QStringLiteral("originReference"), originReference(probe, format));
    insertTagTexts(fields, probe, tags);
    copyStreamProperties(fields, probe);
    fields.insert(QStringLiteral("rating"), ratingOfNewFile);
    return MetaData(fields);
}

QVariantMap probeStreamInfo(const QString& path)
{
    if (path.isEmpty())
        return failedProbe(ReaderTexts::tr("File name is empty"));
    MediaInput input;
    if (!input.open(path))
        return failedProbe(ReaderTexts::failureText(input.failure()));

    QVariantMap probe{ { QStringLiteral("format"), input.formatName() },
        { QStringLiteral("sampleRate"), input.sampleRate() },
        { QStringLiteral("channelsCount"), input.channelsCount() },
        { QStringLiteral("bitsPerSample"), input.bitsPerSample() }, { QStringLiteral("duration"), input.duration() } };
    const auto entries = input.metadata();
    for (const auto& [key, value] : entries)
        probe.insert(QStringLiteral("metadata/") + key, value);
    return probe;
}

QVariantMap readTagProperties(const QString& path)
{
    if (!QFileInfo(path).isFile())
        return {};
    TagStream stream(QFile::encodeName(path));
    if (!stream.isOpen())
        return {};
    const TagLib::FileRef reference(&stream, true, TagLib::AudioProperties::Average);
    if (reference.isNull() || !reference.tag())
        return {};

    QVariantMap tags;
    const TagLib::PropertyMap properties = reference.tag()->properties();
    for (const auto& [name, values] : properties)
        tags.insert(TStringToQString(name).toLower(), TStringToQString(values.toString(" ")));
    return tags;
}
