// CPU and memory of an idle console: the main window open, 24 terminals connected
// (a tarvoqrb-terminal swarm in its own process), 10 sessions running. Prints the CPU
// time the console used over 30 seconds as a percentage of one core, and its resident
// memory.
#include "base/clock.h"
#include "base/prompts.h"
#include "console/console.h"
#include "server/session_start.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <sys/resource.h>

namespace {
double cpuSeconds() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

// Runs the event loop until the condition holds or the time is up.
template <typename F> bool waitUntil(F condition, int ms) {
    QElapsedTimer t;
    t.start();
    while (!condition()) {
        if (t.elapsed() > ms)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    }
    return true;
}

void runEventLoopFor(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

QString residentMemory() {
    QFile f(QStringLiteral("/proc/self/status"));
    if (!f.open(QIODevice::ReadOnly))
        return QStringLiteral("unknown");
    for (const QByteArray& line : f.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return QString::fromLatin1(line.mid(6).trimmed());
    return QStringLiteral("unknown");
}
} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTextStream out(stdout);

    QTemporaryDir dir;
    SystemClock clock;
    SilentPrompts prompts;
    AppFolder folder(dir.path());
    Console console(clock, prompts, folder);
    console.openStorage();
    console.startUp(0, dir.filePath(QStringLiteral("odbc.ini")));
    console.currentOperator().name = QStringLiteral("BENCH");
    console.currentOperator().type = QStringLiteral("Admin");

    MainWindow window(console);
    window.show();
    window.finishLoading();

    const QString terminal = QCoreApplication::applicationDirPath() +
                             QStringLiteral("/../tools/terminal/tarvoqrb-terminal");
    QProcess swarm;
    swarm.start(terminal, {QStringLiteral("--port"), QString::number(console.server().port()),
                           QStringLiteral("--swarm"), QStringLiteral("24"),
                           QStringLiteral("--swarm-seconds"), QStringLiteral("60")});
    if (!swarm.waitForStarted(5000)) {
        out << "cannot start " << terminal << Qt::endl;
        return 1;
    }
    auto identified = [&] {
        for (int pc = 1; pc <= 24; ++pc)
            if (console.control().socketOfPc(pc) == -1)
                return false;
        return true;
    };
    if (!waitUntil(identified, 30000)) {
        out << "the 24 terminals did not all identify themselves" << Qt::endl;
        return 1;
    }
    for (int pc = 1; pc <= 10; ++pc)
        logOnPc(console.sessionParts(), QString::number(pc), QStringLiteral("TRM-%1").arg(pc),
                QStringLiteral("WALK-IN ON TRM %1").arg(pc), console.control().socketOfPc(pc));
    out << "24 terminals connected, " << console.terminals().loggedCount()
        << " sessions running; measuring 30 s of idling..." << Qt::endl;

    const double cpuBefore = cpuSeconds();
    QElapsedTimer wall;
    wall.start();
    runEventLoopFor(30000);
    const double cpu = cpuSeconds() - cpuBefore;
    const double seconds = double(wall.elapsed()) / 1000.0;

    out << QStringLiteral("console CPU: %1 s over %2 s = %3 % of one core")
               .arg(cpu, 0, 'f', 3)
               .arg(seconds, 0, 'f', 1)
               .arg(100.0 * cpu / seconds, 0, 'f', 2)
        << Qt::endl;
    out << "console resident memory: " << residentMemory() << Qt::endl;
    swarm.kill();
    swarm.waitForFinished(5000);
    return 0;
}
