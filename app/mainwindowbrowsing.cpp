// SPDX-License-Identifier: GPL-3.0-or-later
// Views, lookup, counters, the title, the tables, and the row to return to.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "browse/metadatamodel.h"
#include "store/database.h"
#include "store/operationreply.h"

#include <QLabel>
#include <QMenu>
#include <QScopedValueRollback>

#include <algorithm>

namespace {

const char tableIdProperty[] = "tableId";
constexpr int tablesCount = 15;

// Why something failed, without what it was.
QString reasonOf(const QString& errorText)
{
    const QString reason = errorText.section(QStringLiteral(": "), 1);
    return reason.isEmpty() ? errorText : reason;
}

} // namespace

void MainWindow::on_viewAllButton_clicked()
{
    m_ui->metaDataView->setFilters(false, false);
}

void MainWindow::on_viewLastScannedButton_clicked()
{
    m_ui->metaDataView->setFilters(true, false);
}

void MainWindow::on_viewPlaylistButton_clicked()
{
    m_ui->metaDataView->setFilters(false, true);
}

void MainWindow::lookup()
{
    m_ui->metaDataView->setLookup(m_ui->lookupEdit->text(), true);
}

void MainWindow::updateWindowTitle()
{
    // The database is created after the view has its table.
    if (!m_session)
        return;
    QString name = database()->tableDisplayName(m_ui->metaDataView->tableId());
    // Alone it would stand for a sign that something is unsaved, and not be seen.
    const QString unsavedMark = QStringLiteral("[*]");
    name.replace(unsavedMark, unsavedMark + unsavedMark);
    setWindowTitle(tr("Vellumcast - %1").arg(name));
}

void MainWindow::updateRowCountersLabel()
{
    const QString queryError = m_ui->metaDataView->metaDataModel()->queryError();
    const int rows = m_ui->metaDataView->metaDataModel()->rowsCount();
    const int selectedRows = m_ui->metaDataView->selectedRowsCount();
    QString text;
    if (!queryError.isEmpty())
        text = tr("Lookup failed: %1").arg(reasonOf(queryError));
    else if (rows >= 0)
        text = tr("Found Records: %1").arg(rows);
    if (rows >= 0 && selectedRows > 0 && selectedRows != rows)
        text += tr(" (%1 selected)").arg(selectedRows);
    m_ui->rowCountersLabel->setText(text);
    // A narrow window cuts the text off.
    m_ui->rowCountersLabel->setToolTip(text);
}

// An empty result of a view or a lookup says nothing about the table.
void MainWindow::updateEmptyTableHint()
{
    const MetaDataModel* model = m_ui->metaDataView->metaDataModel();
    const bool isEmpty = model->isRowsCountActual() && model->rowsCount() == 0;
    const bool isWholeTable = m_ui->viewAllButton->isChecked() && m_ui->lookupEdit->text().trimmed().isEmpty();
    m_emptyTableHint->setVisible(isEmpty && isWholeTable);
}

void MainWindow::updateOpenTableMenu()
{
    m_openTableMenu->clear();
    for (int tableId = 1; tableId <= tablesCount; ++tableId) {
        QString name = database()->tableDisplayName(tableId);
        QAction* action = m_openTableMenu->addAction(name.replace(QLatin1String("&"), QLatin1String("&&")));
        action->setProperty(tableIdProperty, tableId);
        connect(action, &QAction::triggered, this, &MainWindow::handleOpenTableAction);
    }
}

void MainWindow::handleOpenTableAction()
{
    // A command works on the table that it was started on.
    if (m_isCommandRunning)
        return;
    const int tableId = sender()->property(tableIdProperty).toInt();
    finishRatings();
    m_ui->metaDataView->setTableId(tableId);
    m_stateSaveTimer.start();
}

void MainWindow::saveSelection()
{
    m_savedRow = currentRecord().id();
}

void MainWindow::requery()
{
    m_ui->metaDataView->requery(true);
}

void MainWindow::requeryLater()
{
    m_requeryTimer.start();
}

void MainWindow::restoreSavedRow()
{
    // Not before the write has been answered and the rows have been read again.
    if (m_savedRow <= 0 || m_pendingWrites > 0 || m_requeryTimer.isActive())
        return;
    OperationReply* reply = m_ui->metaDataView->metaDataModel()->lookupRow(m_savedRow);
    forgetSavedRow();
    m_rowLookup = reply;
    if (!reply)
        return;
    connect(reply, &OperationReply::finished, reply, &QObject::deleteLater);
    connect(reply, &OperationReply::finished, this, &MainWindow::finalizeRowLookup);
}

void MainWindow::forgetSavedRow()
{
    m_savedRow = 0;
    if (m_rowLookup)
        m_rowLookup->disconnect(this);
    m_rowLookup = nullptr;
}

void MainWindow::finalizeRowLookup()
{
    auto* reply = qobject_cast<OperationReply*>(sender());
    reply->deleteLater();
    if (reply == m_rowLookup)
        m_rowLookup = nullptr;
    if (reply->hasError())
        return;
    MetaDataView* view = m_ui->metaDataView;
    const int row = reply->result(QStringLiteral("row")).toInt();
    const QModelIndex index = view->model()->index(row, std::max(view->currentIndex().column(), 0));
    // Where the record has not moved, what else is selected stays so.
    if (row != view->currentIndex().row()) {
        const QScopedValueRollback<bool> returning(m_isReturningToRecord, true);
        view->setCurrentIndex(index);
    }
    if (!view->viewport()->rect().intersects(view->visualRect(index)))
        view->scrollTo(index);
}

void MainWindow::showMetaDataContextMenu(const QPoint& point)
{
    m_recordMenu->popup(m_ui->metaDataView->viewport()->mapToGlobal(point));
}
