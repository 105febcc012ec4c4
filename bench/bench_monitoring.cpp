// What the monitoring windows cost while terminals talk: one message logged and drawn in
// the message window, as the log grows past its megabyte and lets old entries go; and one
// tick of the terminal listing with 254 terminals on line. Median and 99th percentile,
// in microseconds, with the console's memory at the end.
#include "base/clock.h"
#include "base/prompts.h"
#include "console/console.h"
#include "people/listing_window.h"
#include "server/session_start.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <vector>

namespace {
QString figures(std::vector<double> micros, const QString& what) {
    std::sort(micros.begin(), micros.end());
    return QStringLiteral("median %1 us, p99 %2 us, max %3 us over %4 %5")
        .arg(micros[micros.size() / 2], 0, 'f', 1)
        .arg(micros[micros.size() * 99 / 100], 0, 'f', 1)
        .arg(micros.back(), 0, 'f', 1)
        .arg(micros.size())
        .arg(what);
}

long residentKb() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    return -1;
}
} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTextStream out(stdout);
    QTemporaryDir dir;
    ManualClock clock;
    SilentPrompts prompts;
    AppFolder folder(dir.path());
    QFile settings(dir.filePath(QStringLiteral("TarvoQRB.INI")));
    if (!settings.open(QIODevice::WriteOnly) || settings.write("254=NOFPC\n") < 0)
        return 1;
    settings.close();
    Console console(clock, prompts, folder);
    console.openStorage();
    console.startUp(0, dir.filePath(QStringLiteral("odbc.ini")));
    MainWindow window(console);
    window.setModalShowsBlock(false);
    window.resize(1366, 768);
    window.show();
    window.showMessages(false);
    out << "resident memory at the start: " << residentKb() << " kB" << Qt::endl;

    // Lines of 120 characters: the log holds about 4,300 of them before it lets go.
    const QString line = QStringLiteral("TXT ") + QString(116, QLatin1Char('m'));
    const int messages = 40000;
    std::vector<double> micros;
    QElapsedTimer t;
    for (int i = 0; i < messages; ++i) {
        clock.advance(7);
        t.start();
        console.messageLog().logMessage(line);
        QCoreApplication::processEvents(); // the window comes forward and draws
        micros.push_back(double(t.nsecsElapsed()) / 1000.0);
    }
    out << "message logged and shown, the first 500: "
        << figures({micros.begin(), micros.begin() + 500}, QStringLiteral("messages")) << Qt::endl;
    out << "message logged and shown, log full: "
        << figures({micros.end() - 20000, micros.end()},
                   QStringLiteral("messages (log kept at %1 entries)")
                       .arg(console.messageLog().entries().size()))
        << Qt::endl;

    for (int pc = 1; pc <= 254; ++pc) {
        if (pc % 3 == 0)
            logOnPc(console.sessionParts(), QString::number(pc), QStringLiteral("TRM-%1").arg(pc),
                    QStringLiteral("WALK-IN ON TRM %1").arg(pc), -1);
        console.terminals().edit(pc)->online = true;
    }
    openListing(console, window, 254);
    auto* listing = window.findChild<ListingWindow*>(QStringLiteral("frmTabList"));
    if (!listing)
        return 1;
    micros.clear();
    for (int i = 0; i < 2000; ++i) {
        clock.advance(1000);
        t.start();
        listing->tick();
        QCoreApplication::processEvents();
        micros.push_back(double(t.nsecsElapsed()) / 1000.0);
    }
    out << "listing tick (Tabtmr), 254 terminals on line, 84 sessions: "
        << figures(micros, QStringLiteral("ticks")) << Qt::endl;
    out << "resident memory at the end: " << residentKb() << " kB" << Qt::endl;
    return 0;
}
