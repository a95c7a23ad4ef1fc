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

    /// The most that a button can be narrowed without touching its text.
    static constexpr int mostNarrowing = 14;
    /// Takes so much of the usual width away, in device-independent pixels, where there is little room.
    void setNarrowing(int narrowing);
    /// Lets a layout that is too narrow cut off the end of the text; its tool tip is then the whole text.
    void setShrinkable(bool isShrinkable);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;

private:
    int m_narrowing = 0;
    bool m_isShrinkable = false;
};

/// The left end of a row of joined buttons.
class WhiteLeftButton : public WhiteButton
{
    Q_OBJECT

public:
    explicit WhiteLeftButton(QWidget* parent = nullptr);
};
