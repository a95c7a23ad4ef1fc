// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scan/literalindex.h"
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

/// The rules in the order in which they are tried, with an index of the texts that their patterns require.
///
/// The index only spares most patterns the question: the first rule found is the one that trying them all would find.
///
/// Owner: the operation that parsed it. Thread: one at a time, see `LibraryRule`.
class LibraryRules final
{
public:
    LibraryRules() = default;
    explicit LibraryRules(const QVector<LibraryRule>& rules);

    int size() const { return m_rules.size(); }
    const LibraryRule& at(int index) const { return m_rules.at(index); }
    QVector<LibraryRule>::const_iterator begin() const { return m_rules.cbegin(); }
    QVector<LibraryRule>::const_iterator end() const { return m_rules.cend(); }

    /// The first rule whose pattern matches anywhere in a file name, or nullptr; it lives as long as the list.
    const LibraryRule* firstMatch(const QString& fileName) const;

private:
    QVector<LibraryRule> m_rules;
    // Invalid patterns match nothing and are left out.
    QVector<int> m_indexedRules;
    LiteralIndex m_index;
};

/// The rules of a text with one "<name>: <pattern>" a line, in line order. Lines without a name before their first ":"
/// are skipped.
LibraryRules parseLibraryRules(const QString& text);

/// The library of the first rule that matches a file name (not a path); a null string when none does.
QString evaluateLibrary(const QString& fileName, const LibraryRules& rules);

/// Gives each record the library of its file name; a record that no rule matches keeps its library.
void applyLibraryRules(MetaDataList& records, const LibraryRules& rules);
