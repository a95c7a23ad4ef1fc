// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QTimer>
#include <QWidget>

/// A still picture, or an animation from a sheet of frames such as the busy indicator.
///
/// The picture is not shown until asked for; asked with the delay of 200 ms, short work causes no flicker. The frame
/// painted follows the wall clock, so all animations run in step.
///
/// Owner: its Qt parent. Thread: GUI.
class PixmapWidget : public QWidget
{
    Q_OBJECT

public:
    explicit PixmapWidget(QWidget* parent = nullptr);

    /// A still picture, painted whole.
    void setPixmap(const QPixmap& pixmap);
    /// A sheet of frames laid out row by row. Frame sizes are in device-independent pixels, clamped to the sheet's; the
    /// rate, frames per second, is clamped to 1 to 60.
    void setAnimatedPixmap(const QPixmap& pixmap, int frameWidth, int frameHeight, int frameRate);

    QSize frameSize() const { return m_frameSize; }
    int frameRate() const { return m_frameRate; }
    bool isPictureVisible() const { return m_isPictureVisible; }
    bool isAnimating() const { return m_animationTimer.isActive(); }
    /// The frame shown at this time, ms since the epoch.
    int frameAt(qint64 milliseconds) const;
    /// Where a frame lies in the sheet, in device-independent pixels.
    QRect frameArea(int frame) const;

    QSize sizeHint() const override;

public slots:
    /// At once; a delayed request that is pending is forgotten.
    void setPictureVisible(bool visible);
    void showPictureDelayed();
    void hidePictureDelayed();
    void applyDelayedVisibility();
    void updatePixmap();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QSize sheetSize() const;
    void updateAnimation();

    QPixmap m_pixmap;
    QSize m_frameSize;
    int m_frameRate = 0;
    bool m_isPictureVisible = false;
    bool m_isVisibilityPending = false;
    QTimer m_animationTimer;
    QTimer m_delayTimer;
};
