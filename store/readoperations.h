// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVariantMap>

class OperationReply;
class QSqlDatabase;

/// Bodies of the store operations that only read. Each runs in the store's thread on its open connection and ends the
/// reply exactly once; results and parameters are those of the `Database` method of the same name.

void runGetRowsCount(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters);
void runPullMetaData(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters);
void runLookupMetaDataRow(const QSqlDatabase& connection, OperationReply* reply, int tableId, qint64 metaDataId,
    const QVariantMap& parameters);
