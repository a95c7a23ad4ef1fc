// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/warrantydisclaimerdialog.h"

#include "resources/resources.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTextBrowser>
#include <QTimer>
#include <QtTest>

namespace {

QPushButton* button(const QWidget& dialog, QDialogButtonBox::StandardButton which)
{
    return dialog.findChild<QDialogButtonBox*>("buttonBox")->button(which);
}

// Runs the dialog and answers it once it stands there.
int answer(WarrantyDisclaimerDialog& dialog, const std::function<void()>& action)
{
    QTimer::singleShot(0, &dialog, action);
    return dialog.exec();
}

} // namespace

class WarrantyDisclaimerDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void titleAndButtonsHaveTheirTexts();
    void pageIsShownReadOnly();
    void acceptButtonAccepts();
    void rejectButtonRejects();
    void escapeRejects();
    void closingTheWindowRejects();
    void sizeIsFixed();
    void wholePageIsVisibleWithoutScrolling();
    void textFollowsADarkPalette();
};

void WarrantyDisclaimerDialogTest::initTestCase()
{
    initialiseResources();
}

void WarrantyDisclaimerDialogTest::titleAndButtonsHaveTheirTexts()
{
    const WarrantyDisclaimerDialog dialog;

    QCOMPARE(dialog.windowTitle(), QString("Warranty Disclaimer"));
    QCOMPARE(button(dialog, QDialogButtonBox::Ok)->text(), QString("Accept"));
    QCOMPARE(button(dialog, QDialogButtonBox::Cancel)->text(), QString("Reject"));
}

void WarrantyDisclaimerDialogTest::pageIsShownReadOnly()
{
    const WarrantyDisclaimerDialog dialog;
    const auto* view = dialog.findChild<QTextBrowser*>();

    QVERIFY(view->isReadOnly());
    QCOMPARE(view->source(), QUrl("qrc:/Resources/WarrantyDisclaimer.html"));
    QCOMPARE(view->document()->documentMargin(), 9.0);
    QVERIFY(view->toPlainText().contains("without a warranty of any kind"));
}

void WarrantyDisclaimerDialogTest::acceptButtonAccepts()
{
    WarrantyDisclaimerDialog dialog;

    const int result = answer(dialog, [&dialog] { button(dialog, QDialogButtonBox::Ok)->click(); });

    QCOMPARE(result, int(QDialog::Accepted));
}

void WarrantyDisclaimerDialogTest::rejectButtonRejects()
{
    WarrantyDisclaimerDialog dialog;

    const int result = answer(dialog, [&dialog] { button(dialog, QDialogButtonBox::Cancel)->click(); });

    QCOMPARE(result, int(QDialog::Rejected));
}

void WarrantyDisclaimerDialogTest::escapeRejects()
{
    WarrantyDisclaimerDialog dialog;

    const int result = answer(dialog, [&dialog] { QTest::keyClick(&dialog, Qt::Key_Escape); });

    QCOMPARE(result, int(QDialog::Rejected));
}

void WarrantyDisclaimerDialogTest::closingTheWindowRejects()
{
    WarrantyDisclaimerDialog dialog;

    const int result = answer(dialog, [&dialog] { dialog.close(); });

    QCOMPARE(result, int(QDialog::Rejected));
}

void WarrantyDisclaimerDialogTest::sizeIsFixed()
{
    WarrantyDisclaimerDialog dialog;

    dialog.show();

    QCOMPARE(dialog.size(), dialog.sizeHint());
    QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
}

void WarrantyDisclaimerDialogTest::wholePageIsVisibleWithoutScrolling()
{
    WarrantyDisclaimerDialog dialog;
    dialog.show();
    const auto* view = dialog.findChild<QTextBrowser*>();

    QVERIFY2(view->document()->size().height() <= view->viewport()->height(),
        qPrintable(QString::number(view->document()->size().height())));
}

void WarrantyDisclaimerDialogTest::textFollowsADarkPalette()
{
    const QPalette before = QApplication::palette();
    QPalette dark(QColor(40, 40, 40));
    dark.setColor(QPalette::Base, QColor(25, 25, 25));
    dark.setColor(QPalette::Text, QColor(230, 230, 230));
    QApplication::setPalette(dark);

    WarrantyDisclaimerDialog dialog;
    dialog.show();
    const QImage image = dialog.findChild<QTextBrowser*>()->viewport()->grab().toImage();
    QApplication::setPalette(before);

    QCOMPARE(image.pixelColor(1, 1), QColor(25, 25, 25));
    int lightest = 0;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y)
            lightest = qMax(lightest, image.pixelColor(x, y).lightness());
    }
    QVERIFY2(lightest > 200, qPrintable(QString::number(lightest)));
}

QTEST_MAIN(WarrantyDisclaimerDialogTest)
#include "tst_warrantydisclaimerdialog.moc"
