// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/pdffile.h"

#include "tests/support/testsupport.h"

#include <QFile>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <QtTest>

class PdfFileTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void wholeDocumentIsAccepted();
    void documentWithoutItsEndIsRefused_data();
    void documentWithoutItsEndIsRefused();
    void documentThatLacksBytesIsRefused_data();
    void documentThatLacksBytesIsRefused();
    void otherFilesAreRefused_data();
    void otherFilesAreRefused();
    void missingFileIsRefused();

private:
    bool isWhole(const QByteArray& bytes);

    QTemporaryDir m_folder;
    QByteArray m_document;
};

void PdfFileTest::initTestCase()
{
    const QString path = m_folder.filePath(QStringLiteral("whole.pdf"));
    {
        QPdfWriter writer(path);
        QPainter painter(&writer);
        painter.drawText(100, 100, QStringLiteral("One page"));
    }
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    m_document = file.readAll();
}

bool PdfFileTest::isWhole(const QByteArray& bytes)
{
    const QString path = m_folder.filePath(QStringLiteral("tried.pdf"));
    TestSupport::writeFile(path, bytes);
    return isWholePdfFile(path);
}

void PdfFileTest::wholeDocumentIsAccepted()
{
    QVERIFY(isWhole(m_document));
}

void PdfFileTest::documentWithoutItsEndIsRefused_data()
{
    QTest::addColumn<int>("lostBytes");
    for (const int bytes : { 3, 10, 30, 1000 })
        QTest::addRow("%d bytes lost", bytes) << bytes;
}

void PdfFileTest::documentWithoutItsEndIsRefused()
{
    QFETCH(int, lostBytes);
    QVERIFY(!isWhole(m_document.chopped(lostBytes)));
}

void PdfFileTest::documentThatLacksBytesIsRefused_data()
{
    QTest::addColumn<int>("position");
    for (const int position : { 0, 100, 1000 })
        QTest::addRow("at %d", position) << position;
}

void PdfFileTest::documentThatLacksBytesIsRefused()
{
    QFETCH(int, position);
    QVERIFY(!isWhole(QByteArray(m_document).remove(position, 1)));
    QVERIFY(!isWhole(QByteArray(m_document).remove(position, 64)));
}

void PdfFileTest::otherFilesAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("startxref\n0\n%%EOF\n");
    QTest::newRow("no number") << QByteArray("%PDF-1.4\nxref\nstartxref\n%%EOF\n");
    QTest::newRow("number past the end") << QByteArray("%PDF-1.4\nxref\nstartxref\n4000\n%%EOF\n");
}

void PdfFileTest::otherFilesAreRefused()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!isWhole(bytes));
}

void PdfFileTest::missingFileIsRefused()
{
    QVERIFY(!isWholePdfFile(m_folder.filePath(QStringLiteral("missing.pdf"))));
}

QTEST_MAIN(PdfFileTest)
#include "tst_pdffile.moc"
