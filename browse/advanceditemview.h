// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMargins>
#include <QTableView>

/// The look that the program's tables share: tall rows of whole-row selection, no grid, no vertical header, read-only.
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

private:
    int m_rowHeight;
    QMargins m_cellMargins{ 6, 6, 12, 6 };
};
