// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/benchratio.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <limits>

namespace {

double processorMicroseconds()
{
    timespec time = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e6 + double(time.tv_nsec) / 1e3;
}

double least(int rounds, const std::function<double()>& measure)
{
    double result = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round)
        result = std::min(result, measure());
    return result;
}

} // namespace

double BenchRatio::processorTime(int rounds, const std::function<void()>& work)
{
    return least(rounds, [&]() {
        const double start = processorMicroseconds();
        work();
        return processorMicroseconds() - start;
    });
}

double BenchRatio::passedTime(int rounds, const std::function<void()>& work)
{
    return least(rounds, [&]() {
        QElapsedTimer timer;
        timer.start();
        work();
        return double(timer.nsecsElapsed()) / 1e3;
    });
}

void BenchRatio::print(const QString& name, const QString& unit, double figure, double baseline, double limit)
{
    const double ratio = figure / baseline;
    std::printf("%-58s %10.1f %10.1f %-12s ratio %6.3f  limit %5.2f  %s\n", qPrintable(name), figure, baseline,
        qPrintable(unit), ratio, limit, ratio <= limit ? "kept" : "MISSED");
    std::fflush(stdout);
}
