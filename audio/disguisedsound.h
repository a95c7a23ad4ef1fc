// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Whether what a file calls 16-bit samples may be the frames of a codec, as a recording of a digital interface is.
///
/// A cheap look that is never wrong about the sound that such interfaces carry, DTS, AC-3 and its successor, bare or
/// wrapped for S/PDIF, and about MPEG and AAC frames that begin with the sound. It may be wrong about samples, which
/// only makes FFmpeg look closer. Thread: any.
bool mayBeDisguisedSound(const std::uint8_t* bytes, int size);

/// So many bytes from the beginning of the sound are looked at: as many as FFmpeg itself looks at.
constexpr int disguiseLookSize = 128 * 1024;
