#include "swarm.h"

#include "protocol/protocol.h"
#include "terminal_client.h"
#include "traffic_log.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
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

// The replies' times of a working swarm, summed up each minute and at the end.
class ReplyTimes {
public:
    void add(qint64 us) {
        minute_.push_back(us);
        all_.push_back(us);
    }
    void missed() { ++missed_; }
    void sayMinute(int minute) {
        say(QStringLiteral("swarm minute %1: %2").arg(minute).arg(summary(minute_)));
        minute_.clear();
    }
    void sayAll() {
        say(QStringLiteral("swarm replies: %1; %2 asked and not answered within the interval")
                .arg(summary(all_))
                .arg(missed_));
    }

private:
    static QString summary(std::vector<qint64> v) {
        if (v.empty())
            return QStringLiteral("no replies");
        std::sort(v.begin(), v.end());
        auto at = [&v](double q) {
            return double(v[size_t(q * double(v.size() - 1))]) / 1000.0;
        };
        return QStringLiteral("%1 answered, p50 %2 ms, p99 %3 ms, max %4 ms")
            .arg(v.size())
            .arg(at(0.5), 0, 'f', 2)
            .arg(at(0.99), 0, 'f', 2)
            .arg(at(1.0), 0, 'f', 2);
    }
    std::vector<qint64> minute_, all_;
    int missed_ = 0;
};

// Each terminal starts a session, then asks for the rates every everyMs, spread over the
// interval so that the console meets a steady stream rather than bursts.
void startWork(std::vector<std::unique_ptr<TerminalClient>>& swarm, int everyMs, ReplyTimes& times,
               int* sessions) {
    const QByteArray rates = Msg::rates(0, 0, 0).left(4);
    const QByteArray logged = Msg::logSuccessful();
    const int count = int(swarm.size());
    for (int k = 0; k < count; ++k) {
        TerminalClient* c = swarm[size_t(k)].get();
        auto asked = std::make_shared<QElapsedTimer>();
        QObject::connect(c, &TerminalClient::messageReceived, c,
                         [asked, &times, sessions, rates, logged](const QByteArray& m) {
                             if (m == logged)
                                 ++*sessions;
                             if (m.startsWith(rates) && asked->isValid()) {
                                 times.add(asked->nsecsElapsed() / 1000);
                                 asked->invalidate();
                             }
                         });
        auto* tick = new QTimer(c);
        QObject::connect(tick, &QTimer::timeout, c, [c, asked, &times] {
            if (!c->isConnected())
                return;
            if (asked->isValid())
                times.missed();
            asked->start();
            c->requestRates();
        });
        // The log-ins come one every 60 ms, a second after the identifications, and the
        // questions only once every session has had time to start: the console reads
        // whatever a terminal sent since its last read as one message.
        QTimer::singleShot(1000 + 60 * k, c, [c, k] {
            c->logIn(QStringLiteral("ID-%1:SWARM %2, PC;%2")
                         .arg(k + 1, 5, 10, QLatin1Char('0'))
                         .arg(k + 1));
        });
        const int start = 1000 + 60 * count + 10000 + everyMs * k / count;
        QTimer::singleShot(start, c, [tick, everyMs] { tick->start(everyMs); });
    }
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
    ReplyTimes times;
    int sessions = 0;
    QTimer minutes;
    int minute = 0;
    if (options.everyMs > 0) {
        startWork(swarm, options.everyMs, times, &sessions);
        QObject::connect(&minutes, &QTimer::timeout, [&] { times.sayMinute(++minute); });
        minutes.start(60000);
    }
    const int code = QCoreApplication::exec();
    if (options.everyMs > 0) {
        times.sayAll();
        say(QStringLiteral("swarm sessions: %1 of %2 logged on").arg(sessions).arg(count));
    }
    int connected = 0;
    for (auto& t : swarm)
        connected += t->isConnected() ? 1 : 0;
    say(QStringLiteral("swarm: %1 of %2 still connected at the end").arg(connected).arg(count));
    return code;
}
