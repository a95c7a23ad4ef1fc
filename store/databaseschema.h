// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QSqlDatabase;

/// The structure of a database file: fifteen metadata tables with their indexes, and the settings table.
/// Thread: that of the connection.

/// The metadata tables are numbered from 1 to this.
constexpr int metaDataTablesCount = 15;

/// Creates all tables and indexes in a new file. The first statement that fails is written to the log with critical
/// level and ends the installation with false; what was created before stays.
bool installSchema(const QSqlDatabase& connection);

/// True when the file holds every table under its exact name. Changes nothing.
bool hasValidSchema(const QSqlDatabase& connection);

/// Sets cache, memory map and page size. The page size takes effect on a file without tables, else at the next rebuild.
void applyPragmas(const QSqlDatabase& connection);
