// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>

class OperationReply;
class QSqlDatabase;

/// Bodies of the store operations that read media files or rewrite whole tables.
///
/// The store knows how to run an operation, not how to read a sound file; whoever creates the store hands these bodies
/// to it. Each runs in the store's thread on the store's open connection, must end the reply exactly once and must
/// leave no transaction and no query open. An operation whose body is missing ends with "Operation is not available".
struct BulkOperations
{
    /// Connection, reply, table 1 to 15, folders and files to scan, text of the library rules.
    std::function<void(const QSqlDatabase&, OperationReply*, int, const QStringList&, const QString&)> scan;
    /// Connection, reply, table 1 to 15, text of the library rules.
    std::function<void(const QSqlDatabase&, OperationReply*, int, const QString&)> evaluateLibraries;
    /// Connection, reply, table 1 to 15, fields, text before, text after, case sensitivity, view parameters.
    std::function<void(const QSqlDatabase&, OperationReply*, int, const QStringList&, const QString&, const QString&,
        Qt::CaseSensitivity, const QVariantMap&)>
        replace;
};
