// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Opens the desktop's file manager with a file selected. Thread: GUI.
///
/// Where there is a session bus this is the call "ShowItems" of the interface org.freedesktop.FileManager1, as the
/// file managers of the free desktops offer it; when nobody answers to it, the file's folder is opened. Of a file that
/// does not exist any more the nearest folder that does is opened.
void revealInFileManager(const QString& filePath);

/// The folder of a path, or the nearest one above it that exists.
QString nearestExistingFolder(const QString& path);
