#pragma once

#include <QElapsedTimer>
#include <QString>

#include <algorithm>
#include <functional>

namespace Bench {

// Runs fn `runs` times and returns the fastest run in milliseconds: the
// least disturbed figure on a shared machine.
double bestOfMs(int runs, const std::function<void()> &fn);

// Peak resident memory of this process so far, in MiB (VmHWM).
double peakMemoryMiB();

void printFigure(const QString &name, double value, const QString &unit);
void printRatio(const QString &name, double ratio, double target);

} // namespace Bench

void benchDocuments();
void benchProject();
void benchEditor();
