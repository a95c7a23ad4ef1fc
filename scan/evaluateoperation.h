// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class OperationReply;
class QSqlDatabase;

/// Gives every record of a table the library that `rules` find for its file name, or none where no rule matches, all
/// in one transaction. Result "replacementsCount": the number of records whose library changed.
///
/// Progress counts records. Cancellation is seen between batches; a canceled or failed run changes nothing.
/// Thread: that of the connection.
void runEvaluateLibraries(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QString& rules);
