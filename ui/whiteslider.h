// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSlider>

/// A slider that fits the styled buttons; a click on it moves the handle there.
///
/// Owner: its Qt parent. Thread: GUI.
class WhiteSlider : public QSlider
{
    Q_OBJECT

public:
    explicit WhiteSlider(QWidget* parent = nullptr);
};
