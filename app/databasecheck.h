// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Reads a catalogue's whole file and tells what is wrong with its pages; empty when nothing is. A file that is no
/// catalogue at all is told likewise.
///
/// It takes about a second for 500 MB. Whether each index holds what its table holds is not looked at: that would take
/// forty times as long. Nobody may write the file meanwhile. Makes no file beside it. Thread: any, best a worker's.
QString damageOfDatabase(const QString& filePath);

/// Of a catalogue whose program died within a change, the file is whole only together with the journal beside it. Where
/// the source has one, the change is rolled back in the copy, with a copy of the journal that is gone afterwards; the
/// source and its journal stay as they are. Empty, or why that failed. Thread: as above.
QString rollBackInCopy(const QString& sourceFilePath, const QString& copyFilePath);
