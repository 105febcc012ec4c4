// The operator's commands to terminals, over real loopback connections.
#include "server/operator_commands.h"
#include "server/session_start.h"
#include "support/console_fixture.h"
#include "support/terminal_probe.h"

#include <QTest>

using L = QByteArrayList;
using Icon = Prompts::Icon;
Q_DECLARE_METATYPE(Icon)
Q_DECLARE_METATYPE(Maintenance)

class OperatorCommandsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<TerminalProbe> probe;
    Console* console = nullptr;

    const SessionParts& parts() { return console->sessionParts(); }
    const TerminalRecord& record(int pc) { return console->terminals().at(pc); }
    // A terminal on line as the PC, from its own loopback address.
    std::unique_ptr<TerminalClient> online(int pc) {
        return probe->online(pc, QStringLiteral("127.0.0.%1").arg(pc));
    }
    // A session on the PC, started by the operator; what the terminal got is drained.
    bool startSession(TerminalClient& t, int pc, const QString& cid) {
        const bool ok = logOnPc(parts(), QString::number(pc), cid, QStringLiteral("CRUZ, JUAN"),
                                console->control().socketOfPc(pc));
        TerminalProbe::drain(t);
        return ok;
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
        probe = std::make_unique<TerminalProbe>(*console);
    }
    void cleanup() {
        probe.reset();
        console = nullptr;
        fx.reset();
    }

    void refusedWhenTerminalIsDown_data() {
        QTest::addColumn<int>("command");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("title");
        QTest::addColumn<Icon>("icon");
        const QString down = QStringLiteral("Terminal is down");
        QTest::newRow("pause") << 0 << "Pausing terminal at this moment is not possible"
                               << "" << Icon::None;
        QTest::newRow("resume") << 1 << "Terminal is not on-line or not connected to server" << down
                                << Icon::None;
        QTest::newRow("lock") << 2 << "Performing lock on closed terminal is not allowed" << down
                              << Icon::Critical;
        QTest::newRow("unlock") << 3 << "Performing unlock on closed terminal is not allowed"
                                << down << Icon::Critical;
        QTest::newRow("extend") << 4 << "Extending pc minutes on down terminal is not allowed"
                                << down << Icon::Critical;
        QTest::newRow("peek") << 5 << "Performing peek on terminal is currently not available"
                              << down << Icon::Critical;
    }
    void refusedWhenTerminalIsDown() {
        QFETCH(int, command);
        QFETCH(QString, text);
        QFETCH(QString, title);
        QFETCH(Icon, icon);
        auto other = online(4); // another PC on line changes nothing for PC 3
        QVERIFY(other);
        const TerminalRecord before = record(3);
        switch (command) {
        case 0:
            pausePc(parts(), 3);
            break;
        case 1:
            resumePc(parts(), 3);
            break;
        case 2:
            lockPc(parts(), 3);
            break;
        case 3:
            unlockPc(parts(), 3);
            break;
        case 4:
            extendPcMinutes(parts(), 3, QStringLiteral("30"));
            break;
        case 5:
            QCOMPARE(socketForPeek(parts(), 3), -1);
            break;
        }
        QCOMPARE(fx->prompts.shown.size(), 1);
        QCOMPARE(fx->prompts.last()->text, text);
        QCOMPARE(fx->prompts.last()->title, title);
        QCOMPARE(fx->prompts.last()->icon, icon);
        QCOMPARE(record(3).state, before.state);
        QCOMPARE(record(3).bankedMs, before.bankedMs);
        QCOMPARE(TerminalProbe::drain(*other), L{});
    }

    void pauseBanksTimeAndRepeatedPauseBanksAgain() {
        auto t = online(5);
        QVERIFY(t);
        QVERIFY(startSession(*t, 5, QStringLiteral("ID-00001")));
        fx->clock.advance(60000);
        pausePc(parts(), 5);
        QCOMPARE(record(5).bankedMs, 60000);
        QCOMPARE(record(5).state, TerminalState::Paused);
        QCOMPARE(TerminalProbe::drain(*t), L{"PAUS 60000"});
        QCOMPARE(rowValue("BkTick", "ID-00001").toInt(), 60000);
        QCOMPARE(rowValue("pcstat", "ID-00001").toString(), QStringLiteral("PAU"));

        // Pausing again without a resume banks the whole time since the start again.
        fx->clock.advance(10000);
        pausePc(parts(), 5);
        QCOMPARE(record(5).bankedMs, 60000 + 70000);
        QCOMPARE(TerminalProbe::drain(*t), L{"PAUS 130000"});
    }

    void resumeRestartsTheClockAndTellsTheTerminal() {
        auto t = online(30);
        QVERIFY(t);
        QVERIFY(startSession(*t, 30, QStringLiteral("ID-00002")));
        console->timeLimits().setLimit(6, QStringLiteral("90")); // PC 30 sits on tile 6
        fx->clock.advance(1000);
        pausePc(parts(), 30);
        fx->clock.advance(500000); // paused time is not charged
        resumePc(parts(), 30);
        QCOMPARE(record(30).state, TerminalState::Running);
        QCOMPARE(record(30).startTick, fx->clock.tickCount());
        QCOMPARE(TerminalProbe::drain(*t), (L{"PAUS 1000", "PAUX " + record(30).startTime.toUtf8(),
                                              "SBTK @1000", "TLMT 90"}));
        QCOMPARE(rowValue("pcstat", "ID-00002").toString(), QStringLiteral("LOG"));

        // Three running stretches of 1 s, 2 s and 3 s.
        fx->clock.advance(2000);
        pausePc(parts(), 30);
        fx->clock.advance(99999);
        resumePc(parts(), 30);
        fx->clock.advance(3000);
        QCOMPARE(record(30).runningTime(fx->clock.tickCount()), 6000);
        fx->clock.setNow(fx->clock.now().addDays(-3)); // the wall clock plays no part
        QCOMPARE(record(30).runningTime(fx->clock.tickCount()), 6000);
    }

    void lockAndUnlock() {
        auto t = online(2);
        QVERIFY(t);
        unlockPc(parts(), 2);
        QCOMPARE(record(2).state, TerminalState::Free);
        lockPc(parts(), 2);
        QCOMPARE(record(2).state, TerminalState::NotLogged);
        QCOMPARE(TerminalProbe::drain(*t), (L{"FREE Dummy Text", "XFRE Dummy Text"}));
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
        auto t = online(pc);
        QVERIFY(t);
        QVERIFY(startSession(*t, pc, QStringLiteral("ID-00003")));
        console->terminals().edit(pc)->timeLimit = QStringLiteral("60");
        extendPcMinutes(parts(), pc, minutes);
        QCOMPARE(record(pc).timeLimit, limit);
        QCOMPARE(console->timeLimits().limit(tile), limit);
        QCOMPARE(TerminalProbe::drain(*t), L{"TLMT " + limit.toUtf8()});
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
        auto t = online(4);
        QVERIFY(t);
        QVERIFY(startSession(*t, 4, QStringLiteral("ID-00004")));
        extendPcMinutes(parts(), 4, QStringLiteral("30"));
        QCOMPARE(record(4).timeLimit, QStringLiteral("U"));
        QCOMPARE(fx->prompts.texts(), QStringList{QStringLiteral("Terminal is set to open hour")});
        QCOMPARE(TerminalProbe::drain(*t), L{});
    }

    void logOffAllSkipsPendingTransactions() {
        std::unique_ptr<TerminalClient> t[5];
        for (int pc = 1; pc <= 4; ++pc) {
            t[pc] = online(pc);
            QVERIFY(t[pc]);
        }
        QVERIFY(startSession(*t[1], 1, QStringLiteral("ID-1")));
        QVERIFY(startSession(*t[2], 2, QStringLiteral("ID-2")));
        console->terminals().edit(2)->state = TerminalState::Paused;
        console->terminals().edit(3)->state = TerminalState::Billing;
        console->terminals().edit(6)->state = TerminalState::Free; // down: nothing to send to

        fx->prompts.answers = {Prompts::Answer::Yes};
        maintainAll(parts(), Maintenance::LogOff, true);
        QCOMPARE(
            fx->prompts.shown.first().text,
            QStringLiteral("Do you really wish to perform a LogOff routine to all terminals."));
        QCOMPARE(fx->prompts.shown.first().icon, Icon::Exclamation);
        QCOMPARE(TerminalProbe::drain(*t[4]), L{"LGOF"});
        for (int pc : {1, 2, 3})
            QCOMPARE(TerminalProbe::drain(*t[pc]), L{});
        const QString log = console->messageLog().text();
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
        QTest::addColumn<Maintenance>("kind");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("log off") << Maintenance::LogOff << QByteArray("LGOF");
        QTest::newRow("reboot") << Maintenance::Reboot << QByteArray("RSTR");
        QTest::newRow("shut down") << Maintenance::ShutDown << QByteArray("PTAY");
    }
    void maintenanceWords() {
        QFETCH(Maintenance, kind);
        QFETCH(QByteArray, message);
        auto t = online(9);
        QVERIFY(t);
        maintainPc(parts(), 9, kind);
        QCOMPARE(TerminalProbe::drain(*t), L{message});
    }

    void answeringNoToMaintainAllSendsNothing() {
        auto t = online(9);
        QVERIFY(t);
        fx->prompts.answers = {Prompts::Answer::No};
        maintainAll(parts(), Maintenance::ShutDown, true);
        QCOMPARE(TerminalProbe::drain(*t), L{});
        QVERIFY(!console->messageLog().contains(QStringLiteral("Sending Signal")));
    }

    void assigningALoggedPcIsRefused() {
        QVERIFY(mayAssignPc(parts(), 3));
        QVERIFY(fx->prompts.shown.isEmpty());
        console->terminals().edit(3)->logged = true;
        QVERIFY(!mayAssignPc(parts(), 3));
        QCOMPARE(fx->prompts.last()->text, QStringLiteral("This pc is already logged."));
        QCOMPARE(fx->prompts.last()->title, QStringLiteral("Not allowed"));
        QCOMPARE(fx->prompts.last()->icon, Icon::Information);
    }
};

QTEST_MAIN(OperatorCommandsTest)
#include "tst_operator_commands.moc"
