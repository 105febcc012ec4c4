#pragma once

#include <QProcess>
#include <QString>

#include <chrono>
#include <vector>

// The headless console (tarvo-bench-console) in a process of its own, so that what a
// benchmark measures is a reply crossing real sockets between two processes.
class ConsoleProcess {
public:
    ~ConsoleProcess();
    // Starts it with this many terminals (and its window); false, said on stderr, when it
    // does not come up.
    bool start(int terminals, bool window = false);
    // Or measures a console already running (the real program), by its port, data folder
    // and process id.
    void attach(quint16 port, const QString& dataFolder, qint64 pid);
    qint64 pid() const { return pid_; }
    // Open file descriptors of the console process (connections among them), -1 when unknown.
    int openFiles() const;
    quint16 port() const { return port_; }
    QString dataFolder() const { return data_; }
    // A line for the console's input ("bill 5").
    void command(const QByteArray& line) {
        process_.write(line + '\n');
        process_.waitForBytesWritten(1000);
    }
    // The console process's resident memory in kB, 0 when unknown.
    long residentKb() const;

private:
    QProcess process_;
    quint16 port_ = 0;
    QString data_;
    qint64 pid_ = 0;
};

// The console a benchmark measures: the real program named by --port, --data and --pid
// (as the long tests run it), else a headless one of its own with this many terminals.
// False, said on stderr, when it does not come up.
bool openConsole(ConsoleProcess& console, int terminals, bool window = false);

// A connection from 127.<net>.x.y that is opened and says nothing; -1 when no socket could
// be made.
int silentConnection(quint16 port, unsigned net, unsigned n);

// A blocking loopback connection with Nagle off, bound to `local` (e.g. "127.0.0.5").
// -1 when it cannot connect.
int connectTo(quint16 port, const char* local = "127.0.0.1");
// An identified terminal from 127.0.0.pc, its "AIP" read as a message of its own; -1 when
// the console did not accept it.
int identifiedTerminal(quint16 port, int pc);
// Reads until `expected` bytes have arrived; false on error or end of stream.
bool readExactly(int fd, char* buffer, size_t expected);

// Round-trip times in microseconds and how they are printed.
struct Latencies {
    std::vector<double> micros;
    void add(std::chrono::steady_clock::duration d) {
        micros.push_back(std::chrono::duration<double, std::micro>(d).count());
    }
    // "n requests; p50 x us, p90 y us, p99 z us, max w us"
    QString summary();
};

// One rates request and its whole answer, timed into `times`; false when none came.
bool timedRates(int fd, Latencies& times);
