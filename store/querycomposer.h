// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <QVector>

/// Turns query parameters into statements; every read of a metadata table is composed here. Thread: any.
///
/// Parameter keys, all optional: "lastScannedOnly" (bool), "playlistOnly" (bool), "lookup" (terms separated by blanks;
/// "!" negates a term), "lookupFields" (string list), "sortField" (a sortable field), "sortOrder" (0 ascending,
/// 1 descending), "limit" and "offset" (rows, used when greater than 0).

/// "MetaData%1" for a table identifier (1 to 15).
QString metaDataTableName(int tableId);

/// One term of a lookup text.
struct LookupTerm
{
    /// Without the "!"; never empty.
    QString text;
    /// Records that contain it in any lookup field are not wanted, instead of only those that do.
    bool isNegated;
};

/// The terms of the parameters' lookup text; none when there are no lookup fields to search.
QVector<LookupTerm> lookupTerms(const QVariantMap& parameters);

/// Why a lookup cannot be asked for, or nothing. A double quote in a term would end the term's text in the statement:
/// what follows is mostly no statement, but may be one of another meaning.
QString lookupFault(const QVariantMap& parameters);

/// Of the parameters those that select rows, without what orders and pages them.
QVariantMap filterParameters(const QVariantMap& parameters);

/// The conditions of the parameters, to be joined with " AND ".
QStringList composeConditions(int tableId, const QVariantMap& parameters);

/// " WHERE " with the conditions joined; empty without conditions.
QString composeWhere(const QStringList& conditions);

/// A SELECT of `columns` (pasted as they are) with the parameters' filter, order, limit and offset.
QString composeSelect(int tableId, const QString& columns, const QVariantMap& parameters);
