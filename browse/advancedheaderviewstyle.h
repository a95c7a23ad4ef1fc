// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMargins>
#include <QProxyStyle>

class QStyleOptionHeader;

/// Flat header sections with thin separators; a sorted column is marked by an arrow after its title.
///
/// Works over the application's style. Owner: the header that it is installed on. Thread: GUI.
class AdvancedHeaderViewStyle : public QProxyStyle
{
    Q_OBJECT

public:
    AdvancedHeaderViewStyle();

    /// Device-independent pixels; a section is never lower.
    void setMinimumSectionHeight(int height) { m_minimumSectionHeight = height; }
    /// Device-independent pixels around a section's title.
    void setCellMargins(const QMargins& margins) { m_cellMargins = margins; }
    QMargins cellMargins() const { return m_cellMargins; }

    void drawControl(
        ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const override;
    QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const override;

private:
    void drawHeader(const QStyleOptionHeader& option, QPainter& painter, const QWidget* widget) const;
    void drawSection(const QStyleOptionHeader& option, QPainter& painter) const;
    void drawLabel(const QStyleOptionHeader& option, QPainter& painter) const;

    int m_minimumSectionHeight = 0;
    QMargins m_cellMargins;
};
