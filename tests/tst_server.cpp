// The console's terminal server end to end: real loopback connections from the
// terminal client, a real database file, a hand-set clock.
#include "terminal_client.h"

#include "server/protocol.h"
#include "server/terminal_server.h"
#include "support/console_fixture.h"

#include <QFile>
#include <QHash>
#include <QImage>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

class ServerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void connectionIsAcceptedAndIdentified();
    void reconnectTakesTheNextSocketAndKeepsTheRow_data();
    void reconnectTakesTheNextSocketAndKeepsTheRow();
    void terminalsAreToldApartByAddress();
    void logStartsASession();
    void secondLogIsRefused_data();
    void secondLogIsRefused();
    void memberCheck_data();
    void memberCheck();
    void ratesRequest_data();
    void ratesRequest();
    void logOnDialogRequest();
    void textGoesIntoTheMessageLog();
    void productList_data();
    void productList();
    void alertRaisesANotice();
    void identifyingTellsAPausedPcItIsPaused_data();
    void identifyingTellsAPausedPcItIsPaused();
    void connectionLoss_data();
    void connectionLoss();
    void snapshotArrivesWhole_data();
    void snapshotArrivesWhole();
    void malformedMessagesChangeNothing_data();
    void malformedMessagesChangeNothing();
    void slotsUsedUpRefuseOnlyNewConnections();

private:
    Console& console() { return *fx->console; }
    TerminalServer& server() { return fx->console->server(); }
    TerminalRecord& record(int pc) { return fx->console->terminals().at(pc); }

    // A terminal connected from `address`, its "ACPT" taken; null when that failed.
    std::unique_ptr<TerminalClient>
    connectFrom(const QString& address = QStringLiteral("127.0.0.1"));
    // Sends "AIP" + pc and waits until the console has registered it.
    bool identify(TerminalClient& t, int pc);
    // Starts a session on `pc` from the terminal with a "LOG" and waits for the answer.
    bool logIn(TerminalClient& t, const QString& payload);
    // Everything the console sent the terminal since the last drain: a rates request
    // goes last, and its answer comes only after every earlier answer.
    QByteArrayList drain(TerminalClient& t);
    // The registry as "address|PC|socket|on", one entry per row.
    QStringList ipRows();
    int count(const QString& table) {
        return fx->scalar(QStringLiteral("SELECT COUNT(*) FROM ") + table).toInt();
    }

    std::unique_ptr<ConsoleFixture> fx;
    QHash<const TerminalClient*, int> socketOf_;
};

void ServerTest::init() {
    fx = std::make_unique<ConsoleFixture>();
    fx->start();
}

void ServerTest::cleanup() {
    socketOf_.clear();
    fx.reset();
}

std::unique_ptr<TerminalClient> ServerTest::connectFrom(const QString& address) {
    auto t = std::make_unique<TerminalClient>();
    if (!t->connectToConsole(QStringLiteral("127.0.0.1"), server().port(), QHostAddress(address)))
        return nullptr;
    if (t->waitFor("ACPT") != "ACPT")
        return nullptr;
    socketOf_[t.get()] = server().socketCounter();
    return t;
}

bool ServerTest::identify(TerminalClient& t, int pc) {
    t.setPcNumber(pc);
    t.identify();
    const int index = socketOf_.value(&t);
    return QTest::qWaitFor([&] { return server().SocketOfPc(pc) == index; });
}

bool ServerTest::logIn(TerminalClient& t, const QString& payload) {
    t.logIn(payload);
    return t.waitFor("Log Successful") == "Log Successful";
}

QByteArrayList ServerTest::drain(TerminalClient& t) {
    t.requestRates();
    if (t.waitFor("SRPH").isEmpty())
        return {"(no answer to RTS)"};
    const QByteArrayList before = t.inbox();
    t.clearInbox();
    return before;
}

QStringList ServerTest::ipRows() {
    Database db(*fx->folder);
    DbSession s(db);
    auto q = s.run(QStringLiteral("SELECT TrmIP, PCno, SKIndex, Status FROM SrvIPTable "
                                  "ORDER BY rowid"));
    QStringList rows;
    while (q.next())
        rows << QStringLiteral("%1|%2|%3|%4")
                    .arg(q.value(0).toString(), q.value(1).toString(), q.value(2).toString(),
                         isYes(q.value(3)) ? QStringLiteral("on") : QStringLiteral("off"));
    return rows;
}

void ServerTest::connectionIsAcceptedAndIdentified() {
    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(console().messageLog().contains(QStringLiteral("RQST CONN : 127.0.0.1\r")));
    QVERIFY(identify(*t, 7));
    QCOMPARE(ipRows(), QStringList{QStringLiteral("127.0.0.1|7|1|on")});
    QVERIFY(record(7).online);
    QCOMPARE(record(7).TrmIP, QStringLiteral("127.0.0.1"));
    QCOMPARE(server().PcOfAddress(QStringLiteral("127.0.0.1")), 7);
    QVERIFY(!record(6).online);
}

void ServerTest::reconnectTakesTheNextSocketAndKeepsTheRow_data() {
    QTest::addColumn<bool>("reset");
    QTest::newRow("orderly close") << false;
    QTest::newRow("reset") << true;
}

void ServerTest::reconnectTakesTheNextSocketAndKeepsTheRow() {
    QFETCH(bool, reset);
    auto first = connectFrom();
    QVERIFY(first);
    QVERIFY(identify(*first, 7));
    if (reset)
        first->abort();
    else
        first->disconnectFromConsole();
    QTRY_VERIFY(!record(7).online);
    QCOMPARE(ipRows(), QStringList{QStringLiteral("127.0.0.1|7|1|off")});
    QCOMPARE(server().SocketOfPc(7), -1);

    auto second = connectFrom();
    QVERIFY(second);
    QVERIFY(identify(*second, 7));
    QCOMPARE(ipRows(), QStringList{QStringLiteral("127.0.0.1|7|2|on")});
    QCOMPARE(server().socketCounter(), qint16(2));
    QVERIFY(record(7).online);
}

void ServerTest::terminalsAreToldApartByAddress() {
    auto a = connectFrom(QStringLiteral("127.0.0.2"));
    auto b = connectFrom(QStringLiteral("127.0.0.3"));
    QVERIFY(a && b);
    QVERIFY(identify(*a, 1));
    QVERIFY(identify(*b, 2));
    QCOMPARE(ipRows(),
             (QStringList{QStringLiteral("127.0.0.2|1|1|on"), QStringLiteral("127.0.0.3|2|2|on")}));
    QVERIFY(server().SendToPc(2, Msg::TEXT(QStringLiteral("for PC 2"))));
    QCOMPARE(drain(*b), QByteArrayList{"TEXT for PC 2"});
    QCOMPARE(drain(*a), QByteArrayList{});

    // The PC number follows what the address reports, not the socket.
    QVERIFY(identify(*a, 9));
    QCOMPARE(ipRows().first(), QStringLiteral("127.0.0.2|9|1|on"));
    QCOMPARE(server().SocketOfPc(1), -1);
}

void ServerTest::logStartsASession() {
    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(identify(*t, 5));
    QVERIFY(logIn(*t, QStringLiteral("ID-00001:DELA CRUZ, JUAN;5")));
    QCOMPARE(t->waitFor("SMTR"), QByteArray("SMTR 09:00:00"));

    const TerminalRecord& r = record(5);
    QVERIFY(r.logged);
    QCOMPARE(r.pcstat, QStringLiteral("LOG"));
    QCOMPARE(r.cid, QStringLiteral("ID-00001"));
    QCOMPARE(r.cdtls, QStringLiteral("ID-00001:DELA CRUZ, JUAN"));
    QCOMPARE(r.starttime, QStringLiteral("09:00:00"));
    QCOMPARE(r.TickStart, fx->clock.tickCount());
    QCOMPARE(r.BkTick, 0);
    QCOMPARE(r.stopwatch, QStringLiteral("U"));
    QCOMPARE(r.TrmIP, QStringLiteral("127.0.0.1"));

    QCOMPARE(count(QStringLiteral("templog")), 1);
    QCOMPARE(fx->scalar(QStringLiteral("SELECT CID || '|' || StartTime || '|' || aindex || '|' || "
                                       "pcstat FROM templog WHERE isout = 0")),
             QVariant(QStringLiteral("ID-00001|09:00:00|5|LOG")));
}

void ServerTest::secondLogIsRefused_data() {
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("notice");
    QTest::addColumn<QString>("title");
    QTest::newRow("same customer, another PC")
        << QStringLiteral("ID-00001:DELA CRUZ, JUAN;6")
        << QStringLiteral("Client ID is already logged") << QStringLiteral("Duplicate ID");
    QTest::newRow("same customer in blanks")
        << QStringLiteral(" ID-00001 :SOMEONE;6") << QStringLiteral("Client ID is already logged")
        << QStringLiteral("Duplicate ID");
    QTest::newRow("another customer, same PC")
        << QStringLiteral("ID-00002:SANTOS, ANA;5") << QStringLiteral("This PC is already logged")
        << QStringLiteral("Not Allowed");
}

void ServerTest::secondLogIsRefused() {
    QFETCH(QString, second);
    QFETCH(QString, notice);
    QFETCH(QString, title);
    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(identify(*t, 5));
    QVERIFY(logIn(*t, QStringLiteral("ID-00001:DELA CRUZ, JUAN;5")));
    t->clearInbox();

    t->logIn(second);
    QCOMPARE(t->waitFor("Failed Log"), QByteArray("Failed Log"));
    QCOMPARE(t->inbox(), QByteArrayList{}); // no second "SMTR"
    QVERIFY(fx->prompts.last());
    QCOMPARE(fx->prompts.last()->kind, QStringLiteral("notice")); // the socket event goes on
    QCOMPARE(fx->prompts.last()->text, notice);
    QCOMPARE(fx->prompts.last()->title, title);
    QCOMPARE(console().terminals().loggedCount(), 1);
    QVERIFY(!record(6).logged);
    QCOMPARE(record(5).cid, QStringLiteral("ID-00001"));
    QCOMPARE(count(QStringLiteral("templog")), 1);
}

void ServerTest::memberCheck_data() {
    QTest::addColumn<QString>("payload");
    QTest::addColumn<bool>("starts");
    QTest::newRow("as registered") << QStringLiteral("M-0001:DELA CRUZ, JUAN;5") << true;
    QTest::newRow("other letter case") << QStringLiteral("M-0001:dela Cruz, juan;5") << true;
    QTest::newRow("wrong first name") << QStringLiteral("M-0001:DELA CRUZ, JOSE;5") << false;
    QTest::newRow("no blank after comma") << QStringLiteral("M-0001:DELA CRUZ,JUAN;5") << false;
    QTest::newRow("unknown id") << QStringLiteral("M-9999:DELA CRUZ, JUAN;5") << false;
}

void ServerTest::memberCheck() {
    QFETCH(QString, payload);
    QFETCH(bool, starts);
    fx->exec(QStringLiteral("INSERT INTO members (CID, LN, FN) VALUES (?, ?, ?)"),
             {QStringLiteral("M-0001"), QStringLiteral("Dela Cruz"), QStringLiteral("  Juan ")});
    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(identify(*t, 5));
    t->checkMember(payload);
    if (starts) {
        QCOMPARE(t->waitFor("SMTR"), QByteArray("SMTR 09:00:00"));
        QVERIFY(record(5).logged);
        QCOMPARE(record(5).cid, QStringLiteral("M-0001"));
        QCOMPARE(count(QStringLiteral("templog")), 1);
        QCOMPARE(drain(*t), QByteArrayList{}); // no reply of its own
    } else {
        QCOMPARE(t->waitFor("INVD"), QByteArray("INVD"));
        QCOMPARE(drain(*t), QByteArrayList{});
        QCOMPARE(console().terminals().loggedCount(), 0);
        QCOMPARE(count(QStringLiteral("templog")), 0);
    }
}

void ServerTest::ratesRequest_data() {
    QTest::addColumn<double>("rph");
    QTest::addColumn<int>("mint");
    QTest::addColumn<qint64>("minaUnits");
    QTest::addColumn<bool>("running");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("defaults, idle")
        << 20.0 << 30 << qint64(100000) << false << QByteArray("SRPH 20.:30.;10.");
    QTest::newRow("defaults, in session")
        << 20.0 << 30 << qint64(100000) << true << QByteArray("SRPH 20.:30.;10.");
    QTest::newRow("fractions") << 15.5 << 45 << qint64(72500) << false
                               << QByteArray("SRPH 15.5:45.;7.25");
    QTest::newRow("hundreds") << 120.0 << 60 << qint64(1005000) << true
                              << QByteArray("SRPH 120.:60.;100.5");
}

void ServerTest::ratesRequest() {
    QFETCH(double, rph);
    QFETCH(int, mint);
    QFETCH(qint64, minaUnits);
    QFETCH(bool, running);
    QFETCH(QByteArray, expected);
    console().rates().RPH = rph;
    console().rates().mint = mint;
    console().rates().mina = Money::fromUnits(minaUnits);
    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(identify(*t, 2));
    if (running)
        QVERIFY(logIn(*t, QStringLiteral("ID-7:X;2")));
    t->clearInbox();
    t->requestRates();
    QCOMPARE(t->takeMessage(), expected);
}

void ServerTest::logOnDialogRequest() {
    QSignalSpy opened(&server(), &TerminalServer::logOnDialogRequested);
    auto t = connectFrom();
    QVERIFY(t);
    t->requestLogOnDialog();
    QCOMPARE(t->takeMessage(), QByteArray("Form logger loaded"));
    QCOMPARE(opened.count(), 1);
}

void ServerTest::textGoesIntoTheMessageLog() {
    auto t = connectFrom();
    QVERIFY(t);
    t->sendText(QStringLiteral("hello from PC 3"));
    QCOMPARE(t->takeMessage(), QByteArray("MSGR"));
    QVERIFY(console().messageLog().startsWith(QStringLiteral("TXT hello from PC 3\r")));
}

void ServerTest::productList_data() {
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("no file") << false << QByteArray() << QByteArray("RAVP None @ 0.00;End");
    QTest::newRow("empty file") << true << QByteArray() << QByteArray("RAVP End");
    QTest::newRow("two lines") << true << QByteArray("Coke @ 15.00\nChips @ 20.00\n")
                               << QByteArray("RAVP Coke @ 15.00;Chips @ 20.00;End");
    QTest::newRow("CRLF, no last newline") << true << QByteArray("Coke @ 15.00\r\nChips @ 20.00")
                                           << QByteArray("RAVP Coke @ 15.00;Chips @ 20.00;End");
    QTest::newRow("blank line") << true << QByteArray("A @ 1.00\n\nB @ 2.00\n")
                                << QByteArray("RAVP A @ 1.00;;B @ 2.00;End");
}

void ServerTest::productList() {
    QFETCH(bool, exists);
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, expected);
    if (exists) {
        QFile f(fx->folder->file(QStringLiteral("Products.LST")));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    auto t = connectFrom();
    QVERIFY(t);
    t->requestProducts();
    QCOMPARE(t->takeMessage(), expected);
}

void ServerTest::alertRaisesANotice() {
    auto t = connectFrom();
    QVERIFY(t);
    t->sendAlert(QStringLiteral("Printer jammed"));
    QTRY_COMPARE(fx->prompts.shown.size(), 1);
    QCOMPARE(fx->prompts.shown.first().kind, QStringLiteral("notice"));
    QCOMPARE(fx->prompts.shown.first().text, QStringLiteral("EMT Printer jammed"));
    QCOMPARE(drain(*t), QByteArrayList{});
}

void ServerTest::identifyingTellsAPausedPcItIsPaused_data() {
    QTest::addColumn<QString>("pcstat");
    QTest::addColumn<QByteArrayList>("expected");
    QTest::newRow("paused") << QStringLiteral("PAU") << QByteArrayList{"PAUS"};
    QTest::newRow("running") << QStringLiteral("LOG") << QByteArrayList{};
    QTest::newRow("being billed") << QStringLiteral("BIL") << QByteArrayList{};
    QTest::newRow("free") << QStringLiteral("FRE") << QByteArrayList{};
    QTest::newRow("locked") << QStringLiteral("NLG") << QByteArrayList{};
}

void ServerTest::identifyingTellsAPausedPcItIsPaused() {
    QFETCH(QString, pcstat);
    QFETCH(QByteArrayList, expected);
    record(4).pcstat = pcstat;
    record(4).logged = pcstat != QLatin1String("NLG") && pcstat != QLatin1String("FRE");
    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(identify(*t, 4));
    QCOMPARE(drain(*t), expected);
}

void ServerTest::connectionLoss_data() {
    QTest::addColumn<bool>("reset");
    QTest::addColumn<bool>("running");
    QTest::addColumn<qint32>("bkTick");
    QTest::addColumn<bool>("reported");
    // A running session is paused with the banked time replaced by now - TickStart:
    // 60000, not 5000 + 60000. A paused one keeps what it had, and nothing is logged.
    QTest::newRow("running, closed") << false << true << 60000 << true;
    QTest::newRow("running, reset") << true << true << 60000 << true;
    QTest::newRow("paused, closed") << false << false << 5000 << false;
    QTest::newRow("paused, reset") << true << false << 5000 << false;
}

void ServerTest::connectionLoss() {
    QFETCH(bool, reset);
    QFETCH(bool, running);
    QFETCH(qint32, bkTick);
    QFETCH(bool, reported);
    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(identify(*t, 5));
    QVERIFY(logIn(*t, QStringLiteral("ID-00001:DELA CRUZ, JUAN;5")));
    TerminalRecord& r = record(5);
    r.BkTick = 5000; // banked by an earlier pause
    if (!running)
        r.pcstat = QStringLiteral("PAU");
    QVERIFY(console().sessionLog().UpdateSessionRow(r));
    fx->clock.advance(60000);

    if (reset)
        t->abort();
    else
        t->disconnectFromConsole();
    QTRY_VERIFY(!r.online);
    QCOMPARE(ipRows(), QStringList{QStringLiteral("127.0.0.1|5|1|off")});
    QCOMPARE(r.pcstat, QStringLiteral("PAU"));
    QCOMPARE(r.BkTick, bkTick);
    QVERIFY(r.logged);
    QCOMPARE(fx->scalar(QStringLiteral("SELECT BkTick || '|' || pcstat FROM templog")),
             QVariant(QStringLiteral("%1|PAU").arg(bkTick)));
    QCOMPARE(console().messageLog().contains(
                 QStringLiteral("CONN ERR: 127.0.0.1 Socket Force closed\r")),
             reported);
}

void ServerTest::snapshotArrivesWhole_data() {
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("pieces");
    QTest::addColumn<QStringList>("progress");
    QTest::newRow("one piece") << QSize(40, 30) << 1 << QStringList{QStringLiteral("Done.!")};
    QTest::newRow("three pieces") << QSize(100, 60) << 3
                                  << QStringList{QStringLiteral("Receiving bytes... 16384 Bytes"),
                                                 QStringLiteral("Receiving bytes... 24576 Bytes"),
                                                 QStringLiteral("Done.!")};
}

void ServerTest::snapshotArrivesWhole() {
    QFETCH(QSize, size);
    QFETCH(int, pieces);
    QFETCH(QStringList, progress);
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x * 2, y * 3, (x * y) & 0xff));
    const QByteArrayList sent = TerminalClient::SnapshotPieces(TerminalClient::EncodeBitmap(image));
    QCOMPARE(sent.size(), pieces);

    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(identify(*t, 3));
    QVERIFY(logIn(*t, QStringLiteral("ID-00003:REYES, ANA;3")));
    t->clearInbox();
    QSignalSpy texts(&server(), &TerminalServer::snapshotProgress);
    QSignalSpy done(&server(), &TerminalServer::snapshotReceived);
    const QString path = fx->folder->file(QStringLiteral("TrmSnapShot.Bmp"));
    // One piece at a time, each once the console has taken the one before.
    t->sendRaw(sent.first());
    QTRY_VERIFY(QFile::exists(path));
    for (int i = 1; i < sent.size(); ++i) {
        t->sendRaw(sent[i]);
        if (i + 1 < sent.size())
            QTRY_COMPARE(texts.count(), i);
    }
    QTRY_COMPARE(done.count(), 1);
    QStringList shown;
    for (const auto& args : texts)
        shown << args.at(0).toString();
    QCOMPARE(shown, progress);
    QCOMPARE(done.at(0).at(0).toString(), path);
    QCOMPARE(done.at(0).at(1).toString(),
             QStringLiteral("ID-00003:REYES, ANA from IP : 127.0.0.1"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), sent.join());
    // Finished: the next message is handled as a message again.
    QCOMPARE(drain(*t), QByteArrayList{});
}

void ServerTest::malformedMessagesChangeNothing_data() {
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArrayList>("replies");
    QTest::addColumn<QString>("notice");
    const QByteArrayList none;
    const QByteArrayList failed{"Failed Log"};
    QTest::newRow("LOG bare") << QByteArray("LOG") << none << QString();
    QTest::newRow("LOG blank") << QByteArray("LOG ") << none << QString();
    QTest::newRow("LOG no separators") << QByteArray("LOG ID-1 JUAN 5") << none << QString();
    QTest::newRow("LOG no semicolon") << QByteArray("LOG ID-1:JUAN 5") << none << QString();
    QTest::newRow("LOG no colon") << QByteArray("LOG ID-1 JUAN;5") << none << QString();
    QTest::newRow("LOG turned round") << QByteArray("LOG ID-1;JUAN:5") << none << QString();
    QTest::newRow("LOG PC 300") << QByteArray("LOG ID-1:JUAN;300") << none << QString();
    QTest::newRow("LOG PC -3") << QByteArray("LOG ID-1:JUAN;-3") << none << QString();
    QTest::newRow("LOG PC 0") << QByteArray("LOG ID-1:JUAN;0") << failed << QString();
    QTest::newRow("LOG PC beyond NOFPC") << QByteArray("LOG ID-1:JUAN;25") << failed << QString();
    QTest::newRow("LOG PC empty") << QByteArray("LOG ID-1:JUAN;") << failed
                                  << QStringLiteral("Pc Terminal is empty");
    QTest::newRow("CHK bare") << QByteArray("CHK") << none << QString();
    QTest::newRow("CHK no semicolon") << QByteArray("CHK ID-1:JUAN") << none << QString();
    QTest::newRow("AIP bare") << QByteArray("AIP") << none << QString();
    QTest::newRow("AIP 0") << QByteArray("AIP0") << none << QString();
    QTest::newRow("AIP 300") << QByteArray("AIP300") << none << QString();
    QTest::newRow("AIP letters") << QByteArray("AIPxyz") << none << QString();
    QTest::newRow("AIP -1") << QByteArray("AIP-1") << none << QString();
    QTest::newRow("lower case log") << QByteArray("log ID-1:JUAN;2") << none << QString();
    QTest::newRow("binary") << QByteArray("\x00\xff\x01\x02LOG", 7) << none << QString();
    QTest::newRow("APL bare") << QByteArray("APL") << none << QString();
}

void ServerTest::malformedMessagesChangeNothing() {
    QFETCH(QByteArray, message);
    QFETCH(QByteArrayList, replies);
    QFETCH(QString, notice);
    auto t = connectFrom();
    auto probe = connectFrom(QStringLiteral("127.0.0.9"));
    QVERIFY(t && probe);
    QVERIFY(identify(*t, 2));
    const QStringList rowsBefore = ipRows();

    t->sendRaw(message);
    // The probe's answer comes after the console has read what was sent before it.
    QCOMPARE(drain(*probe), QByteArrayList{});
    QCOMPARE(drain(*t), replies);
    QCOMPARE(console().terminals().loggedCount(), 0);
    QCOMPARE(count(QStringLiteral("templog")), 0);
    QCOMPARE(ipRows(), rowsBefore);
    QVERIFY(record(2).online);
    QCOMPARE(fx->prompts.texts(), notice.isEmpty() ? QStringList() : QStringList{notice});
    QVERIFY(!QFile::exists(fx->folder->file(QStringLiteral("TrmSnapShot.Bmp"))));
}

void ServerTest::slotsUsedUpRefuseOnlyNewConnections() {
    auto t = connectFrom();
    QVERIFY(t);
    QVERIFY(identify(*t, 3));
    server().setSocketCounter(TerminalServer::MostSockets);

    TerminalClient late;
    QVERIFY(late.connectToConsole(QStringLiteral("127.0.0.1"), server().port(),
                                  QHostAddress(QStringLiteral("127.0.0.5"))));
    QTRY_VERIFY(console().messageLog().contains(QStringLiteral("CONN ERR: 127.0.0.5")));
    QVERIFY(console().messageLog().contains(QStringLiteral("RQST CONN : 127.0.0.5")));
    QTRY_COMPARE(late.socket().state(), QAbstractSocket::UnconnectedState);
    QVERIFY(!late.inbox().contains("ACPT"));
    QCOMPARE(server().socketCounter(), TerminalServer::MostSockets);

    // The terminal already served goes on both ways.
    QVERIFY(server().SendToPc(3, Msg::TEXT(QStringLiteral("still here"))));
    QCOMPARE(drain(*t), QByteArrayList{"TEXT still here"});
    QVERIFY(logIn(*t, QStringLiteral("ID-00009:LIM, TOM;3")));
    QVERIFY(record(3).logged);
}

QTEST_MAIN(ServerTest)
#include "tst_server.moc"
