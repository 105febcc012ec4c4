// The terminal client's share of a café PC while a session runs: the real tarvoqrb-client
// in a process of its own (offscreen, or on the X display QT_QPA_PLATFORM names), connected to a
// console in another process, with a walk-in's session on its PC. Prints the CPU time the client
// used, read from /proc, as a percentage of one core, locked and then with the meter running, and
// its resident memory. Goal: under 0.5 % of a core and under 60 MB.
#include "console_process.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTextStream>
#include <QThread>

#include <unistd.h>

namespace {
constexpr int Pc = 5;
constexpr int LockedSeconds = 20;
constexpr int RunningSeconds = 45;

// User and system CPU seconds of a process so far; negative when it is gone.
double cpuSeconds(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    // The fields after the name, which is in parentheses and may hold blanks.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return -1;
    const double ticks = double(fields[11].toLongLong() + fields[12].toLongLong());
    return ticks / double(sysconf(_SC_CLK_TCK));
}

// A field of /proc/PID/status in kB ("VmRSS", "VmHWM"); 0 when unknown.
long statusKb(qint64 pid, const QByteArray& field) {
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly | QIODevice::Text))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field + ':'))
            return line.mid(field.size() + 1).simplified().split(' ').value(0).toLong();
    return 0;
}

template <typename F> bool waitUntil(F condition, int ms) {
    QElapsedTimer t;
    t.start();
    while (!condition()) {
        if (t.elapsed() > ms)
            return false;
        QThread::msleep(100);
    }
    return true;
}

struct Sample {
    double cpu = 0;
    double seconds = 0;
    long rssKb = 0;
};

// CPU over the next `seconds`, and the resident memory, sampled every second.
Sample measure(qint64 pid, int seconds) {
    Sample s;
    const double before = cpuSeconds(pid);
    QElapsedTimer wall;
    wall.start();
    for (int i = 0; i < seconds; ++i) {
        QThread::sleep(1);
        s.rssKb = qMax(s.rssKb, statusKb(pid, "VmRSS"));
    }
    s.cpu = cpuSeconds(pid) - before;
    s.seconds = double(wall.elapsed()) / 1000.0;
    return s;
}

QString line(const char* what, const Sample& s) {
    return QStringLiteral("client %1: CPU %2 s over %3 s = %4 % of one core; resident %5 MB")
        .arg(QLatin1String(what))
        .arg(s.cpu, 0, 'f', 3)
        .arg(s.seconds, 0, 'f', 1)
        .arg(100.0 * s.cpu / s.seconds, 0, 'f', 3)
        .arg(double(s.rssKb) / 1024.0, 0, 'f', 1);
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    ConsoleProcess console;
    if (!console.start(24))
        return 1;

    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    db.setDatabaseName(console.dataFolder() + QStringLiteral("/TarvoQRBDB.MDB"));
    db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db.open()) {
        out << "cannot read the console's database" << Qt::endl;
        return 1;
    }
    auto count = [&](const QString& sql) {
        QSqlQuery q(db);
        return q.exec(sql) && q.next() ? q.value(0).toInt() : 0;
    };

    const QString program =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../tools/client/tarvoqrb-client");
    QProcess client;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    // Offscreen unless told otherwise (QT_QPA_PLATFORM=xcb under xvfb-run: the client
    // then draws on a real X display and holds its keyboard and pointer).
    if (!env.contains(QStringLiteral("QT_QPA_PLATFORM")))
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    client.setProcessEnvironment(env);
    client.setProcessChannelMode(QProcess::ForwardedChannels);
    client.start(program, {QStringLiteral("--console"), QStringLiteral("127.0.0.1"),
                           QStringLiteral("--port"), QString::number(console.port()),
                           QStringLiteral("--pc"), QString::number(Pc), QStringLiteral("--bind"),
                           QStringLiteral("127.0.0.%1").arg(Pc), QStringLiteral("--cafe"),
                           QStringLiteral("Bench Café")});
    if (!client.waitForStarted(10000)) {
        out << "cannot start " << program << Qt::endl;
        return 1;
    }
    const qint64 pid = client.processId();
    if (!waitUntil(
            [&] {
                return count(QStringLiteral("SELECT count(*) FROM SrvIPTable WHERE PCno = %1 AND "
                                            "Status <> 0")
                                 .arg(Pc)) == 1;
            },
            20000)) {
        out << "the client did not identify itself to the console" << Qt::endl;
        return 1;
    }
    QThread::sleep(3); // settled: rates and products in, the lock screen drawn
    out << "client on line as PC " << Pc << ", locked; measuring " << LockedSeconds << " s..."
        << Qt::endl;
    const Sample locked = measure(pid, LockedSeconds);
    out << line("locked", locked) << Qt::endl;

    console.command("start " + QByteArray::number(Pc));
    if (!waitUntil(
            [&] {
                return count(QStringLiteral("SELECT count(*) FROM templog WHERE aindex = %1")
                                 .arg(Pc)) == 1;
            },
            10000)) {
        out << "the session did not start" << Qt::endl;
        return 1;
    }
    QThread::sleep(3);
    out << "session running, meter shown; measuring " << RunningSeconds << " s..." << Qt::endl;
    const Sample running = measure(pid, RunningSeconds);
    out << line("with a session", running) << Qt::endl;
    out << QStringLiteral("client peak resident memory: %1 MB")
               .arg(double(statusKb(pid, "VmHWM")) / 1024.0, 0, 'f', 1)
        << Qt::endl;
    const bool alive = cpuSeconds(pid) >= 0;
    client.terminate();
    client.waitForFinished(5000);
    if (!alive) {
        out << "the client ended during the measurement" << Qt::endl;
        return 1;
    }
    return 0;
}
