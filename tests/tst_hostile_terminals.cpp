// What a hostile or broken program on the café's network, or a failing disk, can do to the
// console: each over real loopback connections against a real console.
#include "console/instance_lock.h"
#include "console/startup_checks.h"
#include "protocol/protocol.h"
#include "server/operator_commands.h"
#include "support/console_fixture.h"
#include "support/scratch_disk.h"
#include "support/terminal_probe.h"

#include <QFile>
#include <QTcpSocket>
#include <QtTest>

#include <memory>
#include <vector>

using L = QByteArrayList;
using namespace Qt::StringLiterals;

class HostileTerminalsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<TerminalProbe> probe;

    Console& console() { return *fx->console; }
    const TerminalRecord& record(int pc) { return console().terminals().at(pc); }
    void start(const QByteArray& settings = "24=NOFPC\n") {
        fx->writeSettings(settings);
        probe = std::make_unique<TerminalProbe>(fx->start());
        QVERIFY(probe->openOtherLine());
    }
    std::unique_ptr<TerminalClient> online(int pc) {
        return probe->online(pc, u"127.0.0.%1"_s.arg(pc));
    }
    // A bare connection that never says which PC it is.
    std::unique_ptr<QTcpSocket> bare(const QString& address) {
        auto s = std::make_unique<QTcpSocket>();
        s->bind(QHostAddress(address));
        s->connectToHost(QHostAddress::LocalHost, console().server().port());
        return s->waitForConnected(5000) ? std::move(s) : nullptr;
    }
    QStringList notices() {
        QStringList out;
        for (const auto& s : fx->prompts.shown)
            if (s.kind == "notice"_L1)
                out << s.text;
        return out;
    }
    bool startSession(TerminalClient& t, int pc, const char* who = "W-1:JUAN") {
        t.logIn(u"%1;%2"_s.arg(QString::fromLatin1(who)).arg(pc));
        const bool ok = !t.waitFor("Log Successful").isEmpty();
        TerminalProbe::drain(t);
        return ok;
    }

private Q_SLOTS:
    void init() { fx = std::make_unique<ConsoleFixture>(); }
    void cleanup() {
        probe.reset();
        fx.reset();
    }

    // Connections that never identify are bounded; the oldest makes room, so a terminal
    // connecting during a flood is still served, and the operator hears of it once.
    void floodOfSilentConnectionsLeavesRoomForTerminals() {
        start("2=NOFPC\n"); // room for 4 x 2 + 64 = 72 silent ones
        std::vector<std::unique_ptr<QTcpSocket>> silent;
        for (int i = 0; i < 100; ++i) {
            silent.push_back(bare(u"127.0.1.%1"_s.arg(i + 1)));
            QVERIFY(silent.back());
        }
        auto t = online(1);
        QVERIFY(t);
        QCOMPARE(TerminalProbe::drain(*t), L{});
        QVERIFY(console().server().unidentifiedCount() <= 72);
        QTRY_COMPARE(silent.front()->state(), QAbstractSocket::UnconnectedState);
        QCOMPARE(silent.back()->state(), QAbstractSocket::ConnectedState);
        const QStringList told = notices().filter(u"closed to make room"_s);
        QCOMPARE(told.size(), 1); // at most once a minute
    }

    // "EMT" floods are summed up: a few notices a second per terminal, then the count.
    void noticeFloodIsSummedUp() {
        start();
        auto t = online(7);
        QVERIFY(t);
        for (int i = 0; i < 20; ++i)
            probe->exchange(*t, "EMT help " + QByteArray::number(i));
        QCOMPARE(notices(), (QStringList{u"EMT help 0"_s, u"EMT help 1"_s, u"EMT help 2"_s}));
        fx->clock.advance(1000);
        QTRY_COMPARE(notices().size(), 4); // the console's own second passes too
        QCOMPARE(notices().last(), u"PC 7 sent 17 more notices"_s);
        // A new second: the terminal is heard again.
        probe->exchange(*t, "EMT again");
        QCOMPARE(notices().last(), u"EMT again"_s);
    }

    // A program on a customer's PC connecting and closing from the PC's address, saying
    // nothing, does not stop the PC's meter.
    void silentConnectionFromThePcStopsNothing() {
        start();
        auto t = online(5);
        QVERIFY(t);
        QVERIFY(startSession(*t, 5));
        fx->clock.advance(60000);
        auto prank = bare(u"127.0.0.5"_s);
        QVERIFY(prank);
        prank->disconnectFromHost();
        QCOMPARE(TerminalProbe::drain(*t), L{}); // by now the close was handled
        QCOMPARE(record(5).state, TerminalState::Running);
        QVERIFY(!console().messageLog().contains(u"Socket Force closed"_s));
    }

    // A second connection from the PC's address that identified and then closes pauses
    // the session as any lost connection does, and the PC, still connected, is told.
    void lostSecondConnectionPausesAndTellsThePc() {
        start();
        auto t = online(5);
        QVERIFY(t);
        QVERIFY(startSession(*t, 5));
        fx->clock.advance(90000);
        auto second = probe->connect(u"127.0.0.5"_s);
        QVERIFY(second);
        QVERIFY(probe->identify(*second, 5));
        second->disconnectFromConsole();
        QTRY_COMPARE(record(5).state, TerminalState::Paused);
        QCOMPARE(record(5).bankedMs, 90000);
        QCOMPARE(TerminalProbe::drain(*t), L{"PAUS 90000"});
        // The operator still reaches the PC: resume goes to the connection that is left.
        resumePc(console().sessionParts(), 5);
        QCOMPARE(TerminalProbe::drain(*t).value(0).left(5), QByteArray("PAUX "));
        QVERIFY(record(5).online);
    }

    // One member cannot hold two sessions by typing the id in another letter case.
    void memberInAnotherLetterCaseIsAlreadyLogged() {
        start();
        fx->exec(u"INSERT INTO members (CID, LN, FN) VALUES ('ID-00001', 'Dela Cruz', 'Juan')"_s);
        std::unique_ptr<TerminalClient> t[3];
        const char* ids[] = {"ID-00001", "id-00001", "Id-00001"};
        L replies;
        for (int i = 0; i < 3; ++i) {
            t[i] = online(5 + i);
            QVERIFY(t[i]);
            replies += probe->exchange(*t[i], "CHK " + QByteArray(ids[i]) + ":DELA CRUZ, JUAN;" +
                                                  QByteArray::number(5 + i));
        }
        QCOMPARE(replies, (L{"SMTR 09:00:00", "Failed Log", "Failed Log"}));
        QCOMPARE(console().terminals().loggedCount(), 1);
        QCOMPARE(record(5).cid, u"ID-00001"_s); // as the register spells it
        QCOMPARE(fx->scalar(u"SELECT group_concat(CID) FROM templog"_s).toString(), u"ID-00001"_s);
    }

    // Two spellings of one walk-in id on two PCs, started in the same second: each PC's
    // pause lands on its own row, and a restart puts each back as it was.
    void sameIdInTwoSpellingsKeepsItsOwnRows() {
        start();
        auto a = online(5), b = online(6);
        QVERIFY(a);
        QVERIFY(b);
        QVERIFY(startSession(*a, 5, "w-1:ANA"));
        QVERIFY(startSession(*b, 6, "W-1:BEN"));
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
    // console without end; it is handled as a lost connection.
    void slowReaderIsCutOff() {
        start();
        QFile products(fx->folder->file(u"Products.LST"_s));
        QVERIFY(products.open(QIODevice::WriteOnly));
        for (int i = 0; i < 6000; ++i)
            products.write("Instant noodles with egg and a long description @ 35.00\n");
        products.close();
        auto reader = probe->connect(u"127.0.0.9"_s);
        QVERIFY(reader);
        QVERIFY(probe->identify(*reader, 9));
        reader->socket().setReadBufferSize(1); // reads nothing more
        QSignalSpy lost(&console().server(), &TerminalServer::connectionLost);
        for (int i = 0; i < 200 && lost.isEmpty(); ++i) {
            reader->sendRaw("PLS");
            QTest::qWait(2); // one request per message
        }
        QTRY_COMPARE(lost.size(), 1);
        QVERIFY(console().messageLog().contains(u"does not read what it is sent"_s));
        QVERIFY(!console().server().isOpen(lost.first().at(0).toInt()));
    }

    // A snapshot is taken only when asked for, only from the connection that began it,
    // and never larger than a bound; past it, it is dropped with its file.
    void snapshotsAreAskedForAndBounded_data() {
        QTest::addColumn<bool>("asked");
        QTest::addColumn<bool>("otherSends");
        QTest::addColumn<qint64>("bound");
        QTest::addColumn<bool>("kept");
        QTest::newRow("asked") << true << false << qint64(1 << 20) << true;
        QTest::newRow("not asked") << false << false << qint64(1 << 20) << false;
        QTest::newRow("another PC sends pieces too") << true << true << qint64(1 << 20) << true;
        QTest::newRow("larger than the bound") << true << false << qint64(20000) << false;
    }
    void snapshotsAreAskedForAndBounded() {
        QFETCH(bool, asked);
        QFETCH(bool, otherSends);
        QFETCH(qint64, bound);
        QFETCH(bool, kept);
        start();
        auto t = online(3), other = online(4);
        QVERIFY(t);
        QVERIFY(other);
        t->setAutoAnswer(false);
        console().snapshots().setMostBytes(bound);
        QSignalSpy done(&console().snapshots(), &SnapshotReceiver::received);
        if (asked) {
            QVERIFY(console().snapshots().request(3));
            QVERIFY(!t->waitFor("SNPS").isEmpty());
        }
        const QByteArray piece(8192, 'p');
        const L pieces{"BM6" + piece, piece, piece + "Close"};
        for (const QByteArray& p : pieces) {
            probe->exchange(*t, p);
            if (otherSends)
                probe->exchange(*other, "not a piece of PC 3");
        }
        const QString path = fx->folder->file(u"TrmSnapShot.Bmp"_s);
        QCOMPARE(done.size(), kept ? 1 : 0);
        QCOMPARE(QFile::exists(path), kept);
        if (kept) {
            QFile f(path);
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), pieces.join());
        }
    }

    // Text from a terminal running Windows is Windows-1252, not UTF-8; so may the product
    // list be.
    void windowsTextIsRead() {
        start();
        fx->exec(u"INSERT INTO members (CID, LN, FN) VALUES ('ID-9', 'PEÑA', 'JOSÉ')"_s);
        QFile products(fx->folder->file(u"Products.LST"_s));
        QVERIFY(products.open(QIODevice::WriteOnly));
        products.write("Caf\xe9 con leche @ 25.00\r\n");
        products.close();
        auto t = online(5);
        QVERIFY(t);
        QCOMPARE(probe->exchange(*t, "CHK ID-9:PE\xd1"
                                     "A, JOS\xc9;5"),
                 L{"SMTR 09:00:00"});
        QCOMPARE(record(5).customerLabel, u"ID-9:PEÑA, JOSÉ"_s);
        QCOMPARE(probe->exchange(*t, "PLS"), L{"RAVP Caf\xc3\xa9 con leche @ 25.00;End"});
    }

    // A database that cannot be written (here a full disk; a locked file is in the long
    // tests) does not keep a lost connection from pausing the session; the operator is told
    // once, and the row is written as soon as the database takes writes again. A session
    // whose row cannot be written does not start.
    void sessionsSurviveAFullDisk() {
        ScratchDisk disk;
        if (!disk.mounted())
            QSKIP(qPrintable(u"no disk of its own can be mounted here: "_s + disk.why()));
        fx = std::make_unique<ConsoleFixture>(disk.path());
        start();
        auto t = online(5), u = online(6);
        QVERIFY(t);
        QVERIFY(u);
        QVERIFY(startSession(*t, 5));
        fx->clock.advance(60000);
        QVERIFY(disk.fill());

        t->abort();
        QTRY_COMPARE(record(5).state, TerminalState::Paused);
        QCOMPARE(record(5).bankedMs, 60000);
        QCOMPARE(console().sessionLog().pendingWrites(), 1);
        const auto toldOfDatabase = [&] {
            return notices().filter(u"Sessions go on"_s);
        };
        QCOMPARE(toldOfDatabase().size(), 1);
        QVERIFY(toldOfDatabase().first().startsWith(u"The database %1/"_s.arg(disk.path())));

        // No session starts that a restart would forget.
        QCOMPARE(probe->exchange(*u, "LOG W-2:ANA;6"), L{"Failed Log"});
        QVERIFY(!record(6).logged);
        QVERIFY(notices().last().startsWith(u"The session of W-2 on PC 6 was not started"_s));
        QCOMPARE(toldOfDatabase().size(), 1); // told once

        disk.free();
        QCOMPARE(probe->exchange(*u, "LOG W-2:ANA;6"), (L{"SMTR 09:01:00", "Log Successful"}));
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
        QVERIFY(dataFolderProblem(disk.path()).isEmpty());
        QVERIFY(disk.setReadOnly(true));
        const QString problem = dataFolderProblem(disk.path());
        QVERIFY2(problem.startsWith(u"The data folder %1 cannot be written"_s.arg(disk.path())),
                 qPrintable(problem));
        InstanceLock lock{AppFolder(disk.path())};
        QVERIFY(!lock.tryLock());
        QVERIFY(!lock.heldElsewhere());
    }

    // A database damaged in its middle is refused at start, named, with the way out;
    // nothing is written to it.
    void damagedDatabaseIsRefusedAtStart() {
        {
            Database db(*fx->folder);
            db.prepare();
            DbSession s(db);
            s.begin();
            for (int i = 0; i < 3000; ++i)
                s.run(u"INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID) VALUES (?, ?, ?, ?)"_s,
                      {QDate(2026, 11, 1), u"SERVICE"_s, i, QString(40, QLatin1Char('c'))});
            s.commit();
        }
        const QString path = Database(*fx->folder).path();
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.size() > 40 * 4096);
        file.seek(file.size() / 2);
        file.write(QByteArray(4096, '\x5a'));
        file.close();
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray before = file.readAll();
        file.close();

        try {
            Database(*fx->folder).prepare();
            QFAIL("a damaged file was taken");
        } catch (const StoreError& e) {
            QVERIFY2(e.text().startsWith(u"The database file %1 is damaged"_s.arg(path)),
                     qPrintable(e.text()));
            QVERIFY(e.text().contains(u"Restore the last backup"_s));
        }
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), before);
    }
};

QTEST_MAIN(HostileTerminalsTest)
#include "tst_hostile_terminals.moc"
