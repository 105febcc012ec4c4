#include "host_actions.h"
#include "protocol/protocol.h"
#include "server/session_clock.h"
#include "support/console_fixture.h"
#include "support/files.h"

#include <QImage>
#include <QSignalSpy>
#include <QTcpServer>
#include <QtTest>

#include <memory>

using L = QByteArrayList;

class ServerTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;

    Console& console() { return *fx->console; }
    TerminalProbe& probe() { return fx->probe(); }
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
        fx = std::make_unique<ConsoleFixture>();
        fx->start();
        probe(); // its own line takes socket 1; the terminals under test come after
    }
    void cleanup() { fx.reset(); }

    // Each row's messages from PC 5: answers, notices ("title|text"), its session ("id|details").
    void messages_data() {
        QTest::addColumn<QByteArray>("messages"); // '\n' between
        QTest::addColumn<QByteArray>("replies");  // '|' between
        QTest::addColumn<QString>("notice");
        QTest::addColumn<QString>("session");
        QTest::addColumn<QByteArray>("products"); // Products.LST; null: no file
        const auto row = [](const char* name, const QByteArray& messages, const QByteArray& replies,
                            const QString& notice = {}, const QString& session = {},
                            const QByteArray& products = {}) {
            QTest::newRow(name) << messages << replies << notice << session << products;
        };
        const QByteArray log = "LOG ID-1:JUAN;5", started = "SMTR 09:00:00|Log Successful";
        const QString duplicate = "Duplicate ID|Client ID is already logged";
        row("LOG, free PC", log, started, {}, "ID-1|ID-1:JUAN");
        row("same customer, another PC", log + "\nLOG ID-1:JUAN;6", started + "|Failed Log",
            duplicate, "ID-1|ID-1:JUAN");
        row("same customer in blanks", log + "\nLOG  ID-1 :X;6", started + "|Failed Log", duplicate,
            "ID-1|ID-1:JUAN");
        row("another customer, same PC", log + "\nLOG ID-2:ANA;5", started + "|Failed Log",
            "Not Allowed|This PC is already logged", "ID-1|ID-1:JUAN");
        row("LOG, PC empty", "LOG ID-1:JUAN;", "Failed Log",
            "Invalid Trm Number|Pc Terminal is empty");
        row("LOG, PC beyond NOFPC", "LOG ID-1:JUAN;25", "Failed Log");
        // A member's name must match "LN, FN" (FN trimmed) in capitals; no own reply. The
        // session takes the id as the register spells it.
        const QString juan = "M-0001|M-0001:DELA CRUZ, JUAN";
        row("CHK as registered", "CHK M-0001:DELA CRUZ, JUAN;5", "SMTR 09:00:00", {}, juan);
        row("CHK other case", "CHK m-0001:dela Cruz, juan;5", "SMTR 09:00:00", {},
            "M-0001|M-0001:dela Cruz, juan");
        row("CHK same member in another case, another PC",
            "CHK M-0001:DELA CRUZ, JUAN;5\nCHK m-0001:DELA CRUZ, JUAN;6",
            "SMTR 09:00:00|Failed Log", duplicate, juan);
        row("CHK wrong first name", "CHK M-0001:DELA CRUZ, JOSE;5", "INVD");
        row("CHK no blank after comma", "CHK M-0001:DELA CRUZ,JUAN;5", "INVD");
        row("CHK unknown id", "CHK M-9999:DELA CRUZ, JUAN;5", "INVD");
        // A terminal running Windows sends Windows-1252, not UTF-8; so may the product list be.
        row("CHK in Windows-1252",
            "CHK M-0002:PE\xd1"
            "A, JOS\xc9;5",
            "SMTR 09:00:00", {}, "M-0002|M-0002:PEÑA, JOSÉ");
        row("PLS, Windows-1252 file", "PLS", "RAVP Café con leche @ 25.00;End", {}, {},
            "Caf\xe9 con leche @ 25.00\r\n");
        row("PLS, no file", "PLS", "RAVP None @ 0.00;End");
        row("Loa", "Loa", "Form logger loaded");
        row("TXT", "TXT hi from 5", "MSGR");
        row("EMT", "EMT Printer jammed", "", "|EMT Printer jammed");
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
        QFETCH(QString, session);
        QFETCH(QByteArray, products);
        if (!products.isNull())
            QVERIFY(fx->writeFile("Products.LST", products));
        fx->exec("INSERT INTO members (CID, LN, FN) VALUES ('M-0001', 'Dela Cruz', '  Juan '), "
                 "('M-0002', 'PEÑA', 'JOSÉ')");
        QSignalSpy dialog(&console().terminalMessages(), &TerminalMessages::logOnDialogRequested);
        console().timeLimits().setLimitOfPc(5, "30"); // the board's choice, which a start drops
        auto t = probe().online(5, "127.0.0.1");
        QVERIFY(t);
        const QStringList rows = ipRows();

        L got;
        for (const QByteArray& m : messages.split('\n'))
            got += probe().exchange(*t, m);
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
        QVERIFY(fx->record(5).online);
        QVERIFY(!QFile::exists(fx->folder->file("TrmSnapShot.Bmp")));

        QCOMPARE(console().terminals().loggedCount(), session.isEmpty() ? 0 : 1);
        QCOMPARE(fx->scalar("SELECT group_concat(CID || '|' || cdtls || '|' || StartTime || '|' || "
                            "aindex || '|' || pcstat || '|' || stopwatch) "
                            "FROM templog WHERE isout = 0")
                     .toString(),
                 session.isEmpty() ? QString() : session + "|09:00:00|5|LOG|U");
        if (session.isEmpty())
            return;
        QCOMPARE(fx->record(5).cid + '|' + fx->record(5).customerLabel, session);
        QCOMPARE(fx->record(5).startTick, fx->clock.tickCount());
        QCOMPARE(fx->record(5).timeLimit, "U");
    }

    // Start-up names the taken port, and the status bar does not pretend to listen.
    void takenPortIsReportedAtStartUp() {
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress::AnyIPv4));
        ConsoleFixture f;
        const auto report = f.open().startUp(other.serverPort(), f.iniPath());
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

    // A lost connection, closed or reset, keeps its registry row, off. A running session is
    // paused with the banked time replaced by now - TickStart: 60000, not 5000 + 60000; a
    // paused one keeps what it had, and nothing is logged. Back again, the terminal takes
    // the next socket and is told when its session is paused.
    void connectionLoss_data() {
        QTest::addColumn<bool>("reset");
        QTest::addColumn<QString>("session"); // none, running, paused
        QTest::addColumn<qint32>("banked");
        for (bool reset : {false, true})
            for (const auto& [session, banked] :
                 {std::pair{"none", 0}, {"running", 60000}, {"paused", 5000}})
                row(QByteArray(session).append(reset ? ", reset" : ", closed").constData(), reset,
                    session, qint32(banked));
    }
    void connectionLoss() {
        QFETCH(bool, reset);
        QFETCH(QString, session);
        QFETCH(qint32, banked);
        auto t = probe().connect();
        QVERIFY(t);
        QVERIFY(console().messageLog().contains("RQST CONN : 127.0.0.1\r"));
        QVERIFY(probe().identify(*t, 5));
        QCOMPARE(ipRows(), QStringList{"127.0.0.1|5|2|on"});
        if (session != "none") {
            QVERIFY(probe().logIn(*t, 5, "ID-00001:DELA CRUZ, JUAN"));
            auto edit = console().terminals().edit(5);
            edit->bankedMs = 5000; // banked by an earlier pause
            if (session == "paused")
                edit->state = TerminalState::Paused;
            QVERIFY(console().sessionLog().updateSessionRow(*edit));
        }
        fx->clock.advance(60000);

        reset ? t->abort() : t->disconnectFromConsole();
        QTRY_VERIFY(!fx->record(5).online);
        QCOMPARE(ipRows(), QStringList{"127.0.0.1|5|2|off"});
        QCOMPARE(console().control().socketOfPc(5), -1);
        QCOMPARE(fx->record(5).logged, session != "none");
        QCOMPARE(fx->record(5).bankedMs, banked);
        QCOMPARE(fx->scalar("SELECT BkTick || '|' || pcstat FROM templog").toString(),
                 session == "none" ? QString() : QString::number(banked) + "|PAU");
        QCOMPARE(console().messageLog().contains("CONN ERR: 127.0.0.1 Socket Force closed\r"),
                 session == "running");

        auto back = probe().connect();
        QVERIFY(back);
        QVERIFY(probe().identify(*back, 5));
        QCOMPARE(ipRows(), QStringList{"127.0.0.1|5|3|on"});
        QCOMPARE(TerminalProbe::drain(*back), session == "none" ? L{} : L{"PAUS"});
    }

    // A snapshot is taken only when asked for, only from the connection that began it, and
    // never larger than a bound: past it, it is dropped with its file. Pieces get no answer.
    void snapshot_data() {
        QTest::addColumn<bool>("asked");
        QTest::addColumn<bool>("otherSends");
        QTest::addColumn<qint64>("bound");
        QTest::addColumn<bool>("kept");
        row("asked", true, false, qint64(1 << 20), true);
        row("not asked", false, false, qint64(1 << 20), false);
        row("another PC sends between the pieces", true, true, qint64(1 << 20), true);
        row("larger than the bound", true, false, qint64(10000), false);
    }
    void snapshot() {
        QFETCH(bool, asked);
        QFETCH(bool, otherSends);
        QFETCH(qint64, bound);
        QFETCH(bool, kept);
        QImage image(100, 60, QImage::Format_RGB32);
        for (qsizetype i = 0; i < image.sizeInBytes(); ++i)
            image.bits()[i] = uchar(i * 7 + i / 251);
        const L pieces = HostActions::snapshotPieces(HostActions::encodeBitmap(image));
        QCOMPARE(pieces.size(), 3);
        auto t = probe().online(3), other = probe().online(4);
        QVERIFY(t && other);
        t->setAutoAnswer(false); // the pieces below are sent by hand
        QVERIFY(probe().logIn(*t, 3, "ID-00003:REYES, ANA"));
        console().snapshots().setMostBytes(bound);
        QSignalSpy texts(&console().snapshots(), &SnapshotReceiver::progress);
        QSignalSpy done(&console().snapshots(), &SnapshotReceiver::received);
        if (asked) {
            QVERIFY(console().snapshots().request(3));
            QVERIFY(!t->waitFor("SNPS").isEmpty());
        }
        L replies;
        for (const QByteArray& piece : pieces) {
            replies += probe().exchange(*t, piece);
            if (otherSends)
                probe().exchange(*other, "not a piece of PC 3");
        }
        QCOMPARE(replies, L{});
        const QString path = fx->folder->file("TrmSnapShot.Bmp");
        QCOMPARE(QFile::exists(path), kept);
        QCOMPARE(console().messageLog().contains("more than any screen"), bound < 20000);
        QCOMPARE(done.size(), kept ? 1 : 0);
        if (!kept)
            return;
        QStringList shown;
        for (const auto& args : texts)
            shown << args.at(0).toString();
        QCOMPARE(shown, (QStringList{"Receiving bytes... 16384 Bytes",
                                     "Receiving bytes... 24576 Bytes", "Done.!"}));
        QCOMPARE(done.at(0).at(0).toString(), path);
        QCOMPARE(done.at(0).at(1).toString(), "ID-00003:REYES, ANA from IP : 127.0.0.3");
        QCOMPARE(readFile(path), pieces.join());
    }

    // A console that has run long enough to hand out 32,767 sockets still accepts.
    void socketCounterNeverRefuses() {
        auto t = probe().online(3);
        QVERIFY(t);
        console().server().setSocketCounter(32766);
        for (int pc : {5, 6})
            QVERIFY(probe().online(pc));
        QCOMPARE(console().server().socketCounter(), 32768);
        QCOMPARE(fx->scalar("SELECT SKIndex FROM SrvIPTable WHERE PCno = 6").toInt(), 32768);
        // The terminal served before goes on both ways.
        QVERIFY(console().control().sendToPc(3, Msg::text("still here")));
        QCOMPARE(TerminalProbe::drain(*t), L{"TEXT still here"});
    }
};

QTEST_MAIN(ServerTest)
#include "tst_server.moc"
