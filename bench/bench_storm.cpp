// A connection storm against a console in another process, twice: 2,000 connections
// opened and held without ever identifying, then 40,000 connections opened and dropped at
// once, while an identified terminal keeps asking for the rates. Prints the rates reply
// during and after the storms, the console's memory before, at the peak and after each,
// and whether a new terminal is still accepted. Exits 1 when a reply took 50 ms or more,
// a reply did not come, a new terminal was not accepted, or the second storm left the
// console 2 MB or more larger than the first did.
// With --port P --data DIR --pid PID it storms a console already running (the real
// program) instead of starting one.
#include "console/startup_checks.h"
#include "console_process.h"

#include <QCoreApplication>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <vector>

#include <unistd.h>

namespace {
QTextStream out(stdout);

double worstMs(const Latencies& times) {
    return times.micros.empty()
               ? 0.0
               : *std::max_element(times.micros.begin(), times.micros.end()) / 1000.0;
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    raiseOpenFilesLimit();
    ConsoleProcess console;
    if (!openConsole(console, 254))
        return 1;
    const int watcher = identifiedTerminal(console.port(), 200);
    if (watcher < 0) {
        out << "the console did not accept a terminal" << Qt::endl;
        return 1;
    }
    Latencies before;
    bool answered = true;
    for (int i = 0; i < 50; ++i)
        answered &= timedRates(watcher, before);
    const long startKb = console.residentKb();
    long peakKb = startKb;
    out << "console: resident memory " << startKb << " kB; " << before.summary() << Qt::endl;

    // Two storms: the first fills what the console keeps of its bounded message log; after
    // the second its memory must be back where the first left it.
    std::vector<long> afterKb;
    Latencies during, after;
    for (int round = 1; round <= 2; ++round) {
        std::vector<int> held;
        for (unsigned i = 0; i < 2000; ++i) {
            held.push_back(silentConnection(console.port(), 3, i));
            if (i % 100 == 0)
                answered &= timedRates(watcher, during);
        }
        for (unsigned i = 0; i < 40000; ++i) {
            const int fd = silentConnection(console.port(), 4 + i / 20000, i);
            if (fd >= 0)
                ::close(fd);
            if (i % 200 == 0) {
                answered &= timedRates(watcher, during);
                peakKb = std::max(peakKb, console.residentKb());
            }
        }
        for (int fd : held)
            if (fd >= 0)
                ::close(fd);
        QThread::sleep(3);
        for (int i = 0; i < 100; ++i)
            answered &= timedRates(watcher, after);
        afterKb.push_back(console.residentKb());
        out << "storm " << round << " (2000 connections held, 40000 opened and dropped): "
            << "resident memory afterwards " << afterKb.back() << " kB" << Qt::endl;
    }
    out << "during the storms: " << during.summary() << "; console memory peak " << peakKb << " kB"
        << Qt::endl;
    const int newcomer = identifiedTerminal(console.port(), 201);
    const long grownKb = afterKb.back() - afterKb.front();
    out << "afterwards: " << after.summary() << "; resident memory " << afterKb.back() << " kB, "
        << grownKb << " kB more than after the first storm" << Qt::endl;
    out << "a new terminal after the storm: " << (newcomer >= 0 ? "accepted" : "NOT accepted")
        << Qt::endl;
    const double worst = std::max({worstMs(before), worstMs(during), worstMs(after)});
    out << "slowest rates reply: " << worst << " ms" << Qt::endl;
    ::close(watcher);
    return answered && newcomer >= 0 && worst < 50.0 && grownKb < 2048 ? 0 : 1;
}
