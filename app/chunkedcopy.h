// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDevice>
#include <QString>

#include <functional>
#include <vector>

/// Copies files chunk by chunk, each through one buffer that is allocated once.
///
/// Owner and thread: the stack of the worker that copies.
class ChunkedCopy final
{
public:
    enum class Outcome
    {
        Copied,
        Canceled,
        SourceNotOpened,
        TargetNotOpened,
        SourceNotRead,
        TargetNotWritten,
        /// By `Watch::isAccepted`.
        NotAccepted
    };

    struct Watch
    {
        /// Asked before each chunk, and before the copy gets its name.
        std::function<bool()> isCanceled;
        /// Told after each chunk: the position in the source and its size, in bytes. May be empty.
        std::function<void(qint64 position, qint64 size)> progress;
        /// Asked once the copy is whole, with where it is until it gets its name. May be empty.
        std::function<bool(const QString& filePath)> isAccepted = {};
    };

    struct Options
    {
        bool isReplacing = false;
        /// Whether the copy outlasts a loss of power once it has its name.
        bool isSynced = false;
        bool hasPermissionsOfSource = false;
    };

    ChunkedCopy(const Watch& watch, const Options& options);

    /// The copy appears only when it is whole; otherwise what stood in its place stays.
    Outcome copy(const QString& sourceFilePath, const QString& targetFilePath);

private:
    const Watch m_watch;
    const Options m_options;
    std::vector<char> m_buffer;
};
