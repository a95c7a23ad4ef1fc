// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QStringList>
#include <QVector>

#include <array>
#include <bitset>

/// Finds, among many entries with literal texts each, those of which a given text may contain one.
///
/// Each literal is filed under its rarest run of up to three characters; a text is looked through once, run by run,
/// and most runs are dismissed by a single bit. It only says who need not be asked: a candidate may turn out to match
/// nothing. A regular-expression engine for many patterns would do this too, but each that is at hand works on bytes,
/// so that every name would have to be encoded first, and none reads the syntax that decides in the end.
///
/// Owner: a rule list. Thread: any, it is constant once built.
class LiteralIndex final
{
public:
    LiteralIndex() = default;
    /// One list of literals for each entry; an entry without any is a candidate for every text.
    explicit LiteralIndex(const QVector<QStringList>& literals);

    /// The entries that may have a literal in `text`, ascending.
    QVector<int> candidates(const QString& text) const;

private:
    using Run = quint64;
    static constexpr int longestRun = 3;
    static constexpr int bitsOfHash = 16;

    static Run runAt(const QString& text, int position, int length);
    static std::size_t bitOf(Run run);
    static Run rarestRun(const QString& literal, const QHash<Run, int>& frequencies);
    void file(int entry, Run run, int length);

    QVector<int> m_always;
    QHash<Run, QVector<int>> m_entries;
    std::bitset<(1U << bitsOfHash)> m_isPresent;
    std::array<bool, longestRun + 1> m_hasLength = {};
};
