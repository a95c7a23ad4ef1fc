// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "browse/advanceditemview.h"

#include <QPair>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <memory>

class Database;
class MetaDataModel;
class QMenu;
class RowsDrag;

/// The main table: shows one metadata table through its own `MetaDataModel`.
///
/// Turns keys into named signals, dropped files and folders into a scan request, delays lookups while they are typed,
/// hides and shows columns, and keeps the current row and the selected rows, by number, over a requery.
///
/// Owner: its Qt parent; owns its model and its column menu. Thread: GUI.
class MetaDataView : public AdvancedItemView
{
    Q_OBJECT

public:
    explicit MetaDataView(QWidget* parent = nullptr);
    ~MetaDataView() override;

    MetaDataModel* metaDataModel() const { return m_model; }
    QMenu* columnsMenu() const { return m_columnsMenu; }
    void setDatabase(Database* database, int tableId);
    void setTableId(int tableId);
    int tableId() const;
    void setFilters(bool lastScannedOnly, bool playlistOnly);
    /// True while the view puts a saved selection back: such a change of the current row is not the user's.
    bool isRestoringSelection() const { return m_isRestoringSelection; }
    /// The number of selected rows, counted by ranges.
    int selectedRowsCount() const;

    /// Does nothing: the base would walk up to all rows for every letter typed.
    void keyboardSearch(const QString& search) override;

signals:
    void processingStarted();
    void processingFinished();
    void actualRowsCountChanged();
    /// Local files and folders were dropped on the table.
    void scanRequested(QStringList paths);
    void returnPressed();
    void plusPressed();
    void minusPressed();
    void deletePressed();
    void spacePressed();
    void tableChaged();
    void requeried();

public slots:
    /// Saves the current row (and the selected ones) and asks the model for fresh rows. What is saved holds for this
    /// query only: another store, table, lookup, filter or order drops it.
    void requery(bool saveSelection = false);
    /// Looks the text up 500 ms after the last change, or at once.
    void setLookup(const QString& value, bool applyInstantly = false);
    void setFilePathLookupEnabled(bool enabled);
    void handleRequeried();
    void restoreSavedSelection();
    void requestPendingScan();
    void checkRangeVisibility(int topRow, int bottomRow, bool& visible);
    void applyLookup();
    void toggledColumnVisibility();
    void updateColumnsVisibility();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    /// While a selection is put back the keys that are held do not matter.
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
    void dropEvent(QDropEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    /// Drags the files of the selected rows out of the program, as copies.
    void startDrag(Qt::DropActions supportedActions) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void connectModel();
    void saveCurrentIndex();
    void saveSelectedRows();
    void keepSelectionOverCount();
    void restoreCurrent();
    void restoreRanges();
    QModelIndex otherEndOfSavedRange() const;
    void forgetSavedSelection();
    void dropSavedSelection();
    void dropSelectionOfAnotherQuery();
    void buildColumnsMenu();
    void setUpHeader();
    void setUpColumnWidths();
    void setUpFixedColumns();
    void emitKeySignal(int key);
    QVector<int> selectedRows() const;
    bool isOwnDrag(const QDropEvent& event) const;

    MetaDataModel* m_model;
    QMenu* m_columnsMenu;
    std::unique_ptr<RowsDrag> m_rowsDrag;
    QTimer m_lookupTimer;
    QTimer m_pendingScanTimer;
    // Row and column of the saved current index; -1 when there is none.
    int m_savedRow = -1;
    int m_savedColumn = -1;
    bool m_isSavedRowSelected = false;
    QVector<QPair<int, int>> m_savedRowRanges;
    // The model's number of the query whose rows are saved.
    int m_savedQuery = 0;
    QString m_lookup;
    QStringList m_pendingPaths;
    // A reset has happened, but the selection was not put back yet.
    bool m_isRestoreDue = false;
    bool m_isRestoringSelection = false;
};
