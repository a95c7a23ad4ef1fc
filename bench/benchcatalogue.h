// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/database.h"

#include <QTemporaryDir>
#include <QThread>

#include <memory>

class OperationReply;

/// A store on a thread of its own with two large tables, written once for the whole program.
namespace BenchCatalogue {

/// The tables by their number of rows: 100,000 and 1,000,000; row i (from 0) has the path of the i-th place.
constexpr int smallRows = 100000;
constexpr int largeRows = 1000000;

/// Which table holds this many rows.
int tableOf(qint64 rows);

/// Fills an empty table, in a transaction of the caller's; fails the program when it cannot.
void fillTable(QSqlDatabase& connection, int tableId, const QString& insertStatement);

/// Opens the catalogue at the first call, which writes the tables and takes some seconds.
Database& database();

/// Closes the catalogue and removes its file.
void close();

/// Waits for the operation; fails the program when it failed.
std::unique_ptr<OperationReply> await(OperationReply* reply);

} // namespace BenchCatalogue
