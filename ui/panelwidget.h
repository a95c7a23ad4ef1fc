// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// The ground of a row of controls above a table: the window's colour, closed by a thin line below.
///
/// Owner: its Qt parent. Thread: GUI.
class PanelWidget : public QWidget
{
    Q_OBJECT

public:
    explicit PanelWidget(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
