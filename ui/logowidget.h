// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QWidget>

/// The product's word mark, as high as the widget; a click on it is a signal.
///
/// Owner: its Qt parent. Thread: GUI.
class LogoWidget : public QWidget
{
    Q_OBJECT

public:
    explicit LogoWidget(QWidget* parent = nullptr);

    QSize sizeHint() const override;

signals:
    /// The left button was pressed and released inside.
    void clicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void scalePicture();

    QPixmap m_picture;
    QPixmap m_scaledPicture;
};
