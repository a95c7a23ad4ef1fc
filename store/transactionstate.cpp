// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/transactionstate.h"

#include <QSqlDatabase>
#include <QSqlQuery>

bool isTransactionActive(const QSqlDatabase& connection)
{
    // The driver does not say; but transactions cannot be nested.
    QSqlQuery query(connection);
    if (!query.exec(QStringLiteral("BEGIN TRANSACTION")))
        return true;
    query.exec(QStringLiteral("ROLLBACK"));
    return false;
}
