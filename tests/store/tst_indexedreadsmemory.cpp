// SPDX-License-Identifier: GPL-3.0-or-later
// What happens to reads from memory when there is none.
#include "store/indexedreads.h"
#include "store/operationreply.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

#include <cstdlib>
#include <limits>
#include <new>

namespace {

// What is larger is refused.
size_t greatestAllocation = std::numeric_limits<size_t>::max();

} // namespace

void* operator new(size_t size)
{
    void* memory = size > greatestAllocation ? nullptr : std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void* operator new(size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return size > greatestAllocation ? nullptr : std::malloc(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    std::free(memory);
}

class IndexedReadsMemoryTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void withoutMemoryTheStatementsAnswer_data();
    void withoutMemoryTheStatementsAnswer();
};

void IndexedReadsMemoryTest::cleanup()
{
    greatestAllocation = std::numeric_limits<size_t>::max();
}

void IndexedReadsMemoryTest::withoutMemoryTheStatementsAnswer_data()
{
    QTest::addColumn<QString>("firstLookup");
    QTest::newRow("none for the texts") << QString();
    QTest::newRow("none for the order of a lookup") << "sound";
}

void IndexedReadsMemoryTest::withoutMemoryTheStatementsAnswer()
{
    QFETCH(QString, firstLookup);
    const ConnectionFixture fixture;
    QCOMPARE(fixture.execute("INSERT INTO MetaData1 (filePath, fileName, fileType, description) WITH RECURSIVE n(i) AS "
                             "(SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<100000) SELECT i, i, '', 'Sound' FROM n"),
        QString());
    IndexedReads reads(fixture.connection());
    QVariantMap page{ { "lookup", firstLookup }, { "lookupFields", QStringList{ "description" } },
        { "sortField", "fileName" }, { "limit", 10 } };
    OperationReply first;
    reads.getRowsCount(fixture.connection(), &first, 1, page);
    page.insert("lookup", "s");
    greatestAllocation = 100000;

    OperationReply reply;
    const bool isAnswered = reads.pullMetaData(fixture.connection(), &reply, 1, page);

    greatestAllocation = std::numeric_limits<size_t>::max();
    QVERIFY(!isAnswered);
    QVERIFY(!reply.result("items").isValid());
    QCOMPARE(reads.bytes(), size_t(0));
    // The connection is as it was, and a change makes it try again.
    QCOMPARE(fixture.execute("DELETE FROM MetaData1"), QString());
    QVERIFY(reads.pullMetaData(fixture.connection(), &reply, 1, page));
}

QTEST_GUILESS_MAIN(IndexedReadsMemoryTest)

#include "tst_indexedreadsmemory.moc"
