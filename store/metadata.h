// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMetaType>
#include <QSharedDataPointer>
#include <QString>
#include <QVariantMap>

/// One catalogue entry: a media file with its stream properties and tags.
///
/// An implicitly shared value (copy on write). A default-constructed record is *null*: it has no data at all and is
/// what lookups return when nothing was found. Reading a null record gives empty strings and zeros; setting any field
/// makes it a record with defaults.
///
/// The field names are at once the column names of the database tables, the keys of the map form and, behind a colon,
/// the bind names of the statements.
///
/// Thread: a value; copies may be used on any thread.
class MetaData
{
public:
    /// A null record.
    MetaData();
    /// A record with the fields found in `map`; missing keys give empty strings and zeros.
    explicit MetaData(const QVariantMap& map);
    MetaData(const MetaData& other);
    MetaData(MetaData&& other) noexcept;
    MetaData& operator=(const MetaData& other);
    MetaData& operator=(MetaData&& other) noexcept;
    ~MetaData();

    bool isNull() const;

    /// All fields and "error" by name, 22 keys; an empty map for a null record.
    QVariantMap toVariantMap() const;

    /// Database row id; 0 for a record that was not stored yet.
    qint64 id() const;
    void setId(qint64 value);
    /// Full path of the media file.
    QString filePath() const;
    void setFilePath(const QString& value);
    /// Last component of the path, with its suffix.
    QString fileName() const;
    void setFileName(const QString& value);
    /// Lower-case suffix.
    QString fileType() const;
    void setFileType(const QString& value);
    /// Why the file could not be read or written; empty when all went well. Never stored.
    QString error() const;
    void setError(const QString& value);
    /// Name given by the library rules or by the user.
    QString library() const;
    void setLibrary(const QString& value);
    QString description() const;
    void setDescription(const QString& value);
    /// Seconds; the database refuses 0 and less.
    double duration() const;
    void setDuration(double value);
    /// 0.0 to 100.0; a newly read file has 1.0.
    double rating() const;
    void setRating(double value);
    /// Hz; the database refuses 0 and less.
    int sampleRate() const;
    void setSampleRate(int value);
    /// The database refuses 0 and less.
    int channelsCount() const;
    void setChannelsCount(int value);
    /// The database refuses 0 and less.
    int bitsPerSample() const;
    void setBitsPerSample(int value);
    QString originReference() const;
    void setOriginReference(const QString& value);
    QString artist() const;
    void setArtist(const QString& value);
    QString title() const;
    void setTitle(const QString& value);
    QString album() const;
    void setAlbum(const QString& value);
    QString comments() const;
    void setComments(const QString& value);
    QString genre() const;
    void setGenre(const QString& value);
    /// As written in the tag.
    QString year() const;
    void setYear(const QString& value);
    /// As written in the tag.
    QString bitrate() const;
    void setBitrate(const QString& value);
    /// 1 when the record is on the playlist, else 0.
    int playlist() const;
    void setPlaylist(int value);
    /// Start of the scan that last saw the file, milliseconds since the epoch, UTC.
    qint64 scanTimestamp() const;
    void setScanTimestamp(qint64 value);

private:
    struct Private;
    Private& writable();
    const Private& readable() const;

    QSharedDataPointer<Private> m_d;
};

// A record is one pointer, so lists may hold it in place.
Q_DECLARE_TYPEINFO(MetaData, Q_MOVABLE_TYPE);
Q_DECLARE_METATYPE(MetaData)

/// An ordered list of records: what a scan produces and what a page of a table is.
class MetaDataList : public QList<MetaData>
{
public:
    using QList<MetaData>::QList;
};

Q_DECLARE_METATYPE(MetaDataList)
