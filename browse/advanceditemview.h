// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMargins>
#include <QTableView>

/// The look that the program's tables share: tall ruled rows of whole-row selection with every second one shaded, a
/// flat header, no grid, no vertical header, read-only. The ruling goes on below the last row.
///
/// Knows nothing of records. Owner: its Qt parent. Thread: GUI.
class AdvancedItemView : public QTableView
{
    Q_OBJECT

public:
    explicit AdvancedItemView(QWidget* parent = nullptr);
    ~AdvancedItemView() override;

    /// Pixels.
    int rowHeight() const { return m_rowHeight; }
    /// Pixels around the text of a cell or of a header section.
    QMargins cellMargins() const { return m_cellMargins; }

    QByteArray saveHeaderState() const;
    /// Emits `headerStateRestored()` whether the state was usable or not.
    void restoreHeaderState(const QByteArray& state);

signals:
    void headerStateRestored();

protected:
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool event(QEvent* event) override;

private:
    void setUpHeader();
    void setUpGround();
    int rowsBottom() const;
    void paintBands(QPainter& painter, const QRect& area, int firstBandTop) const;
    void paintColumnLines(QPainter& painter, int top) const;

    int m_rowHeight;
    QMargins m_cellMargins;
};
