// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatahandler.h"

#include "store/operationreply.h"
#include "tests/browse/browsefixture.h"

#include <QSignalSpy>
#include <QtTest>

#include <functional>

using TestSupport::filledPath;
using TestSupport::fillTable;
using TestSupport::StoreFixture;
using TestSupport::StoreHold;

namespace {

constexpr int bigTable = 1;
constexpr int oneFullPageTable = 2;
constexpr int emptyTable = 3;
constexpr int smallTable = 4;
constexpr int rowsOfBigTable = 25000;
constexpr int patience = 60000; // milliseconds

// Keeps what it is given, and fails or does something where a test wants it.
class RecordingHandler final : public MetaDataHandler
{
public:
    using MetaDataHandler::fail;

    QStringList hooks;
    QStringList paths;
    std::function<void()> atBegin;
    std::function<void()> atPage;
    std::function<void()> atCompletion;

protected:
    void beginOutput() override { enter(QStringLiteral("begin"), atBegin); }
    void completeOutput() override { enter(QStringLiteral("complete"), atCompletion); }
    void releaseOutput() override { enter(QStringLiteral("release"), {}); }
    void handlePage(const MetaDataList& items) override
    {
        for (const MetaData& item : items)
            paths.append(item.filePath());
        enter(QStringLiteral("page %1").arg(items.size()), atPage);
    }

private:
    void enter(const QString& hook, const std::function<void()>& action)
    {
        hooks.append(hook);
        if (action)
            action();
    }
};

// The progress of a run, as "value/total".
class ProgressLog
{
public:
    explicit ProgressLog(OperationReply* reply)
        : m_spy(reply, &OperationReply::progress)
    {
    }

    QStringList texts() const
    {
        QStringList list;
        for (const QList<QVariant>& arguments : m_spy)
            list.append(arguments.at(0).toString() + QLatin1Char('/') + arguments.at(1).toString());
        return list;
    }

private:
    QSignalSpy m_spy;
};

bool waitForEnd(const OperationReply& reply)
{
    return QTest::qWaitFor([&reply] { return reply.isFinishedDelivered(); }, patience);
}

} // namespace

class MetaDataHandlerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void startReturnsBeforeAnyRequest();
    void startCanBeInvokedByName();
    void recordsComeInPagesInOrder();
    void progressCountsTheRecords();
    void fullLastPageIsFollowedByAnEmptyOne();
    void emptyResultHandlesNoPage();
    void parametersChooseAndSortTheRecords();
    void rangeInTheParametersIsIgnored();
    void failedBeginningMakesNoRequest();
    void failedPageEndsTheRun();
    void failedCompletionEndsTheRunWithAnError();
    void failedCountEndsTheRun();
    void refusedPageEndsTheRun();
    void missingStoreEndsTheRun();
    void cancelAtEachPageEndsTheRun_data();
    void cancelAtEachPageEndsTheRun();
    void cancelWhileAPageIsUnderWayDropsIt();
    void secondRunBeginsAtTheFirstRecord();
    void startDuringARunEndsItAndBeginsAnew();
    void replyOutlivesTheRun();
    void replyDeletedDuringTheRunReleasesTheOutput();
    void handlerDestroyedDuringTheRunEndsTheReply();
    // The last one: the others need the store.
    void storeDestroyedDuringTheRunEndsTheReply();

private:
    std::unique_ptr<StoreFixture> m_store;
    std::unique_ptr<RecordingHandler> m_handler;
};

void MetaDataHandlerTest::initTestCase()
{
    m_store = std::make_unique<StoreFixture>();
    m_store->open();
    fillTable(*m_store, bigTable, rowsOfBigTable);
    fillTable(*m_store, oneFullPageTable, MetaDataHandler::pageSize);
    fillTable(*m_store, smallTable, 7);
}

void MetaDataHandlerTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataHandlerTest::init()
{
    m_handler = std::make_unique<RecordingHandler>();
    m_handler->setDatabase(&m_store->database(), bigTable);
}

void MetaDataHandlerTest::cleanup()
{
    m_handler.reset();
}

void MetaDataHandlerTest::startReturnsBeforeAnyRequest()
{
    const StoreHold hold(*m_store);

    const std::unique_ptr<OperationReply> reply(m_handler->start());

    QVERIFY(reply);
    QVERIFY(!reply->isFinishedDelivered());
    QCOMPARE(m_handler->hooks, QStringList({ "begin" }));
}

void MetaDataHandlerTest::startCanBeInvokedByName()
{
    m_handler->setDatabase(&m_store->database(), smallTable);
    OperationReply* returned = nullptr;

    QVERIFY(QMetaObject::invokeMethod(m_handler.get(), "start", Q_RETURN_ARG(OperationReply*, returned)));

    const std::unique_ptr<OperationReply> reply(returned);
    QVERIFY(waitForEnd(*reply));
    QVERIFY(!reply->hasError());
    QCOMPARE(m_handler->paths.size(), 7);
}

void MetaDataHandlerTest::recordsComeInPagesInOrder()
{
    m_handler->setQueryParameters({ { "sortField", "filePath" }, { "sortOrder", 0 } });

    const auto reply = TestSupport::await(m_handler->start());

    QVERIFY(!reply->hasError());
    QCOMPARE(
        m_handler->hooks, QStringList({ "begin", "page 10000", "page 10000", "page 5000", "complete", "release" }));
    QCOMPARE(m_handler->paths.size(), rowsOfBigTable);
    for (int row = 0; row < rowsOfBigTable; ++row)
        QCOMPARE(m_handler->paths.at(row), filledPath(bigTable, row));
}

void MetaDataHandlerTest::progressCountsTheRecords()
{
    const std::unique_ptr<OperationReply> reply(m_handler->start());
    const ProgressLog progress(reply.get());

    QVERIFY(waitForEnd(*reply));

    QCOMPARE(progress.texts(), QStringList({ "0/-1", "0/25000", "10000/25000", "20000/25000", "25000/25000" }));
}

void MetaDataHandlerTest::fullLastPageIsFollowedByAnEmptyOne()
{
    m_handler->setDatabase(&m_store->database(), oneFullPageTable);

    const auto reply = TestSupport::await(m_handler->start());

    QVERIFY(!reply->hasError());
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "page 10000", "page 0", "complete", "release" }));
}

void MetaDataHandlerTest::emptyResultHandlesNoPage()
{
    m_handler->setDatabase(&m_store->database(), emptyTable);
    const std::unique_ptr<OperationReply> reply(m_handler->start());
    const ProgressLog progress(reply.get());

    QVERIFY(waitForEnd(*reply));

    QVERIFY(!reply->hasError());
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "complete", "release" }));
    QCOMPARE(progress.texts(), QStringList({ "0/-1" }));
}

void MetaDataHandlerTest::parametersChooseAndSortTheRecords()
{
    m_handler->setQueryParameters({ { "lookup", "Sound 12" }, { "lookupFields", QStringList{ "description" } },
        { "playlistOnly", true }, { "sortField", "filePath" }, { "sortOrder", 1 } });

    const auto reply = TestSupport::await(m_handler->start());

    QVERIFY(!reply->hasError());
    QCOMPARE(m_handler->paths, QStringList({ filledPath(bigTable, 12000) }));
}

void MetaDataHandlerTest::rangeInTheParametersIsIgnored()
{
    m_handler->setDatabase(&m_store->database(), smallTable);
    m_handler->setQueryParameters({ { "limit", 2 }, { "offset", 3 }, { "singleField", "fileName" } });

    const auto reply = TestSupport::await(m_handler->start());

    QVERIFY(!reply->hasError());
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "page 7", "complete", "release" }));
    QCOMPARE(m_handler->paths.first(), filledPath(smallTable, 0));
}

void MetaDataHandlerTest::failedBeginningMakesNoRequest()
{
    m_handler->atBegin = [this] {
        m_handler->fail(QStringLiteral("No paper"));
    };
    const std::unique_ptr<OperationReply> reply(m_handler->start());
    const ProgressLog progress(reply.get());

    QVERIFY(waitForEnd(*reply));
    // Nothing follows once all that was requested has been answered.
    TestSupport::await(m_store->database().getRowsCount(bigTable, {}));

    QCOMPARE(reply->errorString(), QStringLiteral("No paper"));
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "release" }));
    QCOMPARE(progress.texts(), QStringList({ "0/-1" }));
}

void MetaDataHandlerTest::failedPageEndsTheRun()
{
    m_handler->atPage = [this] {
        if (m_handler->hooks.size() == 3)
            m_handler->fail(QStringLiteral("Second page"));
    };
    const std::unique_ptr<OperationReply> reply(m_handler->start());
    const ProgressLog progress(reply.get());

    QVERIFY(waitForEnd(*reply));

    QCOMPARE(reply->errorString(), QStringLiteral("Second page"));
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "page 10000", "page 10000", "release" }));
    QCOMPARE(progress.texts().last(), QStringLiteral("10000/25000"));
}

void MetaDataHandlerTest::failedCompletionEndsTheRunWithAnError()
{
    m_handler->setDatabase(&m_store->database(), smallTable);
    m_handler->atCompletion = [this] {
        m_handler->fail(QStringLiteral("Not whole"));
    };

    const auto reply = TestSupport::await(m_handler->start());

    QCOMPARE(reply->errorString(), QStringLiteral("Not whole"));
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "page 7", "complete", "release" }));
}

void MetaDataHandlerTest::failedCountEndsTheRun()
{
    // A quotation mark makes the statement invalid.
    m_handler->setQueryParameters({ { "lookup", "a\"b" }, { "lookupFields", QStringList{ "description" } } });

    const auto reply = TestSupport::await(m_handler->start());

    QVERIFY2(reply->errorString().startsWith("Rows count reply error: Unable to get rows count: "),
        qPrintable(reply->errorString()));
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "release" }));
}

void MetaDataHandlerTest::refusedPageEndsTheRun()
{
    m_handler->atPage = [this]() {
        m_store->execute(QStringLiteral("ALTER TABLE MetaData1 RENAME TO Elsewhere"));
    };

    const auto reply = TestSupport::await(m_handler->start());
    QCOMPARE(m_store->execute(QStringLiteral("ALTER TABLE Elsewhere RENAME TO MetaData1")), QString());

    QVERIFY2(reply->errorString().startsWith("Unable to receive MetaData page: Unable to select MetaData: "),
        qPrintable(reply->errorString()));
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "page 10000", "release" }));
}

void MetaDataHandlerTest::missingStoreEndsTheRun()
{
    m_handler->setDatabase(nullptr, bigTable);

    const auto reply = TestSupport::await(m_handler->start());

    QCOMPARE(reply->errorString(), QStringLiteral("Rows count reply error: Database is not opened"));
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "release" }));
}

void MetaDataHandlerTest::cancelAtEachPageEndsTheRun_data()
{
    QTest::addColumn<int>("pages");
    QTest::newRow("before the count") << 0;
    QTest::newRow("after the first page") << 1;
    QTest::newRow("after the second page") << 2;
}

void MetaDataHandlerTest::cancelAtEachPageEndsTheRun()
{
    QFETCH(int, pages);
    const std::unique_ptr<OperationReply> reply(m_handler->start());
    if (pages == 0)
        reply->cancel();
    m_handler->atPage = [&] {
        if (m_handler->hooks.size() == 1 + pages)
            reply->cancel();
    };

    QVERIFY(waitForEnd(*reply));

    QCOMPARE(reply->errorString(), QStringLiteral("Canceled"));
    QCOMPARE(m_handler->hooks.size(), pages + 2);
    QCOMPARE(m_handler->hooks.last(), QStringLiteral("release"));
}

void MetaDataHandlerTest::cancelWhileAPageIsUnderWayDropsIt()
{
    const std::unique_ptr<OperationReply> reply(m_handler->start());
    std::unique_ptr<StoreHold> hold;
    // The count has come, and the request of the first page is next.
    connect(reply.get(), &OperationReply::progress, m_handler.get(), [&](int, int total) {
        if (total > 0 && !hold)
            hold = std::make_unique<StoreHold>(*m_store);
    });
    QVERIFY(QTest::qWaitFor([&hold] { return hold != nullptr; }, patience));
    QCoreApplication::processEvents();

    reply->cancel();
    hold->release();
    QVERIFY(waitForEnd(*reply));

    QCOMPARE(reply->errorString(), QStringLiteral("Canceled"));
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "release" }));
}

void MetaDataHandlerTest::secondRunBeginsAtTheFirstRecord()
{
    const auto first = TestSupport::await(m_handler->start());
    m_handler->paths.clear();

    const auto second = TestSupport::await(m_handler->start());

    QVERIFY(first.get() != second.get());
    QVERIFY(!second->hasError());
    QCOMPARE(m_handler->paths.size(), rowsOfBigTable);
    QCOMPARE(m_handler->paths.first(), filledPath(bigTable, 0));
}

void MetaDataHandlerTest::startDuringARunEndsItAndBeginsAnew()
{
    const std::unique_ptr<OperationReply> first(m_handler->start());
    std::unique_ptr<OperationReply> second;
    m_handler->atPage = [&] {
        if (second)
            return;
        QTimer::singleShot(0, m_handler.get(), [&] {
            m_handler->paths.clear();
            second.reset(m_handler->start());
        });
        m_handler->atPage = {};
    };

    QVERIFY(QTest::qWaitFor([&] { return second && second->isFinishedDelivered(); }, patience));

    QVERIFY(waitForEnd(*first));
    QCOMPARE(first->errorString(), QStringLiteral("Canceled"));
    QVERIFY(!second->hasError());
    QCOMPARE(m_handler->paths.size(), rowsOfBigTable);
    QCOMPARE(m_handler->hooks.count(QStringLiteral("release")), 2);
}

void MetaDataHandlerTest::replyOutlivesTheRun()
{
    m_handler->setDatabase(&m_store->database(), smallTable);
    const std::unique_ptr<OperationReply> first(m_handler->start());
    QVERIFY(waitForEnd(*first));
    const auto second = TestSupport::await(m_handler->start());
    m_handler.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QVERIFY(!first->hasError());
    QVERIFY(first->isFinishedDelivered());
    QVERIFY(!second->hasError());
}

void MetaDataHandlerTest::replyDeletedDuringTheRunReleasesTheOutput()
{
    m_handler->atPage = [this] {
        m_handler->atPage = {};
    };
    OperationReply* reply = m_handler->start();
    QVERIFY(QTest::qWaitFor([this] { return m_handler->hooks.size() > 1; }, patience));

    delete reply;

    QTRY_COMPARE_WITH_TIMEOUT(m_handler->hooks.last(), QStringLiteral("release"), patience);
    QVERIFY(!m_handler->hooks.contains(QStringLiteral("complete")));
}

void MetaDataHandlerTest::handlerDestroyedDuringTheRunEndsTheReply()
{
    const std::unique_ptr<OperationReply> reply(m_handler->start());
    bool hasPage = false;
    m_handler->atPage = [&hasPage] {
        hasPage = true;
    };
    QVERIFY(QTest::qWaitFor([&hasPage] { return hasPage; }, patience));

    m_handler.reset();

    QVERIFY(waitForEnd(*reply));
    QCOMPARE(reply->errorString(), QStringLiteral("Canceled"));
}

void MetaDataHandlerTest::storeDestroyedDuringTheRunEndsTheReply()
{
    m_handler->atPage = [this]() {
        m_store->destroy();
    };

    const auto reply = TestSupport::await(m_handler->start());

    QCOMPARE(reply->errorString(), QStringLiteral("Unable to receive MetaData page: Database is not opened"));
    QCOMPARE(m_handler->hooks, QStringList({ "begin", "page 10000", "release" }));
}

QTEST_GUILESS_MAIN(MetaDataHandlerTest)
#include "tst_metadatahandler.moc"
