// A console core and a swarm of 254 terminals on loopback, each from its own address
// 127.0.0.x. Prints how long they take to connect and be identified, the round-trip
// time of the rates request under load and alone, and the process's resident memory.
// The terminals run on a thread of their own, so that the console's thread does only
// the console's work, as in the real program.
#include "terminal_client.h"

#include "base/app_folder.h"
#include "base/clock.h"
#include "base/prompts.h"
#include "console/console.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr int Terminals = 254;
constexpr int LoadedRequests = 100000;
constexpr int LoneRequests = 10000;
constexpr int GiveUpAfterMs = 240000;

QTextStream& out() {
    static QTextStream stream(stdout);
    return stream;
}

QString residentMemory() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly | QIODevice::Text))
        return QStringLiteral("unknown");
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return QString::fromLatin1(line.mid(6).simplified());
    return QStringLiteral("unknown");
}

// The terminals' side; every member runs on the swarm thread.
class Swarm : public QObject {
public:
    std::function<void(int accepted)> onAllAccepted;
    std::function<void(std::vector<qint64> nanoseconds, qint64 elapsedMs)> onRequestsDone;

    void connectAll(quint16 port) {
        for (int k = 1; k <= Terminals; ++k) {
            auto* t = new TerminalClient(this);
            t->setPcNumber(k);
            t->setAutoAnswer(false);
            t->setInboxLimit(0);
            connect(t, &TerminalClient::messageReceived, this,
                    [this, t](const QByteArray& m) { onMessage(t, m); });
            t->connectToConsole(QStringLiteral("127.0.0.1"), port,
                                QHostAddress(QStringLiteral("127.0.0.%1").arg(k)));
            clients_.push_back(t);
            started_.emplace_back();
        }
    }

    // `total` rates requests over the first `concurrency` terminals, each with one
    // request outstanding at a time.
    void request(int total, int concurrency) {
        total_ = total;
        sent_ = 0;
        latencies_.clear();
        latencies_.reserve(size_t(total));
        clock_.start();
        for (int i = 0; i < concurrency && sent_ < total_; ++i)
            send(i);
    }

private:
    void send(int i) {
        ++sent_;
        started_[size_t(i)].start();
        clients_[size_t(i)]->requestRates();
    }

    void onMessage(TerminalClient* t, const QByteArray& m) {
        const int i = t->pcNumber() - 1;
        if (m == "ACPT") {
            t->identify();
            if (++accepted_ == Terminals && onAllAccepted)
                onAllAccepted(accepted_);
        } else if (m.startsWith("SRPH")) {
            latencies_.push_back(started_[size_t(i)].nsecsElapsed());
            if (sent_ < total_)
                send(i);
            else if (qsizetype(latencies_.size()) == total_ && onRequestsDone)
                onRequestsDone(latencies_, clock_.elapsed());
        }
    }

    std::vector<TerminalClient*> clients_;
    std::vector<QElapsedTimer> started_;
    std::vector<qint64> latencies_;
    QElapsedTimer clock_;
    int accepted_ = 0;
    int total_ = 0;
    int sent_ = 0;
};

QString micros(qint64 ns) {
    return QString::number(double(ns) / 1000.0, 'f', 1) + " us";
}

void printLatencies(const QString& title, std::vector<qint64> ns, qint64 elapsedMs) {
    std::sort(ns.begin(), ns.end());
    auto at = [&](double q) {
        return ns[std::min(ns.size() - 1, size_t(q * double(ns.size())))];
    };
    out() << title << ": " << ns.size() << " requests in " << elapsedMs << " ms ("
          << qint64(double(ns.size()) * 1000.0 / double(qMax<qint64>(1, elapsedMs)))
          << " per second); round trip p50 " << micros(at(0.50)) << ", p99 " << micros(at(0.99))
          << ", max " << micros(ns.back()) << Qt::endl;
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    if (!dir.isValid()) {
        out() << "bench_swarm: no temporary folder" << Qt::endl;
        return 1;
    }
    {
        QFile settings(dir.filePath(QStringLiteral("TarvoQRB.INI")));
        if (!settings.open(QIODevice::WriteOnly))
            return 1;
        settings.write("254=NOFPC\n1=PAGE\nPlease don't Modify....\n");
    }
    SystemClock clock;
    SilentPrompts prompts;
    AppFolder folder(dir.path());
    Console console(clock, prompts, folder);
    console.openStorage();
    console.startUp(0, dir.filePath(QStringLiteral("odbc.ini")));
    const quint16 port = console.server().port();
    out() << "console on port " << port << " with " << console.terminals().count()
          << " terminals; resident memory " << residentMemory() << Qt::endl;

    QTimer::singleShot(GiveUpAfterMs, &app, [] {
        out() << "bench_swarm: gave up after " << GiveUpAfterMs / 1000 << " s" << Qt::endl;
        QCoreApplication::exit(1);
    });

    QThread thread;
    auto* swarm = new Swarm;
    swarm->moveToThread(&thread);
    QObject::connect(&thread, &QThread::finished, swarm, &QObject::deleteLater);
    thread.start();

    QElapsedTimer connecting;
    auto onMain = [&app](std::function<void()> f) {
        QMetaObject::invokeMethod(&app, std::move(f), Qt::QueuedConnection);
    };
    auto onSwarm = [swarm](std::function<void()> f) {
        QMetaObject::invokeMethod(swarm, std::move(f), Qt::QueuedConnection);
    };

    // Identified means the console has the terminal on line; the console's own table
    // says so, read on the console's thread.
    QTimer watch;
    watch.setInterval(1);
    QObject::connect(&watch, &QTimer::timeout, &app, [&] {
        for (int p = 1; p <= Terminals; ++p)
            if (!console.terminals().at(p).online)
                return;
        watch.stop();
        out() << "all " << Terminals << " terminals connected and identified in "
              << connecting.elapsed() << " ms; resident memory " << residentMemory() << Qt::endl;
        onSwarm([&, swarm] { swarm->request(LoadedRequests, Terminals); });
    });

    int phase = 0;
    swarm->onRequestsDone = [&, swarm](std::vector<qint64> ns, qint64 ms) {
        onMain([&, ns = std::move(ns), ms, swarm]() mutable {
            if (phase++ == 0) {
                printLatencies(QStringLiteral("RTS under load (one outstanding per terminal, "
                                              "254 at once)"),
                               std::move(ns), ms);
                onSwarm([swarm] { swarm->request(LoneRequests, 1); });
            } else {
                printLatencies(QStringLiteral("RTS alone (one terminal, sequential)"),
                               std::move(ns), ms);
                out() << "resident memory at the end (console and the 254 terminals): "
                      << residentMemory() << Qt::endl;
                QCoreApplication::quit();
            }
        });
    };

    connecting.start();
    watch.start();
    onSwarm([swarm, port] { swarm->connectAll(port); });
    const int code = QCoreApplication::exec();
    thread.quit();
    thread.wait();
    return code;
}
