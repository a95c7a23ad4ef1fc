// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "browse/metadatahandler.h"

#include <QPainter>
#include <QRect>
#include <QString>
#include <QTextDocument>

class QPrinter;

/// Prints the records of a view as a numbered list: on each page the title, then a line for each record with its name,
/// description and duration, and the page number at the foot.
///
/// Texts are printed as they are, blanks and all; a long line wraps, and goes to the next page when it does not fit
/// below the last. A line that is taller than a page is cut at its foot. Pages that were begun stay printed when the
/// run fails or is canceled.
///
/// Of a printer's page range the pages with these numbers are printed.
///
/// The store's own file is refused as a file to print to.
///
/// Errors besides those of the reading: "Unable to start printing", "Unable to start a new page", "Unable to finish
/// printing", "The report has no such pages" and, when it prints to a file, "Unable to write file: %1".
///
/// Owner: the command that runs it. Thread: GUI.
class MetaDataPrinter final : public MetaDataHandler
{
    Q_OBJECT

public:
    explicit MetaDataPrinter(QObject* parent = nullptr);
    /// Ends painting.
    ~MetaDataPrinter() override;

    /// Portrait, with margins of 20 mm at the left and 10 mm elsewhere: as a report is printed unless the user changes
    /// it.
    static void setUpPage(QPrinter* printer);

    /// The title of every page; none when it is empty.
    void setTitle(const QString& title);

    /// Prints on this printer, which is not owned and must live as long as the run or this object; returns the reply
    /// of the run.
    OperationReply* start(QPrinter* printer);

protected:
    void beginOutput() override;
    void handlePage(const MetaDataList& items) override;
    void completeOutput() override;
    void releaseOutput() override;

private:
    void layOutPage();
    bool printRecord(const MetaData& record);
    void makeRoom(qreal height);
    bool beginPage();
    bool isPageChosen() const;
    void printPageNumber();
    void drawAndMoveDown(QTextDocument& document, qreal height);
    qreal position() const;
    QString lineOf(const MetaData& record) const;

    QString m_title;
    QPrinter* m_printer = nullptr;
    QPainter m_painter;
    QTextDocument m_titleDocument;
    QTextDocument m_lineDocument;
    // The foot of each page, and the space above it; device pixels.
    QRect m_footer;
    qreal m_lineSpacing = 0;
    int m_recordNumber = 1;
    // Of the page that is filled, and how many were printed before it; 0 before the first.
    int m_pageNumber = 0;
    int m_printedPages = 0;
    bool m_isPageStarted = false;
    bool m_isPageEmpty = true;
};
