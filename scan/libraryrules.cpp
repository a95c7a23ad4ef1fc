// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/libraryrules.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace {

// The first rule that matches, or the end. An expression without a valid pattern is not asked at all.
LibraryRules::const_iterator findRule(const QString& fileName, const LibraryRules& rules)
{
    return std::find_if(rules.cbegin(), rules.cend(),
        [&fileName](const LibraryRule& rule) { return rule.pattern.isValid() && rule.pattern.indexIn(fileName) >= 0; });
}

QString withoutByteOrderMark(const QString& text)
{
    return text.startsWith(QChar(QChar::ByteOrderMark)) ? text.mid(1) : text;
}

} // namespace

LibraryRules parseLibraryRules(const QString& text)
{
    static const QRegularExpression lineEnd(QStringLiteral("\r|\n"));
    LibraryRules rules;
    const QStringList lines = withoutByteOrderMark(text).split(lineEnd);
    for (const QString& line : lines) {
        const int colon = line.indexOf(QLatin1Char(':'));
        if (colon <= 0)
            continue;
        const QString pattern = line.mid(colon + 1).trimmed();
        rules.append({ line.left(colon).trimmed(), QRegExp(pattern, Qt::CaseSensitive, QRegExp::RegExp) });
    }
    return rules;
}

QString evaluateLibrary(const QString& fileName, const LibraryRules& rules)
{
    const auto rule = findRule(fileName, rules);
    return rule == rules.cend() ? QString() : rule->name;
}

void applyLibraryRules(MetaDataList& records, const LibraryRules& rules)
{
    for (MetaData& record : records) {
        const auto rule = findRule(record.fileName(), rules);
        if (rule != rules.cend())
            record.setLibrary(rule->name);
    }
}
