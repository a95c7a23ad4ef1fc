// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/evaluateoperation.h"

#include "scan/batchedchange.h"
#include "scan/libraryrules.h"
#include "store/querycomposer.h"

#include <QSqlError>
#include <QSqlQuery>

namespace {

class Evaluation final : public BatchedChange
{
    Q_DECLARE_TR_FUNCTIONS(Evaluation)

public:
    Evaluation(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QString& rules)
        : BatchedChange(connection, reply, tableId)
        , m_rules(parseLibraryRules(rules))
    {
    }

private:
    bool changeRows() override;
    bool evaluateBatch(QSqlQuery& update, const QVector<RowBatches::Row>& rows);
    bool updateRow(QSqlQuery& update, const QVariant& id, const QString& library);

    LibraryRules m_rules;
};

bool Evaluation::changeRows()
{
    QSqlQuery update(connection());
    // Its first execution would fail as well, but with another error in the place of the reason.
    if (!update.prepare(
            QStringLiteral("UPDATE %1 SET library=:library WHERE id=:id").arg(metaDataTableName(tableId()))))
        return fail(tr("Unable to update MetaData: %1").arg(update.lastError().text()));
    do {
        QVector<RowBatches::Row> rows;
        if (!readBatch(QStringLiteral("id, fileName, library"), rows) || !evaluateBatch(update, rows))
            return false;
        showProgress();
    } while (!isAtEnd());
    return true;
}

bool Evaluation::evaluateBatch(QSqlQuery& update, const QVector<RowBatches::Row>& rows)
{
    enum Column
    {
        Id,
        FileName,
        Library
    };
    for (const RowBatches::Row& row : rows) {
        const QString library = evaluateLibrary(row.value(FileName).toString(), m_rules);
        if (library != row.value(Library).toString() && !updateRow(update, row.value(Id), library))
            return false;
    }
    return true;
}

bool Evaluation::updateRow(QSqlQuery& update, const QVariant& id, const QString& library)
{
    // A null string would be bound as NULL, which the column refuses.
    update.bindValue(QStringLiteral(":library"), library.isNull() ? QString::fromLatin1("") : library);
    update.bindValue(QStringLiteral(":id"), id);
    if (!update.exec())
        return fail(tr("Unable to update MetaData: %1").arg(update.lastError().text()));
    addChangedRows(1);
    return true;
}

} // namespace

void runEvaluateLibraries(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QString& rules)
{
    Evaluation(connection, reply, tableId, rules).run();
}
