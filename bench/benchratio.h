// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

/// Figures beside what they are measured against, both from the same run. Thread: the program's own.
namespace BenchRatio {

/// The least time in microseconds that `work` takes in some rounds: the processor's, of all threads of the program.
double processorTime(int rounds, const std::function<void()>& work);
/// The least time in microseconds that passes meanwhile.
double passedTime(int rounds, const std::function<void()>& work);

/// Prints one line: the figure, its baseline, their ratio and what the ratio may be at most.
void print(const QString& name, const QString& unit, double figure, double baseline, double limit);

} // namespace BenchRatio
