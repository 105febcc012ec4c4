// The hostile cases at their real size: thousands of connections, a database locked by
// another program, a snapshot past the real bound.
#include "console/startup_checks.h"
#include "server/operator_commands.h"
#include "support/console_fixture.h"

#include <QProcess>
#include <QtTest>

#include <memory>
#include <vector>

using L = QByteArrayList;
using namespace Qt::StringLiterals;

class LongHostileTerminalsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;

    Console& console() { return *fx->console; }
    TerminalProbe& probe() { return fx->probe(); }

private Q_SLOTS:
    void initTestCase() { raiseOpenFilesLimit(); }
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->start("254=NOFPC\n");
        probe();
    }
    void cleanup() { fx.reset(); }

    // Thousands of silent connections: the console keeps at most its bound of them and
    // still serves a terminal that connects in the middle of the flood.
    void thousandsOfSilentConnections() {
        const int bound = 4 * 254 + 64;
        std::vector<std::unique_ptr<QTcpSocket>> silent;
        for (int i = 0; i < 3000; ++i) {
            auto s = std::make_unique<QTcpSocket>();
            s->bind(QHostAddress(u"127.1.%1.%2"_s.arg(i / 250).arg(i % 250 + 1)));
            s->connectToHost(QHostAddress::LocalHost, console().server().port());
            silent.push_back(std::move(s));
            if (i == 1500) {
                auto t = probe().online(7);
                QVERIFY(t);
                QCOMPARE(TerminalProbe::drain(*t), L{});
            }
        }
        QTRY_VERIFY_WITH_TIMEOUT(console().server().openCount() >= bound, 60000);
        auto late = probe().online(8);
        QVERIFY(late);
        QCOMPARE(TerminalProbe::drain(*late), L{});
        QVERIFY(console().server().unidentifiedCount() <= bound);
        QVERIFY(console().server().openCount() <= bound + 3);
    }

    // Another program holds the database locked: the lost connection still pauses the
    // session at once in memory and the row follows when the lock is gone.
    void databaseLockedByAnotherProgram() {
        auto t = probe().online(5), u = probe().online(6);
        QVERIFY(t);
        QVERIFY(u);
        QVERIFY(probe().logIn(*t, 5, u"W-1:ANA"_s));
        fx->clock.advance(30000);
        QProcess locker;
        locker.start(u"sqlite3"_s, {Database(*fx->folder).path()});
        QVERIFY(locker.waitForStarted());
        locker.write("BEGIN EXCLUSIVE;\nSELECT 'locked';\n");
        QVERIFY(locker.waitForReadyRead(10000));
        t->abort();
        QTRY_COMPARE_WITH_TIMEOUT(console().terminals().at(5).state, TerminalState::Paused, 20000);
        QCOMPARE(console().sessionLog().pendingWrites(), 1);
        locker.write("COMMIT;\n.quit\n");
        QVERIFY(locker.waitForFinished(10000));
        QCOMPARE(probe().exchange(*u, "LOG W-2:BEN;6"), (L{"SMTR 09:00:30", "Log Successful"}));
        QCOMPARE(console().sessionLog().pendingWrites(), 0);
        QCOMPARE(fx->scalar(u"SELECT BkTick || pcstat FROM templog WHERE aindex = 5"_s).toString(),
                 u"30000PAU"_s);
    }

    // A snapshot past 64 MB, more than any screen, is dropped with its file.
    void snapshotPastTheRealBound() {
        auto t = probe().online(3);
        QVERIFY(t);
        t->setAutoAnswer(false);
        QVERIFY(console().snapshots().request(3));
        QVERIFY(!t->waitFor("SNPS").isEmpty());
        const QByteArray piece(1 << 20, 'p');
        probe().exchange(*t, "BM6" + piece);
        for (int i = 0; i < 70 && console().snapshots().receiving(); ++i)
            probe().exchange(*t, piece);
        QVERIFY(!console().snapshots().receiving());
        QVERIFY(!QFile::exists(fx->folder->file(u"TrmSnapShot.Bmp"_s)));
        QVERIFY(console().messageLog().contains(u"more than any screen"_s));
    }
};

QTEST_MAIN(LongHostileTerminalsTest)
#include "tst_long_hostile_terminals.moc"
