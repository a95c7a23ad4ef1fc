// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/libraryrules.h"

#include "scan/requiredliterals.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

QString withoutByteOrderMark(const QString& text)
{
    return text.startsWith(QChar(QChar::ByteOrderMark)) ? text.mid(1) : text;
}

} // namespace

LibraryRules::LibraryRules(const QVector<LibraryRule>& rules)
    : m_rules(rules)
{
    QVector<QStringList> literals;
    for (int index = 0; index < rules.size(); ++index) {
        const QRegExp& pattern = rules.at(index).pattern;
        if (!pattern.isValid())
            continue;
        m_indexedRules.append(index);
        literals.append(requiredLiterals(pattern.pattern()));
    }
    m_index = LiteralIndex(literals);
}

const LibraryRule* LibraryRules::firstMatch(const QString& fileName) const
{
    const QVector<int> candidates = m_index.candidates(fileName);
    for (const int candidate : candidates) {
        const LibraryRule& rule = m_rules.at(m_indexedRules.at(candidate));
        if (rule.pattern.indexIn(fileName) >= 0)
            return &rule;
    }
    return nullptr;
}

LibraryRules parseLibraryRules(const QString& text)
{
    static const QRegularExpression lineEnd(QStringLiteral("\r|\n"));
    QVector<LibraryRule> rules;
    const QStringList lines = withoutByteOrderMark(text).split(lineEnd);
    for (const QString& line : lines) {
        const int colon = line.indexOf(QLatin1Char(':'));
        if (colon <= 0)
            continue;
        const QString pattern = line.mid(colon + 1).trimmed();
        rules.append({ line.left(colon).trimmed(), QRegExp(pattern, Qt::CaseSensitive, QRegExp::RegExp) });
    }
    return LibraryRules(rules);
}

QString evaluateLibrary(const QString& fileName, const LibraryRules& rules)
{
    const LibraryRule* rule = rules.firstMatch(fileName);
    return rule ? rule->name : QString();
}

void applyLibraryRules(MetaDataList& records, const LibraryRules& rules)
{
    for (MetaData& record : records) {
        if (const LibraryRule* rule = rules.firstMatch(record.fileName()))
            record.setLibrary(rule->name);
    }
}
