// SPDX-License-Identifier: GPL-3.0-or-later
// The commands on the selected records, and how it is made sure that these are the ones that the user saw selected.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "app/commandguard.h"
#include "app/operations.h"
#include "browse/metadatamodel.h"
#include "store/database.h"

#include <QDebug>
#include <QEventLoop>
#include <QItemSelectionModel>

namespace {

constexpr int settlePollInterval = 10; // milliseconds

// The first cell of each selected row. Ranges may overlap: the rows are in them more than once then.
QModelIndexList selectedRows(const MetaDataView& view)
{
    QModelIndexList rows;
    const QItemSelection selection = view.selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.append(view.model()->index(row, 0));
    }
    return rows;
}

} // namespace

bool MainWindow::isSettled() const
{
    const MetaDataModel* model = m_ui->metaDataView->metaDataModel();
    return m_pendingWrites == 0 && !m_requeryTimer.isActive() && !model->isProcessing() && !model->isRequeryPending()
        && m_savedRow == 0 && !m_rowLookup;
}

bool MainWindow::waitUntilSettled()
{
    applyWaitingRatingSteps();
    if (m_requeryTimer.isActive()) {
        m_requeryTimer.stop();
        requery();
    }
    QEventLoop loop;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &loop, [this, &loop] {
        if (isSettled())
            loop.quit();
    });
    timer.start(settlePollInterval);
    if (!isSettled())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    // The loop also ends when the application quits.
    return isSettled();
}

QSet<qint64> MainWindow::shownSelectedIds() const
{
    const MetaDataView* view = m_ui->metaDataView;
    const QHash<int, qint64> shownIds = view->metaDataModel()->shownIds();
    QSet<qint64> ids;
    for (auto record = shownIds.cbegin(); record != shownIds.cend(); ++record) {
        if (view->selectionModel()->isRowSelected(record.key(), QModelIndex()))
            ids.insert(record.value());
    }
    return ids;
}

QVariantList MainWindow::gatherSelected(const QString& fieldName)
{
    const QModelIndexList rows = selectedRows(*m_ui->metaDataView);
    if (rows.isEmpty())
        return {};
    const ReplyPointer reply(m_ui->metaDataView->metaDataModel()->collectFields(rows, fieldName));
    const OperationTexts texts{ tr("Gathering Selected Items"), {}, tr("Items gathered: %v of %m"), {} };
    if (!runForRecords(this, reply.get(), rows.size(), texts))
        return {};
    return reply->result(QStringLiteral("items")).toList();
}

// Rows are selected by their numbers. A record that was just rated, or a lookup that was just typed, may have brought
// another record onto a row between the moment when the user saw it and the moment when it was read.
QVariantList MainWindow::gatherSelectedIds(const QSet<qint64>& seenIds)
{
    if (!waitUntilSettled())
        return {};
    const QVariantList ids = gatherSelected(QStringLiteral("id"));
    if (ids.isEmpty())
        return ids;
    QSet<qint64> gatheredIds;
    for (const QVariant& id : ids)
        gatheredIds.insert(id.toLongLong());
    if (gatheredIds.contains(seenIds))
        return ids;
    qWarning("The selected records have changed meanwhile; nothing was done");
    m_ui->metaDataView->requery();
    return {};
}

void MainWindow::deleteSelectedRecords()
{
    const CommandGuard guard(m_isCommandRunning);
    const int rows = m_ui->metaDataView->selectedRowsCount();
    if (!guard.isEntered() || rows == 0)
        return;
    const int tableId = m_ui->metaDataView->tableId();
    const QSet<qint64> seenIds = shownSelectedIds();
    const bool isOne = rows == 1;
    const QString title = isOne ? tr("Delete Meta Data Record") : tr("Delete Meta Data Records");
    const QString text = isOne ? tr("Are you sure you want to delete this Meta Data record from database?")
                               : tr("Are you sure you want to delete these Meta Data records from database?");
    if (!askToProceed(this, title, text, tr("You cannot undo this action")))
        return;
    const QVariantList ids = gatherSelectedIds(seenIds);
    if (ids.isEmpty())
        return;
    finishRatings();
    const ReplyPointer reply(database()->deleteMetaData(tableId, ids));
    const OperationTexts texts{ tr("Deleting Mata Data Records"), {}, tr("Records deleted: %v of %m"), {} };
    if (runForRecords(this, reply.get(), ids.size(), texts))
        m_ui->metaDataView->requery();
}

void MainWindow::addToPlaylist()
{
    setSelectedOnPlaylist(true);
}

void MainWindow::removeFromPlaylist()
{
    setSelectedOnPlaylist(false);
}

void MainWindow::setSelectedOnPlaylist(bool isOnPlaylist)
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered())
        return;
    const int tableId = m_ui->metaDataView->tableId();
    const QVariantList ids = gatherSelectedIds(shownSelectedIds());
    if (ids.isEmpty())
        return;
    finishRatings();
    const ReplyPointer reply(database()->setMetaDataPlaylist(tableId, ids, isOnPlaylist ? 1 : 0));
    const QString title
        = isOnPlaylist ? tr("Adding Mata Data records to Playlist") : tr("Removing Mata Data records from Playlist");
    if (runForRecords(this, reply.get(), ids.size(), { title, {}, tr("Records updated: %v of %m"), {} }))
        m_ui->metaDataView->requery(!m_ui->playbackButton->isChecked());
}
