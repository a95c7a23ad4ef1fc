// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

/// Line edits as high as the styled buttons and with their frame, on the palette's Base colour.
///
/// Works over the application's style. Owner: the line edit that it is installed on. Thread: GUI.
class WhiteLineEditStyle : public QProxyStyle
{
    Q_OBJECT

public:
    void drawPrimitive(
        PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const override;
    QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const override;
};
