// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/metadatafields.h"

#include "store/metadata.h"

#include <algorithm>

namespace {

template <auto getter>
QVariant readField(const MetaData& record)
{
    return QVariant::fromValue((record.*getter)());
}

template <auto getter, auto setter>
void writeField(MetaData& record, const QVariant& value)
{
    using Value = decltype((record.*getter)());
    (record.*setter)(value.value<Value>());
}

template <auto getter, auto setter>
MetaDataField field(const char* name)
{
    return { QString::fromLatin1(name), readField<getter>, writeField<getter, setter> };
}

std::vector<MetaDataField> buildFields()
{
    return {
        field<&MetaData::id, &MetaData::setId>("id"),
        field<&MetaData::filePath, &MetaData::setFilePath>("filePath"),
        field<&MetaData::fileName, &MetaData::setFileName>("fileName"),
        field<&MetaData::fileType, &MetaData::setFileType>("fileType"),
        field<&MetaData::error, &MetaData::setError>("error"),
        field<&MetaData::library, &MetaData::setLibrary>("library"),
        field<&MetaData::description, &MetaData::setDescription>("description"),
        field<&MetaData::duration, &MetaData::setDuration>("duration"),
        field<&MetaData::rating, &MetaData::setRating>("rating"),
        field<&MetaData::sampleRate, &MetaData::setSampleRate>("sampleRate"),
        field<&MetaData::channelsCount, &MetaData::setChannelsCount>("channelsCount"),
        field<&MetaData::bitsPerSample, &MetaData::setBitsPerSample>("bitsPerSample"),
        field<&MetaData::originReference, &MetaData::setOriginReference>("originReference"),
        field<&MetaData::artist, &MetaData::setArtist>("artist"),
        field<&MetaData::title, &MetaData::setTitle>("title"),
        field<&MetaData::album, &MetaData::setAlbum>("album"),
        field<&MetaData::comments, &MetaData::setComments>("comments"),
        field<&MetaData::genre, &MetaData::setGenre>("genre"),
        field<&MetaData::year, &MetaData::setYear>("year"),
        field<&MetaData::bitrate, &MetaData::setBitrate>("bitrate"),
        field<&MetaData::playlist, &MetaData::setPlaylist>("playlist"),
        field<&MetaData::scanTimestamp, &MetaData::setScanTimestamp>("scanTimestamp"),
    };
}

} // namespace

const std::vector<MetaDataField>& metaDataFields()
{
    static const std::vector<MetaDataField> fields = buildFields();
    return fields;
}

const MetaDataField* findMetaDataField(const QString& name)
{
    const std::vector<MetaDataField>& fields = metaDataFields();
    const auto found = std::find_if(
        fields.begin(), fields.end(), [&name](const MetaDataField& candidate) { return candidate.name == name; });
    return found == fields.end() ? nullptr : &*found;
}
