// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QTextDocument;

/// The text of an editor of plain text as it was typed, its lines separated by line feeds. The document's own plain
/// text would turn no-break spaces into ordinary ones. Thread: GUI.
QString plainTextOf(const QTextDocument& document);
