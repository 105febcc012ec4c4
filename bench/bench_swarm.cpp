// 254 terminals, each from its own address 127.0.0.k, against a console in another
// process: how long they take to be accepted and identified (the console's registry
// read from its database file), the round trip of the rates request with all 254
// asking at once, and the console's resident memory.
#include "console_process.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTextStream>
#include <QThread>

#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
constexpr int Terminals = 254;
constexpr int LoadedRequests = 100000;
constexpr int GiveUpAfterMs = 60000;
using Clock = std::chrono::steady_clock;

struct Terminal {
    int fd = -1;
    QByteArray in;
    bool accepted = false;
    Clock::time_point sent;
};

int openTerminal(quint16 port, int k) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    const int one = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    sockaddr_in from{};
    from.sin_family = AF_INET;
    from.sin_addr.s_addr = htonl((127u << 24) | unsigned(k));
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(fd, reinterpret_cast<sockaddr*>(&from), sizeof from) != 0)
        return -1;
    ::connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to); // completes in the poll loop
    return fd;
}

long msSince(Clock::time_point t) {
    return long(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

// Reads what is waiting on every readable terminal; calls `take` for each one that read.
template <typename F> bool pump(std::vector<Terminal>& terminals, F&& take) {
    std::vector<pollfd> fds;
    for (const Terminal& t : terminals)
        fds.push_back({t.fd, POLLIN, 0});
    if (::poll(fds.data(), fds.size(), 1000) < 0)
        return false;
    char buffer[4096];
    for (size_t i = 0; i < fds.size(); ++i) {
        if (!(fds[i].revents & (POLLIN | POLLERR | POLLHUP)))
            continue;
        const ssize_t n = ::recv(fds[i].fd, buffer, sizeof buffer, 0);
        if (n <= 0)
            return false;
        terminals[i].in.append(buffer, n);
        take(int(i));
    }
    return true;
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    ConsoleProcess console;
    if (!console.start(Terminals))
        return 1;
    out << "console with " << Terminals << " terminals; resident memory " << console.residentKb()
        << " kB" << Qt::endl;

    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    db.setDatabaseName(console.dataFolder() + QStringLiteral("/TarvoQRBDB.MDB"));
    db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db.open()) {
        out << "cannot read the console's database" << Qt::endl;
        return 1;
    }
    auto online = [&] {
        QSqlQuery q(db);
        return q.exec(QStringLiteral("SELECT count(*) FROM SrvIPTable WHERE Status <> 0")) &&
                       q.next()
                   ? q.value(0).toInt()
                   : -1;
    };

    const auto start = Clock::now();
    std::vector<Terminal> terminals(Terminals);
    for (int k = 1; k <= Terminals; ++k)
        terminals[size_t(k - 1)].fd = openTerminal(console.port(), k);
    int accepted = 0;
    while (accepted < Terminals && msSince(start) < GiveUpAfterMs) {
        const bool ok = pump(terminals, [&](int i) {
            Terminal& t = terminals[size_t(i)];
            if (!t.accepted && t.in.contains("ACPT")) {
                t.accepted = true;
                t.in.clear();
                ++accepted;
                const QByteArray aip = "AIP" + QByteArray::number(i + 1);
                ::send(t.fd, aip.constData(), size_t(aip.size()), 0);
            }
        });
        if (!ok)
            break;
    }
    const long acceptedMs = msSince(start);
    while (online() < Terminals && msSince(start) < GiveUpAfterMs)
        QThread::usleep(500);
    const long identifiedMs = msSince(start);
    out << QStringLiteral("%1 of %2 accepted in %3 ms; %4 identified (on line in the registry) "
                          "in %5 ms; console resident memory %6 kB")
               .arg(accepted)
               .arg(Terminals)
               .arg(acceptedMs)
               .arg(online())
               .arg(identifiedMs)
               .arg(console.residentKb())
        << Qt::endl;

    // Every terminal keeps one rates request outstanding until the total is reached.
    constexpr qsizetype ReplyBytes = 16; // "SRPH 20.:30.;10."
    Latencies times;
    int sent = 0;
    auto ask = [&](Terminal& t) {
        ++sent;
        t.in.clear();
        t.sent = Clock::now();
        ::send(t.fd, "RTS", 3, 0);
    };
    const auto loadStart = Clock::now();
    for (Terminal& t : terminals)
        ask(t);
    while (times.micros.size() < size_t(LoadedRequests) && msSince(loadStart) < GiveUpAfterMs) {
        const bool ok = pump(terminals, [&](int i) {
            Terminal& t = terminals[size_t(i)];
            if (t.in.size() < ReplyBytes)
                return;
            times.add(Clock::now() - t.sent);
            if (sent < LoadedRequests)
                ask(t);
        });
        if (!ok)
            break;
    }
    const long loadMs = msSince(loadStart);
    out << QStringLiteral("RTS with %1 terminals asking at once: %2 per second; ")
               .arg(Terminals)
               .arg(qint64(double(times.micros.size()) * 1000.0 / double(qMax(1L, loadMs))))
        << times.summary() << Qt::endl;
    out << "console resident memory at the end: " << console.residentKb() << " kB" << Qt::endl;
    for (Terminal& t : terminals)
        ::close(t.fd);
    return 0;
}
