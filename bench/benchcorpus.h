// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

/// The generated sound library that the benchmarks of reader and scan share; it lives until the program ends.
namespace BenchCorpus {

/// A folder of 2000 sounds, a twentieth of them broken; made at the first call.
const QString& folder();

/// The files of that folder that a scan finds.
const QStringList& files();

} // namespace BenchCorpus
