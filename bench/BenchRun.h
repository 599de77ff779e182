#pragma once

#include <QString>
#include <QStringList>
#include <map>
#include <string>

// What every benchmark program shares: running the registered benchmarks while keeping
// each one's mean wall time, timing a child program, and printing the summary rows that
// tools/bench.sh gathers into one table.
namespace bench {

// Runs the benchmarks named on the command line (all by default) and returns each one's
// wall time per iteration in milliseconds, keyed by the benchmark's full name.
std::map<std::string, double> run(int argc, char **argv);

// Wall time in milliseconds of one run of `program` with `args`, its output thrown away;
// `environment` entries ("NAME=value") are added to ours. Exits the benchmark program
// when the child does not start or fails.
double timeChild(const QString &program, const QStringList &args,
                 const QStringList &environment = {});

// The largest resident size of one run of `program` with `args`, in MiB. The run is
// started by a fresh copy of this benchmark program: a child's peak counts the memory
// of the process it was started from, and ours holds the generated material.
double peakMiB(const QString &program, const QStringList &args);

// One summary row: "KKROW|row|ours|floor|ratio|goal|met". The ratio is printed with two
// decimals and a trailing x; a negative one, for a row without a floor, as "-".
void row(const QString &what, const QString &ours, const QString &floor, double ratio,
         const QString &goal, bool met);

QString ms(double milliseconds);

// A folder below /tmp for generated material, removed when the program ends.
QString scratch();

} // namespace bench
