// SPDX-License-Identifier: GPL-3.0-or-later
// What waits for the store when the application quits.
#include "store/database.h"
#include "store/operationreply.h"
#include "tests/support/storefixture.h"

#include <QSemaphore>
#include <QtTest>

using TestSupport::StoreFixture;

namespace {

// Before anything else that the event loop has to do from now on.
void quitNext()
{
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit, Qt::QueuedConnection);
}

// Keeps the store's thread busy until the semaphore is released.
void hold(StoreFixture& store, QSemaphore& released)
{
    QMetaObject::invokeMethod(
        &store.database(), [&released]() { released.acquire(); }, Qt::QueuedConnection);
}

} // namespace

class QuittingTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void waitForAReplyEnds();
    void openingEnds();
    void closingEndsOnlyWhenTheStoreIsClosed();
};

// Once the application quits, no event loop runs any more; to have run its own one to its end takes that back.
void QuittingTest::cleanup()
{
    quitNext();
    QCoreApplication::exec();
}

void QuittingTest::waitForAReplyEnds()
{
    OperationReply reply;
    quitNext();

    reply.waitForFinished();

    QVERIFY(!reply.isFinishedDelivered());
}

void QuittingTest::openingEnds()
{
    StoreFixture store;
    TestSupport::makeEmptyDatabase(store.filePath());
    QSemaphore released;
    hold(store, released);
    quitNext();

    QVERIFY(!store.database().open());

    QVERIFY(!store.database().isOpened());
    QCOMPARE(store.database().lastError(), QString());
    // The store opens all the same, with nobody waiting for it.
    released.release();
    QTRY_VERIFY(store.database().isOpened());
}

void QuittingTest::closingEndsOnlyWhenTheStoreIsClosed()
{
    StoreFixture store;
    store.open();
    QSemaphore released;
    hold(store, released);
    quitNext();
    // Behind the quitting, which ends the event loop of the wait.
    QMetaObject::invokeMethod(
        this, [&released]() { released.release(); }, Qt::QueuedConnection);

    store.database().close();

    QVERIFY(!store.database().isOpened());
}

QTEST_GUILESS_MAIN(QuittingTest)

#include "tst_quitting.moc"
