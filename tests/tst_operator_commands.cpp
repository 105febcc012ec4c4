#include "server/operator_commands.h"
#include "server/session_start.h"
#include "server/terminal_server.h"
#include "support/console_fixture.h"

#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>

namespace {
using Icon = Prompts::Icon;

// A bare terminal on its own loopback address: everything it receives, in one stream.
struct RawTerminal {
    QTcpSocket socket;
    QByteArray received;

    bool connectAs(Console& console, int pc, const QString& address) {
        QObject::connect(&socket, &QTcpSocket::readyRead, [this] { received += socket.readAll(); });
        if (!socket.bind(QHostAddress(address)))
            return false;
        socket.connectToHost(QHostAddress::LocalHost, console.server().port());
        if (!QTest::qWaitFor([&] { return received.startsWith("ACPT"); }, 5000))
            return false;
        received.clear();
        socket.write("AIP" + QByteArray::number(pc));
        return QTest::qWaitFor([&] { return console.server().SocketOfPc(pc) != -1; }, 5000);
    }
    bool waitFor(const QByteArray& text) {
        return QTest::qWaitFor([&] { return received.contains(text); }, 5000);
    }
};
} // namespace

class OperatorCommandsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    Console* console = nullptr;

    // A session on the PC, started by the operator; returns its record.
    TerminalRecord& startSession(int pc, const QString& cid) {
        const bool ok = LogOnPc(*console, QString::number(pc), cid, QStringLiteral("CRUZ, JUAN"),
                                console->server().SocketOfPc(pc));
        if (!ok)
            qFatal("session did not start");
        return console->terminals().at(pc);
    }
    QVariant rowValue(const QString& column, const QString& cid) {
        return fx->scalar(QStringLiteral("SELECT %1 FROM templog WHERE CID = ?").arg(column),
                          {cid});
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->writeSettings("48=NOFPC\n");
        console = &fx->start();
        console->currentOperator().CurrentUserType = QStringLiteral("Admin");
    }
    void cleanup() {
        console = nullptr;
        fx.reset();
    }

    void refusedWhenTerminalIsDown_data() {
        QTest::addColumn<int>("command");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("icon");
        QTest::newRow("pause") << 0 << "Pausing terminal at this moment is not possible"
                               << "" << int(Icon::None);
        QTest::newRow("resume") << 1 << "Terminal is not on-line or not connected to server"
                                << "Terminal is down" << int(Icon::None);
        QTest::newRow("lock") << 2 << "Performing lock on closed terminal is not allowed"
                              << "Terminal is down" << int(Icon::Critical);
        QTest::newRow("unlock") << 3 << "Performing unlock on closed terminal is not allowed"
                                << "Terminal is down" << int(Icon::Critical);
        QTest::newRow("extend") << 4 << "Extending pc minutes on down terminal is not allowed"
                                << "Terminal is down" << int(Icon::Critical);
        QTest::newRow("peek") << 5 << "Performing peek on terminal is currently not available"
                              << "Terminal is down" << int(Icon::Critical);
    }
    void refusedWhenTerminalIsDown() {
        QFETCH(int, command);
        QFETCH(QString, text);
        QFETCH(QString, title);
        QFETCH(int, icon);
        TerminalRecord before = console->terminals().at(3);
        switch (command) {
        case 0:
            PausePc(*console, 3);
            break;
        case 1:
            ResumePc(*console, 3);
            break;
        case 2:
            LockPc(*console, 3);
            break;
        case 3:
            UnlockPc(*console, 3);
            break;
        case 4:
            ExtendPCmin(*console, 3, QStringLiteral("30"));
            break;
        case 5:
            QCOMPARE(PeekSocketOfPc(*console, 3), -1);
            break;
        }
        QCOMPARE(fx->prompts.shown.size(), 1);
        QCOMPARE(fx->prompts.last()->text, text);
        QCOMPARE(fx->prompts.last()->title, title);
        QCOMPARE(int(fx->prompts.last()->icon), icon);
        const TerminalRecord& after = console->terminals().at(3);
        QCOMPARE(after.pcstat, before.pcstat);
        QCOMPARE(after.BkTick, before.BkTick);
    }

    void administratorOnlyCommands_data() {
        QTest::addColumn<QString>("type");
        QTest::newRow("User") << "User";
        QTest::newRow("lower-case admin") << "admin";
        QTest::newRow("empty") << "";
    }
    void administratorOnlyCommands() {
        QFETCH(QString, type);
        RawTerminal t;
        QVERIFY(t.connectAs(*console, 3, QStringLiteral("127.0.0.1")));
        console->currentOperator().CurrentUserType = type;
        UnlockPc(*console, 3);
        QCOMPARE(PeekSocketOfPc(*console, 3), -1);
        QCOMPARE(fx->prompts.shown.size(), 2);
        for (const auto& s : fx->prompts.shown) {
            QCOMPARE(s.text, QStringLiteral("Access denied, for Administrator accounts only"));
            QCOMPARE(s.icon, Icon::Critical);
        }
        QCOMPARE(console->terminals().at(3).pcstat, QStringLiteral("NLG"));
        QTest::qWait(50);
        QVERIFY(!t.received.contains("FREE"));
    }

    void pauseBanksTimeAndRepeatedPauseBanksAgain() {
        RawTerminal t;
        QVERIFY(t.connectAs(*console, 5, QStringLiteral("127.0.0.1")));
        TerminalRecord& r = startSession(5, QStringLiteral("ID-00001"));
        fx->clock.advance(60000);
        PausePc(*console, 5);
        QCOMPARE(r.BkTick, 60000);
        QCOMPARE(r.pcstat, QStringLiteral("PAU"));
        QVERIFY(t.waitFor("PAUS 60000"));
        QCOMPARE(rowValue("BkTick", "ID-00001").toInt(), 60000);
        QCOMPARE(rowValue("pcstat", "ID-00001").toString(), QStringLiteral("PAU"));

        // Pausing again without a resume banks the whole time since the start again.
        fx->clock.advance(10000);
        PausePc(*console, 5);
        QCOMPARE(r.BkTick, 60000 + 70000);
        QVERIFY(t.waitFor("PAUS 130000"));
    }

    void resumeRestartsTheClockAndTellsTheTerminal() {
        RawTerminal t;
        QVERIFY(t.connectAs(*console, 30, QStringLiteral("127.0.0.1")));
        TerminalRecord& r = startSession(30, QStringLiteral("ID-00002"));
        console->board().setTimeLimit(6, QStringLiteral("90")); // PC 30 sits on tile 6
        fx->clock.advance(1000);
        PausePc(*console, 30);
        fx->clock.advance(500000); // paused time is not charged
        ResumePc(*console, 30);
        QCOMPARE(r.pcstat, QStringLiteral("LOG"));
        QCOMPARE(r.TickStart, fx->clock.tickCount());
        QVERIFY(t.waitFor("TLMT 90"));
        const QByteArray expected = "PAUX " + r.starttime.toUtf8() + "SBTK @1000" + "TLMT 90";
        QVERIFY2(t.received.endsWith(expected), t.received.constData());
        QCOMPARE(rowValue("pcstat", "ID-00002").toString(), QStringLiteral("LOG"));

        // Three running stretches of 1 s, 2 s and 3 s.
        fx->clock.advance(2000);
        PausePc(*console, 30);
        fx->clock.advance(99999);
        ResumePc(*console, 30);
        fx->clock.advance(3000);
        QCOMPARE(r.runningTime(fx->clock.tickCount()), 6000);
        fx->clock.setNow(fx->clock.now().addDays(-3)); // the wall clock plays no part
        QCOMPARE(r.runningTime(fx->clock.tickCount()), 6000);
    }

    void lockAndUnlock() {
        RawTerminal t;
        QVERIFY(t.connectAs(*console, 2, QStringLiteral("127.0.0.1")));
        UnlockPc(*console, 2);
        QCOMPARE(console->terminals().at(2).pcstat, QStringLiteral("FRE"));
        QVERIFY(t.waitFor("FREE Dummy Text"));
        LockPc(*console, 2);
        QCOMPARE(console->terminals().at(2).pcstat, QStringLiteral("NLG"));
        QVERIFY(t.waitFor("XFRE Dummy Text"));
        QVERIFY(fx->prompts.shown.isEmpty());
    }

    void extendRaisesTheLimit_data() {
        QTest::addColumn<int>("pc");
        QTest::addColumn<QString>("minutes");
        QTest::addColumn<QString>("limit");
        QTest::addColumn<int>("tile");
        QTest::newRow("PC 7, 60 + 30") << 7 << "30"
                                       << "90" << 7;
        QTest::newRow("PC 48 uses tile 24") << 48 << "5"
                                            << "65" << 24;
        QTest::newRow("PC 25 uses tile 1") << 25 << "60"
                                           << "120" << 1;
        QTest::newRow("PC 24 uses tile 24") << 24 << "15"
                                            << "75" << 24;
    }
    void extendRaisesTheLimit() {
        QFETCH(int, pc);
        QFETCH(QString, minutes);
        QFETCH(QString, limit);
        QFETCH(int, tile);
        RawTerminal t;
        QVERIFY(t.connectAs(*console, pc, QStringLiteral("127.0.0.1")));
        TerminalRecord& r = startSession(pc, QStringLiteral("ID-00003"));
        r.stopwatch = QStringLiteral("60");
        ExtendPCmin(*console, pc, minutes);
        QCOMPARE(r.stopwatch, limit);
        QCOMPARE(console->board().timeLimit(tile), limit);
        QVERIFY(t.waitFor("TLMT " + limit.toUtf8()));
        QCOMPARE(rowValue("stopwatch", "ID-00003").toString(), limit);
        const auto* box = fx->prompts.last();
        QVERIFY(box);
        QCOMPARE(box->kind, QStringLiteral("box"));
        QCOMPARE(box->title, QStringLiteral("Message"));
        QCOMPARE(box->text, QStringLiteral("Calculating new time limit"));
        QCOMPARE(box->box.extra, QStringLiteral("Extend time to ") + minutes);
        QVERIFY(box->box.closeAfterMs > 0);
    }

    void extendOpenHourOnlyTells() {
        RawTerminal t;
        QVERIFY(t.connectAs(*console, 4, QStringLiteral("127.0.0.1")));
        TerminalRecord& r = startSession(4, QStringLiteral("ID-00004"));
        ExtendPCmin(*console, 4, QStringLiteral("30"));
        QCOMPARE(r.stopwatch, QStringLiteral("U"));
        QCOMPARE(fx->prompts.texts(), QStringList{QStringLiteral("Terminal is set to open hour")});
        QTest::qWait(50);
        QVERIFY(!t.received.contains("TLMT"));
    }

    void logOffAllSkipsPendingTransactions() {
        RawTerminal t1, t2, t3, t4;
        QVERIFY(t1.connectAs(*console, 1, QStringLiteral("127.0.0.1")));
        QVERIFY(t2.connectAs(*console, 2, QStringLiteral("127.0.0.2")));
        QVERIFY(t3.connectAs(*console, 3, QStringLiteral("127.0.0.3")));
        QVERIFY(t4.connectAs(*console, 4, QStringLiteral("127.0.0.4")));
        startSession(1, QStringLiteral("ID-1"));
        startSession(2, QStringLiteral("ID-2")).pcstat = QStringLiteral("PAU");
        console->terminals().at(3).pcstat = QStringLiteral("BIL");
        console->terminals().at(6).pcstat = QStringLiteral("FRE"); // down: nothing to send to

        fx->prompts.answers = {Prompts::Answer::Yes};
        MaintainAll(*console, QStringLiteral("LogOff"), true);
        QCOMPARE(
            fx->prompts.shown.first().text,
            QStringLiteral("Do you really wish to perform a LogOff routine to all terminals."));
        QCOMPARE(fx->prompts.shown.first().icon, Icon::Exclamation);
        QVERIFY(t4.waitFor("LGOF"));
        QTest::qWait(50);
        for (RawTerminal* t : {&t1, &t2, &t3})
            QVERIFY(!t->received.contains("LGOF"));
        const QString log = console->messageLog();
        for (int pc : {1, 2, 3})
            QVERIFY(log.contains(
                QStringLiteral("Terminal %1 with pending trans.<denied>..\r").arg(pc)));
        QVERIFY(!log.contains(QStringLiteral("Terminal 4 with")));
        QVERIFY(log.contains(QStringLiteral("Sending Signal 'LogOff' to all terminal\r")));
        // Newest first: the skips come after the announcement in time, so before it here.
        QVERIFY(log.indexOf(QStringLiteral("Terminal 3 with")) <
                log.indexOf(QStringLiteral("Sending Signal")));
    }

    void maintenanceWords_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("log off") << "LogOff" << QByteArray("LGOF");
        QTest::newRow("reboot") << "Reboot" << QByteArray("RSTR");
        QTest::newRow("shut down") << "ShutDown" << QByteArray("PTAY");
    }
    void maintenanceWords() {
        QFETCH(QString, kind);
        QFETCH(QByteArray, message);
        RawTerminal t;
        QVERIFY(t.connectAs(*console, 9, QStringLiteral("127.0.0.1")));
        MaintainPc(*console, 9, kind);
        QVERIFY(t.waitFor(message));
    }

    void answeringNoToMaintainAllSendsNothing() {
        RawTerminal t;
        QVERIFY(t.connectAs(*console, 9, QStringLiteral("127.0.0.1")));
        fx->prompts.answers = {Prompts::Answer::No};
        MaintainAll(*console, QStringLiteral("ShutDown"), true);
        QTest::qWait(50);
        QVERIFY(t.received.isEmpty());
        QVERIFY(!console->messageLog().contains(QStringLiteral("Sending Signal")));
    }

    void assigningALoggedPcIsRefused() {
        QVERIFY(MayAssignPc(*console, 3));
        console->terminals().at(3).logged = true;
        QVERIFY(!MayAssignPc(*console, 3));
        QCOMPARE(fx->prompts.last()->text, QStringLiteral("This pc is already logged."));
        QCOMPARE(fx->prompts.last()->title, QStringLiteral("Not allowed"));
        QCOMPARE(fx->prompts.last()->icon, Icon::Information);
    }
};

QTEST_MAIN(OperatorCommandsTest)
#include "tst_operator_commands.moc"
