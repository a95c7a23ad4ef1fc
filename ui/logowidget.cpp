// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/logowidget.h"

#include <QMouseEvent>
#include <QPainter>

#include <climits>
#include <cmath>

namespace {

constexpr int preferredHeight = 24;

QSize preferredSize(const QPixmap& picture)
{
    return picture.size().scaled(INT_MAX, preferredHeight, Qt::KeepAspectRatio);
}

} // namespace

LogoWidget::LogoWidget(QWidget* parent)
    : QWidget(parent)
    , m_picture(QStringLiteral(":/Resources/Vellumcast.png"))
{
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(tr("Vellumcast"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    resize(preferredSize(m_picture));
    scalePicture();
}

QSize LogoWidget::sizeHint() const
{
    return preferredSize(m_picture);
}

void LogoWidget::scalePicture()
{
    if (m_picture.isNull() || height() <= 0)
        return;
    const qreal ratio = devicePixelRatioF();
    m_scaledPicture = m_picture.scaledToHeight(int(std::lround(height() * ratio)), Qt::SmoothTransformation);
    m_scaledPicture.setDevicePixelRatio(ratio);
    setFixedWidth(int(std::ceil(m_scaledPicture.width() / ratio)));
}

void LogoWidget::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.drawPixmap(0, 0, m_scaledPicture);
}

void LogoWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (event->size().height() != event->oldSize().height())
        scalePicture();
}

void LogoWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        emit clicked();
}
