// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Ends the process of a program that may have played sound.
///
/// Qt's PulseAudio plugin keeps its connection to the server until the static objects are destroyed, and takes it down
/// then while the thread that serves it still runs: now and then that crashes, and the user is told of a fault although
/// all went well. So this ends the process without destroying static objects. What they would still do must have been
/// done: windows closed, files written, the application object gone.
///
/// Under the address sanitizer it looks for leaks first, as a usual end does.
///
/// Thread: main.
[[noreturn]] void endProcess(int exitCode);
