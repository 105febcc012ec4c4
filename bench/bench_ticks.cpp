// What one tick of the console's timers costs with a full page of 24 running sessions:
// the board's tick (amounts and time limits of the shown page), the same with the board's
// window bringing its 24 tiles up to date, and the main window's timer (status panels,
// and the board's amounts). Median and 99th percentile over
// thousands of ticks, in microseconds.
#include "base/clock.h"
#include "base/prompts.h"
#include "billing/board_rules.h"
#include "billing/board_window.h"
#include "console/console.h"
#include "server/session_start.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <vector>

namespace {
QString figures(int runs, const std::function<void()>& tick) {
    std::vector<double> micros;
    QElapsedTimer t;
    for (int i = 0; i < runs; ++i) {
        t.start();
        tick();
        micros.push_back(double(t.nsecsElapsed()) / 1000.0);
    }
    std::sort(micros.begin(), micros.end());
    return QStringLiteral("median %1 us, p99 %2 us over %3 ticks")
        .arg(micros[micros.size() / 2], 0, 'f', 1)
        .arg(micros[micros.size() * 99 / 100], 0, 'f', 1)
        .arg(runs);
}
} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTextStream out(stdout);
    QTemporaryDir dir;
    ManualClock clock; // time moves only when the bench moves it, a second a tick
    SilentPrompts prompts;
    AppFolder folder(dir.path());
    Console console(clock, prompts, folder);
    console.openStorage();
    console.startUp(0, dir.filePath(QStringLiteral("odbc.ini")));
    for (int pc = 1; pc <= 24; ++pc) {
        logOnPc(console.sessionParts(), QString::number(pc), QStringLiteral("TRM-%1").arg(pc),
                QStringLiteral("WALK-IN ON TRM %1").arg(pc), -1);
        console.timeLimits().setLimit(pc, pc % 2 ? QStringLiteral("U") : QStringLiteral("600"));
        console.terminals().edit(pc)->timeLimit = console.timeLimits().limit(pc);
    }
    out << "24 sessions running, half with a time limit" << Qt::endl;

    out << "board tick (ATVTmr): " << figures(5000, [&] {
        clock.advance(1000);
        boardTick(console.board(), console.sessionParts(), console.rates());
    }) << Qt::endl;

    MainWindow window(console);
    window.show();
    BoardWindow board(console, window);
    board.show();
    out << "board window tick (ATVTmr, the 24 tiles redrawn): " << figures(5000, [&] {
        clock.advance(1000);
        board.tick();
    }) << Qt::endl;

    out << "main timer tick (MainTmr), with the window's panels: " << figures(5000, [&] {
        clock.advance(250);
        window.mainTimerTick();
    }) << Qt::endl;
    return 0;
}
