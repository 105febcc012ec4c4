// What a hostile or broken program on the café's network, or a failing disk, can do to the
// console: each over real loopback connections against a real console.
#include "console/instance_lock.h"
#include "console/startup_checks.h"
#include "server/operator_commands.h"
#include "support/console_fixture.h"
#include "support/files.h"
#include "support/scratch_disk.h"

#include <QtTest>

#include <memory>
#include <vector>

using L = QByteArrayList;
using namespace Qt::StringLiterals;

class HostileTerminalsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;

    Console& console() { return *fx->console; }
    TerminalProbe& start(const QByteArray& settings = "24=NOFPC\n") {
        fx->start(settings);
        return fx->probe();
    }
    QStringList notices() const { return fx->prompts.texts(u"notice"_s); }

private Q_SLOTS:
    void init() { fx = std::make_unique<ConsoleFixture>(); }
    void cleanup() { fx.reset(); }

    // Connections that never identify are bounded; the oldest makes room, so a terminal
    // connecting during a flood is still served, and the operator hears of it once.
    void floodOfSilentConnectionsLeavesRoomForTerminals() {
        TerminalProbe& probe = start("2=NOFPC\n"); // room for 4 x 2 + 64 = 72 silent ones
        std::vector<std::unique_ptr<QTcpSocket>> silent;
        for (int i = 0; i < 100; ++i) {
            silent.push_back(probe.silent(u"127.0.1.%1"_s.arg(i + 1)));
            QVERIFY(silent.back());
        }
        auto t = probe.online(1);
        QVERIFY(t);
        QCOMPARE(TerminalProbe::drain(*t), L{});
        QVERIFY(console().server().unidentifiedCount() <= 72);
        QTRY_COMPARE(silent.front()->state(), QAbstractSocket::UnconnectedState);
        QCOMPARE(silent.back()->state(), QAbstractSocket::ConnectedState);
        QCOMPARE(notices().filter(u"closed to make room"_s).size(), 1); // at most once a minute
    }

    // "EMT" floods are summed up: a few notices a second per terminal, then the count.
    void noticeFloodIsSummedUp() {
        TerminalProbe& probe = start();
        auto t = probe.online(7);
        QVERIFY(t);
        for (int i = 0; i < 20; ++i)
            probe.exchange(*t, "EMT help " + QByteArray::number(i));
        QCOMPARE(notices(), (QStringList{u"EMT help 0"_s, u"EMT help 1"_s, u"EMT help 2"_s}));
        fx->clock.advance(1000);
        QTRY_COMPARE(notices().size(), 4); // the console's own second passes too
        QCOMPARE(notices().last(), u"PC 7 sent 17 more notices"_s);
        // A new second: the terminal is heard again.
        probe.exchange(*t, "EMT again");
        QCOMPARE(notices().last(), u"EMT again"_s);
    }

    // A second connection from the PC's address closes. One that never said which PC it is
    // (a program on the customer's PC, say) stops nothing; one that did pauses the session
    // as any lost connection does, and the PC, still connected, is told and still reached.
    void secondConnectionFromThePcCloses_data() {
        QTest::addColumn<bool>("identified");
        row("silent", false);
        row("identified", true);
    }
    void secondConnectionFromThePcCloses() {
        QFETCH(bool, identified);
        TerminalProbe& probe = start();
        auto t = probe.online(5);
        QVERIFY(t);
        QVERIFY(probe.logIn(*t, 5));
        fx->clock.advance(90000);
        auto second = probe.connect(u"127.0.0.5"_s);
        QVERIFY(second);
        if (identified)
            QVERIFY(probe.identify(*second, 5));
        QSignalSpy lost(&console().server(), &TerminalServer::connectionLost);
        second->disconnectFromConsole();
        QTRY_COMPARE(lost.size(), 1);
        QCOMPARE(fx->record(5).state, identified ? TerminalState::Paused : TerminalState::Running);
        QCOMPARE(fx->record(5).bankedMs, identified ? 90000 : 0);
        QCOMPARE(TerminalProbe::drain(*t), identified ? L{"PAUS 90000"} : L{});
        QCOMPARE(console().messageLog().contains(u"Socket Force closed"_s), identified);
        if (!identified)
            return;
        resumePc(console().sessionParts(), 5);
        QCOMPARE(TerminalProbe::drain(*t).value(0).left(5), QByteArray("PAUX "));
        QVERIFY(fx->record(5).online);
    }

    // Two spellings of one walk-in id on two PCs, started in the same second: each PC's
    // pause lands on its own row, and a restart puts each back as it was.
    void sameIdInTwoSpellingsKeepsItsOwnRows() {
        TerminalProbe& probe = start();
        auto a = probe.online(5), b = probe.online(6);
        QVERIFY(a);
        QVERIFY(b);
        QVERIFY(probe.logIn(*a, 5, u"w-1:ANA"_s));
        QVERIFY(probe.logIn(*b, 6, u"W-1:BEN"_s));
        pausePc(console().sessionParts(), 6);
        QCOMPARE(fx->scalar(u"SELECT group_concat(aindex || CID || pcstat, ' ') FROM templog"_s)
                     .toString(),
                 u"5w-1LOG 6W-1PAU"_s);
        TerminalTable restarted;
        restarted.init(24);
        console().sessionLog().restoreSessions(restarted);
        QCOMPARE(restarted.at(5).state, TerminalState::Running);
        QCOMPARE(restarted.at(6).state, TerminalState::Paused);
    }

    // A terminal that asks and never reads is cut off before its unsent answers grow the
    // console without end; it is handled as a lost connection, and the others go on.
    void slowReaderIsCutOff() {
        TerminalProbe& probe = start();
        auto other = probe.online(10);
        QVERIFY(other);
        QVERIFY(fx->writeFile(u"Products.LST"_s,
                              QByteArray("Instant noodles with egg and a long description @ "
                                         "35.00\n")
                                  .repeated(6000)));
        auto reader = probe.online(9);
        QVERIFY(reader);
        reader->socket().setReadBufferSize(1); // reads nothing more
        QSignalSpy lost(&console().server(), &TerminalServer::connectionLost);
        for (int i = 0; i < 200 && lost.isEmpty(); ++i) {
            reader->sendRaw("PLS");
            QTest::qWait(2); // one request per message
        }
        QTRY_COMPARE(lost.size(), 1);
        QVERIFY(console().messageLog().contains(u"does not read what it is sent"_s));
        QVERIFY(!console().server().isOpen(lost.first().at(0).toInt()));
        QCOMPARE(TerminalProbe::drain(*other), L{});
    }

    // A database that cannot be written (a full or read-only disk; a locked file is in the
    // long tests) does not keep a lost connection from pausing the session; the operator is
    // told once, and the row is written as soon as the database takes writes again. A
    // session whose row cannot be written does not start.
    void sessionsSurviveAFailingDisk_data() {
        QTest::addColumn<bool>("readOnly");
        row("full", false);
        row("turned read-only", true);
    }
    void sessionsSurviveAFailingDisk() {
        QFETCH(bool, readOnly);
        ScratchDisk disk;
        if (!disk.mounted())
            QSKIP(qPrintable(u"no disk of its own can be mounted here: "_s + disk.why()));
        fx = std::make_unique<ConsoleFixture>(disk.path());
        TerminalProbe& probe = start();
        auto t = probe.online(5), u = probe.online(6);
        QVERIFY(t);
        QVERIFY(u);
        QVERIFY(probe.logIn(*t, 5));
        fx->clock.advance(60000);
        QVERIFY(readOnly ? disk.setReadOnly(true) : disk.fill());

        t->abort();
        QTRY_COMPARE(fx->record(5).state, TerminalState::Paused);
        QCOMPARE(fx->record(5).bankedMs, 60000);
        QCOMPARE(console().sessionLog().pendingWrites(), 1);
        const auto toldOfDatabase = [&] {
            return notices().filter(u"Sessions go on"_s);
        };
        QCOMPARE(toldOfDatabase().size(), 1);
        QVERIFY(toldOfDatabase().first().startsWith(u"The database %1/"_s.arg(disk.path())));

        // No session starts that a restart would forget.
        QCOMPARE(probe.exchange(*u, "LOG W-2:ANA;6"), L{"Failed Log"});
        QVERIFY(!fx->record(6).logged);
        QVERIFY(notices().last().startsWith(u"The session of W-2 on PC 6 was not started"_s));
        QCOMPARE(toldOfDatabase().size(), 1); // told once

        QVERIFY(readOnly ? disk.setReadOnly(false) : (disk.free(), true));
        QCOMPARE(probe.exchange(*u, "LOG W-2:ANA;6"), (L{"SMTR 09:01:00", "Log Successful"}));
        QCOMPARE(console().sessionLog().pendingWrites(), 0);
        QCOMPARE(fx->scalar(u"SELECT BkTick || pcstat FROM templog WHERE aindex = 5"_s).toString(),
                 u"60000PAU"_s);
    }

    // A folder that cannot be written is said to be so, naming it; the instance lock does
    // not mistake it for another console.
    void readOnlyFolderIsNamed() {
        ScratchDisk disk;
        if (!disk.mounted())
            QSKIP(qPrintable(u"no disk of its own can be mounted here: "_s + disk.why()));
        QCOMPARE(dataFolderProblem(disk.path()), QString());
        QVERIFY(disk.setReadOnly(true));
        const QString problem = dataFolderProblem(disk.path());
        QVERIFY2(problem.startsWith(u"The data folder %1 cannot be written"_s.arg(disk.path())),
                 qPrintable(problem));
        InstanceLock lock{AppFolder(disk.path())};
        QVERIFY(!lock.tryLock());
        QVERIFY(!lock.heldElsewhere());
    }
};

QTEST_MAIN(HostileTerminalsTest)
#include "tst_hostile_terminals.moc"
