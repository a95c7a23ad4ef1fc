// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

/// A dark push button with white text, for a window's principal actions.
///
/// Owner: its Qt parent. Thread: GUI.
class GreyButton : public QPushButton
{
    Q_OBJECT

public:
    explicit GreyButton(QWidget* parent = nullptr);
};
