// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/literalindex.h"

#include <algorithm>

LiteralIndex::LiteralIndex(const QVector<QStringList>& literals)
{
    QHash<Run, int> frequencies;
    for (const QStringList& alternatives : literals) {
        for (const QString& literal : alternatives) {
            const int length = std::min(longestRun, literal.size());
            for (int position = 0; position + length <= literal.size(); ++position)
                ++frequencies[runAt(literal, position, length)];
        }
    }
    for (int entry = 0; entry < literals.size(); ++entry) {
        const QStringList& alternatives = literals.at(entry);
        if (alternatives.isEmpty() || alternatives.contains(QString()))
            m_always.append(entry);
        for (const QString& literal : alternatives) {
            if (!literal.isEmpty())
                file(entry, rarestRun(literal, frequencies), std::min(longestRun, literal.size()));
        }
    }
}

QVector<int> LiteralIndex::candidates(const QString& text) const
{
    QVector<int> found = m_always;
    for (int length = 1; length <= longestRun; ++length) {
        if (!m_hasLength.at(static_cast<std::size_t>(length)))
            continue;
        for (int position = 0; position + length <= text.size(); ++position) {
            const Run run = runAt(text, position, length);
            if (m_isPresent.test(bitOf(run)))
                found += m_entries.value(run);
        }
    }
    if (found.size() > m_always.size()) {
        std::sort(found.begin(), found.end());
        found.erase(std::unique(found.begin(), found.end()), found.end());
    }
    return found;
}

LiteralIndex::Run LiteralIndex::runAt(const QString& text, int position, int length)
{
    Run run = 0;
    for (int index = position; index < position + length; ++index)
        run = run << 16U | text.at(index).unicode();
    return run;
}

std::size_t LiteralIndex::bitOf(Run run)
{
    // Multiplication by the golden ratio spreads neighbouring runs; its highest bits depend on all characters.
    constexpr Run spread = 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(run * spread >> (64 - bitsOfHash));
}

LiteralIndex::Run LiteralIndex::rarestRun(const QString& literal, const QHash<Run, int>& frequencies)
{
    const int length = std::min(longestRun, literal.size());
    Run rarest = runAt(literal, 0, length);
    for (int position = 1; position + length <= literal.size(); ++position) {
        const Run run = runAt(literal, position, length);
        if (frequencies.value(run) < frequencies.value(rarest))
            rarest = run;
    }
    return rarest;
}

void LiteralIndex::file(int entry, Run run, int length)
{
    m_entries[run].append(entry);
    m_isPresent.set(bitOf(run));
    m_hasLength.at(static_cast<std::size_t>(length)) = true;
}
