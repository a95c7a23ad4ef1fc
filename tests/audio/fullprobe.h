// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariantMap>

/// What FFmpeg finds out about a file when it may look as closely as it likes: the measure for an input that spares it
/// the looking. Thread: any.
namespace FullProbe {

/// "failure" alone, the number of a `MediaInput::Failure`; or format, codec, rate, channels, bits, duration, start
/// and the container's texts of the file's first sound, its format forced by the suffix as the program does.
QVariantMap properties(const QString& path);

/// The same of an input of the program.
QVariantMap propertiesOfInput(const QString& path);

} // namespace FullProbe
