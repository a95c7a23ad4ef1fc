// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/storefixture.h"
#include "ui/tabledisplaynamesdialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <functional>

namespace {

QLineEdit* nameEdit(const QWidget& dialog, int tableId)
{
    return dialog.findChild<QLineEdit*>(QString("nameEdit%1").arg(tableId));
}

QPushButton* button(const QWidget& dialog, QDialogButtonBox::StandardButton which)
{
    return dialog.findChild<QDialogButtonBox*>("buttonBox")->button(which);
}

int run(TableDisplayNamesDialog& dialog, const std::function<void()>& action)
{
    QTimer::singleShot(0, &dialog, action);
    return dialog.exec();
}

} // namespace

class TableDisplayNamesDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void fifteenRowsWithTheirDefaultNames();
    void namesAreReadAndWritten();
    void emptyNamesAreTheDefaults();
    void separatorCannotBeTyped();
    void resetShowsTheStoredNames();
    void cancelWritesNothing();
    void firstNameHasTheFocus();
    void workWithoutAStoreIsAccepted();
    void sizeIsFixed();
};

void TableDisplayNamesDialogTest::fifteenRowsWithTheirDefaultNames()
{
    const TableDisplayNamesDialog dialog(nullptr);

    QCOMPARE(dialog.windowTitle(), QString("Meta Data Table Names"));
    QCOMPARE(dialog.findChildren<QLineEdit*>().size(), 15);
    const QList<QLabel*> labels = dialog.findChildren<QLabel*>();
    for (int tableId = 1; tableId <= 15; ++tableId) {
        QCOMPARE(labels.at(tableId - 1)->text(), QString("Table%1:").arg(tableId));
        QCOMPARE(nameEdit(dialog, tableId)->placeholderText(), QString("Table%1").arg(tableId));
    }
}

void TableDisplayNamesDialogTest::namesAreReadAndWritten()
{
    TestSupport::StoreFixture store;
    store.open();
    TableDisplayNamesDialog dialog(&store.database());
    const QSignalSpy changed(&store.database(), &Database::tableDisplayNamesChanged);

    const int result = run(dialog, [&dialog] {
        nameEdit(dialog, 2)->setText("  Rain & <wind>  ");
        button(dialog, QDialogButtonBox::Ok)->click();
    });

    QCOMPARE(result, int(QDialog::Accepted));
    QTRY_COMPARE(store.database().tableDisplayName(2), QString("Rain & <wind>"));
    QCOMPARE(store.database().tableDisplayName(1), QString("Table1"));
    QVERIFY(changed.count() >= 1);
    run(dialog, [&dialog] {
        QCOMPARE(nameEdit(dialog, 2)->text(), QString("Rain & <wind>"));
        dialog.reject();
    });
}

void TableDisplayNamesDialogTest::emptyNamesAreTheDefaults()
{
    TestSupport::StoreFixture store;
    store.open();
    store.database().setTableDisplayNames({ "One", "Two" });
    QTRY_COMPARE(store.database().tableDisplayName(2), QString("Two"));
    TableDisplayNamesDialog dialog(&store.database());

    run(dialog, [&dialog] {
        nameEdit(dialog, 1)->setText("   ");
        nameEdit(dialog, 2)->clear();
        button(dialog, QDialogButtonBox::Ok)->click();
    });

    QTRY_COMPARE(store.database().tableDisplayName(2), QString("Table2"));
    QCOMPARE(store.database().tableDisplayName(1), QString("Table1"));
}

void TableDisplayNamesDialogTest::separatorCannotBeTyped()
{
    const TableDisplayNamesDialog dialog(nullptr);

    QTest::keyClicks(nameEdit(dialog, 3), "a;b");

    QCOMPARE(nameEdit(dialog, 3)->text(), QString("ab"));
}

void TableDisplayNamesDialogTest::resetShowsTheStoredNames()
{
    TestSupport::StoreFixture store;
    store.open();
    store.database().setTableDisplayNames({ "One" });
    QTRY_COMPARE(store.database().tableDisplayName(1), QString("One"));
    TableDisplayNamesDialog dialog(&store.database());

    run(dialog, [&dialog] {
        nameEdit(dialog, 1)->setText("other");
        nameEdit(dialog, 9)->setText("nine");
        button(dialog, QDialogButtonBox::Reset)->click();
        QCOMPARE(nameEdit(dialog, 1)->text(), QString("One"));
        QCOMPARE(nameEdit(dialog, 9)->text(), QString());
        dialog.reject();
    });
}

void TableDisplayNamesDialogTest::cancelWritesNothing()
{
    TestSupport::StoreFixture store;
    store.open();
    store.database().setTableDisplayNames({ "One" });
    QTRY_COMPARE(store.database().tableDisplayName(1), QString("One"));
    TableDisplayNamesDialog dialog(&store.database());

    const int result = run(dialog, [&dialog] {
        nameEdit(dialog, 1)->setText("other");
        button(dialog, QDialogButtonBox::Cancel)->click();
    });

    QCOMPARE(result, int(QDialog::Rejected));
    // In the store's thread, after all that was asked of it.
    store.execute("SELECT 1");
    QCOMPARE(store.database().tableDisplayNames(), QStringList({ "One" }));
}

void TableDisplayNamesDialogTest::firstNameHasTheFocus()
{
    TableDisplayNamesDialog dialog(nullptr);
    bool hadFocus = false;

    run(dialog, [&dialog, &hadFocus] {
        hadFocus = QTest::qWaitFor([&dialog] { return nameEdit(dialog, 1)->hasFocus(); });
        dialog.reject();
    });

    QVERIFY(hadFocus);
}

void TableDisplayNamesDialogTest::workWithoutAStoreIsAccepted()
{
    TableDisplayNamesDialog dialog(nullptr);

    QCOMPARE(run(dialog, [&dialog] { dialog.accept(); }), int(QDialog::Accepted));
}

void TableDisplayNamesDialogTest::sizeIsFixed()
{
    const TableDisplayNamesDialog dialog(nullptr);

    QCOMPARE(dialog.minimumSize(), dialog.sizeHint());
    QCOMPARE(dialog.maximumSize(), dialog.sizeHint());
}

QTEST_MAIN(TableDisplayNamesDialogTest)
#include "tst_tabledisplaynamesdialog.moc"
