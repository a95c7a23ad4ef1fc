// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advanceditemview.h"

#include <QApplication>
#include <QFontMetrics>
#include <QHeaderView>
#include <QStyledItemDelegate>

namespace {

constexpr double rowHeightInFontHeights = 1.75;

// Rows are one line high: line breaks within a text become blanks.
class SingleLineDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant& value, const QLocale& locale) const override
    {
        static const QString lineBreaks = QStringLiteral("\n\r\u2028\u2029");
        QString text = QStyledItemDelegate::displayText(value, locale);
        for (QChar& character : text) {
            if (lineBreaks.contains(character))
                character = QLatin1Char(' ');
        }
        return text;
    }
};

} // namespace

AdvancedItemView::AdvancedItemView(QWidget* parent)
    : QTableView(parent)
    , m_rowHeight(int(QFontMetrics(QApplication::font()).height() * rowHeightInFontHeights))
{
    setItemDelegate(new SingleLineDelegate(this));
    verticalHeader()->setDefaultSectionSize(m_rowHeight);
    verticalHeader()->hide();
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setVerticalScrollMode(ScrollPerItem);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    horizontalHeader()->setFont(QApplication::font());
    horizontalHeader()->setMinimumHeight(m_rowHeight);
    horizontalHeader()->setSectionsMovable(false);
    horizontalHeader()->show();
}

AdvancedItemView::~AdvancedItemView() = default;

QByteArray AdvancedItemView::saveHeaderState() const
{
    return horizontalHeader()->saveState();
}

void AdvancedItemView::restoreHeaderState(const QByteArray& state)
{
    horizontalHeader()->restoreState(state);
    emit headerStateRestored();
}

#include "advanceditemview.moc"
