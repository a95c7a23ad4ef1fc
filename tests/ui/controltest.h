// SPDX-License-Identifier: GPL-3.0-or-later
// What the tests of the styled controls share.
#pragma once

#include "tests/support/picture.h"
#include "tests/ui/contrast.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QtTest>

namespace TestSupport {

/// Characters that are one filled block each: where they stand a picture has the text's colour and nothing else.
const QString blockText = QStringLiteral("\u2588\u2588");

inline void useFixedFont()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(13);
    QApplication::setFont(font);
}

/// A light palette, or a dark one; no two of its colours are alike.
inline QPalette controlPalette(bool isDark)
{
    QPalette palette;
    palette.setColor(QPalette::Window, isDark ? QColor(36, 38, 42) : QColor(236, 238, 240));
    palette.setColor(QPalette::WindowText, isDark ? QColor(240, 242, 245) : QColor(10, 12, 15));
    palette.setColor(QPalette::Base, isDark ? QColor(50, 52, 56) : QColor(252, 253, 255));
    palette.setColor(QPalette::Text, isDark ? QColor(235, 236, 240) : QColor(20, 20, 25));
    palette.setColor(QPalette::Button, isDark ? QColor(70, 72, 76) : QColor(226, 228, 230));
    palette.setColor(QPalette::ButtonText, isDark ? QColor(230, 232, 235) : QColor(15, 18, 20));
    palette.setColor(QPalette::Highlight, QColor(40, 100, 190));
    palette.setColor(QPalette::HighlightedText, QColor(255, 255, 250));
    return palette;
}

inline void addPalettes()
{
    QTest::addColumn<bool>("isDark");

    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

inline QColor darker(const QColor& colour, int factor)
{
    return colour.darker(factor).rgb();
}

/// A place on a control's face that its text leaves free.
inline QPoint besideText(const QRect& area)
{
    return { area.left() + 6, area.center().y() };
}

/// What a style makes of a control, on the palette's Window colour.
inline Picture paintControl(
    const QStyle& style, QStyle::ControlElement element, const QStyleOption& option, const QWidget* widget = nullptr)
{
    const qreal ratio = qApp->devicePixelRatio();
    QImage image((QSizeF(option.rect.right() + 5, option.rect.bottom() + 5) * ratio).toSize(),
        QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(option.palette.color(QPalette::Window));
    QPainter painter(&image);
    painter.setFont(QApplication::font());
    style.drawControl(element, &option, &painter, widget);
    return Picture(image);
}

/// Counts the paint events of a widget.
class PaintCounter final : public QObject
{
public:
    explicit PaintCounter(QWidget& widget) { widget.installEventFilter(this); }

    int count() const { return m_count; }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};

} // namespace TestSupport
