// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// How large the interface is drawn: by the resolution that the desktop tells, also between whole factors. Thread:
/// main.
namespace ScreenScale {

/// To be called before the application object exists.
void enable();

/// Whether the factor (device pixels per pixel) stands beside a whole one by a measuring error only: a screen's size is
/// told in whole millimetres. Lines one pixel wide would vanish here and there for nothing.
bool isAlmostWhole(double factor);

/// To be called with the application object, before anything else: starts the program anew with whole factors where the
/// screen's is almost whole, since a factor cannot be changed later. Returns unless it does so. `argv` is what the
/// program was started with, ended by a null pointer.
void makeWhole(char* const argv[]);

} // namespace ScreenScale
