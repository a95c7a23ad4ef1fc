// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pixmapwidget.h"

#include <QDateTime>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int visibilityDelay = 200; // milliseconds
constexpr int fastestRate = 60; // frames per second
constexpr int millisecondsPerSecond = 1000;

} // namespace

PixmapWidget::PixmapWidget(QWidget* parent)
    : QWidget(parent)
{
    connect(&m_animationTimer, &QTimer::timeout, this, &PixmapWidget::updatePixmap);
    m_delayTimer.setSingleShot(true);
    m_delayTimer.setInterval(visibilityDelay);
    connect(&m_delayTimer, &QTimer::timeout, this, &PixmapWidget::applyDelayedVisibility);
}

QSize PixmapWidget::sheetSize() const
{
    return m_pixmap.isNull() ? QSize() : (QSizeF(m_pixmap.size()) / m_pixmap.devicePixelRatioF()).toSize();
}

void PixmapWidget::setPixmap(const QPixmap& pixmap)
{
    m_pixmap = pixmap;
    m_frameSize = sheetSize();
    m_frameRate = 0;
    updateGeometry();
    updateAnimation();
}

void PixmapWidget::setAnimatedPixmap(const QPixmap& pixmap, int frameWidth, int frameHeight, int frameRate)
{
    m_pixmap = pixmap;
    const QSize sheet = sheetSize();
    m_frameSize
        = QSize(qBound(1, frameWidth, std::max(1, sheet.width())), qBound(1, frameHeight, std::max(1, sheet.height())));
    m_frameRate = qBound(1, frameRate, fastestRate);
    m_animationTimer.setInterval(millisecondsPerSecond / m_frameRate);
    updateGeometry();
    updateAnimation();
}

int PixmapWidget::frameAt(qint64 milliseconds) const
{
    if (m_frameRate == 0 || m_pixmap.isNull())
        return 0;
    const QSize sheet = sheetSize();
    const int frames = (sheet.width() / m_frameSize.width()) * (sheet.height() / m_frameSize.height());
    return int((milliseconds * m_frameRate / millisecondsPerSecond) % std::max(1, frames));
}

QRect PixmapWidget::frameArea(int frame) const
{
    const int framesPerRow = std::max(1, sheetSize().width() / std::max(1, m_frameSize.width()));
    const QPoint position((frame % framesPerRow) * m_frameSize.width(), (frame / framesPerRow) * m_frameSize.height());
    return { position, m_frameSize };
}

QSize PixmapWidget::sizeHint() const
{
    return m_frameSize.isValid() ? m_frameSize : QWidget::sizeHint();
}

void PixmapWidget::setPictureVisible(bool visible)
{
    m_delayTimer.stop();
    m_isPictureVisible = visible;
    updateAnimation();
}

void PixmapWidget::showPictureDelayed()
{
    m_isVisibilityPending = true;
    m_delayTimer.start();
}

void PixmapWidget::hidePictureDelayed()
{
    m_isVisibilityPending = false;
    m_delayTimer.start();
}

void PixmapWidget::applyDelayedVisibility()
{
    setPictureVisible(m_isVisibilityPending);
}

void PixmapWidget::updatePixmap()
{
    update();
}

void PixmapWidget::updateAnimation()
{
    if (m_isPictureVisible && m_frameRate > 0 && isVisible())
        m_animationTimer.start();
    else
        m_animationTimer.stop();
    update();
}

void PixmapWidget::paintEvent(QPaintEvent* /*event*/)
{
    if (!m_isPictureVisible || m_pixmap.isNull())
        return;
    const QRect frame = frameArea(frameAt(QDateTime::currentMSecsSinceEpoch()));
    QRect target(QPoint(), m_frameSize);
    target.moveCenter(rect().center());
    const qreal ratio = m_pixmap.devicePixelRatioF();
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(
        target, m_pixmap, QRectF(QPointF(frame.topLeft()) * ratio, QSizeF(frame.size()) * ratio).toRect());
}

void PixmapWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    updateAnimation();
}

void PixmapWidget::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    m_animationTimer.stop();
}
