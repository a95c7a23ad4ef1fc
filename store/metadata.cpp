// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/metadata.h"

#include "store/metadatafields.h"

#include <QSharedData>

struct MetaData::Private : public QSharedData
{
    qint64 id = 0;
    QString filePath;
    QString fileName;
    QString fileType;
    QString error;
    QString library;
    QString description;
    double duration = 0.0;
    double rating = 0.0;
    int sampleRate = 0;
    int channelsCount = 0;
    int bitsPerSample = 0;
    QString originReference;
    QString artist;
    QString title;
    QString album;
    QString comments;
    QString genre;
    QString year;
    QString bitrate;
    int playlist = 0;
    qint64 scanTimestamp = 0;
};

MetaData::MetaData() = default;
MetaData::MetaData(const MetaData& other) = default;
MetaData::MetaData(MetaData&& other) noexcept = default;
MetaData& MetaData::operator=(const MetaData& other) = default;
MetaData& MetaData::operator=(MetaData&& other) noexcept = default;
MetaData::~MetaData() = default;

MetaData::MetaData(const QVariantMap& map)
    : m_d(new Private)
{
    for (const MetaDataField& field : metaDataFields())
        field.write(*this, map.value(field.name));
}

QVariantMap MetaData::toVariantMap() const
{
    QVariantMap map;
    if (isNull())
        return map;
    for (const MetaDataField& field : metaDataFields())
        map.insert(field.name, field.read(*this));
    return map;
}

bool MetaData::isNull() const
{
    return !m_d;
}

MetaData::Private& MetaData::writable()
{
    if (!m_d)
        m_d = new Private;
    return *m_d;
}

const MetaData::Private& MetaData::readable() const
{
    static const Private defaults;
    return m_d ? *m_d : defaults;
}

qint64 MetaData::id() const
{
    return readable().id;
}

void MetaData::setId(qint64 value)
{
    writable().id = value;
}

QString MetaData::filePath() const
{
    return readable().filePath;
}

void MetaData::setFilePath(const QString& value)
{
    writable().filePath = value;
}

QString MetaData::fileName() const
{
    return readable().fileName;
}

void MetaData::setFileName(const QString& value)
{
    writable().fileName = value;
}

QString MetaData::fileType() const
{
    return readable().fileType;
}

void MetaData::setFileType(const QString& value)
{
    writable().fileType = value;
}

QString MetaData::error() const
{
    return readable().error;
}

void MetaData::setError(const QString& value)
{
    writable().error = value;
}

QString MetaData::library() const
{
    return readable().library;
}

void MetaData::setLibrary(const QString& value)
{
    writable().library = value;
}

QString MetaData::description() const
{
    return readable().description;
}

void MetaData::setDescription(const QString& value)
{
    writable().description = value;
}

double MetaData::duration() const
{
    return readable().duration;
}

void MetaData::setDuration(double value)
{
    writable().duration = value;
}

double MetaData::rating() const
{
    return readable().rating;
}

void MetaData::setRating(double value)
{
    writable().rating = value;
}

int MetaData::sampleRate() const
{
    return readable().sampleRate;
}

void MetaData::setSampleRate(int value)
{
    writable().sampleRate = value;
}

int MetaData::channelsCount() const
{
    return readable().channelsCount;
}

void MetaData::setChannelsCount(int value)
{
    writable().channelsCount = value;
}

int MetaData::bitsPerSample() const
{
    return readable().bitsPerSample;
}

void MetaData::setBitsPerSample(int value)
{
    writable().bitsPerSample = value;
}

QString MetaData::originReference() const
{
    return readable().originReference;
}

void MetaData::setOriginReference(const QString& value)
{
    writable().originReference = value;
}

QString MetaData::artist() const
{
    return readable().artist;
}

void MetaData::setArtist(const QString& value)
{
    writable().artist = value;
}

QString MetaData::title() const
{
    return readable().title;
}

void MetaData::setTitle(const QString& value)
{
    writable().title = value;
}

QString MetaData::album() const
{
    return readable().album;
}

void MetaData::setAlbum(const QString& value)
{
    writable().album = value;
}

QString MetaData::comments() const
{
    return readable().comments;
}

void MetaData::setComments(const QString& value)
{
    writable().comments = value;
}

QString MetaData::genre() const
{
    return readable().genre;
}

void MetaData::setGenre(const QString& value)
{
    writable().genre = value;
}

QString MetaData::year() const
{
    return readable().year;
}

void MetaData::setYear(const QString& value)
{
    writable().year = value;
}

QString MetaData::bitrate() const
{
    return readable().bitrate;
}

void MetaData::setBitrate(const QString& value)
{
    writable().bitrate = value;
}

int MetaData::playlist() const
{
    return readable().playlist;
}

void MetaData::setPlaylist(int value)
{
    writable().playlist = value;
}

qint64 MetaData::scanTimestamp() const
{
    return readable().scanTimestamp;
}

void MetaData::setScanTimestamp(qint64 value)
{
    writable().scanTimestamp = value;
}
