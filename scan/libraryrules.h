// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QRegExp>
#include <QString>
#include <QVector>

/// One line of the library rules: files whose name matches `pattern` anywhere belong to the library `name`.
///
/// The pattern is a case-sensitive expression in the classic Qt syntax; an invalid one never matches. Matching changes
/// hidden state of the expression, so one list of rules may only be used on one thread at a time.
struct LibraryRule
{
    QString name;
    QRegExp pattern;
};

using LibraryRules = QVector<LibraryRule>;

/// The rules of a text with one "<name>: <pattern>" a line, in line order. Lines without a name before their first ":"
/// are skipped.
LibraryRules parseLibraryRules(const QString& text);

/// The library of the first rule that matches a file name (not a path); a null string when none does.
QString evaluateLibrary(const QString& fileName, const LibraryRules& rules);

/// Gives each record the library of its file name; a record that no rule matches keeps its library.
void applyLibraryRules(MetaDataList& records, const LibraryRules& rules);
