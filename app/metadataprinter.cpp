// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataprinter.h"

#include "app/databasefiles.h"
#include "app/pdffile.h"
#include "store/valuetext.h"

#include <QAbstractTextDocumentLayout>
#include <QFont>
#include <QFontMetricsF>
#include <QPrinter>
#include <QtMath>

namespace {

constexpr int fontSize = 11; // points
constexpr QMarginsF pageMargins(20, 10, 10, 10); // left, top, right, bottom

void setUpDocument(QTextDocument& document)
{
    document.setUndoRedoEnabled(false);
    document.setDocumentMargin(0);
    document.setDefaultFont(QFont(QStringLiteral("Helvetica"), fontSize, QFont::Normal));
    // Two blanks in a row are two blanks in a file name as well.
    document.setDefaultStyleSheet(QStringLiteral("p, h3 { white-space: pre-wrap; }"));
}

} // namespace

MetaDataPrinter::MetaDataPrinter(QObject* parent)
    : MetaDataHandler(parent)
{
    setUpDocument(m_titleDocument);
    setUpDocument(m_lineDocument);
}

MetaDataPrinter::~MetaDataPrinter()
{
    releaseOutput();
}

void MetaDataPrinter::setUpPage(QPrinter* printer)
{
    printer->setPageOrientation(QPageLayout::Portrait);
    printer->setPageMargins(pageMargins, QPageLayout::Millimeter);
}

void MetaDataPrinter::setTitle(const QString& title)
{
    m_title = title;
}

OperationReply* MetaDataPrinter::start(QPrinter* printer)
{
    releaseOutput();
    m_printer = printer;
    return MetaDataHandler::start();
}

void MetaDataPrinter::beginOutput()
{
    m_recordNumber = 1;
    m_pageNumber = 0;
    m_printedPages = 0;
    m_isPageStarted = false;
    m_isPageEmpty = true;
    // To begin is to empty the file that is printed to.
    const bool isAllowed = m_printer && !DatabaseFiles::isPartOfDatabase(m_printer->outputFileName(), database());
    if (isAllowed && m_painter.begin(m_printer))
        layOutPage();
    else
        fail(tr("Unable to start printing"));
}

void MetaDataPrinter::layOutPage()
{
    const QRect page = m_painter.viewport();
    const QFontMetricsF metrics(m_painter.font(), m_printer);
    m_lineSpacing = metrics.lineSpacing();
    m_footer = page;
    m_footer.setTop(page.bottom() + 1 - qCeil(metrics.height()));
    for (QTextDocument* document : { &m_titleDocument, &m_lineDocument }) {
        document->documentLayout()->setPaintDevice(m_printer);
        document->setTextWidth(page.width());
    }
    m_titleDocument.setHtml(QStringLiteral("<center><h3>%1</h3></center>").arg(m_title.toHtmlEscaped()));
}

void MetaDataPrinter::handlePage(const MetaDataList& items)
{
    for (const MetaData& item : items) {
        if (!printRecord(item)) {
            fail(tr("Unable to start a new page"));
            return;
        }
    }
}

bool MetaDataPrinter::printRecord(const MetaData& record)
{
    m_lineDocument.setHtml(lineOf(record));
    ++m_recordNumber;
    const qreal height = m_lineSpacing + m_lineDocument.size().height();
    makeRoom(height);
    if (!m_isPageStarted && !beginPage())
        return false;
    drawAndMoveDown(m_lineDocument, height);
    m_isPageEmpty = false;
    return true;
}

// A line that is too tall for every page stays on the one that is empty still.
void MetaDataPrinter::makeRoom(qreal height)
{
    if (!m_isPageEmpty && position() + height > m_footer.top())
        m_isPageStarted = false;
}

// Also of a page that is not printed: what stands on it decides what stands on the next.
bool MetaDataPrinter::beginPage()
{
    ++m_pageNumber;
    // The printer has its first page from the beginning.
    if (isPageChosen() && m_printedPages++ > 0 && !m_printer->newPage())
        return false;
    m_painter.resetTransform();
    printPageNumber();
    if (!m_title.isEmpty())
        drawAndMoveDown(m_titleDocument, m_titleDocument.size().height() + m_lineSpacing);
    m_isPageStarted = true;
    m_isPageEmpty = true;
    return true;
}

bool MetaDataPrinter::isPageChosen() const
{
    return m_printer->printRange() != QPrinter::PageRange
        || (m_pageNumber >= m_printer->fromPage() && m_pageNumber <= m_printer->toPage());
}

void MetaDataPrinter::printPageNumber()
{
    if (isPageChosen())
        m_painter.drawText(m_footer, Qt::AlignCenter, QString::number(m_pageNumber));
}

void MetaDataPrinter::drawAndMoveDown(QTextDocument& document, qreal height)
{
    // Nothing is drawn over the foot of the page.
    if (isPageChosen())
        document.drawContents(&m_painter, QRectF(0, 0, m_footer.width(), m_footer.top() - position()));
    m_painter.translate(0, height);
}

qreal MetaDataPrinter::position() const
{
    return m_painter.transform().dy();
}

QString MetaDataPrinter::lineOf(const MetaData& record) const
{
    return QStringLiteral("<p>%1. %2 - %3 %4</p>")
        .arg(QString::number(m_recordNumber), record.fileName().toHtmlEscaped(), record.description().toHtmlEscaped(),
            durationText(record.duration()));
}

void MetaDataPrinter::completeOutput()
{
    const bool isEnded = m_painter.end();
    const QString path = m_printer->outputFileName();
    if (!isEnded || m_printer->printerState() == QPrinter::Error)
        fail(tr("Unable to finish printing"));
    else if (m_printer->outputFormat() == QPrinter::PdfFormat && !isWholePdfFile(path))
        fail(tr("Unable to write file: %1").arg(path));
    else if (m_pageNumber > 0 && m_printedPages == 0)
        fail(tr("The report has no such pages"));
}

void MetaDataPrinter::releaseOutput()
{
    if (m_painter.isActive())
        m_painter.end();
}
