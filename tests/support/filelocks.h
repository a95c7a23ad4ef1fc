// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace TestSupport {

/// Whether this process holds a POSIX lock on the file that keeps another from writing. A process does not see its own
/// locks, so a child looks. Thread: any.
bool isLockedForOthers(const QString& path);

} // namespace TestSupport
