// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadataview.h"

#include "browse/metadatamodel.h"
#include "browse/rowsdrag.h"

#include <QAction>
#include <QDropEvent>
#include <QFontMetrics>
#include <QHeaderView>
#include <QItemSelection>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QUrl>

#include <algorithm>

namespace {

constexpr int lookupDelay = 500; // milliseconds
constexpr int pendingScanDelay = 100; // milliseconds
const char columnProperty[] = "columnLogicalIndex";

// Files are only ever copied in: another action would let the source remove them.
void forceCopyAction(QDropEvent* event)
{
    if (event->possibleActions() & Qt::CopyAction)
        event->setDropAction(Qt::CopyAction);
}

void setUpColumn(AdvancedItemView& view, int column, QHeaderView::ResizeMode mode, int textWidth)
{
    view.horizontalHeader()->setSectionResizeMode(column, mode);
    const QMargins margins = view.cellMargins();
    view.horizontalHeader()->resizeSection(column, textWidth + margins.left() + margins.right() + 1);
}

} // namespace

MetaDataView::MetaDataView(QWidget* parent)
    : AdvancedItemView(parent)
    , m_model(new MetaDataModel(this))
    , m_columnsMenu(new QMenu(this))
    , m_rowsDrag(std::make_unique<RowsDrag>(m_model, this))
{
    setModel(m_model);
    connectModel();
    buildColumnsMenu();
    m_lookupTimer.setSingleShot(true);
    m_lookupTimer.setInterval(lookupDelay);
    connect(&m_lookupTimer, &QTimer::timeout, this, &MetaDataView::applyLookup);
    m_pendingScanTimer.setSingleShot(true);
    m_pendingScanTimer.setInterval(pendingScanDelay);
    connect(&m_pendingScanTimer, &QTimer::timeout, this, &MetaDataView::requestPendingScan);
    setUpHeader();
    setUpColumnWidths();
    connect(this, &AdvancedItemView::headerStateRestored, this, &MetaDataView::updateColumnsVisibility);
    updateColumnsVisibility();
    setSelectionMode(ExtendedSelection);
    // Sorting begins with the column that the header shows; by itself it would begin with a descending order.
    horizontalHeader()->setSortIndicator(MetaDataModel::FilePathColumn, Qt::AscendingOrder);
    setSortingEnabled(true);
    setDragEnabled(true);
    viewport()->setAcceptDrops(true);
    setDropIndicatorShown(false);
}

MetaDataView::~MetaDataView()
{
    m_rowsDrag.reset();
    // Now, while the view is whole: the model may wait for its collections, and what it is told meanwhile comes here.
    delete m_model;
}

void MetaDataView::connectModel()
{
    connect(
        m_model, &MetaDataModel::rangeVisibilityCheck, this, &MetaDataView::checkRangeVisibility, Qt::DirectConnection);
    connect(m_model, &QAbstractItemModel::modelAboutToBeReset, this, &MetaDataView::keepSelectionOverCount);
    // Queued: the view itself must have handled the reset first.
    connect(m_model, &QAbstractItemModel::modelReset, this, &MetaDataView::restoreSavedSelection, Qt::QueuedConnection);
    connect(m_model, &QAbstractItemModel::modelReset, this, [this]() { m_isRestoreDue = true; });
    connect(m_model, &MetaDataModel::actualRowsCountChanged, this, &MetaDataView::forgetSavedSelection);
    connect(m_model, &MetaDataModel::processingFinished, this, &MetaDataView::forgetSavedSelection);
    connect(m_model, &MetaDataModel::requeried, this, &MetaDataView::handleRequeried);
    connect(m_model, &MetaDataModel::requeried, this, &MetaDataView::requeried);
    connect(m_model, &MetaDataModel::processingStarted, this, &MetaDataView::processingStarted);
    connect(m_model, &MetaDataModel::processingFinished, this, &MetaDataView::processingFinished);
    connect(m_model, &MetaDataModel::actualRowsCountChanged, this, &MetaDataView::actualRowsCountChanged);
    connect(m_model, &MetaDataModel::tableChaged, this, &MetaDataView::tableChaged);
}

void MetaDataView::buildColumnsMenu()
{
    for (int column = 0; column < m_model->columnCount(); ++column) {
        QAction* action = m_columnsMenu->addAction(m_model->headerData(column, Qt::Horizontal).toString());
        action->setProperty(columnProperty, column);
        action->setCheckable(true);
        action->setChecked(true);
        action->setEnabled(m_model->headerData(column, Qt::Horizontal, MetaDataModel::HideableRole).toBool());
        if (action->isEnabled())
            connect(action, &QAction::toggled, this, &MetaDataView::toggledColumnVisibility);
    }
}

void MetaDataView::setUpHeader()
{
    QHeaderView* header = horizontalHeader();
    header->setVisible(true);
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setHighlightSections(false);
    header->setSortIndicatorShown(true);
    header->setStretchLastSection(false);
}

void MetaDataView::setUpColumnWidths()
{
    const int textWidth = 5 * fontMetrics().horizontalAdvance(QStringLiteral("ABCD"));
    for (const int column :
        { MetaDataModel::FilePathColumn, MetaDataModel::FileNameColumn, MetaDataModel::LibraryColumn })
        setUpColumn(*this, column, QHeaderView::Interactive, textWidth);
    horizontalHeader()->setSectionResizeMode(MetaDataModel::DescriptionColumn, QHeaderView::Stretch);
    setUpFixedColumns();
    // A restored state brings widths of the font that it was saved with, and the user cannot change these.
    connect(this, &AdvancedItemView::headerStateRestored, this, &MetaDataView::setUpFixedColumns);
}

void MetaDataView::setUpFixedColumns()
{
    const auto setUp = [this](int column, const QString& sample) {
        setUpColumn(*this, column, QHeaderView::Fixed, fontMetrics().horizontalAdvance(sample));
    };
    setUp(MetaDataModel::TypeColumn, QStringLiteral("ABCDE"));
    setUp(MetaDataModel::DurationColumn, QStringLiteral("000:00WW"));
    setUp(MetaDataModel::RatingColumn, QStringLiteral("00.0WWW"));
}

void MetaDataView::setDatabase(Database* database, int tableId)
{
    m_model->setDatabase(database, tableId);
}

void MetaDataView::setTableId(int tableId)
{
    m_model->setTableId(tableId);
}

int MetaDataView::tableId() const
{
    return m_model->tableId();
}

void MetaDataView::setFilters(bool lastScannedOnly, bool playlistOnly)
{
    m_model->setFilters(lastScannedOnly, playlistOnly);
}

int MetaDataView::selectedRowsCount() const
{
    int count = 0;
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection)
        count += range.bottom() - range.top() + 1;
    return count;
}

void MetaDataView::keyboardSearch(const QString& /*search*/) { }

void MetaDataView::requery(bool saveSelection)
{
    dropSelectionOfAnotherQuery();
    // Rows that stay only until those of another query come have other numbers there.
    if (m_model->isQueryShown()) {
        saveCurrentIndex();
        if (saveSelection)
            saveSelectedRows();
    }
    m_model->requery();
}

void MetaDataView::saveCurrentIndex()
{
    m_savedQuery = m_model->queryNumber();
    m_savedRow = currentIndex().row();
    m_savedColumn = currentIndex().column();
    m_isSavedRowSelected = m_savedRow >= 0 && selectionModel()->isRowSelected(m_savedRow, QModelIndex());
}

void MetaDataView::saveSelectedRows()
{
    m_savedRowRanges.clear();
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection)
        m_savedRowRanges.append({ range.top(), range.bottom() });
}

void MetaDataView::keepSelectionOverCount()
{
    // The rows stay when only their count changes, so what the user has chosen since the requery stays chosen, and what
    // was saved then and cleared since does not come back.
    // A current row without a selection is none that was chosen: the focus alone makes one.
    const bool isAnythingSaved = m_savedRow >= 0 || !m_savedRowRanges.isEmpty();
    const bool isAnythingKept = selectionModel()->hasSelection() || isAnythingSaved;
    if (m_isRestoreDue || !m_model->isRowsCountActual() || !isAnythingKept)
        return;
    saveCurrentIndex();
    saveSelectedRows();
}

void MetaDataView::restoreSavedSelection()
{
    m_isRestoreDue = false;
    dropSelectionOfAnotherQuery();
    const QScopedValueRollback<bool> restoring(m_isRestoringSelection, true);
    // The user may have scrolled away from the current row.
    const bool wasAutoScrolling = hasAutoScroll();
    setAutoScroll(false);
    restoreCurrent();
    restoreRanges();
    setAutoScroll(wasAutoScrolling);
    forgetSavedSelection();
}

void MetaDataView::restoreCurrent()
{
    const QModelIndex current = m_model->index(m_savedRow, m_savedColumn);
    if (!current.isValid())
        return;
    const QModelIndex otherEnd = m_isSavedRowSelected ? otherEndOfSavedRange() : QModelIndex();
    if (otherEnd.isValid()) {
        // A range grows with Shift from the row that was made current by itself; nobody is to see that row pass.
        const QSignalBlocker silence(selectionModel());
        setCurrentIndex(otherEnd);
    }
    // The focus alone makes a row current; it was not chosen and is not afterwards.
    if (m_isSavedRowSelected && !otherEnd.isValid())
        setCurrentIndex(current);
    else
        selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
}

QItemSelectionModel::SelectionFlags MetaDataView::selectionCommand(const QModelIndex& index, const QEvent* event) const
{
    return m_isRestoringSelection ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
                                  : AdvancedItemView::selectionCommand(index, event);
}

// Where the user began to select the rows that end at the current one.
QModelIndex MetaDataView::otherEndOfSavedRange() const
{
    for (const auto& [top, bottom] : m_savedRowRanges) {
        if (top < bottom && (m_savedRow == top || m_savedRow == bottom))
            return m_model->index(m_savedRow == top ? bottom : top, m_savedColumn);
    }
    return {};
}

void MetaDataView::restoreRanges()
{
    QItemSelection selection;
    for (const auto& [top, bottom] : qAsConst(m_savedRowRanges)) {
        const QModelIndex first = m_model->index(top, 0);
        const QModelIndex last = m_model->index(qMin(bottom, m_model->rowCount() - 1), 0);
        if (first.isValid() && last.isValid())
            selection.select(first, last);
    }
    if (!selection.isEmpty())
        selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void MetaDataView::forgetSavedSelection()
{
    // While the count is not final another reset may follow and take the selection away again.
    if (m_isRestoreDue || !m_model->isRowsCountActual() || m_model->isRequeryPending())
        return;
    dropSavedSelection();
}

void MetaDataView::dropSelectionOfAnotherQuery()
{
    if (m_savedQuery != m_model->queryNumber())
        dropSavedSelection();
}

void MetaDataView::dropSavedSelection()
{
    m_savedRow = -1;
    m_savedColumn = -1;
    m_savedRowRanges.clear();
}

void MetaDataView::handleRequeried()
{
    dropSelectionOfAnotherQuery();
    if (m_savedRow < 0 || m_savedColumn < 0)
        scrollToTop();
}

void MetaDataView::setLookup(const QString& value, bool applyInstantly)
{
    m_lookup = value;
    if (applyInstantly) {
        m_lookupTimer.stop();
        applyLookup();
    } else {
        m_lookupTimer.start();
    }
}

void MetaDataView::applyLookup()
{
    m_model->setLookup(m_lookup);
}

void MetaDataView::setFilePathLookupEnabled(bool enabled)
{
    m_model->setFilePathLookupEnabled(enabled);
}

void MetaDataView::requestPendingScan()
{
    QStringList paths;
    paths.swap(m_pendingPaths);
    emit scanRequested(paths);
}

void MetaDataView::checkRangeVisibility(int topRow, int bottomRow, bool& visible)
{
    const int height = viewport()->height() - 1;
    const int firstRow = qMax(rowAt(0), 0);
    const int lastRow = firstRow + (height + rowHeight()) / rowHeight();
    if (topRow <= lastRow && firstRow <= bottomRow)
        visible = true;
}

void MetaDataView::toggledColumnVisibility()
{
    const auto* action = qobject_cast<QAction*>(sender());
    horizontalHeader()->setSectionHidden(action->property(columnProperty).toInt(), !action->isChecked());
}

void MetaDataView::updateColumnsVisibility()
{
    const QList<QAction*> actions = m_columnsMenu->actions();
    for (QAction* action : actions) {
        const int column = action->property(columnProperty).toInt();
        // A state from elsewhere must not take away what cannot be brought back.
        if (!action->isEnabled())
            horizontalHeader()->showSection(column);
        action->setChecked(!horizontalHeader()->isSectionHidden(column));
    }
}

void MetaDataView::keyPressEvent(QKeyEvent* event)
{
    if (!event->isAutoRepeat())
        emitKeySignal(event->key());
    AdvancedItemView::keyPressEvent(event);
}

void MetaDataView::emitKeySignal(int key)
{
    switch (key) {
    case Qt::Key_Return:
        emit returnPressed();
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        emit plusPressed();
        break;
    case Qt::Key_Minus:
    case Qt::Key_Underscore:
        emit minusPressed();
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        emit deletePressed();
        break;
    case Qt::Key_Space:
        emit spacePressed();
        break;
    default:
        break;
    }
}

void MetaDataView::dragEnterEvent(QDragEnterEvent* event)
{
    if (isOwnDrag(*event)) {
        event->ignore();
        return;
    }
    forceCopyAction(event);
    AdvancedItemView::dragEnterEvent(event);
    // The base takes the proposed action back.
    if (event->isAccepted())
        forceCopyAction(event);
}

void MetaDataView::dragMoveEvent(QDragMoveEvent* event)
{
    if (isOwnDrag(*event)) {
        event->ignore();
        return;
    }
    forceCopyAction(event);
    AdvancedItemView::dragMoveEvent(event);
    if (event->isAccepted())
        forceCopyAction(event);
}

// A scan of the table's own files would take their ratings and marks away.
bool MetaDataView::isOwnDrag(const QDropEvent& event) const
{
    return event.source() == this;
}

void MetaDataView::dropEvent(QDropEvent* event)
{
    if (!event->mimeData() || !event->mimeData()->hasUrls()) {
        AdvancedItemView::dropEvent(event);
        return;
    }
    if (isOwnDrag(*event))
        return;
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile())
            m_pendingPaths.append(url.toLocalFile());
    }
    forceCopyAction(event);
    // Accepted first: the base then leaves the data alone.
    event->accept();
    AdvancedItemView::dropEvent(event);
    m_pendingScanTimer.start();
}

// By ranges: an index of each cell would take seconds for a large selection.
QVector<int> MetaDataView::selectedRows() const
{
    QVector<int> rows;
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.append(row);
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void MetaDataView::startDrag(Qt::DropActions /*supportedActions*/)
{
    m_rowsDrag->begin(selectedRows());
}

void MetaDataView::mouseMoveEvent(QMouseEvent* event)
{
    // It is a drag that has not begun: the base would take the movement for a selection.
    if (!m_rowsDrag->isHeldBack())
        AdvancedItemView::mouseMoveEvent(event);
}

void MetaDataView::mouseReleaseEvent(QMouseEvent* event)
{
    m_rowsDrag->giveUp();
    AdvancedItemView::mouseReleaseEvent(event);
}
