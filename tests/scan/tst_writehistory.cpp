// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/storeoperations.h"
#include "store/database.h"
#include "store/operationreply.h"
#include "tests/scan/recordbook.h"
#include "tests/scan/rowhook.h"
#include "tests/support/storefixture.h"

#include <QRandomGenerator>
#include <QtTest>

#include <functional>
#include <memory>

// Random histories of writes, of which some fail or are canceled on the way: after each step the table holds what a
// plain model holds.

namespace {

constexpr int tableId = 5;
constexpr int stepsCount = 250;
constexpr int longestReach = 30; // rows into an operation at which it may be stopped

using TestSupport::await;

enum class Fault
{
    None,
    Failure,
    Cancellation
};

// One operation on the store and what it does to the model. An operation in one transaction is undone by a fault; the
// others go on behind the row that failed.
struct Step
{
    QString name;
    std::function<OperationReply*(Database&)> start;
    std::function<void(RecordBook&, int)> apply;
    bool failureUndoesAll = true;
    bool canBeCanceled = true;
};

QString oneOf(QRandomGenerator& random, const QStringList& choices)
{
    return choices.at(random.bounded(choices.size()));
}

// The paths are few, and differ in letter case, so that records get in each other's way.
MetaData randomRecord(QRandomGenerator& random)
{
    const QString path = QStringLiteral("/%1/%2 %3.wav")
                             .arg(oneOf(random, { "fx", "FX", "loops" }), oneOf(random, { "rain", "Door", "door" }),
                                 QString::number(random.bounded(40)));
    MetaData record = TestSupport::sampleRecord(path);
    record.setDescription(oneOf(random, { "", "Rain on tin", "a DOOR slams", "rain, rain", "door to door" }));
    record.setLibrary(oneOf(random, { "", "Mine", "Rain" }));
    record.setRating(random.bounded(1001) / 10.0);
    record.setDuration(random.bounded(12) == 0 ? 0 : 0.5);
    return record;
}

QVariantList randomIds(QRandomGenerator& random, const RecordBook& book)
{
    QVariantList ids;
    const QList<qint64> known = book.ids();
    for (const qint64 id : known) {
        if (random.bounded(3) == 0)
            ids.append(id);
    }
    ids.append(987654321);
    return ids;
}

Step pushStep(QRandomGenerator& random, const RecordBook& book)
{
    MetaDataList items;
    const QList<qint64> known = book.ids();
    for (int left = 1 + random.bounded(20); left > 0; --left) {
        MetaData item = randomRecord(random);
        if (!known.isEmpty() && random.bounded(3) == 0)
            item.setId(known.at(random.bounded(known.size())));
        items.append(item);
    }
    Step step;
    step.name = QStringLiteral("push");
    step.start = [items](Database& database) {
        return database.pushMetaData(tableId, items);
    };
    step.apply = [items](RecordBook& target, int failingWrite) {
        target.push(items, failingWrite);
    };
    step.failureUndoesAll = false;
    step.canBeCanceled = false;
    return step;
}

Step deleteStep(QRandomGenerator& random, const RecordBook& book)
{
    const QVariantList ids = randomIds(random, book);
    Step step;
    step.name = QStringLiteral("delete");
    step.start = [ids](Database& database) {
        return database.deleteMetaData(tableId, ids);
    };
    step.apply = [ids](RecordBook& target, int /*failingWrite*/) {
        target.remove(ids);
    };
    return step;
}

Step playlistStep(QRandomGenerator& random, const RecordBook& book)
{
    const QVariantList ids = randomIds(random, book);
    const int value = random.bounded(2);
    Step step;
    step.name = QStringLiteral("playlist");
    step.start = [ids, value](Database& database) {
        return database.setMetaDataPlaylist(tableId, ids, value);
    };
    step.apply = [ids, value](RecordBook& target, int /*failingWrite*/) {
        target.setPlaylist(ids, value);
    };
    return step;
}

Step evaluationStep(QRandomGenerator& random)
{
    const QString rules = oneOf(random, { "Rain: rain\nDoors: [Dd]oor", "Twos: 2\nRain: rain", "(: \nLate: 1$", "" });
    Step step;
    step.name = QStringLiteral("evaluation");
    step.start = [rules](Database& database) {
        return database.evaluateLibraries(tableId, rules);
    };
    step.apply = [rules](RecordBook& target, int /*failingWrite*/) {
        target.evaluate(rules);
    };
    return step;
}

Step replacementStep(QRandomGenerator& random)
{
    Replacing replacing;
    replacing.fields = oneOf(random, { "description", "filePath", "library", "description filePath" }).split(' ');
    replacing.before = oneOf(random, { "rain", "door", "Rain", "0", "/fx" });
    replacing.after = oneOf(random, { "", "hail", "rain", "gate", "/fx/more" });
    replacing.caseSensitivity = random.bounded(2) ? Qt::CaseSensitive : Qt::CaseInsensitive;
    replacing.playlistOnly = random.bounded(2);
    Step step;
    step.name = QStringLiteral("replacement");
    step.start = [replacing](Database& database) {
        return database.replace(tableId, replacing.fields, replacing.before, replacing.after, replacing.caseSensitivity,
            { { QStringLiteral("playlistOnly"), replacing.playlistOnly } });
    };
    step.apply = [replacing](RecordBook& target, int failingWrite) {
        target.replace(replacing, failingWrite);
    };
    step.failureUndoesAll = false;
    return step;
}

Step clearStep()
{
    Step step;
    step.name = QStringLiteral("clear");
    step.start = [](Database& database) {
        return database.clearTable(tableId);
    };
    step.apply = [](RecordBook& target, int /*failingWrite*/) {
        target.clear();
    };
    step.canBeCanceled = false;
    return step;
}

Step rebuildStep()
{
    Step step;
    step.name = QStringLiteral("rebuild");
    step.start = [](Database& database) {
        return database.rebuild();
    };
    step.apply = [](RecordBook& /*target*/, int /*failingWrite*/) {
    };
    step.canBeCanceled = false;
    return step;
}

Step randomStep(QRandomGenerator& random, const RecordBook& book)
{
    const int choice = random.bounded(100);
    if (choice < 45)
        return pushStep(random, book);
    if (choice < 57)
        return deleteStep(random, book);
    if (choice < 70)
        return playlistStep(random, book);
    if (choice < 82)
        return evaluationStep(random);
    if (choice < 96)
        return replacementStep(random);
    return choice < 98 ? clearStep() : rebuildStep();
}

QVector<QVariantMap> mapsOf(const MetaDataList& records)
{
    QVector<QVariantMap> maps;
    for (const MetaData& record : records)
        maps.append(record.toVariantMap());
    return maps;
}

// Runs the step with a fault at a row; true when the row was reached.
bool runWithFault(Database& database, const Step& step, Fault fault, int row)
{
    if (fault == Fault::None) {
        await(step.start(database));
        return false;
    }
    if (fault == Fault::Failure) {
        const RowHook hook(database, tableId, row);
        await(step.start(database));
        return hook.wasHit();
    }
    RowCancellation cancellation(database, tableId, row);
    await(cancellation.watch(step.start(database)));
    return cancellation.wasHit();
}

} // namespace

class WriteHistoryTest : public QObject
{
    Q_OBJECT

private slots:
    void tableFollowsTheModel_data();
    void tableFollowsTheModel();
};

void WriteHistoryTest::tableFollowsTheModel_data()
{
    QTest::addColumn<quint32>("seed");

    for (const quint32 seed : { 1U, 20U, 333U, 4444U })
        QTest::addRow("history %u", seed) << seed;
}

void WriteHistoryTest::tableFollowsTheModel()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    TestSupport::StoreFixture store(scanBulkOperations());
    store.open();
    // Nothing here is about what survives a crash.
    QCOMPARE(store.execute(QStringLiteral("PRAGMA synchronous=OFF")), QString());
    RecordBook book;
    int faults = 0;
    for (int number = 0; number < stepsCount; ++number) {
        const Step step = randomStep(random, book);
        const auto fault = static_cast<Fault>(random.bounded(3));
        const int row = random.bounded(longestReach);
        const bool wasHit = runWithFault(store.database(), step, fault, row);
        faults += wasHit ? 1 : 0;
        const bool isUndone = wasHit && (fault == Fault::Failure ? step.failureUndoesAll : step.canBeCanceled);
        if (!isUndone)
            step.apply(book, wasHit && fault == Fault::Failure ? row : -1);
        const QVector<QVariantMap> actual = mapsOf(store.records(tableId));
        QVERIFY2(
            actual == book.maps(), qPrintable(QStringLiteral("step %1, %2").arg(QString::number(number), step.name)));
    }
    // A history without faults would prove little.
    QVERIFY2(faults > stepsCount / 10, qPrintable(QString::number(faults)));
}

QTEST_GUILESS_MAIN(WriteHistoryTest)
#include "tst_writehistory.moc"
