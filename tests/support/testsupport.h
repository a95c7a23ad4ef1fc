// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVariantList>

/// Small things that many tests need. Thread: the test's.
namespace TestSupport {

/// Creates or overwrites a file with these bytes and makes its folder; fails the program when it cannot.
void writeFile(const QString& path, const QByteArray& contents);

/// The bytes of a file; fails the program when it cannot be read.
QByteArray contents(const QString& path);

/// The first column of every row that a statement gives on the SQLite file, through a connection of its own.
QVariantList firstColumn(const QString& databaseFilePath, const QString& statement);

/// The first value that a statement gives on the SQLite file; invalid when there is no row.
QVariant firstValue(const QString& databaseFilePath, const QString& statement);

} // namespace TestSupport
