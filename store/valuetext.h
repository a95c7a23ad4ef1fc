// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Texts of values that several places show alike, always in the C locale. Thread: any.

/// Seconds rounded up to whole ones as "minutes:seconds", each at least two digits: 125.2 gives "02:06".
QString durationText(double seconds);

/// A byte count in steps of 1024: "%1 B" (whole), "%1 KB", "%1 MB", "%1 GB" with this many decimals. From 2 to the
/// 40th on the number counts units of that size while the label stays "GB".
QString byteSizeText(qint64 bytes, int decimals);
