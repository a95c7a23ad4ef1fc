// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Runs the program from its start to its end and returns the exit code: that of the event loop, or 1 when another
/// instance runs, when the single-instance name cannot be claimed, or when no database was opened.
/// Thread: main.
int runApplication(int& argc, char** argv);

/// Makes the application font at least 10 points high. Thread: GUI.
void raiseFontToReadableSize();

/// On a dark palette whose links have the dark blue of a light one, gives them a light colour. Thread: GUI.
void lightenLinksOnDarkPalette();
