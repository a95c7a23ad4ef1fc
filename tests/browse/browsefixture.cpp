// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/browse/browsefixture.h"

#include "tests/support/testsupport.h"

#include <QtTest>

namespace {

const char* const fillStatement
    = "INSERT INTO MetaData%1 (filePath, fileName, fileType, library, description, duration, rating, sampleRate, "
      "channelsCount, bitsPerSample, playlist, scanTimestamp) "
      "WITH RECURSIVE numbers(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM numbers WHERE i + 1 < %2) "
      "SELECT printf('/table%1/%08d.wav', i), printf('%08d.wav', i), 'wav', 'Library ' || (i % 100), 'Sound ' || i, "
      "1 + i % 600, i % 1000, 48000, 2, 16, i % 1000 = 0, 1000 FROM numbers";

void executeOrFail(TestSupport::StoreFixture& store, const QString& statement)
{
    const QString errorText = store.execute(statement);
    if (!errorText.isEmpty())
        qFatal("Cannot execute %s: %s", qPrintable(statement), qPrintable(errorText));
}

} // namespace

void TestSupport::fillTable(StoreFixture& store, int tableId, int rows)
{
    const QString table = QStringLiteral("MetaData%1").arg(tableId);
    const QString indexes
        = QStringLiteral("FROM sqlite_master WHERE type='index' AND sql IS NOT NULL AND tbl_name='%1'").arg(table);
    const QVariantList creations = firstColumn(store.filePath(), "SELECT sql " + indexes);
    const QVariantList names = firstColumn(store.filePath(), "SELECT name " + indexes);

    // The indexes are made again afterwards: sorting a million rows is much quicker than inserting each.
    executeOrFail(store, QStringLiteral("PRAGMA synchronous=OFF"));
    executeOrFail(store, QStringLiteral("BEGIN"));
    for (const QVariant& name : names)
        executeOrFail(store, "DROP INDEX " + name.toString());
    executeOrFail(store, QString::fromLatin1(fillStatement).arg(QString::number(tableId), QString::number(rows)));
    for (const QVariant& creation : creations)
        executeOrFail(store, creation.toString());
    executeOrFail(store, QStringLiteral("COMMIT"));
    executeOrFail(store, QStringLiteral("PRAGMA synchronous=FULL"));
}

QString TestSupport::filledPath(int tableId, int row)
{
    return QStringLiteral("/table%1/%2.wav").arg(QString::number(tableId), QString::number(row).rightJustified(8, '0'));
}

bool TestSupport::settles(const MetaDataModel& model)
{
    return QTest::qWaitFor(
        [&model]() { return model.isRowsCountActual() && !model.isRequeryPending() && !model.isProcessing(); }, 60000);
}

std::unique_ptr<MetaDataModel> TestSupport::settledModel(StoreFixture& store, int tableId)
{
    auto model = std::make_unique<MetaDataModel>();
    model->setDatabase(&store.database(), tableId);
    if (!settles(*model))
        qFatal("The model does not settle");
    return model;
}

bool TestSupport::reaches(const QElapsedTimer& timer, int milliseconds)
{
    return QTest::qWaitFor([&timer, milliseconds]() { return timer.elapsed() >= milliseconds; }, 60000);
}

bool TestSupport::isWholeDelay(qint64 waited, int delay)
{
    return 10 * waited >= 9 * delay;
}

QStringList TestSupport::ownMethods(const QMetaObject& object)
{
    QStringList methods;
    for (int index = object.methodOffset(); index < object.methodCount(); ++index)
        methods.append(QString::fromLatin1(object.method(index).methodSignature()));
    return methods;
}

QString TestSupport::textAt(const MetaDataModel& model, int row, int column)
{
    return model.index(row, column).data().toString();
}

bool TestSupport::isShown(const MetaDataModel& model, int row)
{
    return model.index(row, 0).data().isValid();
}
