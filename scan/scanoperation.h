// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

class OperationReply;
class QSqlDatabase;

/// Brings media files into a table: lists the files behind `paths`, reads them in batches on the global thread pool,
/// gives each a library by `rules` and inserts or updates one record per path, all in one transaction and with one
/// scan time stamp.
///
/// Progress counts files; its total is -1 while the files are listed. Each file that could not be read or written gives
/// one warning "<error>: <path>" and no record. A scan that finds no file, or is canceled, ends with "Canceled" and
/// leaves the table as it was; cancellation is seen while listing and between batches.
/// Thread: that of the connection.
void runScan(
    const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& paths, const QString& rules);
