// From the bill's Save to the terminal's "OFPS": a console in another process settles a
// session (revenue row and session close in one transaction, "CMTR" and "OFPS", the log
// line) and the terminal, in this process, times how long after the command it is told.
// The command reaches the console through a pipe, a few microseconds of the figure.
#include "console_process.h"

#include <QCoreApplication>
#include <QTextStream>
#include <QThread>

#include <sys/socket.h>
#include <unistd.h>

namespace {
constexpr int Bills = 300;

// Reads until the text ends with `end`; false when the console goes quiet.
bool readUntil(int fd, QByteArray& got, const QByteArray& end) {
    char buffer[512];
    while (!got.endsWith(end)) {
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, MSG_DONTWAIT);
        if (n == 0)
            return false;
        if (n > 0)
            got.append(buffer, n);
    }
    return true;
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    ConsoleProcess console;
    if (!console.start(24))
        return 1;
    const int fd = connectTo(console.port(), "127.0.0.5");
    QByteArray got;
    if (fd < 0 || !readUntil(fd, got, "ACPT")) {
        out << "no connection to the console" << Qt::endl;
        return 1;
    }
    ::send(fd, "AIP5", 4, 0);
    QThread::msleep(100);
    Latencies times;
    for (int i = 0; i < Bills; ++i) {
        const QByteArray log = "LOG W-" + QByteArray::number(i) + ":BENCH;5";
        got.clear();
        ::send(fd, log.constData(), size_t(log.size()), 0);
        if (!readUntil(fd, got, "Log Successful")) {
            out << "the session did not start: " << got << Qt::endl;
            return 1;
        }
        QThread::msleep(5); // the session runs a little
        got.clear();
        const auto start = std::chrono::steady_clock::now();
        console.command("bill 5");
        if (!readUntil(fd, got, "OFPS")) {
            out << "the terminal was not told" << Qt::endl;
            return 1;
        }
        times.add(std::chrono::steady_clock::now() - start);
    }
    ::close(fd);
    out << "bill saved to OFPS at the terminal: " << times.summary() << Qt::endl;
    return 0;
}
