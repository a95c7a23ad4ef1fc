// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Ends the process at a chosen step of what it does to files, as a kill or a loss of power would.
///
/// A step is a call that makes, writes, cuts, renames or removes a file, or that gives it to the disk. They are counted
/// in every library of the process. Thread: any; set up before the steps are taken.
namespace StepKiller {

/// Counts from now on, and kills the process in place of this step, numbered from 1; 0 only counts.
void arm(int step);
/// The steps counted so far.
int steps();
/// From now on no file gets a second name, as on file systems that know none.
void forbidSecondNames();

} // namespace StepKiller
