// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/controllook.h"

#include <QProxyStyle>

class QStyleOptionButton;

/// Paints push buttons as rounded rectangles; a style derived from it chooses the colours.
///
/// Works over the application's style. Owner: the button that it is installed on. Thread: GUI.
class ButtonStyle : public QProxyStyle
{
    Q_OBJECT

public:
    void drawControl(
        ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const override;
    void drawPrimitive(
        PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const override;
    QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;

protected:
    ButtonStyle() = default;

    virtual ControlLook::Colours coloursOf(const QStyleOptionButton& option) const = 0;
    /// Which sides are joined; none unless overridden.
    virtual ControlLook::Shape shapeOf(const QStyleOptionButton& option, const QWidget* widget) const;
};
