// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QVariantMap>

class OperationReply;
class QSqlDatabase;

/// Replaces a text in fields of the records that a view shows, all in one transaction; no file is renamed or moved.
///
/// Of `parameters` only the filters count (see store/querycomposer.h). Every occurrence of `before` becomes `after`; an
/// empty `before` fills empty fields and touches no other. A new file path brings its file name and type along.
/// Result "replacementsCount": the number of records with a changed field, also of those whose write was refused, which
/// give one warning "<error>: <path>" each. Progress counts records. Cancellation is seen between batches; a canceled
/// or failed run changes nothing. Thread: that of the connection.
void runReplace(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& fields,
    const QString& before, const QString& after, Qt::CaseSensitivity caseSensitivity, const QVariantMap& parameters);
