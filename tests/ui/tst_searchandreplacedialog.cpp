// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/searchandreplacedialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

namespace {

QPushButton* continueButton(const QWidget& dialog)
{
    return dialog.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Ok);
}

const QStringList allFields{ "filePath", "library", "description" };

} // namespace

class SearchAndReplaceDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void formHasItsTexts();
    void allFieldsAreCheckedAtFirst();
    void continueNeedsSomethingToDo_data();
    void continueNeedsSomethingToDo();
    void fieldsAreSetByTheirExactNames_data();
    void fieldsAreSetByTheirExactNames();
    void caseSensitivityIsTheBox();
    void searchTextIsFocusedAndSelected();
    void sizeIsFixed();
};

void SearchAndReplaceDialogTest::formHasItsTexts()
{
    const SearchAndReplaceDialog dialog;
    QStringList texts;
    const QList<QLabel*> labels = dialog.findChildren<QLabel*>();
    for (const QLabel* label : labels)
        texts.append(label->text());
    const QList<QCheckBox*> boxes = dialog.findChildren<QCheckBox*>();
    for (const QCheckBox* box : boxes)
        texts.append(box->text());
    texts.sort();

    QCOMPARE(dialog.windowTitle(), QString("Search and Replace"));
    QCOMPARE(texts,
        QStringList({ "Case sensitive", "Description", "File Path", "Library",
            "Replace With:", "Search For:", "Search in Fields:" }));
    QCOMPARE(continueButton(dialog)->text(), QString("Continue"));
}

void SearchAndReplaceDialogTest::allFieldsAreCheckedAtFirst()
{
    QCOMPARE(SearchAndReplaceDialog().fields(), allFields);
}

void SearchAndReplaceDialogTest::continueNeedsSomethingToDo_data()
{
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("replace");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("both texts") << allFields << "a"
                                << "b" << true;
    QTest::newRow("both empty") << allFields << ""
                                << "" << false;
    QTest::newRow("equal texts") << allFields << "a"
                                 << "a" << false;
    QTest::newRow("other letter case") << allFields << "a"
                                       << "A" << true;
    QTest::newRow("empty replacement") << allFields << "a"
                                       << "" << true;
    QTest::newRow("empty search") << allFields << ""
                                  << "b" << true;
    QTest::newRow("no field") << QStringList() << "a"
                              << "b" << false;
    QTest::newRow("one field") << QStringList("library") << "a"
                               << "b" << true;
}

void SearchAndReplaceDialogTest::continueNeedsSomethingToDo()
{
    QFETCH(QStringList, fields);
    QFETCH(QString, search);
    QFETCH(QString, replace);
    SearchAndReplaceDialog dialog;

    dialog.setFields(fields);
    dialog.setSearchText(search);
    dialog.setReplaceText(replace);

    QTEST(continueButton(dialog)->isEnabled(), "enabled");
    QCOMPARE(dialog.searchText(), search);
    QCOMPARE(dialog.replaceText(), replace);
}

void SearchAndReplaceDialogTest::fieldsAreSetByTheirExactNames_data()
{
    QTest::addColumn<QStringList>("set");
    QTest::addColumn<QStringList>("checked");
    QTest::newRow("library alone") << QStringList("library") << QStringList("library");
    QTest::newRow("other letter case") << QStringList("Library") << QStringList();
    QTest::newRow("unknown") << QStringList({ "artist", "description" }) << QStringList("description");
    QTest::newRow("all") << allFields << allFields;
}

void SearchAndReplaceDialogTest::fieldsAreSetByTheirExactNames()
{
    QFETCH(QStringList, set);
    SearchAndReplaceDialog dialog;

    dialog.setFields(set);

    QTEST(dialog.fields(), "checked");
}

void SearchAndReplaceDialogTest::caseSensitivityIsTheBox()
{
    SearchAndReplaceDialog dialog;
    QCOMPARE(dialog.caseSensitivity(), Qt::CaseInsensitive);

    dialog.setCaseSensitivity(Qt::CaseSensitive);

    QVERIFY(dialog.findChild<QCheckBox*>("caseSensitiveBox")->isChecked());
    QCOMPARE(dialog.caseSensitivity(), Qt::CaseSensitive);
}

void SearchAndReplaceDialogTest::searchTextIsFocusedAndSelected()
{
    SearchAndReplaceDialog dialog;
    dialog.setSearchText("rain");

    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));

    const auto* edit = dialog.findChild<QLineEdit*>("searchEdit");
    QVERIFY(edit->hasFocus());
    QCOMPARE(edit->selectedText(), QString("rain"));
}

void SearchAndReplaceDialogTest::sizeIsFixed()
{
    const SearchAndReplaceDialog dialog;

    QCOMPARE(dialog.minimumSize(), dialog.sizeHint());
    QCOMPARE(dialog.maximumSize(), dialog.sizeHint());
}

QTEST_MAIN(SearchAndReplaceDialogTest)
#include "tst_searchandreplacedialog.moc"
