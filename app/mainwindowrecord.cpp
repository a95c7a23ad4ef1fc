// SPDX-License-Identifier: GPL-3.0-or-later
// The commands on the current record: its rating, its dialog, its file.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "app/commandguard.h"
#include "app/filemanager.h"
#include "app/operations.h"
#include "browse/metadatamodel.h"
#include "store/database.h"
#include "ui/metadatadialog.h"

#include <QDebug>

namespace {

constexpr double ratingStep = 1.0;
constexpr double greatestRating = 100.0;

// The fields that the user edits, on a record that may have changed otherwise meanwhile.
MetaData withUserFieldsOf(const MetaData& edited, MetaData record)
{
    record.setLibrary(edited.library());
    record.setDescription(edited.description());
    record.setRating(edited.rating());
    return record;
}

bool hasUserFieldsOf(const MetaData& edited, const MetaData& record)
{
    return record.library() == edited.library() && record.description() == edited.description()
        && record.rating() == edited.rating();
}

} // namespace

MetaData MainWindow::currentRecord() const
{
    const QModelIndex index = m_ui->metaDataView->currentIndex();
    return index.isValid() ? index.data(MetaDataModel::RecordRole).value<MetaData>() : MetaData();
}

void MainWindow::increaseCurrentMetaDataRating()
{
    changeCurrentRating(ratingStep);
}

void MainWindow::decreaseCurrentMetaDataRating()
{
    changeCurrentRating(-ratingStep);
}

// Each of several quick presses counts, although the answer to the first takes a while. What this window wrote itself
// is known better than the table, which shows it only after a requery; a record that may have been changed by a command
// since it was read waits until it has been read again.
void MainWindow::changeCurrentRating(double step)
{
    const MetaData shownRecord = currentRecord();
    if (m_isCommandRunning || shownRecord.isNull())
        return;
    const qint64 id = shownRecord.id();
    const MetaData record
        = m_ratedRecords.contains(id) ? m_ratedRecords.value(id) : m_ui->metaDataView->metaDataModel()->freshRecord(id);
    if (record.isNull())
        m_waitingRatingSteps[id] += step;
    else
        rateRecord(record, step);
}

void MainWindow::applyWaitingRatingSteps()
{
    QHash<qint64, double> steps;
    steps.swap(m_waitingRatingSteps);
    for (auto waiting = steps.cbegin(); waiting != steps.cend(); ++waiting)
        rateRecord(recordToRate(waiting.key()), waiting.value());
}

// From the store where the table does not show it, or no longer. Nothing else may begin meanwhile.
MetaData MainWindow::recordToRate(qint64 id)
{
    MetaData shownRecord = m_ui->metaDataView->metaDataModel()->freshRecord(id);
    if (!shownRecord.isNull())
        return shownRecord;
    const CommandGuard guard(m_isCommandRunning);
    ++m_pendingWrites;
    MetaData record = storedRecord(id).record;
    --m_pendingWrites;
    // What had to wait for this goes on after it.
    requeryLater();
    return record;
}

void MainWindow::rateRecord(MetaData record, double step)
{
    if (record.isNull())
        return;
    const double rating = qBound(0.0, record.rating() + step, greatestRating);
    if (rating == record.rating())
        return;
    record.setRating(rating);
    m_ratedRecords.insert(record.id(), record);
    m_ui->metaDataView->metaDataModel()->showChangedRecord(record);
    saveSelection();
    // A failed write says nothing; the requery shows what was stored.
    OperationReply* reply = database()->pushMetaData(m_ui->metaDataView->tableId(), { record });
    ++m_pendingWrites;
    connect(reply, &OperationReply::finished, reply, &QObject::deleteLater);
    connect(reply, &OperationReply::finished, this, [this] {
        --m_pendingWrites;
        requeryLater();
    });
}

// Rows that were read after the last write are what is stored; a write that failed is not in them.
void MainWindow::forgetShownRatings()
{
    if (m_pendingWrites == 0 && !m_requeryTimer.isActive() && !m_ui->metaDataView->metaDataModel()->isRequeryPending())
        m_ratedRecords.clear();
}

void MainWindow::finishRatings()
{
    applyWaitingRatingSteps();
    forgetRatings();
}

void MainWindow::forgetRatings()
{
    m_ratedRecords.clear();
    m_waitingRatingSteps.clear();
}

// Read by its id, whatever the view shows.
MainWindow::StoredRecord MainWindow::storedRecord(qint64 id)
{
    const int tableId = m_ui->metaDataView->tableId();
    const ReplyPointer rowReply(database()->lookupMetaDataRow(tableId, int(id), {}));
    if (waitForSuccess(rowReply.get())) {
        const QVariantMap place{ { QStringLiteral("offset"), rowReply->result(QStringLiteral("row")) },
            { QStringLiteral("limit"), 1 } };
        const ReplyPointer recordReply(database()->pullMetaData(tableId, place));
        recordReply->waitForFinished();
        const MetaData record = recordReply->result(QStringLiteral("items")).value<MetaDataList>().value(0);
        if (record.id() == id)
            return { record, false, {} };
    }
    // The lookup of a row fails in the same way for a record that is gone and for one that cannot be read.
    const QString idField = QStringLiteral("id");
    const ReplyPointer idsReply(database()->pullMetaData(tableId, { { QStringLiteral("singleField"), idField } }));
    if (!waitForSuccess(idsReply.get()))
        return { {}, false, idsReply->errorString() };
    return { {}, !idsReply->result(QStringLiteral("items")).toList().contains(id), {} };
}

void MainWindow::openCurrentMetaDataRow()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered() || currentRecord().isNull())
        return;
    resetAudioPlayer();
    const qint64 id = currentRecord().id();
    if (!waitUntilSettled() || currentRecord().id() != id)
        return;
    MetaDataDialog dialog(this);
    dialog.setMetaData(currentRecord());
    // It opens again with the edits when they could not be saved: nothing typed is lost.
    while (dialog.exec() == QDialog::Accepted) {
        if (saveEdits(id, dialog))
            return;
    }
}

// False leaves the edits in the dialog, also when the record is gone: what was typed may be wanted elsewhere.
bool MainWindow::saveEdits(qint64 id, const MetaDataDialog& dialog)
{
    // A press of a moment ago goes into the record that is read here.
    finishRatings();
    const StoredRecord stored = storedRecord(id);
    if (stored.record.isNull()) {
        tellNothingWasSaved(dialog.windowTitle(), stored);
        return false;
    }
    saveSelection();
    const bool isStored = storeRecord(withUserFieldsOf(dialog.metaData(), stored.record));
    requery();
    if (!isStored)
        tellNothingWasSaved(dialog.windowTitle(), {});
    return isStored;
}

void MainWindow::tellNothingWasSaved(const QString& title, const StoredRecord& stored)
{
    if (stored.isGone) {
        showFailure(this, title, tr("This record does not exist any more. Nothing was saved."));
        requery();
    } else if (stored.failure.isEmpty()) {
        showFailure(this, title, tr("The record could not be saved."));
    } else {
        showFailure(this, title, tr("The record could not be saved.\n%1").arg(stored.failure));
    }
}

// A failed write says nothing, so the record is read again; with its changes it may have left the view.
bool MainWindow::storeRecord(const MetaData& record)
{
    ++m_pendingWrites;
    const ReplyPointer reply(database()->pushMetaData(m_ui->metaDataView->tableId(), { record }));
    reply->waitForFinished();
    const StoredRecord stored = storedRecord(record.id());
    --m_pendingWrites;
    return hasUserFieldsOf(record, stored.record);
}

void MainWindow::revealCurrentFileInSystemFileManager()
{
    const MetaData record = currentRecord();
    if (!record.isNull())
        revealInFileManager(record.filePath());
}
