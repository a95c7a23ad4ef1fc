// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/resources.h"
#include "ui/aboutdialog.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>
#include <QtTest>

/// Notes what the program asks the desktop to open.
class Desktop : public QObject
{
    Q_OBJECT

public:
    explicit Desktop(const QStringList& schemes)
        : m_schemes(schemes)
    {
        for (const QString& scheme : schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~Desktop() override
    {
        for (const QString& scheme : qAsConst(m_schemes))
            QDesktopServices::unsetUrlHandler(scheme);
    }
    Q_DISABLE_COPY(Desktop)

    QStringList opened() const { return m_opened; }

public slots:
    void open(const QUrl& url) { m_opened.append(url.toString()); }

private:
    QStringList m_schemes;
    QStringList m_opened;
};

class AboutDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initialiseResources(); }
    void formHasItsTexts();
    void linksAreHandedToTheDesktop_data();
    void linksAreHandedToTheDesktop();
    void capitalsOfAFileNameAreKept_data();
    void capitalsOfAFileNameAreKept();
    void acknowledgementsNameTheirLicences();
    void linkInTheAcknowledgementsIsOpened();
    void closeRejects();
    void sizeIsFixed();
};

void AboutDialogTest::formHasItsTexts()
{
    const AboutDialog dialog;

    QCOMPARE(dialog.windowTitle(), QString("About Vellumcast"));
    QCOMPARE(dialog.findChild<QLabel*>("versionLabel")->text(), QString("Version:"));
    QCOMPARE(dialog.findChild<QLabel*>("versionValue")->text(), QString(VELLUMCAST_VERSION));
    QCOMPARE(dialog.findChild<QLabel*>("mailLabel")->text(), QString("EMail:"));
    QCOMPARE(dialog.findChild<QLabel*>("phoneLabel")->text(), QString("Phone:"));
    QCOMPARE(dialog.findChild<QLabel*>("homeLabel")->text(), QString("Home:"));
    QVERIFY(!dialog.findChild<QLabel*>("markLabel")->pixmap(Qt::ReturnByValue).isNull());
}

void AboutDialogTest::linksAreHandedToTheDesktop_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("opened");
    const QString folder = "file://" + QCoreApplication::applicationDirPath();
    QTest::newRow("mail") << "mailto:a@example.org"
                          << "mailto:a@example.org";
    QTest::newRow("telephone") << "tel:+10005550100"
                               << "tel:+10005550100";
    QTest::newRow("web") << "https://example.org/"
                         << "https://example.org/";
    QTest::newRow("file beside the program") << "external:Manual.pdf" << folder + "/Manual.pdf";
    QTest::newRow("file in a folder") << "external:docs/My Manual.pdf" << folder + "/docs/My Manual.pdf";
    QTest::newRow("with slashes") << "external://docs/manual.pdf" << folder + "/docs/manual.pdf";
}

void AboutDialogTest::linksAreHandedToTheDesktop()
{
    QFETCH(QString, link);
    QFETCH(QString, opened);
    const Desktop desktop({ "mailto", "tel", "https", "file", "external" });
    AboutDialog dialog;

    dialog.openLink(link);
    dialog.openLink(QUrl(link));
    emit dialog.findChild<QLabel*>("homeValue")->linkActivated(link);

    QCOMPARE(desktop.opened(), QStringList({ opened, opened, opened }));
}

void AboutDialogTest::capitalsOfAFileNameAreKept_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("path");
    QTest::newRow("no slashes") << "external:Docs/Manual.pdf"
                                << "/Docs/Manual.pdf";
    QTest::newRow("one slash") << "external:/Docs/Manual.pdf"
                               << "/Docs/Manual.pdf";
    QTest::newRow("two slashes") << "external://Docs/Manual.pdf"
                                 << "/Docs/Manual.pdf";
    QTest::newRow("three slashes") << "external:///Docs/Manual.pdf"
                                   << "/Docs/Manual.pdf";
    QTest::newRow("file alone") << "external://Manual.PDF"
                                << "/Manual.PDF";
    QTest::newRow("encoded") << "external://Docs/My%20Manual.pdf"
                             << "/Docs/My Manual.pdf";
}

void AboutDialogTest::capitalsOfAFileNameAreKept()
{
    QFETCH(QString, link);
    QFETCH(QString, path);
    const Desktop desktop({ "file", "external" });
    AboutDialog dialog;
    auto* view = dialog.findChild<QTextBrowser*>();
    view->setHtml(QString("<p>Read <a href=\"%1\">this</a></p>").arg(link));

    dialog.openLink(link);
    emit dialog.findChild<QLabel*>("homeValue")->linkActivated(link);
    emit view->anchorClicked(QUrl(link));

    const QString opened = "file://" + QCoreApplication::applicationDirPath() + path;
    QCOMPARE(desktop.opened(), QStringList({ opened, opened, opened }));
}

void AboutDialogTest::acknowledgementsNameTheirLicences()
{
    const AboutDialog dialog;
    const QString text = dialog.findChild<QTextBrowser*>()->toPlainText();

    for (const char* name : { "Qt", "FFmpeg", "TagLib", "SQLite" })
        QVERIFY2(text.contains(name), name);
}

void AboutDialogTest::linkInTheAcknowledgementsIsOpened()
{
    const Desktop desktop({ "https" });
    const AboutDialog dialog;
    auto* view = dialog.findChild<QTextBrowser*>();

    emit view->anchorClicked(QUrl("https://example.org/licence"));

    QCOMPARE(desktop.opened(), QStringList("https://example.org/licence"));
    QCOMPARE(view->source(), QUrl("qrc:/Resources/Acknowledgements.html"));
}

void AboutDialogTest::closeRejects()
{
    AboutDialog dialog;
    dialog.show();

    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Close)->click();

    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

void AboutDialogTest::sizeIsFixed()
{
    const AboutDialog dialog;

    QCOMPARE(dialog.minimumSize(), dialog.sizeHint());
    QCOMPARE(dialog.maximumSize(), dialog.sizeHint());
}

QTEST_MAIN(AboutDialogTest)
#include "tst_aboutdialog.moc"
