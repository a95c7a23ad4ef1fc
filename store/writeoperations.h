// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QVariantList>

class OperationReply;
class QSqlDatabase;

/// Bodies of the store operations that write. Each runs in the store's thread on its open connection, ends the reply
/// exactly once and leaves no transaction open; the results are those of the `Database` method of the same name.

void runPushMetaData(const QSqlDatabase& connection, OperationReply* reply, int tableId, const MetaDataList& items);
void runDeleteMetaData(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantList& ids);
void runSetMetaDataPlaylist(
    const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantList& ids, int value);
void runClearTable(const QSqlDatabase& connection, OperationReply* reply, int tableId);
void runRebuild(const QSqlDatabase& connection, OperationReply* reply);
