#include "server/operator_commands.h"
#include "support/console_fixture.h"
#include "support/files.h"

#include <QTest>

#include <functional>

using L = QByteArrayList;
using Icon = Prompts::Icon;
using Command = std::function<void(const SessionParts&, int pc)>;
Q_DECLARE_METATYPE(Icon)
Q_DECLARE_METATYPE(Command)
Q_DECLARE_METATYPE(TerminalState)

class OperatorCommandsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;

    Console& console() { return *fx->console; }
    const SessionParts& parts() { return console().sessionParts(); }
    TerminalProbe& probe() { return fx->probe(); }
    // A terminal on line as the PC with a session the operator started for the member.
    std::unique_ptr<TerminalClient> session(int pc, const char* cid = "ID-00001") {
        auto t = probe().online(pc);
        if (!t || !probe().assign(*t, pc, QString::fromLatin1(cid)))
            qFatal("no session on PC %d", pc);
        return t;
    }
    QString rowValue(const QString& columns, int pc) {
        return fx
            ->scalar(QStringLiteral("SELECT %1 FROM templog WHERE aindex = ?").arg(columns), {pc})
            .toString();
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->start("48=NOFPC\n");
    }
    void cleanup() { fx.reset(); }

    void refusedWhenTerminalIsDown_data() {
        QTest::addColumn<Command>("command");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("title");
        QTest::addColumn<Icon>("icon");
        const QString down = QStringLiteral("Terminal is down");
        row("pause", Command(pausePc), "Pausing terminal at this moment is not possible", "",
            Icon::None);
        row("resume", Command(resumePc), "Terminal is not on-line or not connected to server", down,
            Icon::None);
        row("lock", Command(lockPc), "Performing lock on closed terminal is not allowed", down,
            Icon::Critical);
        row("unlock", Command(unlockPc), "Performing unlock on closed terminal is not allowed",
            down, Icon::Critical);
        row("extend", Command([](auto& parts, int pc) { extendPcMinutes(parts, pc, "30"); }),
            "Extending pc minutes on down terminal is not allowed", down, Icon::Critical);
        row("peek", Command([](auto& parts, int pc) { QCOMPARE(socketForPeek(parts, pc), -1); }),
            "Performing peek on terminal is currently not available", down, Icon::Critical);
    }
    void refusedWhenTerminalIsDown() {
        QFETCH(Command, command);
        QFETCH(QString, text);
        QFETCH(QString, title);
        QFETCH(Icon, icon);
        auto other = probe().online(4); // another PC on line changes nothing for PC 3
        QVERIFY(other);
        const TerminalRecord before = fx->record(3);
        command(parts(), 3);
        QCOMPARE(fx->prompts.texts(), QStringList{text});
        QCOMPARE(fx->prompts.last()->title, title);
        QCOMPARE(fx->prompts.last()->icon, icon);
        QCOMPARE(fx->record(3).state, before.state);
        QCOMPARE(fx->record(3).bankedMs, before.bankedMs);
        QCOMPARE(TerminalProbe::drain(*other), L{});
    }

    // A pause banks the time run since the start; a second pause without a resume banks
    // that whole time again. A resume restarts the clock and sends the terminal its start
    // time, its bank and its tile's time limit; paused time is never charged, and the wall
    // clock plays no part.
    void pauseAndResume() {
        auto t = session(30);
        console().timeLimits().setLimit(6, QStringLiteral("90")); // PC 30 sits on tile 6
        fx->clock.advance(60000);
        pausePc(parts(), 30);
        QCOMPARE(fx->record(30).bankedMs, 60000);
        QCOMPARE(fx->record(30).state, TerminalState::Paused);
        QCOMPARE(TerminalProbe::drain(*t), L{"PAUS 60000"});
        QCOMPARE(rowValue("BkTick || pcstat", 30), "60000PAU");
        fx->clock.advance(10000);
        pausePc(parts(), 30);
        QCOMPARE(fx->record(30).bankedMs, 60000 + 70000);
        QCOMPARE(TerminalProbe::drain(*t), L{"PAUS 130000"});

        fx->clock.advance(500000);
        resumePc(parts(), 30);
        QCOMPARE(fx->record(30).state, TerminalState::Running);
        QCOMPARE(fx->record(30).startTick, fx->clock.tickCount());
        QCOMPARE(TerminalProbe::drain(*t),
                 (L{"PAUX " + fx->record(30).startTime.toUtf8(), "SBTK @130000", "TLMT 90"}));
        QCOMPARE(rowValue("pcstat", 30), "LOG");
        // Running stretches of 130 s, 2 s and 3 s.
        fx->clock.advance(2000);
        pausePc(parts(), 30);
        fx->clock.advance(99999);
        resumePc(parts(), 30);
        fx->clock.advance(3000);
        QCOMPARE(fx->record(30).runningTime(fx->clock.tickCount()), 135000);
        fx->clock.setNow(fx->clock.now().addDays(-3));
        QCOMPARE(fx->record(30).runningTime(fx->clock.tickCount()), 135000);
    }

    // Commands to a PC with no session: each sends its word and asks nothing.
    void commandsToAnIdlePc_data() {
        QTest::addColumn<Command>("command");
        QTest::addColumn<TerminalState>("from");
        QTest::addColumn<TerminalState>("to");
        QTest::addColumn<QByteArray>("message");
        const auto maintain = [](Maintenance kind) {
            return Command([kind](auto& parts, int pc) { maintainPc(parts, pc, kind); });
        };
        using enum TerminalState;
        row("unlock", Command(unlockPc), NotLogged, Free, QByteArray("FREE Dummy Text"));
        row("lock", Command(lockPc), Free, NotLogged, QByteArray("XFRE Dummy Text"));
        row("log off", maintain(Maintenance::LogOff), NotLogged, NotLogged, QByteArray("LGOF"));
        row("reboot", maintain(Maintenance::Reboot), NotLogged, NotLogged, QByteArray("RSTR"));
        row("shut down", maintain(Maintenance::ShutDown), Free, Free, QByteArray("PTAY"));
    }
    void commandsToAnIdlePc() {
        QFETCH(Command, command);
        QFETCH(TerminalState, from);
        QFETCH(TerminalState, to);
        QFETCH(QByteArray, message);
        auto t = probe().online(9);
        QVERIFY(t);
        console().terminals().edit(9)->state = from;
        command(parts(), 9);
        QCOMPARE(fx->record(9).state, to);
        QCOMPARE(TerminalProbe::drain(*t), L{message});
        QCOMPARE(fx->prompts.texts(), QStringList());
    }

    // The limit rises by the minutes on the PC, on its tile of the board (PCs past 24
    // share the tiles) and in its row, and the terminal is told. An open hour stays open.
    void extend_data() {
        QTest::addColumn<int>("pc");
        QTest::addColumn<QString>("limit");
        QTest::addColumn<QString>("minutes");
        QTest::addColumn<QString>("raised");
        QTest::addColumn<int>("tile");
        row("PC 7, 60 + 30", 7, "60", "30", "90", 7);
        row("PC 48 uses tile 24", 48, "60", "5", "65", 24);
        row("PC 25 uses tile 1", 25, "60", "60", "120", 1);
        row("PC 24 uses tile 24", 24, "60", "15", "75", 24);
        row("open hour", 4, "U", "30", "U", 4);
    }
    void extend() {
        QFETCH(int, pc);
        QFETCH(QString, limit);
        QFETCH(QString, minutes);
        QFETCH(QString, raised);
        QFETCH(int, tile);
        auto t = session(pc, "ID-00003");
        console().terminals().edit(pc)->timeLimit = limit;
        extendPcMinutes(parts(), pc, minutes);
        QCOMPARE(fx->record(pc).timeLimit, raised);
        QCOMPARE(rowValue("stopwatch", pc), raised);
        if (raised == limit) {
            QCOMPARE(fx->prompts.texts(),
                     QStringList{QStringLiteral("Terminal is set to open hour")});
            QCOMPARE(TerminalProbe::drain(*t), L{});
            return;
        }
        QCOMPARE(console().timeLimits().limit(tile), raised);
        QCOMPARE(TerminalProbe::drain(*t), L{"TLMT " + raised.toUtf8()});
        const auto& box = fx->prompts.shown.value(0);
        QCOMPARE(QStringList({box.kind, box.title, box.text, box.box.extra}),
                 QStringList({"box", "Message", "Calculating new time limit",
                              "Extend time to " + minutes}));
        QVERIFY(box.box.closeAfterMs > 0);
    }

    // Maintenance of all PCs asks first; a yes sends the word to every PC on line but those
    // with a session running, paused or being billed, each of which is logged as skipped.
    void maintainAllAsksAndSkipsPendingTransactions_data() {
        QTest::addColumn<bool>("yes");
        row("yes", true);
        row("no", false);
    }
    void maintainAllAsksAndSkipsPendingTransactions() {
        QFETCH(bool, yes);
        std::unique_ptr<TerminalClient> t[5] = {nullptr, session(1, "ID-1"), session(2, "ID-2"),
                                                probe().online(3), probe().online(4)};
        QVERIFY(t[3] && t[4]);
        console().terminals().edit(2)->state = TerminalState::Paused;
        console().terminals().edit(3)->state = TerminalState::Billing;
        console().terminals().edit(6)->state = TerminalState::Free; // down: nothing to send to

        fx->prompts.answers = {yes ? Prompts::Answer::Yes : Prompts::Answer::No};
        maintainAll(parts(), Maintenance::LogOff, true);
        QCOMPARE(
            fx->prompts.shown.first().text,
            QStringLiteral("Do you really wish to perform a LogOff routine to all terminals."));
        QCOMPARE(fx->prompts.shown.first().icon, Icon::Exclamation);
        QCOMPARE(TerminalProbe::drain(*t[4]), yes ? L{"LGOF"} : L{});
        const QString log = console().messageLog().text();
        for (int pc : {1, 2, 3}) {
            QCOMPARE(TerminalProbe::drain(*t[pc]), L{});
            QCOMPARE(
                log.contains(QStringLiteral("Terminal %1 with pending trans.<denied>..\r").arg(pc)),
                yes);
        }
        QVERIFY(!log.contains(QStringLiteral("Terminal 4 with")));
        QCOMPARE(log.contains(QStringLiteral("Sending Signal 'LogOff' to all terminal\r")), yes);
        // Newest first: the skips come after the announcement in time, so before it here.
        if (yes)
            QVERIFY(log.indexOf(QStringLiteral("Terminal 3 with")) <
                    log.indexOf(QStringLiteral("Sending Signal")));
    }

    void assigningALoggedPcIsRefused() {
        QVERIFY(mayAssignPc(parts(), 3));
        QVERIFY(fx->prompts.shown.isEmpty());
        console().terminals().edit(3)->logged = true;
        QVERIFY(!mayAssignPc(parts(), 3));
        QCOMPARE(fx->prompts.last()->text, QStringLiteral("This pc is already logged."));
        QCOMPARE(fx->prompts.last()->title, QStringLiteral("Not allowed"));
        QCOMPARE(fx->prompts.last()->icon, Icon::Information);
    }
};

QTEST_MAIN(OperatorCommandsTest)
#include "tst_operator_commands.moc"
