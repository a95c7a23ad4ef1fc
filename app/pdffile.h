// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Whether a file begins and ends as a PDF document does, with its table of contents where the end says it is. What
/// was written to a full disk lacks bytes somewhere, and fails this. Thread: any.
bool isWholePdfFile(const QString& filePath);
