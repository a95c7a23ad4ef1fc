// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

/// Gives an editor whose text colours are stated for a light ground such a ground where the palette is dark, and dark
/// text for what has no colour of its own. On a light palette it changes nothing. Thread: GUI.
void giveLightGround(QWidget* editor);
