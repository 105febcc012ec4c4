// The console's terminal server end to end: real loopback connections from the
// terminal client, a real database file, a hand-set clock.
#include "host_actions.h"
#include "protocol/protocol.h"
#include "server/session_clock.h"
#include "support/console_fixture.h"
#include "support/terminal_probe.h"

#include <QFile>
#include <QImage>
#include <QSignalSpy>
#include <QTcpServer>
#include <QtTest>

#include <memory>

using L = QByteArrayList;

class ServerTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<TerminalProbe> probe;

    Console& console() { return *fx->console; }
    TerminalServer& server() { return fx->console->server(); }
    const TerminalRecord& record(int pc) { return fx->console->terminals().at(pc); }
    std::unique_ptr<TerminalClient> connectFrom(const char* address = "127.0.0.1") {
        return probe->connect(QString::fromLatin1(address));
    }
    bool identify(TerminalClient& t, int pc) { return probe->identify(t, pc); }
    static L drain(TerminalClient& t) { return TerminalProbe::drain(t); }
    L exchange(TerminalClient& t, const QByteArray& message) { return probe->exchange(t, message); }
    // The registry as "address|PC|socket|on", one entry per row.
    QStringList ipRows() {
        DbSession s(console().database());
        auto q = s.run("SELECT TrmIP || '|' || PCno || '|' || SKIndex, Status FROM SrvIPTable "
                       "ORDER BY rowid");
        QStringList rows;
        while (q.next())
            rows << q.value(0).toString() + (isYes(q.value(1)) ? "|on" : "|off");
        return rows;
    }

private Q_SLOTS:
    void init() {
        probe.reset();
        fx.reset();
        fx = std::make_unique<ConsoleFixture>();
        probe = std::make_unique<TerminalProbe>(fx->start());
        QVERIFY(probe->openOtherLine()); // socket 1; the terminals under test come after
    }

    void reconnectTakesTheNextSocketAndKeepsTheRow_data() {
        QTest::addColumn<bool>("reset");
        QTest::newRow("orderly close") << false;
        QTest::newRow("reset") << true;
    }
    void reconnectTakesTheNextSocketAndKeepsTheRow() {
        QFETCH(bool, reset);
        auto first = connectFrom();
        QVERIFY(first);
        QVERIFY(console().messageLog().contains("RQST CONN : 127.0.0.1\r"));
        QVERIFY(identify(*first, 7));
        QCOMPARE(ipRows(), QStringList{"127.0.0.1|7|2|on"});
        reset ? first->abort() : first->disconnectFromConsole();
        QTRY_VERIFY(!record(7).online);
        QCOMPARE(ipRows(), QStringList{"127.0.0.1|7|2|off"});
        QCOMPARE(console().control().socketOfPc(7), -1);

        auto second = connectFrom();
        QVERIFY(second);
        QVERIFY(identify(*second, 7));
        QCOMPARE(ipRows(), QStringList{"127.0.0.1|7|3|on"}); // the next socket
        QCOMPARE(drain(*second), L{});                       // nothing was paused
    }

    // What each terminal message, sent in turn from PC 5, brings: the answers, the
    // notices shown ("title|text"), PC 5's session, and no change to the registry.
    void messages_data() {
        QTest::addColumn<QByteArray>("messages"); // '\n' between
        QTest::addColumn<QByteArray>("replies");  // '|' between
        QTest::addColumn<QString>("notice");
        QTest::addColumn<QString>("cid");
        QTest::addColumn<QByteArray>("products"); // Products.LST; null: no file
        const auto row = [](const char* name, const QByteArray& messages, const QByteArray& replies,
                            const QString& notice = {}, const QString& cid = {},
                            const QByteArray& products = {}) {
            QTest::newRow(name) << messages << replies << notice << cid << products;
        };
        const QByteArray log = "LOG ID-1:JUAN;5", started = "SMTR 09:00:00|Log Successful";
        row("LOG, free PC", log, started, {}, "ID-1");
        row("same customer, another PC", log + "\nLOG ID-1:JUAN;6", started + "|Failed Log",
            "Duplicate ID|Client ID is already logged", "ID-1");
        row("same customer in blanks", log + "\nLOG  ID-1 :X;6", started + "|Failed Log",
            "Duplicate ID|Client ID is already logged", "ID-1");
        row("another customer, same PC", log + "\nLOG ID-2:ANA;5", started + "|Failed Log",
            "Not Allowed|This PC is already logged", "ID-1");
        row("LOG, PC empty", "LOG ID-1:JUAN;", "Failed Log",
            "Invalid Trm Number|Pc Terminal is empty");
        row("LOG, PC beyond NOFPC", "LOG ID-1:JUAN;25", "Failed Log");
        // A member's name must match "LN, FN" (FN trimmed) in capitals; no own reply.
        row("CHK as registered", "CHK M-0001:DELA CRUZ, JUAN;5", "SMTR 09:00:00", {}, "M-0001");
        row("CHK other case", "CHK M-0001:dela Cruz, juan;5", "SMTR 09:00:00", {}, "M-0001");
        row("CHK wrong first name", "CHK M-0001:DELA CRUZ, JOSE;5", "INVD");
        row("CHK no blank after comma", "CHK M-0001:DELA CRUZ,JUAN;5", "INVD");
        row("CHK unknown id", "CHK M-9999:DELA CRUZ, JUAN;5", "INVD");
        row("Loa", "Loa", "Form logger loaded");
        row("TXT", "TXT hi from 5", "MSGR");
        row("EMT", "EMT Printer jammed", "", "|EMT Printer jammed");
        const QByteArray two = "RAVP Coke @ 15.00;Chips @ 20.00;End";
        row("PLS, no file", "PLS", "RAVP None @ 0.00;End");
        row("PLS, empty file", "PLS", "RAVP End", {}, {}, "");
        row("PLS, two lines", "PLS", two, {}, {}, "Coke @ 15.00\nChips @ 20.00\n");
        row("PLS, CRLF, no last newline", "PLS", two, {}, {}, "Coke @ 15.00\r\nChips @ 20.00");
        row("PLS, blank line", "PLS", "RAVP A @ 1.00;;B @ 2.00;End", {}, {},
            "A @ 1.00\n\nB @ 2.00\n");
        // Malformed: ignored without an answer.
        for (const char* m : {"LOG ID-1 JUAN;5", "LOG ID-1;JUAN:5", "LOG ID-1:JUAN;300",
                              "CHK ID-1:JUAN", "AIPxyz", "log ID-1:JUAN;5"})
            row(m, m, "");
        row("binary", "\xff\x01\x02LOG", "");
    }
    void messages() {
        QFETCH(QByteArray, messages);
        QFETCH(QByteArray, replies);
        QFETCH(QString, notice);
        QFETCH(QString, cid);
        QFETCH(QByteArray, products);
        if (!products.isNull()) {
            QFile f(fx->folder->file("Products.LST"));
            QVERIFY(f.open(QIODevice::WriteOnly));
            QCOMPARE(f.write(products), products.size());
        }
        fx->exec("INSERT INTO members (CID, LN, FN) VALUES ('M-0001', 'Dela Cruz', '  Juan ')");
        QSignalSpy dialog(&console().terminalMessages(), &TerminalMessages::logOnDialogRequested);
        console().timeLimits().setLimitOfPc(5, "30"); // the board's choice, which a start drops
        auto t = connectFrom();
        QVERIFY(t);
        QVERIFY(identify(*t, 5));
        const QStringList rows = ipRows();

        L got;
        for (const QByteArray& m : messages.split('\n'))
            got += exchange(*t, m);
        QCOMPARE(got.join('|'), replies);
        QStringList shown;
        for (const auto& s : fx->prompts.shown) {
            QCOMPARE(s.kind, "notice"); // the socket event goes on; nothing waits for it
            shown << s.title + '|' + s.text;
        }
        QCOMPARE(shown.join('\n'), notice);
        QCOMPARE(dialog.count(), messages == "Loa" ? 1 : 0);
        if (messages.startsWith("TXT"))
            QVERIFY(console().messageLog().text().startsWith(QString::fromUtf8(messages) + '\r'));
        QCOMPARE(ipRows(), rows);
        QVERIFY(record(5).online);
        QVERIFY(!QFile::exists(fx->folder->file("TrmSnapShot.Bmp")));

        QCOMPARE(console().terminals().loggedCount(), cid.isEmpty() ? 0 : 1);
        QCOMPARE(
            fx->scalar(
                  "SELECT "
                  "group_concat(CID||'|'||StartTime||'|'||aindex||'|'||pcstat||'|'||stopwatch) "
                  "FROM templog WHERE isout = 0")
                .toString(),
            cid.isEmpty() ? QString() : cid + "|09:00:00|5|LOG|U");
        if (!cid.isEmpty()) {
            QCOMPARE(record(5).startTick, fx->clock.tickCount());
            QCOMPARE(record(5).timeLimit, "U");
        }
    }

    // Another program holds the port: start-up says so, naming the port, and the status
    // bar does not pretend to listen.
    void takenPortIsReportedAtStartUp() {
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress::AnyIPv4));
        ConsoleFixture f;
        f.console = std::make_unique<Console>(f.clock, f.prompts, *f.folder);
        f.console->openStorage();
        const auto report = f.console->startUp(other.serverPort(), f.iniPath());
        QCOMPARE(report.problems.size(), 1);
        QVERIFY2(
            report.problems.first().startsWith(
                QStringLiteral("The console cannot listen on port %1: ").arg(other.serverPort())),
            qPrintable(report.problems.first()));
        QVERIFY(!f.console->server().isListening());
        mainTimerTick(f.console->terminals(), f.console->server(), f.console->statusPanels(),
                      f.clock);
        QCOMPARE(f.console->statusPanels().text(StatusPanel::Port),
                 QStringLiteral("Not listening: terminals cannot connect"));
    }

    void ratesAreSentMasked() {
        console().rates().setValues(120, Money::fromUnits(72500), 45);
        auto t = connectFrom();
        QVERIFY(t);
        t->requestRates();
        QCOMPARE(t->takeMessage(), QByteArray("SRPH 120.:45.;7.25"));
    }

    void connectionLoss_data() {
        QTest::addColumn<bool>("reset");
        QTest::addColumn<bool>("running");
        QTest::addColumn<qint32>("bkTick");
        // A running session is paused with the banked time replaced by now - TickStart:
        // 60000, not 5000 + 60000. A paused one keeps what it had, and nothing is logged.
        QTest::newRow("running, closed") << false << true << 60000;
        QTest::newRow("running, reset") << true << true << 60000;
        QTest::newRow("paused, closed") << false << false << 5000;
        QTest::newRow("paused, reset") << true << false << 5000;
    }
    void connectionLoss() {
        QFETCH(bool, reset);
        QFETCH(bool, running);
        QFETCH(qint32, bkTick);
        auto t = connectFrom();
        QVERIFY(t);
        QVERIFY(identify(*t, 5));
        t->logIn("ID-00001:DELA CRUZ, JUAN;5");
        QVERIFY(!t->waitFor("Log Successful").isEmpty());
        const TerminalRecord& r = record(5);
        {
            auto edit = console().terminals().edit(5);
            edit->bankedMs = 5000; // banked by an earlier pause
            if (!running)
                edit->state = TerminalState::Paused;
            QVERIFY(console().sessionLog().updateSessionRow(*edit));
        }
        fx->clock.advance(60000);

        reset ? t->abort() : t->disconnectFromConsole();
        QTRY_VERIFY(!r.online);
        QCOMPARE(ipRows(), QStringList{"127.0.0.1|5|2|off"});
        QVERIFY(r.logged);
        QCOMPARE(r.bankedMs, bkTick);
        QCOMPARE(fx->scalar("SELECT BkTick || '|' || pcstat FROM templog").toString(),
                 QString::number(bkTick) + "|PAU");
        QCOMPARE(console().messageLog().contains("CONN ERR: 127.0.0.1 Socket Force closed\r"),
                 running);
        // Back again, the terminal is told its session is paused.
        auto back = connectFrom();
        QVERIFY(back);
        QVERIFY(identify(*back, 5));
        QCOMPARE(drain(*back), L{"PAUS"});
    }

    void snapshotArrivesWhole() {
        QImage image(100, 60, QImage::Format_RGB32);
        for (qsizetype i = 0; i < image.sizeInBytes(); ++i)
            image.bits()[i] = uchar(i * 7 + i / 251);
        const L sent = HostActions::snapshotPieces(HostActions::encodeBitmap(image));
        QCOMPARE(sent.size(), 3);
        auto t = connectFrom();
        QVERIFY(t);
        t->setAutoAnswer(false); // the pieces below are sent by hand
        QVERIFY(identify(*t, 3));
        t->logIn("ID-00003:REYES, ANA;3");
        QVERIFY(!t->waitFor("Log Successful").isEmpty());
        QVERIFY(console().snapshots().request(3));
        QVERIFY(!t->waitFor("SNPS").isEmpty());
        QSignalSpy texts(&console().snapshots(), &SnapshotReceiver::progress);
        QSignalSpy done(&console().snapshots(), &SnapshotReceiver::received);
        const QString path = fx->folder->file("TrmSnapShot.Bmp");
        // One piece at a time, each once the console has taken the one before.
        t->sendRaw(sent[0]);
        QTRY_VERIFY(QFile::exists(path));
        t->sendRaw(sent[1]);
        QTRY_COMPARE(texts.count(), 1);
        t->sendRaw(sent[2]);
        QTRY_COMPARE(done.count(), 1);
        QStringList shown;
        for (const auto& args : texts)
            shown << args.at(0).toString();
        QCOMPARE(shown, (QStringList{"Receiving bytes... 16384 Bytes",
                                     "Receiving bytes... 24576 Bytes", "Done.!"}));
        QCOMPARE(done.at(0).at(0).toString(), path);
        QCOMPARE(done.at(0).at(1).toString(), "ID-00003:REYES, ANA from IP : 127.0.0.1");
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), sent.join());
        // Finished: the next message is handled as a message again.
        t->clearInbox();
        QCOMPARE(drain(*t), L{});
    }

    // A console that has run long enough to hand out 32,767 sockets still accepts.
    void socketCounterNeverRefuses() {
        auto t = connectFrom();
        QVERIFY(t);
        QVERIFY(identify(*t, 3));
        server().setSocketCounter(32766);
        for (const char* address : {"127.0.0.5", "127.0.0.6"}) {
            auto late = connectFrom(address); // its "ACPT" taken
            QVERIFY(late);
            QVERIFY(identify(*late, address[8] - '0'));
        }
        QCOMPARE(server().socketCounter(), 32768);
        QCOMPARE(fx->scalar("SELECT SKIndex FROM SrvIPTable WHERE PCno = 6").toInt(), 32768);
        // The terminal served before goes on both ways.
        QVERIFY(console().control().sendToPc(3, Msg::text("still here")));
        QCOMPARE(drain(*t), L{"TEXT still here"});
    }
};

QTEST_MAIN(ServerTest)
#include "tst_server.moc"
