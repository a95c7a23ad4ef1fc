// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

/// A light push button. Its dynamic properties "leftSideType" and "rightSideType" tell whether a side is joined to a
/// neighbouring button: 0 free, 1 joined.
///
/// Owner: its Qt parent. Thread: GUI.
class WhiteButton : public QPushButton
{
    Q_OBJECT

public:
    explicit WhiteButton(QWidget* parent = nullptr);

protected:
    bool event(QEvent* event) override;
};

/// The left end of a row of joined buttons.
class WhiteLeftButton : public WhiteButton
{
    Q_OBJECT

public:
    explicit WhiteLeftButton(QWidget* parent = nullptr);
};
