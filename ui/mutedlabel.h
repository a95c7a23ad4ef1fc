// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

/// A line of secondary words or figures: the palette's text colour, taken back a little, and legible also when
/// disabled.
///
/// Shows plain text only. Owner: its Qt parent. Thread: GUI.
class MutedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit MutedLabel(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
