// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

/// What the scan of a folder costs the music player daemon (mpd), which many people use for large collections.
struct MpdScan
{
    /// The sounds that it took up.
    int songs = 0;
    /// Of all its threads, seconds.
    double processorTime = 0;
    /// Seconds.
    double passedTime = 0;
};

/// Lets mpd scan the folder into a new database of its own, without tags of an older run; nothing where mpd is not
/// installed. Ends the program when mpd does not do it. Thread: the program's own.
std::optional<MpdScan> scanWithMpd(const QString& folder);
