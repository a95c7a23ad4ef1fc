// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/windowfixture.h"

#include "browse/metadatamodel.h"
#include "tests/support/testsupport.h"
#include "ui/metadatadialog.h"
#include "ui/operationdialog.h"

#include <QDialogButtonBox>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

// The commands on the current and on the selected records, in the window, with the database file read beside it.

namespace {

QVariantList column(const WindowFixture& fixture, const QString& statement)
{
    return TestSupport::firstColumn(fixture.databaseFile(), statement);
}

QVariant value(const WindowFixture& fixture, const QString& statement)
{
    return TestSupport::firstValue(fixture.databaseFile(), statement);
}

double rating(const WindowFixture& fixture, qint64 id)
{
    return value(fixture, QStringLiteral("SELECT rating FROM MetaData1 WHERE id=%1").arg(id)).toDouble();
}

qint64 idAt(WindowFixture& fixture, int row)
{
    const QModelIndex index = fixture.view().model()->index(row, 0);
    return index.data(MetaDataModel::RecordRole).value<MetaData>().id();
}

qint64 currentId(WindowFixture& fixture)
{
    return fixture.view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().id();
}

bool isIdle(WindowFixture& fixture)
{
    const MetaDataModel* model = fixture.view().metaDataModel();
    return model->isRowsCountActual() && !model->isProcessing() && !model->isRequeryPending();
}

void selectRows(WindowFixture& fixture, int first, int last)
{
    MetaDataView& view = fixture.view();
    view.setCurrentIndex(view.model()->index(first, 0));
    const QItemSelection rows(
        view.model()->index(first, 0), view.model()->index(last, view.model()->columnCount() - 1));
    view.selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
}

void triggerRecordAction(WindowFixture& fixture, const QString& text)
{
    const QList<QAction*> actions = fixture.window().findChildren<QAction*>();
    const auto action
        = std::find_if(actions.begin(), actions.end(), [&text](const QAction* a) { return a->text() == text; });
    QVERIFY2(action != actions.end(), qPrintable(text));
    (*action)->trigger();
}

struct Question
{
    QString title;
    QString text;
    QString informativeText;
    bool isNoDefault = false;
};

// Answers the next question box and notes what it said.
void answerQuestion(WindowFixture& fixture, QMessageBox::StandardButton answer, Question* question = nullptr)
{
    whenModal<QMessageBox>(&fixture.window(), [answer, question](QMessageBox& box) {
        if (question) {
            *question = { box.windowTitle(), box.text(), box.informativeText(),
                box.defaultButton() == box.button(QMessageBox::No) };
        }
        QTest::mouseClick(box.button(answer), Qt::LeftButton);
    });
}

// Many more records for table 1, with paths behind the sample's.
void addRecords(const WindowFixture& fixture, int count)
{
    TestSupport::firstColumn(fixture.databaseFile(),
        QStringLiteral("WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < %1) "
                       "INSERT INTO MetaData1 (filePath, fileName, fileType, description) "
                       "SELECT '/zz/' || n || '.wav', n || '.wav', 'wav', '' FROM numbers")
            .arg(count));
}

} // namespace

class RecordCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void plusAndMinusStepTheRating();
    void everyQuickPressCounts();
    void ratingStopsAtItsEnds_data();
    void ratingStopsAtItsEnds();
    void ratedRecordStaysCurrentWhenSortedByRating();
    void ratingKeysWithoutARecordDoNothing();
    void showInfoSavesOnlyTheUserFields();
    void showInfoOpensByKeyAndDoubleClick_data();
    void showInfoOpensByKeyAndDoubleClick();
    void unchangedRecordIsNotWritten();
    void recordChangedMeanwhileKeepsItsOtherFields();
    void recordDeletedMeanwhileIsToldAbout();
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
    void buttonsTriggerTheirMenuEntries();
    void manyRecordsAreMarkedInADialog_data();
    void manyRecordsAreMarkedInADialog();

private:
    void start();

    std::unique_ptr<WindowFixture> m_fixture;
};

void RecordCommandsTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void RecordCommandsTest::cleanup()
{
    m_fixture.reset();
}

void RecordCommandsTest::start()
{
    m_fixture->start();
    QTRY_VERIFY(isIdle(*m_fixture));
    m_fixture->view().setFocus();
}

void RecordCommandsTest::plusAndMinusStepTheRating()
{
    start();
    selectRows(*m_fixture, 2, 2);
    const qint64 id = currentId(*m_fixture);
    const QVariantMap before
        = m_fixture->view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().toVariantMap();

    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    QTRY_COMPARE(rating(*m_fixture, id), 2.0);
    QTRY_VERIFY(isIdle(*m_fixture));
    QTest::keyClick(&m_fixture->view(), Qt::Key_Minus);
    QTRY_COMPARE(rating(*m_fixture, id), 1.0);

    QTRY_VERIFY(isIdle(*m_fixture));
    QCOMPARE(currentId(*m_fixture), id);
    QCOMPARE(m_fixture->view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().toVariantMap(), before);
}

void RecordCommandsTest::everyQuickPressCounts()
{
    start();
    selectRows(*m_fixture, 0, 0);
    const qint64 first = currentId(*m_fixture);

    for (int press = 0; press < 7; ++press)
        QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    // On another record, before the answers to the first are there.
    QTest::keyClick(&m_fixture->view(), Qt::Key_Down);
    const qint64 second = currentId(*m_fixture);
    for (int press = 0; press < 3; ++press)
        QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);

    QVERIFY(first != second);
    QTRY_COMPARE(rating(*m_fixture, first), 8.0);
    QTRY_COMPARE(rating(*m_fixture, second), 4.0);
}

void RecordCommandsTest::ratingStopsAtItsEnds_data()
{
    QTest::addColumn<double>("before");
    QTest::addColumn<int>("key");
    QTest::addColumn<double>("after");
    QTest::newRow("top") << 100.0 << int(Qt::Key_Plus) << 100.0;
    QTest::newRow("just below the top") << 99.5 << int(Qt::Key_Plus) << 100.0;
    QTest::newRow("bottom") << 0.0 << int(Qt::Key_Minus) << 0.0;
    QTest::newRow("just above the bottom") << 0.5 << int(Qt::Key_Minus) << 0.0;
}

void RecordCommandsTest::ratingStopsAtItsEnds()
{
    QFETCH(double, before);
    QFETCH(int, key);
    QFETCH(double, after);
    column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET rating=%1").arg(before));
    start();
    selectRows(*m_fixture, 0, 0);
    const qint64 id = currentId(*m_fixture);

    QTest::keyClick(&m_fixture->view(), Qt::Key(key));
    QTest::keyClick(&m_fixture->view(), Qt::Key(key));

    QTRY_COMPARE(rating(*m_fixture, id), after);
    QTRY_VERIFY(isIdle(*m_fixture));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE rating=%1").arg(before)).toInt(),
        before == after ? sampleRows : sampleRows - 1);
}

void RecordCommandsTest::ratedRecordStaysCurrentWhenSortedByRating()
{
    start();
    m_fixture->view().sortByColumn(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    QTRY_VERIFY(isIdle(*m_fixture));
    selectRows(*m_fixture, 30, 30);
    const qint64 id = currentId(*m_fixture);

    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);

    QTRY_COMPARE(idAt(*m_fixture, 0), id);
    QTRY_COMPARE(m_fixture->view().currentIndex().row(), 0);
    QCOMPARE(m_fixture->view().selectedRowsCount(), 1);
}

void RecordCommandsTest::ratingKeysWithoutARecordDoNothing()
{
    start();
    m_fixture->view().clearSelection();
    m_fixture->view().setCurrentIndex(QModelIndex());

    m_fixture->window().increaseCurrentMetaDataRating();
    m_fixture->window().decreaseCurrentMetaDataRating();

    QVERIFY(isIdle(*m_fixture));
}

void RecordCommandsTest::showInfoSavesOnlyTheUserFields()
{
    start();
    selectRows(*m_fixture, 4, 4);
    const qint64 id = currentId(*m_fixture);
    QVariantMap expected
        = m_fixture->view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().toVariantMap();
    whenModal<MetaDataDialog>(&m_fixture->window(), [](MetaDataDialog& dialog) {
        dialog.findChild<QLineEdit*>("libraryEdit")->setText("Harbour & <sea>");
        dialog.findChild<QPlainTextEdit*>("descriptionEdit")->setPlainText("Buoy");
        dialog.findChild<QLineEdit*>("ratingEdit")->setText("42.5");
        dialog.accept();
    });

    triggerRecordAction(*m_fixture, QStringLiteral("Show Info…"));

    QTRY_COMPARE(rating(*m_fixture, id), 42.5);
    QTRY_VERIFY(isIdle(*m_fixture));
    expected.insert("library", "Harbour & <sea>");
    expected.insert("description", "Buoy");
    expected.insert("rating", 42.5);
    QTRY_COMPARE(
        m_fixture->view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().toVariantMap(), expected);
}

void RecordCommandsTest::showInfoOpensByKeyAndDoubleClick_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("opens");
    QTest::newRow("return") << int(Qt::Key_Return) << true;
    QTest::newRow("keypad enter") << int(Qt::Key_Enter) << false;
    QTest::newRow("double click") << 0 << true;
}

void RecordCommandsTest::showInfoOpensByKeyAndDoubleClick()
{
    QFETCH(int, key);
    QFETCH(bool, opens);
    start();
    selectRows(*m_fixture, 1, 1);
    bool isOpened = false;
    whenModal<MetaDataDialog>(&m_fixture->window(), [&isOpened](MetaDataDialog& dialog) {
        isOpened = true;
        dialog.reject();
    });

    if (key != 0) {
        QTest::keyClick(&m_fixture->view(), Qt::Key(key));
    } else {
        const QPoint point = m_fixture->view().visualRect(m_fixture->view().currentIndex()).center();
        QTest::mouseClick(m_fixture->view().viewport(), Qt::LeftButton, Qt::NoModifier, point);
        QTest::mouseDClick(m_fixture->view().viewport(), Qt::LeftButton, Qt::NoModifier, point);
    }

    QCOMPARE(isOpened, opens);
}

void RecordCommandsTest::unchangedRecordIsNotWritten()
{
    start();
    selectRows(*m_fixture, 1, 1);
    const QVariantList before = column(*m_fixture, QStringLiteral("SELECT rating FROM MetaData1"));
    whenModal<MetaDataDialog>(&m_fixture->window(), [](MetaDataDialog& dialog) {
        dialog.accept();
        QVERIFY(dialog.isVisible());
        dialog.reject();
    });

    m_fixture->window().openCurrentMetaDataRow();

    QVERIFY(isIdle(*m_fixture));
    QCOMPARE(column(*m_fixture, QStringLiteral("SELECT rating FROM MetaData1")), before);
}

void RecordCommandsTest::recordChangedMeanwhileKeepsItsOtherFields()
{
    start();
    selectRows(*m_fixture, 1, 1);
    const qint64 id = currentId(*m_fixture);
    whenModal<MetaDataDialog>(&m_fixture->window(), [this, id](MetaDataDialog& dialog) {
        column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET artist='Later', playlist=1 WHERE id=%1").arg(id));
        dialog.findChild<QLineEdit*>("ratingEdit")->setText("9.0");
        dialog.accept();
    });

    m_fixture->window().openCurrentMetaDataRow();

    QTRY_COMPARE(rating(*m_fixture, id), 9.0);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT artist || playlist FROM MetaData1 WHERE id=%1").arg(id)),
        QVariant("Later1"));
}

void RecordCommandsTest::recordDeletedMeanwhileIsToldAbout()
{
    start();
    selectRows(*m_fixture, 1, 1);
    const qint64 id = currentId(*m_fixture);
    QString text;
    whenModal<MetaDataDialog>(&m_fixture->window(), [this, id, &text](MetaDataDialog& dialog) {
        column(*m_fixture, QStringLiteral("DELETE FROM MetaData1 WHERE id=%1").arg(id));
        dialog.findChild<QLineEdit*>("ratingEdit")->setText("9.0");
        whenModal<QMessageBox>(&m_fixture->window(), [&text](QMessageBox& box) {
            text = box.text();
            box.accept();
        });
        dialog.accept();
    });

    m_fixture->window().openCurrentMetaDataRow();

    QCOMPARE(text, QStringLiteral("This record does not exist any more. Nothing was saved."));
    const QString counters = QStringLiteral("Found Records: %1").arg(sampleRows - 1);
    QTRY_VERIFY2(m_fixture->counters().startsWith(counters), qPrintable(m_fixture->counters()));
}

void RecordCommandsTest::oneRecordIsDeletedAfterItsQuestion()
{
    start();
    selectRows(*m_fixture, 7, 7);
    const qint64 id = currentId(*m_fixture);
    Question question;
    answerQuestion(*m_fixture, QMessageBox::Yes, &question);

    triggerRecordAction(*m_fixture, QStringLiteral("Delete Selected"));

    QCOMPARE(question.title, QStringLiteral("Delete Meta Data Record"));
    QCOMPARE(question.text, QStringLiteral("Are you sure you want to delete this Meta Data record from database?"));
    QCOMPARE(question.informativeText, QStringLiteral("You cannot undo this action"));
    QVERIFY(question.isNoDefault);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows - 1);
    QVERIFY(!value(*m_fixture, QStringLiteral("SELECT id FROM MetaData1 WHERE id=%1").arg(id)).isValid());
    const QString counters = QStringLiteral("Found Records: %1").arg(sampleRows - 1);
    QTRY_VERIFY2(m_fixture->counters().startsWith(counters), qPrintable(m_fixture->counters()));
}

void RecordCommandsTest::severalRecordsAreDeletedAfterTheirQuestion()
{
    start();
    selectRows(*m_fixture, 3, 12);
    QVariantList ids;
    for (int row = 3; row <= 12; ++row)
        ids.append(idAt(*m_fixture, row));
    Question question;
    answerQuestion(*m_fixture, QMessageBox::Yes, &question);

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(question.title, QStringLiteral("Delete Meta Data Records"));
    QCOMPARE(question.text, QStringLiteral("Are you sure you want to delete these Meta Data records from database?"));
    const QVariantList left = column(*m_fixture, QStringLiteral("SELECT id FROM MetaData1"));
    QCOMPARE(left.size(), sampleRows - 10);
    for (const QVariant& id : ids)
        QVERIFY(!left.contains(id));
}

void RecordCommandsTest::declinedDeletionChangesNothing()
{
    start();
    selectRows(*m_fixture, 3, 12);
    answerQuestion(*m_fixture, QMessageBox::No);

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
    QCOMPARE(m_fixture->view().selectedRowsCount(), 10);
}

void RecordCommandsTest::nothingSelectedAsksNothing()
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

void RecordCommandsTest::deleteKeyDoesNothing()
{
    start();
    selectRows(*m_fixture, 3, 12);

    QTest::keyClick(&m_fixture->view(), Qt::Key_Delete);

    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

// Right after a rating, in a table sorted by rating, another record comes onto the row.
void RecordCommandsTest::deletionTakesTheRecordsThatWereSeen()
{
    start();
    m_fixture->view().sortByColumn(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    QTRY_VERIFY(isIdle(*m_fixture));
    selectRows(*m_fixture, 30, 30);
    const qint64 id = currentId(*m_fixture);
    answerQuestion(*m_fixture, QMessageBox::Yes);

    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    m_fixture->window().deleteSelectedRecords();

    const QVariantList left = column(*m_fixture, QStringLiteral("SELECT id FROM MetaData1"));
    QVERIFY(!left.contains(id));
    QCOMPARE(left.size(), sampleRows - 1);
}

void RecordCommandsTest::deletionOfOthersThanSeenIsRefused()
{
    start();
    selectRows(*m_fixture, 3, 12);
    // While the question stands a lookup is applied that was typed before: other records are on the rows then.
    whenModal<QMessageBox>(&m_fixture->window(), [this](QMessageBox& box) {
        m_fixture->view().setLookup(QStringLiteral("harbour"), true);
        m_fixture->view().setFilePathLookupEnabled(true);
        QTRY_VERIFY(isIdle(*m_fixture));
        selectRows(*m_fixture, 3, 12);
        QTest::mouseClick(box.button(QMessageBox::Yes), Qt::LeftButton);
    });
    QTest::ignoreMessage(QtWarningMsg, "The selected records have changed meanwhile; nothing was done");

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

void RecordCommandsTest::fiveHundredRecordsAreDeletedWithoutADialog()
{
    addRecords(*m_fixture, 500 - sampleRows);
    start();
    m_fixture->view().selectAll();
    answerQuestion(*m_fixture, QMessageBox::Yes);
    bool isShown = false;
    whenModal<OperationDialog>(&m_fixture->window(), [&isShown](OperationDialog&) { isShown = true; });

    m_fixture->window().deleteSelectedRecords();

    QVERIFY(!isShown);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), 0);
}

void RecordCommandsTest::fiveHundredAndOneRecordsAreDeletedInADialog()
{
    addRecords(*m_fixture, 501 - sampleRows);
    start();
    m_fixture->view().selectAll();
    answerQuestion(*m_fixture, QMessageBox::Yes);
    QStringList titles;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&titles] {
        const auto* dialog = qobject_cast<OperationDialog*>(QApplication::activeModalWidget());
        if (dialog && !titles.contains(dialog->windowTitle()))
            titles.append(dialog->windowTitle());
    });
    watch.start(0);

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(titles, QStringList({ "Gathering Selected Items", "Deleting Mata Data Records" }));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), 0);
}

void RecordCommandsTest::failedDeletionIsTold()
{
    column(*m_fixture,
        QStringLiteral("CREATE TRIGGER refuse BEFORE DELETE ON MetaData1 BEGIN "
                       "SELECT RAISE(ABORT, 'refused'); END"));
    start();
    selectRows(*m_fixture, 3, 12);
    answerQuestion(*m_fixture, QMessageBox::Yes);
    QString text;
    whenModal<QMessageBox>(
        &m_fixture->window(),
        [&text](QMessageBox& box) {
            text = box.text();
            box.accept();
        },
        [](QMessageBox& box) { return box.icon() == QMessageBox::Critical; });
    QTest::ignoreMessage(QtCriticalMsg, "MetaData delete failed");

    m_fixture->window().deleteSelectedRecords();

    QCOMPARE(text, QStringLiteral("MetaData delete failed"));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

void RecordCommandsTest::playlistMarksAreSetAndKeepTheSelection()
{
    start();
    selectRows(*m_fixture, 20, 29);

    triggerRecordAction(*m_fixture, QStringLiteral("Add to Playlist"));

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT SUM(playlist) FROM MetaData1")).toInt(), playlistSampleRows + 10);
    QTRY_VERIFY(isIdle(*m_fixture));
    QTRY_COMPARE(m_fixture->view().selectedRowsCount(), 10);
    QTRY_COMPARE(m_fixture->view()
                     .model()
                     ->index(20, MetaDataModel::RatingColumn)
                     .data(MetaDataModel::TrailingTextRole)
                     .toString(),
        QString::fromUtf8("●"));
    triggerRecordAction(*m_fixture, QStringLiteral("Remove from Playlist"));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT SUM(playlist) FROM MetaData1")).toInt(), playlistSampleRows);
}

void RecordCommandsTest::buttonsTriggerTheirMenuEntries()
{
    start();
    selectRows(*m_fixture, 20, 29);

    QTest::mouseClick(m_fixture->child<QPushButton>("addToPlaylistButton"), Qt::LeftButton);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT SUM(playlist) FROM MetaData1")).toInt(), playlistSampleRows + 10);

    bool isOpened = false;
    whenModal<MetaDataDialog>(&m_fixture->window(), [&isOpened](MetaDataDialog& dialog) {
        isOpened = true;
        dialog.reject();
    });
    QTRY_VERIFY(isIdle(*m_fixture));
    QTest::mouseClick(m_fixture->child<QPushButton>("showInfoButton"), Qt::LeftButton);
    QVERIFY(isOpened);
}

void RecordCommandsTest::manyRecordsAreMarkedInADialog_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("marked");
    QTest::newRow("add") << "Add to Playlist"
                         << "Adding Mata Data records to Playlist" << 501;
    QTest::newRow("remove") << "Remove from Playlist"
                            << "Removing Mata Data records from Playlist" << 0;
}

void RecordCommandsTest::manyRecordsAreMarkedInADialog()
{
    QFETCH(QString, action);
    QFETCH(QString, title);
    addRecords(*m_fixture, 501 - sampleRows);
    start();
    m_fixture->view().selectAll();
    QStringList titles;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&titles] {
        const auto* dialog = qobject_cast<OperationDialog*>(QApplication::activeModalWidget());
        if (dialog && !titles.contains(dialog->windowTitle()))
            titles.append(dialog->windowTitle());
    });
    watch.start(0);

    triggerRecordAction(*m_fixture, action);

    QCOMPARE(titles, QStringList({ "Gathering Selected Items", title }));
    QTEST(value(*m_fixture, QStringLiteral("SELECT SUM(playlist) FROM MetaData1")).toInt(), "marked");
}

QTEST_MAIN(RecordCommandsTest)
#include "tst_recordcommands.moc"
