// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/querycomposer.h"

#include "store/fieldcatalogue.h"

#include <QCoreApplication>
#include <QVariant>

#include <algorithm>

// Every text of the user goes in by one substitution with all arguments at once (or by joining): a term such as "50%1"
// would otherwise be taken for a place marker.
namespace {

QStringList lookupFields(const QVariantMap& parameters)
{
    return parameters.value(QStringLiteral("lookupFields")).toStringList();
}

QString composeLookupTerm(const LookupTerm& term, const QStringList& fields)
{
    const QString comparison = term.isNegated ? QStringLiteral("NOT LIKE") : QStringLiteral("LIKE");
    QStringList pieces;
    for (const QString& field : fields)
        pieces.append(QStringLiteral("(%3 %1 \"%%%2%%\")").arg(comparison, term.text, field));
    const QString joiner = term.isNegated ? QStringLiteral(" AND ") : QStringLiteral(" OR ");
    return QLatin1Char('(') + pieces.join(joiner) + QLatin1Char(')');
}

QStringList composeLookup(const QVariantMap& parameters)
{
    const QStringList fields = lookupFields(parameters);
    QStringList conditions;
    for (const LookupTerm& term : lookupTerms(parameters))
        conditions.append(composeLookupTerm(term, fields));
    return conditions;
}

QString composeOrder(const QVariantMap& parameters)
{
    const QString field = parameters.value(QStringLiteral("sortField")).toString();
    if (!sortableFieldNames().contains(field))
        return QString();
    const bool isDescending = parameters.value(QStringLiteral("sortOrder")).toInt() == Qt::DescendingOrder;
    // The id makes the order total, so that the position of a record can be counted.
    return QStringLiteral(" ORDER BY %1 %2, id %2")
        .arg(field, isDescending ? QStringLiteral("DESC") : QStringLiteral("ASC"));
}

QString composeRange(const QVariantMap& parameters)
{
    QString range;
    const int limit = parameters.value(QStringLiteral("limit")).toInt();
    if (limit > 0)
        range += QStringLiteral(" LIMIT %1").arg(limit);
    const int offset = parameters.value(QStringLiteral("offset")).toInt();
    if (offset > 0)
        range += QStringLiteral(" OFFSET %1").arg(offset);
    return range;
}

} // namespace

QString metaDataTableName(int tableId)
{
    return QStringLiteral("MetaData%1").arg(tableId);
}

QVector<LookupTerm> lookupTerms(const QVariantMap& parameters)
{
    QVector<LookupTerm> terms;
    if (lookupFields(parameters).isEmpty())
        return terms;
    const QStringList texts
        = parameters.value(QStringLiteral("lookup")).toString().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString& text : texts) {
        LookupTerm term{ text.trimmed(), false };
        term.isNegated = term.text.startsWith(QLatin1Char('!'));
        if (term.isNegated)
            term.text.remove(0, 1);
        if (!term.text.isEmpty())
            terms.append(term);
    }
    return terms;
}

QString lookupFault(const QVariantMap& parameters)
{
    const QVector<LookupTerm> terms = lookupTerms(parameters);
    const auto endsTheText = [](const LookupTerm& term) {
        return term.text.contains(QLatin1Char('"'));
    };
    return std::any_of(terms.begin(), terms.end(), endsTheText)
        ? QCoreApplication::translate("Database", "unexpected double quote in the lookup")
        : QString();
}

QVariantMap filterParameters(const QVariantMap& parameters)
{
    QVariantMap filters;
    for (const char* name : { "lastScannedOnly", "playlistOnly", "lookup", "lookupFields" }) {
        const QString key = QLatin1String(name);
        if (parameters.contains(key))
            filters.insert(key, parameters.value(key));
    }
    return filters;
}

QStringList composeConditions(int tableId, const QVariantMap& parameters)
{
    QStringList conditions;
    if (parameters.value(QStringLiteral("lastScannedOnly")).toBool()) {
        conditions.append(
            QStringLiteral("(scanTimestamp=(SELECT MAX(scanTimestamp) FROM %1))").arg(metaDataTableName(tableId)));
    }
    if (parameters.value(QStringLiteral("playlistOnly")).toBool())
        conditions.append(QStringLiteral("(playlist=1)"));
    return conditions + composeLookup(parameters);
}

QString composeWhere(const QStringList& conditions)
{
    return conditions.isEmpty() ? QString() : QLatin1String(" WHERE ") + conditions.join(QLatin1String(" AND "));
}

QString composeSelect(int tableId, const QString& columns, const QVariantMap& parameters)
{
    const QString select = QStringLiteral("SELECT %1 FROM %2").arg(columns, metaDataTableName(tableId));
    return select + composeWhere(composeConditions(tableId, parameters)) + composeOrder(parameters)
        + composeRange(parameters);
}
