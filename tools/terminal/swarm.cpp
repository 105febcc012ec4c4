#include "swarm.h"

#include "protocol/protocol.h"
#include "terminal_client.h"
#include "traffic_log.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <memory>
#include <vector>

namespace {

// A timer waits at most about 24 days at once; longer runs wait a day at a time.
void quitAfter(qint64 ms) {
    constexpr qint64 Day = 24 * 3600 * 1000;
    QTimer::singleShot(int(qMin(ms, Day)), QCoreApplication::instance(), [ms] {
        if (ms > Day)
            quitAfter(ms - Day);
        else
            QCoreApplication::quit();
    });
}

} // namespace

int runSwarm(const SwarmOptions& options) {
    const int count = options.count;
    std::vector<std::unique_ptr<TerminalClient>> swarm;
    QElapsedTimer clock;
    clock.start();
    for (int k = 1; k <= count; ++k) {
        auto t = std::make_unique<TerminalClient>();
        t->setPcNumber(k);
        t->setObey(options.obey);
        t->setInboxLimit(100);
        reportTraffic(*t, QStringLiteral("[PC %1] ").arg(k));
        if (!t->connectToConsole(options.host, options.port,
                                 QHostAddress(QStringLiteral("127.0.0.%1").arg(k))))
            say(QStringLiteral("[PC %1] cannot bind to 127.0.0.%1: %2").arg(k).arg(t->lastError()));
        swarm.push_back(std::move(t));
    }
    // Each identifies as soon as the console has accepted it.
    const QByteArray accept = Msg::accept();
    int accepted = 0;
    for (auto& t : swarm) {
        TerminalClient* c = t.get();
        QObject::connect(c, &TerminalClient::messageReceived, c,
                         [c, &accepted, &accept](const QByteArray& m) {
                             if (m == accept) {
                                 c->identify();
                                 ++accepted;
                             }
                         });
    }
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (accepted == count || clock.elapsed() > options.timeoutMs)
            loop.quit();
    });
    check.start(5);
    loop.exec();
    check.stop();
    say(QStringLiteral("swarm: %1 of %2 terminals accepted and identified with %3 (PC 1..%2 from "
                       "127.0.0.1..127.0.0.%2) in %4 ms")
            .arg(accepted)
            .arg(count)
            .arg(QString::fromLatin1(Protocol::info(Protocol::TerminalWord::Identify).text))
            .arg(clock.elapsed()));
    if (accepted == 0)
        return 2;
    if (options.seconds > 0)
        quitAfter(qint64(options.seconds) * 1000);
    const int code = QCoreApplication::exec();
    int connected = 0;
    for (auto& t : swarm)
        connected += t->isConnected() ? 1 : 0;
    say(QStringLiteral("swarm: %1 of %2 still connected at the end").arg(connected).arg(count));
    return code;
}
