// What hostile programs on the café's network do to a console in another process, and
// what the console still answers meanwhile: 10,000 connections that never identify, a
// flood of 60 kB notices, and a terminal that asks for a large product list thousands of
// times without reading. Prints the connections held at the peak, the rates reply during
// each attack, the console's peak memory, and the database's integrity check at the end.
// With --port P --data DIR --pid PID it attacks a console already running (the real
// program) instead of starting one.
#include "console/startup_checks.h"
#include "console_process.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTextStream>
#include <QThread>

#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
QTextStream out(stdout);

QString rtsDuring(const char* what, Latencies& times) {
    return QStringLiteral("RTS during %1: ").arg(QLatin1String(what)) + times.summary();
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    raiseOpenFilesLimit();
    ConsoleProcess console;
    if (!openConsole(console, 254, true))
        return 1;
    const long startKb = console.residentKb();
    out << "console: resident memory " << startKb << " kB, " << console.openFiles() << " open files"
        << Qt::endl;
    const int watcher = identifiedTerminal(console.port(), 200);
    if (watcher < 0) {
        out << "the console did not accept a terminal" << Qt::endl;
        return 1;
    }

    // 1. Connections that never identify.
    {
        Latencies times;
        std::vector<int> silent;
        int peakFiles = 0;
        for (int i = 0; i < 10000; ++i) {
            const int fd = silentConnection(console.port(), 2, unsigned(i));
            silent.push_back(fd);
            if (i % 250 == 0) {
                timedRates(watcher, times);
                peakFiles = std::max(peakFiles, console.openFiles());
            }
        }
        QThread::sleep(1);
        peakFiles = std::max(peakFiles, console.openFiles());
        out << "10000 connections that never identify: the console held at most " << peakFiles
            << " open files; " << rtsDuring("the flood", times) << Qt::endl;
        for (int fd : silent)
            ::close(fd);
    }

    // 2. A flood of 60 kB notices from one terminal.
    {
        const int pc7 = identifiedTerminal(console.port(), 7);
        const QByteArray notice = "EMT " + QByteArray(60 * 1024, 'n');
        Latencies times;
        for (int i = 0; i < 200; ++i) {
            ::send(pc7, notice.constData(), size_t(notice.size()), 0);
            timedRates(watcher, times);
        }
        for (int i = 0; i < 50; ++i) {
            timedRates(watcher, times);
        }
        out << "200 notices of 60 kB: " << rtsDuring("the flood", times) << Qt::endl;
        ::close(pc7);
    }

    // 3. A terminal that asks for a 231 kB product list and never reads.
    {
        QFile products(console.dataFolder() + QStringLiteral("/Products.LST"));
        if (products.open(QIODevice::WriteOnly)) {
            for (int i = 0; i < 4000; ++i)
                products.write("Instant noodles with egg and a long description @ 35.00\n");
            products.close();
        }
        const int pc9 = identifiedTerminal(console.port(), 9);
        const int tiny = 4096;
        ::setsockopt(pc9, SOL_SOCKET, SO_RCVBUF, &tiny, sizeof tiny);
        long peakKb = console.residentKb();
        int sent = 0;
        bool cut = false;
        Latencies times;
        for (; sent < 3000 && !cut; ++sent) {
            if (::send(pc9, "PLS", 3, MSG_NOSIGNAL) != 3)
                cut = true;
            pollfd p{pc9, POLLRDHUP, 0};
            cut |= ::poll(&p, 1, 0) > 0 && (p.revents & (POLLRDHUP | POLLHUP | POLLERR));
            QThread::usleep(1000);
            if (sent % 50 == 0) {
                peakKb = std::max(peakKb, console.residentKb());
                timedRates(watcher, times);
            }
        }
        peakKb = std::max(peakKb, console.residentKb());
        out << "slow reader: " << (cut ? "cut off" : "NOT cut off") << " after " << sent
            << " requests; console memory " << startKb << " kB at the start, " << peakKb
            << " kB at the peak; " << rtsDuring("it", times) << Qt::endl;
        ::close(pc9);
    }

    // 4. Still answering, and the database whole.
    Latencies after;
    for (int i = 0; i < 200; ++i) {
        timedRates(watcher, after);
    }
    out << "afterwards: " << rtsDuring("quiet", after) << "; resident memory "
        << console.residentKb() << " kB" << Qt::endl;
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    db.setDatabaseName(console.dataFolder() + QStringLiteral("/TarvoQRBDB.MDB"));
    db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=5000"));
    QString check = QStringLiteral("cannot open");
    if (db.open()) {
        QSqlQuery q(db);
        check = q.exec(QStringLiteral("PRAGMA integrity_check")) && q.next()
                    ? q.value(0).toString()
                    : QStringLiteral("no answer");
    }
    out << "database integrity check: " << check << Qt::endl;
    ::close(watcher);
    return check == QLatin1String("ok") && !after.micros.empty() ? 0 : 1;
}
