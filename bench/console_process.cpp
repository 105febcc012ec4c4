#include "console_process.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>
#include <QThread>

#include <algorithm>

#include <cerrno>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

ConsoleProcess::~ConsoleProcess() {
    if (process_.state() == QProcess::NotRunning)
        return;
    process_.closeWriteChannel();
    if (!process_.waitForFinished(5000)) {
        process_.kill();
        process_.waitForFinished(5000);
    }
}

void ConsoleProcess::attach(quint16 port, const QString& dataFolder, qint64 pid) {
    port_ = port;
    data_ = dataFolder;
    pid_ = pid;
}

int ConsoleProcess::openFiles() const {
    const QDir fds(QStringLiteral("/proc/%1/fd").arg(pid_));
    return fds.exists() ? int(fds.entryList(QDir::Files | QDir::System).size()) : -1;
}

bool ConsoleProcess::start(int terminals, bool window) {
    const QString program =
        QCoreApplication::applicationDirPath() + QStringLiteral("/tarvo-bench-console");
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList arguments = {QStringLiteral("--terminals"), QString::number(terminals)};
    if (window)
        arguments << QStringLiteral("--window");
    process_.start(program, arguments);
    QTextStream err(stderr);
    if (!process_.waitForStarted(10000)) {
        err << "cannot start " << program << Qt::endl;
        return false;
    }
    pid_ = process_.processId();
    while (port_ == 0 || data_.isEmpty()) {
        if (!process_.canReadLine() && !process_.waitForReadyRead(20000)) {
            err << "the console did not say its port" << Qt::endl;
            return false;
        }
        while (process_.canReadLine()) {
            const QString line = QString::fromUtf8(process_.readLine()).trimmed();
            if (line.startsWith(QStringLiteral("port ")))
                port_ = quint16(line.mid(5).toUInt());
            else if (line.startsWith(QStringLiteral("data ")))
                data_ = line.mid(5);
        }
    }
    return true;
}

long ConsoleProcess::residentKb() const {
    QFile status(QStringLiteral("/proc/%1/status").arg(pid_));
    if (!status.open(QIODevice::ReadOnly | QIODevice::Text))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).simplified().split(' ').value(0).toLong();
    return 0;
}

int connectTo(quint16 port, const char* local) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0)
        return -1;
    const int one = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    sockaddr_in from{};
    from.sin_family = AF_INET;
    ::inet_pton(AF_INET, local, &from.sin_addr);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    ::inet_pton(AF_INET, "127.0.0.1", &to.sin_addr);
    if (::bind(fd, reinterpret_cast<sockaddr*>(&from), sizeof from) != 0 ||
        ::connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

bool readExactly(int fd, char* buffer, size_t expected) {
    // Spins rather than sleeps: a sleeping reader measures how long an idle CPU takes to
    // wake up, not how long the console takes to answer.
    size_t got = 0;
    const auto start = std::chrono::steady_clock::now();
    while (got < expected) {
        const ssize_t n = ::recv(fd, buffer + got, expected - got, MSG_DONTWAIT);
        if (n == 0)
            return false;
        if (n > 0) {
            got += size_t(n);
            continue;
        }
        if (errno != EAGAIN && errno != EWOULDBLOCK)
            return false;
        if (std::chrono::steady_clock::now() - start > std::chrono::seconds(10))
            return false;
    }
    return true;
}

QString Latencies::summary() {
    if (micros.empty())
        return QStringLiteral("no requests");
    std::sort(micros.begin(), micros.end());
    auto at = [&](double q) {
        return micros[std::min(micros.size() - 1, size_t(q * double(micros.size())))];
    };
    return QStringLiteral("%1 requests; p50 %2 us, p90 %3 us, p99 %4 us, max %5 us")
        .arg(micros.size())
        .arg(at(0.50), 0, 'f', 1)
        .arg(at(0.90), 0, 'f', 1)
        .arg(at(0.99), 0, 'f', 1)
        .arg(micros.back(), 0, 'f', 1);
}

int identifiedTerminal(quint16 port, int pc) {
    const QByteArray address = "127.0.0." + QByteArray::number(pc);
    const int fd = connectTo(port, address.constData());
    char accept[4];
    if (fd < 0 || !readExactly(fd, accept, 4))
        return -1;
    const QByteArray aip = "AIP" + QByteArray::number(pc);
    ::send(fd, aip.constData(), size_t(aip.size()), 0);
    QThread::msleep(50); // read as a message of its own
    return fd;
}

bool openConsole(ConsoleProcess& console, int terminals, bool window) {
    QCommandLineParser parser;
    const QCommandLineOption port(QStringLiteral("port"), QStringLiteral("Console port."),
                                  QStringLiteral("P"));
    const QCommandLineOption data(QStringLiteral("data"), QStringLiteral("Its data folder."),
                                  QStringLiteral("DIR"));
    const QCommandLineOption pid(QStringLiteral("pid"), QStringLiteral("Its process id."),
                                 QStringLiteral("PID"));
    parser.addOptions({port, data, pid});
    parser.process(*QCoreApplication::instance());
    if (!parser.isSet(port))
        return console.start(terminals, window);
    console.attach(quint16(parser.value(port).toUInt()), parser.value(data),
                   parser.value(pid).toLongLong());
    return true;
}

int silentConnection(quint16 port, unsigned net, unsigned n) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return -1;
    sockaddr_in from{};
    from.sin_family = AF_INET;
    from.sin_addr.s_addr = htonl((127u << 24) | (net << 16) | (n % 65000u + 1u));
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(fd, reinterpret_cast<sockaddr*>(&from), sizeof from);
    ::connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to);
    return fd;
}

bool timedRates(int fd, Latencies& times) {
    char reply[16]; // "SRPH 20.:30.;10."
    const auto start = std::chrono::steady_clock::now();
    if (::send(fd, "RTS", 3, MSG_NOSIGNAL) != 3 || !readExactly(fd, reply, sizeof reply))
        return false;
    times.add(std::chrono::steady_clock::now() - start);
    return true;
}
