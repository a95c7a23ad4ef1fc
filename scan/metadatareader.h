// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QString>
#include <QVariantMap>

class QFileInfo;

/// Reads a media file into a record. Each call opens the file for reading only, blocks until it is read and keeps no
/// state. Thread: any, many at once.

/// The record of a file: stream properties from the probe, texts from the tags or, where a tag is missing, from the
/// container's dictionary; rating 1.0. It never fails: a file that cannot be read gives a record with nothing but its
/// path, name, type and `error()`.
MetaData readMetaData(const QString& path);

/// The record of a file that is not to be opened, or could not be: nothing but its path, name, type and `error()`,
/// which is that of files that cannot be opened where no other is given.
MetaData unreadMetaData(const QString& path, const QString& error = QString());

/// A record's file type: the suffix in small letters; empty, and not null, which no record may be, without one.
QString fileTypeOf(const QFileInfo& file);

/// What FFmpeg says about a file: "format", "sampleRate" (Hz), "channelsCount", "bitsPerSample", "duration" (seconds)
/// and one "metadata/<lower-case key>" for each entry of the container's dictionary; or "error" alone.
QVariantMap probeStreamInfo(const QString& path);

/// The tag properties of a file by lower-case name, several values of one property joined with a blank. Empty when the
/// file has no tag or cannot be read.
QVariantMap readTagProperties(const QString& path);
