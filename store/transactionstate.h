// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QSqlDatabase;

/// False when SQLite has given the connection's transaction up by itself, as it does when the disk is full. What is
/// written from then on would be kept, statement by statement, although the operation fails.
/// Thread: that of the connection.
bool isTransactionActive(const QSqlDatabase& connection);
