// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/commandhelpers.h"
#include "tests/app/windowfixture.h"

#include "browse/metadatamodel.h"
#include "ui/metadatadialog.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

// The commands on the current record but for the rating keys, in the window, with the database file read beside it.

using namespace CommandHelpers;

class RecordCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void showInfoSavesOnlyTheUserFields();
    void showInfoOpensByKeyAndDoubleClick_data();
    void showInfoOpensByKeyAndDoubleClick();
    void unchangedRecordIsNotWritten();
    void recordChangedMeanwhileKeepsItsOtherFields();
    void editsAreSavedWhateverTheViewShowsMeanwhile_data();
    void editsAreSavedWhateverTheViewShowsMeanwhile();
    void recordDeletedMeanwhileIsToldAndItsEditsStay();
    void editsOfARecordThatCannotBeReadStayInTheDialog();
    void editsThatCannotBeSavedStayInTheDialog();
    void editsThatLeadOutOfTheViewAreSaved();
    void buttonsTriggerTheirMenuEntries();

private:
    void start();
    MetaData currentRecord();

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

MetaData RecordCommandsTest::currentRecord()
{
    return m_fixture->view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>();
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

    trigger(*m_fixture, QStringLiteral("Show Info…"));

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

void RecordCommandsTest::editsAreSavedWhateverTheViewShowsMeanwhile_data()
{
    QTest::addColumn<QString>("lookup");
    QTest::newRow("other records") << "bell";
    QTest::newRow("none") << "no such words";
    QTest::newRow("refused lookup") << "\"wav";
}

// What was typed before the dialog opened is applied below it.
void RecordCommandsTest::editsAreSavedWhateverTheViewShowsMeanwhile()
{
    QFETCH(QString, lookup);
    start();
    selectRows(*m_fixture, 1, 1);
    const qint64 id = currentId(*m_fixture);
    QVERIFY(!currentRecord().description().contains(QLatin1String("bell"), Qt::CaseInsensitive));
    whenModal<MetaDataDialog>(&m_fixture->window(), [this, lookup](MetaDataDialog& dialog) {
        m_fixture->view().setLookup(lookup, true);
        QTRY_VERIFY(!m_fixture->view().metaDataModel()->isRequeryPending());
        dialog.findChild<QLineEdit*>("libraryEdit")->setText("Harbour");
        dialog.accept();
    });
    Message failure;
    answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);

    m_fixture->window().openCurrentMetaDataRow();

    QCOMPARE(failure.text, QString());
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT library FROM MetaData1 WHERE id=%1").arg(id)).toString(),
        QStringLiteral("Harbour"));
}

void RecordCommandsTest::recordDeletedMeanwhileIsToldAndItsEditsStay()
{
    start();
    selectRows(*m_fixture, 1, 1);
    const qint64 id = currentId(*m_fixture);
    Message failure;
    QString typedText;
    whenModal<MetaDataDialog>(&m_fixture->window(), [&](MetaDataDialog& dialog) {
        column(*m_fixture, QStringLiteral("DELETE FROM MetaData1 WHERE id=%1").arg(id));
        dialog.findChild<QLineEdit*>("libraryEdit")->setText("Harbour");
        answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);
        whenModal<MetaDataDialog>(
            &m_fixture->window(),
            [&typedText](MetaDataDialog& again) {
                typedText = again.findChild<QLineEdit*>("libraryEdit")->text();
                again.reject();
            },
            [&failure](const MetaDataDialog&) { return !failure.text.isEmpty(); });
        dialog.accept();
    });

    m_fixture->window().openCurrentMetaDataRow();

    QCOMPARE(failure.text, QStringLiteral("This record does not exist any more. Nothing was saved."));
    QCOMPARE(typedText, QStringLiteral("Harbour"));
    const QString counters = QStringLiteral("Found Records: %1").arg(sampleRows - 1);
    QTRY_VERIFY2(m_fixture->counters().startsWith(counters), qPrintable(m_fixture->counters()));
}

void RecordCommandsTest::editsOfARecordThatCannotBeReadStayInTheDialog()
{
    start();
    selectRows(*m_fixture, 4, 4);
    const qint64 id = currentId(*m_fixture);
    Message failure;
    whenModal<MetaDataDialog>(&m_fixture->window(), [&](MetaDataDialog& dialog) {
        dialog.findChild<QLineEdit*>("ratingEdit")->setText("9.0");
        column(*m_fixture, QStringLiteral("ALTER TABLE MetaData1 RENAME TO Away"));
        answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);
        whenModal<MetaDataDialog>(
            &m_fixture->window(),
            [this](MetaDataDialog& again) {
                column(*m_fixture, QStringLiteral("ALTER TABLE Away RENAME TO MetaData1"));
                again.accept();
            },
            [&failure](const MetaDataDialog&) { return !failure.text.isEmpty(); });
        dialog.accept();
    });

    m_fixture->window().openCurrentMetaDataRow();

    QVERIFY2(failure.text.startsWith(QLatin1String("The record could not be saved.\n")), qPrintable(failure.text));
    QVERIFY2(failure.text.contains(QLatin1String("no such table")), qPrintable(failure.text));
    QCOMPARE(rating(*m_fixture, id), 9.0);
}

void RecordCommandsTest::editsThatCannotBeSavedStayInTheDialog()
{
    start();
    selectRows(*m_fixture, 4, 4);
    const qint64 id = currentId(*m_fixture);
    auto lock = std::make_unique<WriteLock>(*m_fixture);
    Message failure;
    whenModal<MetaDataDialog>(&m_fixture->window(), [&](MetaDataDialog& dialog) {
        dialog.findChild<QLineEdit*>("libraryEdit")->setText("Harbour");
        dialog.findChild<QLineEdit*>("ratingEdit")->setText("9.0");
        answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);
        // After the message it opens again.
        whenModal<MetaDataDialog>(
            &m_fixture->window(),
            [&lock](MetaDataDialog& again) {
                QCOMPARE(again.findChild<QLineEdit*>("libraryEdit")->text(), QStringLiteral("Harbour"));
                again.findChild<QLineEdit*>("libraryEdit")->clear();
                lock.reset();
                again.accept();
            },
            [&failure](const MetaDataDialog&) { return !failure.text.isEmpty(); });
        dialog.accept();
    });

    m_fixture->window().openCurrentMetaDataRow();

    QVERIFY(!lock);
    QCOMPARE(failure.text, QStringLiteral("The record could not be saved."));
    QCOMPARE(rating(*m_fixture, id), 9.0);
    QCOMPARE(
        value(*m_fixture, QStringLiteral("SELECT library FROM MetaData1 WHERE id=%1").arg(id)).toString(), QString());
    QTRY_VERIFY(isIdle(*m_fixture));
    QCOMPARE(currentId(*m_fixture), id);
}

void RecordCommandsTest::editsThatLeadOutOfTheViewAreSaved()
{
    start();
    m_fixture->view().setLookup(QStringLiteral("bell"), true);
    QTRY_COMPARE(m_fixture->view().model()->rowCount(), 20);
    QTRY_VERIFY(isIdle(*m_fixture));
    selectRows(*m_fixture, 2, 2);
    const qint64 id = currentId(*m_fixture);
    whenModal<MetaDataDialog>(&m_fixture->window(), [](MetaDataDialog& dialog) {
        dialog.findChild<QPlainTextEdit*>("descriptionEdit")->setPlainText("Wind");
        dialog.accept();
    });

    // A failure box would wait for an answer that never comes.
    m_fixture->window().openCurrentMetaDataRow();

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT description FROM MetaData1 WHERE id=%1").arg(id)).toString(),
        QStringLiteral("Wind"));
    QTRY_COMPARE(m_fixture->view().model()->rowCount(), 19);
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

QTEST_MAIN(RecordCommandsTest)
#include "tst_recordcommands.moc"
