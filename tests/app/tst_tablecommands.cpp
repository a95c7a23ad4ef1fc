// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/commandhelpers.h"
#include "tests/app/windowfixture.h"

#include "store/database.h"
#include "tests/support/testsupport.h"
#include "ui/aboutdialog.h"
#include "ui/libraryevaluationrulesdialog.h"
#include "ui/operationdialog.h"
#include "ui/searchandreplacedialog.h"
#include "ui/settings.h"
#include "ui/tabledisplaynamesdialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

// The commands on a whole table or database, in the window, with the database file read beside it.

using namespace CommandHelpers;

using TestSupport::contents;

namespace {

QPushButton& dialogButton(const OperationDialog& dialog)
{
    return *dialog.findChild<QPushButton*>();
}

QPlainTextEdit& rulesEditor(const LibraryEvaluationRulesDialog& dialog)
{
    return *dialog.findChild<QPlainTextEdit*>(QStringLiteral("rulesEdit"));
}

void press(const QDialog& dialog, QDialogButtonBox::StandardButton which)
{
    dialog.findChild<QDialogButtonBox*>()->button(which)->click();
}

} // namespace

class TableCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void deleteAllEmptiesTheCurrentTable();
    void failedDeleteAllIsTold();
    void declinedDeleteAllChangesNothing();
    void evaluationTellsItsOutcome_data();
    void evaluationTellsItsOutcome();
    void evaluationUsesTheShippedRulesWithoutAFile();
    void unreadableRulesClearNothing();
    void failedEvaluationTellsNoSuccess();
    void rulesAreSaved_data();
    void rulesAreSaved();
    void canceledRulesAreNotSaved();
    void rulesThatCannotBeSavedStayInTheEditor();
    void replacementTellsItsOutcome_data();
    void replacementTellsItsOutcome();
    void replacementTakesTheRecordsOfTheView();
    void replacementChoicesAreKept();
    void rebuildCannotBeCanceled();
    void declinedRebuildDoesNothing();
    void tableNamesReachTitleAndMenu();
    void tableNamesThatCannotBeSavedStayInTheDialog();
    void workFolderIsChosenAndKept();
    void aboutOpensByMenuAndLogo();
    void commandInsideAnotherIsIgnored();

private:
    void start();
    void writeRules(const QByteArray& rules);

    std::unique_ptr<WindowFixture> m_fixture;
};

void TableCommandsTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void TableCommandsTest::cleanup()
{
    m_fixture.reset();
}

void TableCommandsTest::start()
{
    m_fixture->start();
    QTRY_VERIFY(isIdle(*m_fixture));
}

void TableCommandsTest::writeRules(const QByteArray& rules)
{
    TestSupport::writeFile(m_fixture->dataFile(QStringLiteral("LibraryEvaluationRules.txt")), rules);
}

void TableCommandsTest::deleteAllEmptiesTheCurrentTable()
{
    start();
    Message question;
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes, &question);

    trigger(*m_fixture, QStringLiteral("Delete All"));

    QCOMPARE(question.title, QStringLiteral("Delete All MetaData Records"));
    QCOMPARE(question.text,
        QStringLiteral("Are you sure you want to delete all Meta Data records from the current database table?"));
    QCOMPARE(question.informativeText, QStringLiteral("You cannot undo this action"));
    QVERIFY(question.isNoDefault);
    QTRY_COMPARE(m_fixture->counters(), QStringLiteral("Found Records: 0"));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), 0);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData3")).toInt(), rowsOfTable3);
}

void TableCommandsTest::failedDeleteAllIsTold()
{
    start();
    const WriteLock lock(*m_fixture);
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes);
    Message failure;
    answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);

    trigger(*m_fixture, QStringLiteral("Delete All"));

    QTRY_COMPARE_WITH_TIMEOUT(failure.title, QStringLiteral("Delete All MetaData Records"), patienceWithALock);
    QVERIFY(!failure.text.isEmpty());
    QTRY_VERIFY(isIdle(*m_fixture));
    QCOMPARE(m_fixture->counters(), QStringLiteral("Found Records: %1").arg(sampleRows));
}

void TableCommandsTest::declinedDeleteAllChangesNothing()
{
    start();
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::No);

    trigger(*m_fixture, QStringLiteral("Delete All"));

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

void TableCommandsTest::evaluationTellsItsOutcome_data()
{
    QTest::addColumn<QByteArray>("rules");
    QTest::addColumn<int>("changed");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QByteArray("A: no such file") << 0 << "Nothing new evaluated";
    QTest::newRow("one") << QByteArray("A: take_007") << 1 << "One new library (re)evaluated";
    QTest::newRow("seven") << QByteArray("A: take_00[0-6]") << 7 << "7 libraries (re)evaluated";
}

void TableCommandsTest::evaluationTellsItsOutcome()
{
    QFETCH(QByteArray, rules);
    QFETCH(QString, text);
    writeRules(rules);
    start();
    // A lookup does not limit it.
    m_fixture->view().setLookup(QStringLiteral("nothing like it"), true);
    Message outcome;
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok, &outcome);
    const DialogTitles dialogs;

    trigger(*m_fixture, QStringLiteral("(Re)Evaluate Libraries"));

    QCOMPARE(outcome.title, QStringLiteral("Libraries Evaluation"));
    QCOMPARE(outcome.text, text);
    QTEST(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE library='A'")).toInt(), "changed");
}

void TableCommandsTest::evaluationUsesTheShippedRulesWithoutAFile()
{
    column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET fileName='Door _YHD1-x.wav' WHERE id=1"));
    start();
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok);

    trigger(*m_fixture, QStringLiteral("(Re)Evaluate Libraries"));

    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT library FROM MetaData1 WHERE id=1")),
        QVariant(QStringLiteral("Islet Kitchens")));
}

// A folder in the place of the file: it exists, and cannot be read by anybody.
void TableCommandsTest::unreadableRulesClearNothing()
{
    column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET library='Mine'"));
    QVERIFY(QDir().mkpath(m_fixture->dataFile(QStringLiteral("LibraryEvaluationRules.txt"))));
    start();
    Message failure;
    answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("^Unable to read library evaluation rules: "));

    trigger(*m_fixture, QStringLiteral("(Re)Evaluate Libraries"));

    QVERIFY2(failure.text.startsWith(QLatin1String("Unable to read the library evaluation rules: ")),
        qPrintable(failure.text));
    QCOMPARE(
        value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE library='Mine'")).toInt(), sampleRows);
}

void TableCommandsTest::failedEvaluationTellsNoSuccess()
{
    column(*m_fixture,
        QStringLiteral("CREATE TRIGGER refuse BEFORE UPDATE ON MetaData1 BEGIN "
                       "SELECT RAISE(ABORT, 'refused'); END"));
    writeRules("A: take");
    start();
    QString status;
    whenModal<OperationDialog>(
        &m_fixture->window(),
        [&status](OperationDialog& dialog) {
            const QList<QLabel*> labels = dialog.findChildren<QLabel*>();
            for (const QLabel* label : labels)
                status += label->text();
            const QList<QPlainTextEdit*> consoles = dialog.findChildren<QPlainTextEdit*>();
            for (const QPlainTextEdit* console : consoles)
                status += console->toPlainText();
            dialogButton(dialog).click();
        },
        [](OperationDialog& dialog) { return dialogButton(dialog).text() == QLatin1String("Finish"); });

    // A success box would wait for an answer that never comes.
    trigger(*m_fixture, QStringLiteral("(Re)Evaluate Libraries"));

    QVERIFY2(status.contains(QLatin1String("Unable to update MetaData: refused")), qPrintable(status));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE library='A'")).toInt(), 0);
}

void TableCommandsTest::rulesAreSaved_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("evaluated");
    QTest::newRow("save") << int(QDialogButtonBox::Save) << 0;
    QTest::newRow("save and evaluate") << int(QDialogButtonBox::SaveAll) << sampleRows;
}

void TableCommandsTest::rulesAreSaved()
{
    QFETCH(int, button);
    QFETCH(int, evaluated);
    writeRules("Old: x\r\n");
    start();
    whenModal<LibraryEvaluationRulesDialog>(&m_fixture->window(), [button](LibraryEvaluationRulesDialog& dialog) {
        QCOMPARE(dialog.rules(), QStringLiteral("Old: x\n"));
        rulesEditor(dialog).setPlainText(QString::fromUtf8("Büro: take\n"));
        press(dialog, QDialogButtonBox::StandardButton(button));
    });
    if (evaluated > 0)
        answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok);

    trigger(*m_fixture, QStringLiteral("Set Library Evaluation Rules…"));

    QCOMPARE(contents(m_fixture->dataFile(QStringLiteral("LibraryEvaluationRules.txt"))), QByteArray("Büro: take\n"));
    QCOMPARE(
        value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE library='Büro'")).toInt(), evaluated);
}

void TableCommandsTest::canceledRulesAreNotSaved()
{
    start();
    whenModal<LibraryEvaluationRulesDialog>(&m_fixture->window(), [](LibraryEvaluationRulesDialog& dialog) {
        rulesEditor(dialog).setPlainText(QStringLiteral("New: x"));
        press(dialog, QDialogButtonBox::Cancel);
    });

    trigger(*m_fixture, QStringLiteral("Set Library Evaluation Rules…"));

    QVERIFY(!QFile::exists(m_fixture->dataFile(QStringLiteral("LibraryEvaluationRules.txt"))));
}

void TableCommandsTest::rulesThatCannotBeSavedStayInTheEditor()
{
    writeRules("Old: x");
    start();
    const QString rulesFile = m_fixture->dataFile(QStringLiteral("LibraryEvaluationRules.txt"));
    QString textAfterwards;
    whenModal<LibraryEvaluationRulesDialog>(&m_fixture->window(), [&](LibraryEvaluationRulesDialog& dialog) {
        // A folder comes in the way of the file.
        QFile::remove(rulesFile);
        QDir().mkpath(rulesFile);
        rulesEditor(dialog).setPlainText(QStringLiteral("New: x"));
        answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok);
        const auto isBack = [](LibraryEvaluationRulesDialog&) {
            return !qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        };
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("^Unable to write library evaluation rules: "));
        QTimer::singleShot(0, &dialog, [&, isBack] {
            whenModal<LibraryEvaluationRulesDialog>(
                &m_fixture->window(),
                [&textAfterwards](LibraryEvaluationRulesDialog& again) {
                    textAfterwards = again.rules();
                    press(again, QDialogButtonBox::Cancel);
                },
                isBack);
        });
        press(dialog, QDialogButtonBox::Save);
    });

    trigger(*m_fixture, QStringLiteral("Set Library Evaluation Rules…"));

    QCOMPARE(textAfterwards, QStringLiteral("New: x"));
}

void TableCommandsTest::replacementTellsItsOutcome_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("changed");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << "no such text"
                             << "x" << 0 << "No occurences found";
    QTest::newRow("one") << "TAKE_007"
                         << "Gate" << 1 << "One occurence replaced";
    QTest::newRow("many") << "bell"
                          << "Gate" << 20 << "20 occurences replaced";
}

void TableCommandsTest::replacementTellsItsOutcome()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, text);
    start();
    whenModal<SearchAndReplaceDialog>(&m_fixture->window(), [before, after](SearchAndReplaceDialog& dialog) {
        QCOMPARE(dialog.fields(), QStringList({ "filePath", "library", "description" }));
        dialog.setSearchText(before);
        dialog.setReplaceText(after);
        press(dialog, QDialogButtonBox::Ok);
    });
    Message outcome;
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok, &outcome);

    trigger(*m_fixture, QStringLiteral("Search and Replace…"));

    QCOMPARE(outcome.title, QStringLiteral("Search and Replace"));
    QCOMPARE(outcome.text, text);
    const QString count = QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE filePath || description LIKE '%Gate%'");
    QTEST(value(*m_fixture, count).toInt(), "changed");
}

void TableCommandsTest::replacementTakesTheRecordsOfTheView()
{
    start();
    // Typed, but the table has not followed yet.
    m_fixture->child<QLineEdit>("lookupEdit")->setText(QStringLiteral("bell"));
    whenModal<SearchAndReplaceDialog>(&m_fixture->window(), [](SearchAndReplaceDialog& dialog) {
        dialog.setFields({ QStringLiteral("library") });
        dialog.setReplaceText(QStringLiteral("Buoys"));
        press(dialog, QDialogButtonBox::Ok);
    });
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok);

    trigger(*m_fixture, QStringLiteral("Search and Replace…"));

    const QVariantList changed
        = column(*m_fixture, QStringLiteral("SELECT description FROM MetaData1 WHERE library='Buoys'"));
    QCOMPARE(changed.size(), 20);
    QCOMPARE(changed.count(QStringLiteral("Bell buoy")), 20);
}

void TableCommandsTest::replacementChoicesAreKept()
{
    start();
    whenModal<SearchAndReplaceDialog>(&m_fixture->window(), [](SearchAndReplaceDialog& dialog) {
        dialog.setFields({ QStringLiteral("description") });
        dialog.setCaseSensitivity(Qt::CaseSensitive);
        dialog.setSearchText(QStringLiteral("BELL"));
        press(dialog, QDialogButtonBox::Ok);
    });
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok);
    trigger(*m_fixture, QStringLiteral("Search and Replace…"));
    QStringList fields;
    auto sensitivity = Qt::CaseInsensitive;
    whenModal<SearchAndReplaceDialog>(&m_fixture->window(), [&](SearchAndReplaceDialog& dialog) {
        fields = dialog.fields();
        sensitivity = dialog.caseSensitivity();
        dialog.reject();
    });

    trigger(*m_fixture, QStringLiteral("Search and Replace…"));

    QCOMPARE(fields, QStringList(QStringLiteral("description")));
    QCOMPARE(sensitivity, Qt::CaseSensitive);
    QCOMPARE(
        Settings(QStringLiteral("MainWindow")).value(QStringLiteral("searchAndReplaceCaseSensitivity")).toInt(), 1);
}

void TableCommandsTest::rebuildCannotBeCanceled()
{
    start();
    Message question;
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes, &question);
    QString title;
    QString status;
    whenModal<OperationDialog>(
        &m_fixture->window(),
        [&](OperationDialog& dialog) {
            title = dialog.windowTitle();
            status = dialog.findChild<QLabel*>(QStringLiteral("statusLabel"))->text();
            dialogButton(dialog).click();
        },
        [](OperationDialog& dialog) {
            // Until it ends there is nothing to press.
            return dialogButton(dialog).isEnabled();
        });

    trigger(*m_fixture, QStringLiteral("Rebuild Database"));

    QCOMPARE(question.title, QStringLiteral("Rebuild Database"));
    QCOMPARE(question.text, QStringLiteral("Are you sure you want to rebuild the entire database?"));
    QCOMPARE(question.informativeText, QStringLiteral("This operation can take a lot of time and cannot be canceled"));
    QCOMPARE(title, QStringLiteral("Rebuilding Database"));
    QCOMPARE(status, QStringLiteral("Database rebuild complete"));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

void TableCommandsTest::declinedRebuildDoesNothing()
{
    start();
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::No);
    const DialogTitles dialogs;

    trigger(*m_fixture, QStringLiteral("Rebuild Database"));

    QVERIFY(dialogs.titles().isEmpty());
}

void TableCommandsTest::tableNamesReachTitleAndMenu()
{
    start();
    whenModal<TableDisplayNamesDialog>(&m_fixture->window(), [](TableDisplayNamesDialog& dialog) {
        dialog.findChild<QLineEdit*>(QStringLiteral("nameEdit1"))->setText(QStringLiteral("Rain & <wind>"));
        press(dialog, QDialogButtonBox::Ok);
    });

    trigger(*m_fixture, QStringLiteral("Set Table Names…"));

    QTRY_COMPARE(m_fixture->window().windowTitle(), QStringLiteral("Vellumcast - Rain & <wind>"));
    const QMenu* tables = m_fixture->child<QAction>("openTableAction")->menu();
    QCOMPARE(tables->actions().first()->text(), QStringLiteral("Rain && <wind>"));
}

void TableCommandsTest::tableNamesThatCannotBeSavedStayInTheDialog()
{
    start();
    auto lock = std::make_unique<WriteLock>(*m_fixture);
    Message failure;
    answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);
    whenModal<TableDisplayNamesDialog>(&m_fixture->window(), [&](TableDisplayNamesDialog& dialog) {
        auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("nameEdit2"));
        edit->setText(QStringLiteral("Rain"));
        press(dialog, QDialogButtonBox::Ok);
        QVERIFY(dialog.isVisible());
        QCOMPARE(edit->text(), QStringLiteral("Rain"));
        lock.reset();
        press(dialog, QDialogButtonBox::Ok);
        QVERIFY(!dialog.isVisible());
    });

    trigger(*m_fixture, QStringLiteral("Set Table Names…"));

    QCOMPARE(failure.title, QStringLiteral("Meta Data Table Names"));
    QCOMPARE(failure.text, QStringLiteral("The table names could not be saved."));
    const QMenu* tables = m_fixture->child<QAction>("openTableAction")->menu();
    QTRY_COMPARE(tables->actions().at(1)->text(), QStringLiteral("Rain"));
}

void TableCommandsTest::workFolderIsChosenAndKept()
{
    start();
    const QString folder = m_fixture->folder().filePath(QStringLiteral("parent/work"));
    QVERIFY(QDir().mkpath(folder));
    QString title;
    whenModal<QFileDialog>(&m_fixture->window(), [&title, folder](QFileDialog& chooser) {
        title = chooser.windowTitle();
        chooser.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(folder);
        QTest::keyClick(chooser.findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), Qt::Key_Return);
    });

    QTest::mouseClick(m_fixture->child<QPushButton>("workFolderButton"), Qt::LeftButton);

    QCOMPARE(title, QStringLiteral("Choose Work Folder"));
    const Settings settings(QStringLiteral("MainWindow"));
    QTRY_COMPARE(settings.value(QStringLiteral("workFolderPath")).toString(), folder);
    QCOMPARE(Settings(QStringLiteral("WorkFolderDialog")).value(QStringLiteral("lookupDirectory")).toString(),
        QFileInfo(folder).path());
}

void TableCommandsTest::aboutOpensByMenuAndLogo()
{
    start();
    int opened = 0;
    const auto closeAbout = [&opened, this] {
        whenModal<AboutDialog>(&m_fixture->window(), [&opened](AboutDialog& dialog) {
            ++opened;
            dialog.reject();
        });
    };

    closeAbout();
    trigger(*m_fixture, QStringLiteral("About Vellumcast"));
    closeAbout();
    QTest::mouseClick(m_fixture->child<QWidget>("logoWidget"), Qt::LeftButton);

    QCOMPARE(opened, 2);
}

void TableCommandsTest::commandInsideAnotherIsIgnored()
{
    start();
    int opened = 0;
    whenModal<AboutDialog>(&m_fixture->window(), [this, &opened](AboutDialog& dialog) {
        ++opened;
        // None of these may open a second window or change anything.
        for (const char* text : { "About Vellumcast", "Delete All", "Rebuild Database", "(Re)Evaluate Libraries",
                 "Search and Replace…", "Set Table Names…", "Set Library Evaluation Rules…", "Choose Work Folder…",
                 "Add to Playlist", "Delete Selected", "Show Info…" })
            trigger(*m_fixture, QString::fromUtf8(text));
        QCOMPARE(QApplication::activeModalWidget(), &dialog);
        dialog.reject();
    });

    trigger(*m_fixture, QStringLiteral("About Vellumcast"));

    QCOMPARE(opened, 1);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

QTEST_MAIN(TableCommandsTest)
#include "tst_tablecommands.moc"
