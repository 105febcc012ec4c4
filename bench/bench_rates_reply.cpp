// The rates request ("RTS") answered by a console in another process, one request at a
// time from one identified terminal: the round trip a terminal waits for.
#include "console_process.h"

#include <QCoreApplication>
#include <QTextStream>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
constexpr int WarmUp = 2000;
constexpr int Requests = 20000;

// The whole first answer: what arrives until the line goes quiet for 100 ms.
QByteArray firstAnswer(int fd) {
    QByteArray got;
    char buffer[512];
    pollfd p{fd, POLLIN, 0};
    while (::poll(&p, 1, got.isEmpty() ? 5000 : 100) > 0) {
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n <= 0)
            break;
        got.append(buffer, n);
    }
    return got;
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    ConsoleProcess console;
    if (!console.start(24))
        return 1;
    const int fd = connectTo(console.port());
    char accept[4];
    if (fd < 0 || !readExactly(fd, accept, sizeof accept)) {
        out << "no connection to the console" << Qt::endl;
        return 1;
    }
    ::send(fd, "AIP1", 4, 0);
    ::usleep(100000); // read as a message of its own
    ::send(fd, "RTS", 3, 0);
    const QByteArray reply = firstAnswer(fd);
    if (!reply.startsWith("SRPH ")) {
        out << "unexpected answer to RTS: " << reply << Qt::endl;
        return 1;
    }
    QByteArray buffer(reply.size(), '\0');
    Latencies times;
    for (int i = 0; i < WarmUp + Requests; ++i) {
        const auto start = std::chrono::steady_clock::now();
        if (::send(fd, "RTS", 3, 0) != 3 ||
            !readExactly(fd, buffer.data(), size_t(buffer.size())) || buffer != reply) {
            out << "the console stopped answering" << Qt::endl;
            return 1;
        }
        if (i >= WarmUp)
            times.add(std::chrono::steady_clock::now() - start);
    }
    ::close(fd);
    out << "rates reply \"" << reply
        << "\" from a console in another process, sequential: " << times.summary() << Qt::endl;
    out << "console resident memory: " << console.residentKb() << " kB" << Qt::endl;
    return 0;
}
