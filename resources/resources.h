// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Makes the pictures, pages and texts of this library available under ":/Resources/". A static library's resources are
/// not found until this was called once. Thread: GUI.
void initialiseResources();
