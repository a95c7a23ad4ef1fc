// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataprinterdialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

class MetaDataPrinterDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void formHasItsTexts();
    void recordsCountIsShown();
    void titleIsReadBackAsItIs_data();
    void titleIsReadBackAsItIs();
    void titleHasTheFocus();
    void continueAccepts();
    void escapeRejects();
};

void MetaDataPrinterDialogTest::formHasItsTexts()
{
    const MetaDataPrinterDialog dialog;
    QStringList texts;
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        texts.append(label->text());

    QCOMPARE(dialog.windowTitle(), QString("Print Report"));
    QVERIFY(texts.contains("Number of Records to be Printed:"));
    QVERIFY(texts.contains("Report Title:"));
    QCOMPARE(dialog.findChild<QLineEdit*>("titleEdit")->placeholderText(), QString("Untitled"));
    QCOMPARE(
        dialog.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Ok)->text(), QString("Continue"));
    QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
}

void MetaDataPrinterDialogTest::recordsCountIsShown()
{
    MetaDataPrinterDialog dialog;

    dialog.setRecordsCount(1234567);

    QCOMPARE(dialog.findChild<QLabel*>("recordsCountLabel")->text(), QString("1234567"));
}

void MetaDataPrinterDialogTest::titleIsReadBackAsItIs_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("empty") << "";
    QTest::newRow("text") << "Harbour sounds";
    QTest::newRow("with blanks around") << "  <b>R&B</b>  ";
}

void MetaDataPrinterDialogTest::titleIsReadBackAsItIs()
{
    QFETCH(QString, title);
    MetaDataPrinterDialog dialog;

    dialog.setReportTitle(title);

    QCOMPARE(dialog.reportTitle(), title);
}

void MetaDataPrinterDialogTest::titleHasTheFocus()
{
    MetaDataPrinterDialog dialog;

    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));

    QTRY_VERIFY(dialog.findChild<QLineEdit*>("titleEdit")->hasFocus());
}

void MetaDataPrinterDialogTest::continueAccepts()
{
    MetaDataPrinterDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));

    QTest::keyClicks(dialog.findChild<QLineEdit*>("titleEdit"), "Report");
    QTest::keyClick(&dialog, Qt::Key_Return);

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.reportTitle(), QString("Report"));
}

void MetaDataPrinterDialogTest::escapeRejects()
{
    MetaDataPrinterDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));

    QTest::keyClick(&dialog, Qt::Key_Escape);

    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

QTEST_MAIN(MetaDataPrinterDialogTest)
#include "tst_metadataprinterdialog.moc"
