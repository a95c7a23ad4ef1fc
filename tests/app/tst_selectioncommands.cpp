// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/commandhelpers.h"
#include "tests/app/windowfixture.h"

#include "browse/metadatamodel.h"
#include "ui/operationdialog.h"

#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

// The commands on the selected records, in the window, with the database file read beside it.

using namespace CommandHelpers;

class SelectionCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void oneRecordIsDeletedAfterItsQuestion();
    void severalRecordsAreDeletedAfterTheirQuestion();
    void declinedDeletionChangesNothing();
    void nothingSelectedAsksNothing();
    void deleteKeyDoesNothing();
    void deletionTakesTheRecordsThatWereSeen();
    void deletionOfOthersThanSeenIsRefused();
    void fiveHundredRecordsAreDeletedWithoutADialog();
    void fiveHundredAndOneRecordsAreDeletedInADialog();
    void failedDeletionIsTold();
    void playlistMarksAreSetAndKeepTheSelection();
    void manyRecordsAreMarkedInADialog_data();
    void manyRecordsAreMarkedInADialog();

private:
    void start();

    std::unique_ptr<WindowFixture> m_fixture;
};

void SelectionCommandsTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void SelectionCommandsTest::cleanup()
{
    m_fixture.reset();
}

void SelectionCommandsTest::start()
{
    m_fixture->start();
    QTRY_VERIFY(isIdle(*m_fixture));
    m_fixture->view().setFocus();
}

void SelectionCommandsTest::oneRecordIsDeletedAfterItsQuestion()
{
    start();
    selectRows(*m_fixture, 7, 7);
    const qint64 id = currentId(*m_fixture);
    Message question;
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes, &question);

    trigger(*m_fixture, QStringLiteral("Delete Selected"));

    QCOMPARE(question.title, QStringLiteral("Delete Meta Data Record"));
    QCOMPARE(question.text, QStringLiteral("Are you sure you want to delete this Meta Data record from database?"));
    QCOMPARE(question.informativeText, QStringLiteral("You cannot undo this action"));
    QVERIFY(question.isNoDefault);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows - 1);
    QVERIFY(!value(*m_fixture, QStringLiteral("SELECT id FROM MetaData1 WHERE id=%1").arg(id)).isValid());
    const QString counters = QStringLiteral("Found Records: %1").arg(sampleRows - 1);
    QTRY_VERIFY2(m_fixture->counters().startsWith(counters), qPrintable(m_fixture->counters()));
}

void SelectionCommandsTest::severalRecordsAreDeletedAfterTheirQuestion()
{
    start();
    selectRows(*m_fixture, 3, 12);
    QVariantList ids;
    for (int row = 3; row <= 12; ++row)
        ids.append(idAt(*m_fixture, row));
    Message question;
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes, &question);

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(question.title, QStringLiteral("Delete Meta Data Records"));
    QCOMPARE(question.text, QStringLiteral("Are you sure you want to delete these Meta Data records from database?"));
    const QVariantList left = column(*m_fixture, QStringLiteral("SELECT id FROM MetaData1"));
    QCOMPARE(left.size(), sampleRows - 10);
    for (const QVariant& id : ids)
        QVERIFY(!left.contains(id));
}

void SelectionCommandsTest::declinedDeletionChangesNothing()
{
    start();
    selectRows(*m_fixture, 3, 12);
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::No);

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
    QCOMPARE(m_fixture->view().selectedRowsCount(), 10);
}

void SelectionCommandsTest::nothingSelectedAsksNothing()
{
    start();
    m_fixture->view().clearSelection();

    // A question would wait for an answer that never comes.
    m_fixture->window().deleteSelectedRecords();
    m_fixture->window().addToPlaylist();
    m_fixture->window().removeFromPlaylist();

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT SUM(playlist) FROM MetaData1")).toInt(), playlistSampleRows);
}

void SelectionCommandsTest::deleteKeyDoesNothing()
{
    start();
    selectRows(*m_fixture, 3, 12);

    QTest::keyClick(&m_fixture->view(), Qt::Key_Delete);

    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

// Right after a rating, in a table sorted by rating, another record comes onto the row.
void SelectionCommandsTest::deletionTakesTheRecordsThatWereSeen()
{
    start();
    m_fixture->view().sortByColumn(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    QTRY_VERIFY(isIdle(*m_fixture));
    selectRows(*m_fixture, 30, 30);
    const qint64 id = currentId(*m_fixture);
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes);

    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    m_fixture->window().deleteSelectedRecords();

    const QVariantList left = column(*m_fixture, QStringLiteral("SELECT id FROM MetaData1"));
    QVERIFY(!left.contains(id));
    QCOMPARE(left.size(), sampleRows - 1);
}

void SelectionCommandsTest::deletionOfOthersThanSeenIsRefused()
{
    start();
    selectRows(*m_fixture, 3, 12);
    // While the question stands a lookup is applied that was typed before: other records are on the rows then.
    whenModal<QMessageBox>(&m_fixture->window(), [this](QMessageBox& box) {
        m_fixture->view().setLookup(QStringLiteral("harbour"), true);
        m_fixture->view().setFilePathLookupEnabled(true);
        QTRY_VERIFY(isIdle(*m_fixture));
        selectRows(*m_fixture, 3, 12);
        box.button(QMessageBox::Yes)->click();
    });
    QTest::ignoreMessage(QtWarningMsg, "The selected records have changed meanwhile; nothing was done");

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

void SelectionCommandsTest::fiveHundredRecordsAreDeletedWithoutADialog()
{
    addRecords(*m_fixture, 500 - sampleRows);
    start();
    m_fixture->view().selectAll();
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes);
    bool isShown = false;
    whenModal<OperationDialog>(&m_fixture->window(), [&isShown](OperationDialog&) { isShown = true; });

    m_fixture->window().deleteSelectedRecords();

    QVERIFY(!isShown);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), 0);
}

void SelectionCommandsTest::fiveHundredAndOneRecordsAreDeletedInADialog()
{
    addRecords(*m_fixture, 501 - sampleRows);
    start();
    m_fixture->view().selectAll();
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes);
    const DialogTitles dialogs;

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(dialogs.titles(), QStringList({ "Gathering Selected Items", "Deleting Mata Data Records" }));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), 0);
}

void SelectionCommandsTest::failedDeletionIsTold()
{
    column(*m_fixture,
        QStringLiteral("CREATE TRIGGER refuse BEFORE DELETE ON MetaData1 BEGIN "
                       "SELECT RAISE(ABORT, 'refused'); END"));
    start();
    selectRows(*m_fixture, 3, 12);
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes);
    Message failure;
    answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);
    QTest::ignoreMessage(QtCriticalMsg, "MetaData delete failed");

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(failure.text, QStringLiteral("MetaData delete failed"));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

void SelectionCommandsTest::playlistMarksAreSetAndKeepTheSelection()
{
    start();
    selectRows(*m_fixture, 20, 29);

    trigger(*m_fixture, QStringLiteral("Add to Playlist"));

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT SUM(playlist) FROM MetaData1")).toInt(), playlistSampleRows + 10);
    QTRY_VERIFY(isIdle(*m_fixture));
    QTRY_COMPARE(m_fixture->view().selectedRowsCount(), 10);
    QTRY_COMPARE(m_fixture->view()
                     .model()
                     ->index(20, MetaDataModel::RatingColumn)
                     .data(MetaDataModel::TrailingTextRole)
                     .toString(),
        QString::fromUtf8("●"));
    trigger(*m_fixture, QStringLiteral("Remove from Playlist"));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT SUM(playlist) FROM MetaData1")).toInt(), playlistSampleRows);
}

void SelectionCommandsTest::manyRecordsAreMarkedInADialog_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("marked");
    QTest::newRow("add") << "Add to Playlist"
                         << "Adding Mata Data records to Playlist" << 501;
    QTest::newRow("remove") << "Remove from Playlist"
                            << "Removing Mata Data records from Playlist" << 0;
}

void SelectionCommandsTest::manyRecordsAreMarkedInADialog()
{
    QFETCH(QString, action);
    QFETCH(QString, title);
    addRecords(*m_fixture, 501 - sampleRows);
    start();
    m_fixture->view().selectAll();
    const DialogTitles dialogs;

    trigger(*m_fixture, action);

    QCOMPARE(dialogs.titles(), QStringList({ "Gathering Selected Items", title }));
    QTEST(value(*m_fixture, QStringLiteral("SELECT SUM(playlist) FROM MetaData1")).toInt(), "marked");
}

QTEST_MAIN(SelectionCommandsTest)
#include "tst_selectioncommands.moc"
