// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Reads a catalogue's whole file and tells what is wrong with its pages; empty when nothing is. A file that is no
/// catalogue at all is told likewise.
///
/// It takes about a second for 500 MB. Whether each index holds what its table holds is not looked at: that would take
/// forty times as long. Nobody may write the file meanwhile. Makes no file beside it. Thread: any, best a worker's.
QString damageOfDatabase(const QString& filePath);
