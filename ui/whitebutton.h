// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

/// A light push button. Its dynamic properties "leftSideType" and "rightSideType" tell whether a side is joined to a
/// neighbouring button: 0 free, 1 joined. Where there is little room a button may be compact: less wide, with its whole
/// text.
///
/// Owner: its Qt parent. Thread: GUI.
class WhiteButton : public QPushButton
{
    Q_OBJECT

public:
    explicit WhiteButton(QWidget* parent = nullptr);

    void setCompact(bool isCompact);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;

private:
    bool m_isCompact = false;
};

/// The left end of a row of joined buttons.
class WhiteLeftButton : public WhiteButton
{
    Q_OBJECT

public:
    explicit WhiteLeftButton(QWidget* parent = nullptr);
};
