// The terminal table and its mirror in templog: initial records, the running-time rule,
// writing and finding a session's row, and putting today's sessions back at start-up.
#include "server/console.h"
#include "server/session_log.h"
#include "server/terminal_table.h"
#include "support/console_fixture.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>

namespace {

const QDate Today(2026, 11, 15);

// A data folder with a prepared database, the clock at 09:00 today.
struct LogFixture {
    ConsoleFixture f;
    Database db{*f.folder};
    SessionLog log{db, f.clock};

    LogFixture() { db.prepare(); }

    qint64 insert(const QString& cid, const QString& start, const QVariant& aindex, QDate day,
                  const QVariant& isout = 0, const QVariant& tickStart = 1000000,
                  const QVariant& bkTick = 0, const QVariant& pcstat = QStringLiteral("LOG"),
                  const QVariant& stopwatch = QStringLiteral("U")) {
        f.exec(QStringLiteral("INSERT INTO templog (CID, StartTime, aindex, isout, cdtls, datelog, "
                              "TickStart, BkTick, pcstat, stopwatch) VALUES (?, ?, ?, ?, ?, ?, ?, "
                              "?, ?, ?)"),
               {cid, start, aindex, isout, cid + QStringLiteral(":Name"), day, tickStart, bkTick,
                pcstat, stopwatch});
        return f.scalar(QStringLiteral("SELECT max(rowid) FROM templog")).toLongLong();
    }
    // BkTick, pcstat, stopwatch, isout of one row, as text.
    QStringList clockFields(qint64 row) {
        Database d(*f.folder);
        DbSession s(d);
        auto q = s.run(QStringLiteral("SELECT BkTick, pcstat, stopwatch, isout FROM templog "
                                      "WHERE rowid = ?"),
                       {row});
        if (!q.next())
            return {};
        return {q.value(0).toString(), q.value(1).toString(), q.value(2).toString(),
                q.value(3).toString()};
    }
};

TerminalRecord session(const QString& cid, const QString& start) {
    TerminalRecord r;
    r.cid = cid;
    r.starttime = start;
    r.pcno = 3;
    r.logged = true;
    r.cdtls = cid + QStringLiteral(":Reyes, Ana");
    r.TickStart = 1000000;
    r.BkTick = 0;
    r.pcstat = QStringLiteral("LOG");
    r.stopwatch = QStringLiteral("U");
    return r;
}

} // namespace

class TstSessionLog : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initialRecords();
    void isCidLogged_data();
    void isCidLogged();
    void runningTime_data();
    void runningTime();

    void insertWritesEveryColumn();
    void updateFindsItsRow_data();
    void updateFindsItsRow();
    void updateTouchesOnlyTheOpenRowOfToday();
    void markSessionOut();

    void restoreTodaysOpenRows();
    void restoreSkipsBadPcNumbers_data();
    void restoreSkipsBadPcNumbers();
    void startUpShowsRestoredCount_data();
    void startUpShowsRestoredCount();
};

void TstSessionLog::initialRecords() {
    TerminalTable table;
    table.InitTerminalTable(254);
    QCOMPARE(table.count(), 254);
    for (int p = 1; p <= 254; ++p) {
        const TerminalRecord& r = table.at(p);
        QCOMPARE(int(r.pcno), p);
        QCOMPARE(r.cid, QString());
        QCOMPARE(r.starttime, QString());
        QCOMPARE(r.logged, false);
        QCOMPARE(r.cdtls, QString());
        QCOMPARE(r.TickStart, 0);
        QCOMPARE(r.stopwatch, QStringLiteral("U"));
        QCOMPARE(r.auxflag, false);
        QCOMPARE(r.pcstat, QStringLiteral("NLG"));
        QCOMPARE(r.BkTick, 0);
        QCOMPARE(r.TrmIP, QString());
        QCOMPARE(r.online, false);
        QVERIFY(!r.hasPendingTransaction());
    }
    QVERIFY_THROWS_EXCEPTION(TerminalIndexError, table.at(0));
    QVERIFY_THROWS_EXCEPTION(TerminalIndexError, table.at(255));

    // Made again, every record is back to its first state.
    TerminalRecord& r = table.at(7);
    r.cid = QStringLiteral("ID-00001");
    r.logged = true;
    r.pcstat = QStringLiteral("PAU");
    r.online = true;
    table.InitTerminalTable(24);
    QCOMPARE(table.count(), 24);
    QCOMPARE(table.at(7).cid, QString());
    QCOMPARE(table.at(7).pcstat, QStringLiteral("NLG"));
    QVERIFY(!table.at(7).logged);
    QVERIFY(!table.at(7).online);
    QCOMPARE(table.loggedCount(), 0);
    QVERIFY_THROWS_EXCEPTION(TerminalIndexError, table.at(25));
}

void TstSessionLog::isCidLogged_data() {
    QTest::addColumn<QString>("asked");
    QTest::addColumn<bool>("logged");
    QTest::newRow("same") << "ID-00001" << true;
    QTest::newRow("blanks around") << "  ID-00001  " << true;
    QTest::newRow("stored with blanks") << "TRM-10" << true;
    QTest::newRow("other case") << "id-00001" << false;
    QTest::newRow("prefix only") << "ID-0000" << false;
    QTest::newRow("longer") << "ID-000011" << false;
    QTest::newRow("inner blank") << "ID- 00001" << false;
}

void TstSessionLog::isCidLogged() {
    QFETCH(QString, asked);
    QFETCH(bool, logged);
    TerminalTable table;
    table.InitTerminalTable(24);
    table.at(3).cid = QStringLiteral("ID-00001");
    table.at(10).cid = QStringLiteral(" TRM-10 ");
    for (int p = 1; p <= 24; ++p)
        if (p != 3 && p != 10)
            table.at(p).cid = QStringLiteral("ID-9%1").arg(p); // no idle record matches by accident
    QCOMPARE(table.IsCidLogged(asked), logged);
}

void TstSessionLog::runningTime_data() {
    QTest::addColumn<QString>("pcstat");
    QTest::addColumn<qint32>("bkTick");
    QTest::addColumn<qint32>("tickStart");
    QTest::addColumn<qint32>("tickNow");
    QTest::addColumn<qint32>("expected"); // -1: overflow

    constexpr qint32 max = std::numeric_limits<qint32>::max();
    constexpr qint32 min = std::numeric_limits<qint32>::min();
    QTest::newRow("running") << "LOG" << 5000 << 1000000 << 1060000 << 65000;
    QTest::newRow("running from zero") << "LOG" << 0 << 1000000 << 1000000 << 0;
    QTest::newRow("paused keeps bank") << "PAU" << 5000 << 1000000 << 9000000 << 5000;
    QTest::newRow("billing keeps bank") << "BIL" << 70000 << 1000000 << 9000000 << 70000;
    QTest::newRow("negative counter") << "LOG" << 0 << -2000000 << -1000000 << 1000000;
    QTest::newRow("sum overflows") << "LOG" << max - 10 << 0 << 100 << -1;
    QTest::newRow("counter wrapped") << "LOG" << 0 << max - 100 << min + 100 << -1;
}

void TstSessionLog::runningTime() {
    QFETCH(QString, pcstat);
    QFETCH(qint32, bkTick);
    QFETCH(qint32, tickStart);
    QFETCH(qint32, tickNow);
    QFETCH(qint32, expected);
    TerminalRecord r;
    r.pcstat = pcstat;
    r.BkTick = bkTick;
    r.TickStart = tickStart;
    ManualClock clock(tickNow);
    if (expected < 0) {
        QVERIFY_THROWS_EXCEPTION(TickOverflow, r.runningTime(clock.tickCount()));
        return;
    }
    QCOMPARE(r.runningTime(clock.tickCount()), expected);
    // The wall clock set back or forward changes nothing.
    clock.setNow(clock.now().addSecs(-3 * 3600));
    QCOMPARE(r.runningTime(clock.tickCount()), expected);
    clock.setNow(clock.now().addDays(2));
    QCOMPARE(r.runningTime(clock.tickCount()), expected);
}

void TstSessionLog::insertWritesEveryColumn() {
    LogFixture x;
    TerminalRecord r = session(QStringLiteral("ID-00001"), QStringLiteral("09:00:00"));
    r.pcno = 17;
    r.TickStart = -123456;
    r.BkTick = 42000;
    r.pcstat = QStringLiteral("PAU");
    r.stopwatch = QStringLiteral("45");
    x.log.InsertSessionRow(r);

    Database d(*x.f.folder);
    DbSession s(d);
    auto q =
        s.run(QStringLiteral("SELECT CID, StartTime, aindex, isout, cdtls, datelog, TickStart, "
                             "BkTick, pcstat, stopwatch FROM templog"));
    QVERIFY(q.next());
    QCOMPARE(q.value(0).toString(), QStringLiteral("ID-00001"));
    QCOMPARE(q.value(1).toString(), QStringLiteral("09:00:00"));
    QCOMPARE(q.value(2).toInt(), 17);
    QVERIFY(!isYes(q.value(3)));
    QVERIFY(!q.value(3).isNull());
    QCOMPARE(q.value(4).toString(), QStringLiteral("ID-00001:Reyes, Ana"));
    QCOMPARE(q.value(5).toDate(), Today);
    QCOMPARE(q.value(6).toInt(), -123456);
    QCOMPARE(q.value(7).toInt(), 42000);
    QCOMPARE(q.value(8).toString(), QStringLiteral("PAU"));
    QCOMPARE(q.value(9).toString(), QStringLiteral("45"));
    QVERIFY(!q.next());
}

void TstSessionLog::updateFindsItsRow_data() {
    QTest::addColumn<int>("rowDay");   // days from today
    QTest::addColumn<int>("rowIsout"); // as stored
    QTest::addColumn<QString>("rowCid");
    QTest::addColumn<QString>("rowStart");
    QTest::addColumn<QString>("cid");
    QTest::addColumn<QString>("start");
    QTest::addColumn<bool>("found");

    QTest::newRow("today open") << 0 << 0 << "ID-00001"
                                << "09:00:00"
                                << "ID-00001"
                                << "09:00:00" << true;
    QTest::newRow("id in lower case") << 0 << 0 << "ID-00001"
                                      << "09:00:00"
                                      << "id-00001"
                                      << "09:00:00" << true;
    QTest::newRow("walk-in") << 0 << 0 << "TRM-3"
                             << "09:00:00"
                             << "TRM-3"
                             << "09:00:00" << true;
    QTest::newRow("yesterday") << -1 << 0 << "ID-00001"
                               << "09:00:00"
                               << "ID-00001"
                               << "09:00:00" << false;
    QTest::newRow("already out") << 0 << -1 << "ID-00001"
                                 << "09:00:00"
                                 << "ID-00001"
                                 << "09:00:00" << false;
    QTest::newRow("out as 1") << 0 << 1 << "ID-00001"
                              << "09:00:00"
                              << "ID-00001"
                              << "09:00:00" << false;
    QTest::newRow("other start") << 0 << 0 << "ID-00001"
                                 << "09:00:01"
                                 << "ID-00001"
                                 << "09:00:00" << false;
    QTest::newRow("other id") << 0 << 0 << "ID-00002"
                              << "09:00:00"
                              << "ID-00001"
                              << "09:00:00" << false;
    QTest::newRow("quote in id") << 0 << 0 << "ID-00001"
                                 << "09:00:00"
                                 << "ID-00001' OR '1'='1"
                                 << "09:00:00" << false;
}

void TstSessionLog::updateFindsItsRow() {
    QFETCH(int, rowDay);
    QFETCH(int, rowIsout);
    QFETCH(QString, rowCid);
    QFETCH(QString, rowStart);
    QFETCH(QString, cid);
    QFETCH(QString, start);
    QFETCH(bool, found);

    LogFixture x;
    const qint64 row =
        x.insert(rowCid, rowStart, 3, Today.addDays(rowDay), rowIsout, 1000000, 1500, "LOG", "U");
    const QStringList before = x.clockFields(row);

    TerminalRecord r = session(cid, start);
    r.BkTick = 777000;
    r.pcstat = QStringLiteral("PAU");
    r.stopwatch = QStringLiteral("45");
    QCOMPARE(x.log.UpdateSessionRow(r), found);
    const QStringList after = x.clockFields(row);
    if (found)
        QCOMPARE(after, (QStringList{"777000", "PAU", "45", before.at(3)}));
    else
        QCOMPARE(after, before);
    QCOMPARE(x.f.scalar(QStringLiteral("SELECT count(*) FROM templog")).toInt(), 1);
}

void TstSessionLog::updateTouchesOnlyTheOpenRowOfToday() {
    LogFixture x;
    const QString id = QStringLiteral("ID-00001"), at = QStringLiteral("09:00:00");
    const qint64 yesterday = x.insert(id, at, 3, Today.addDays(-1));
    const qint64 closed = x.insert(id, at, 3, Today, -1);
    const qint64 open = x.insert(id, at, 3, Today);
    const qint64 other = x.insert(id, QStringLiteral("10:00:00"), 4, Today);
    const QStringList untouched = x.clockFields(yesterday);

    TerminalRecord r = session(id, at);
    r.BkTick = 60000;
    r.pcstat = QStringLiteral("PAU");
    r.stopwatch = QStringLiteral("30");
    QVERIFY(x.log.UpdateSessionRow(r));
    QCOMPARE(x.clockFields(open), (QStringList{"60000", "PAU", "30", "0"}));
    QCOMPARE(x.clockFields(yesterday), untouched);
    QCOMPARE(x.clockFields(closed), (QStringList{"0", "LOG", "U", "-1"}));
    QCOMPARE(x.clockFields(other), untouched);

    // After midnight the session's row belongs to yesterday and is no longer found.
    x.f.clock.setNow(QDateTime(Today.addDays(1), QTime(0, 0, 5)));
    r.BkTick = 99000;
    QVERIFY(!x.log.UpdateSessionRow(r));
    QCOMPARE(x.clockFields(open).at(0), QStringLiteral("60000"));
}

void TstSessionLog::markSessionOut() {
    LogFixture x;
    TerminalRecord a = session(QStringLiteral("ID-00001"), QStringLiteral("09:00:00"));
    TerminalRecord b = session(QStringLiteral("TRM-4"), QStringLiteral("09:00:00"));
    b.pcno = 4;
    x.log.InsertSessionRow(a);
    x.log.InsertSessionRow(b);

    QVERIFY(x.log.MarkSessionOut(QStringLiteral("id-00001"), QStringLiteral("09:00:00")));
    QVERIFY(isYes(x.f.scalar(QStringLiteral("SELECT isout FROM templog WHERE aindex = 3"))));
    QCOMPARE(x.f.scalar(QStringLiteral("SELECT isout FROM templog WHERE aindex = 3")).toInt(), -1);
    QVERIFY(!isYes(x.f.scalar(QStringLiteral("SELECT isout FROM templog WHERE aindex = 4"))));
    // Out is out: no second closing, no more clock saves, not restored.
    QVERIFY(!x.log.MarkSessionOut(a.cid, a.starttime));
    QVERIFY(!x.log.UpdateSessionRow(a));
    TerminalTable table;
    table.InitTerminalTable(24);
    QCOMPARE(x.log.RestoreSessions(table).count, 1);
    QVERIFY(!table.at(3).logged);
    QVERIFY(table.at(4).logged);
}

void TstSessionLog::restoreTodaysOpenRows() {
    LogFixture x;
    x.insert("ID-00001", "08:00:00", 2, Today, 0, 1000000, 30000, "PAU", "45");
    x.insert("TRM-4", "08:10:00", 4, Today, 0, QVariant(), QVariant(), QVariant(), QVariant());
    x.insert("ID-00005", "08:20:00", 6, Today, 0, 1100000, 0, "LOG", "U");
    x.insert("ID-00006", "08:30:00", 6, Today, 0, 1200000, 5000, "PAU", "60");
    x.insert("ID-00008", "08:40:00", 8, Today, -1, 1300000, 0, "LOG", "U");
    x.insert("ID-00010", "23:50:00", 10, Today.addDays(-1), 0, 900000, 0, "LOG", "U");

    TerminalTable table;
    table.InitTerminalTable(24);
    table.at(2).auxflag = true;
    table.at(2).TrmIP = QStringLiteral("10.0.0.2");
    const auto restored = x.log.RestoreSessions(table);
    QCOMPARE(restored.count, 4); // every row put back counts, two of them on PC 6
    QVERIFY(restored.problems.isEmpty());

    const TerminalRecord& full = table.at(2);
    QVERIFY(full.logged);
    QCOMPARE(full.cid, QStringLiteral("ID-00001"));
    QCOMPARE(full.starttime, QStringLiteral("08:00:00"));
    QCOMPARE(full.cdtls, QStringLiteral("ID-00001:Name"));
    QCOMPARE(int(full.pcno), 2);
    QCOMPARE(full.TickStart, 1000000);
    QCOMPARE(full.BkTick, 30000);
    QCOMPARE(full.pcstat, QStringLiteral("PAU"));
    QCOMPARE(full.stopwatch, QStringLiteral("45"));
    QCOMPARE(full.auxflag, false);
    QCOMPARE(full.TrmIP, QStringLiteral("10.0.0.2")); // not part of the mirror

    const TerminalRecord& nulls = table.at(4);
    QVERIFY(nulls.logged);
    QCOMPARE(nulls.pcstat, QStringLiteral("LOG"));
    QCOMPARE(nulls.stopwatch, QStringLiteral("0"));
    QCOMPARE(nulls.TickStart, 0);
    QCOMPARE(nulls.BkTick, 0);

    const TerminalRecord& twice = table.at(6);
    QCOMPARE(twice.cid, QStringLiteral("ID-00006"));
    QCOMPARE(twice.starttime, QStringLiteral("08:30:00"));
    QCOMPARE(twice.TickStart, 1200000);
    QCOMPARE(twice.BkTick, 5000);
    QCOMPARE(twice.pcstat, QStringLiteral("PAU"));

    for (int p : {8, 10}) {
        QVERIFY(!table.at(p).logged);
        QCOMPARE(table.at(p).pcstat, QStringLiteral("NLG"));
        QCOMPARE(table.at(p).cid, QString());
    }
    QCOMPARE(table.loggedCount(), 3);
}

void TstSessionLog::restoreSkipsBadPcNumbers_data() {
    QTest::addColumn<QVariant>("aindex");
    QTest::addColumn<int>("restored");
    QTest::newRow("zero") << QVariant(0) << 1;
    QTest::newRow("one past the last") << QVariant(25) << 1;
    QTest::newRow("negative") << QVariant(-3) << 1;
    QTest::newRow("beyond a byte") << QVariant(300) << 1;
    QTest::newRow("text") << QVariant(QStringLiteral("abc")) << 1;
    QTest::newRow("null") << QVariant() << 1;
    QTest::newRow("number as text") << QVariant(QStringLiteral("7")) << 2;
}

void TstSessionLog::restoreSkipsBadPcNumbers() {
    QFETCH(QVariant, aindex);
    QFETCH(int, restored);
    LogFixture x;
    x.insert("ID-00099", "08:00:00", aindex, Today);
    x.insert("ID-00001", "08:05:00", 24, Today);

    TerminalTable table;
    table.InitTerminalTable(24);
    const auto result = x.log.RestoreSessions(table);
    QCOMPARE(result.count, restored);
    QCOMPARE(table.at(24).cid, QStringLiteral("ID-00001"));
    if (restored == 1) {
        QCOMPARE(result.problems.size(), 1);
        QVERIFY2(result.problems.first().contains(QLatin1String("ID-00099")),
                 qPrintable(result.problems.first()));
        QCOMPARE(table.loggedCount(), 1);
    } else {
        QVERIFY(result.problems.isEmpty());
        QCOMPARE(table.at(7).cid, QStringLiteral("ID-00099"));
    }
}

void TstSessionLog::startUpShowsRestoredCount_data() {
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QList<int>>("pcs"); // today's open rows
    QTest::addColumn<int>("restored");
    QTest::addColumn<QString>("panel2"); // "" when the panel is not written

    QTest::newRow("none") << QByteArray("24=NOFPC\n") << QList<int>{} << 0 << "";
    QTest::newRow("two") << QByteArray("24=NOFPC\n") << QList<int>{2, 5} << 2 << "2 PC";
    QTest::newRow("one outside ten PCs")
        << QByteArray("10=NOFPC\n") << QList<int>{3, 12, 10} << 2 << "2 PC";
}

void TstSessionLog::startUpShowsRestoredCount() {
    QFETCH(QByteArray, settings);
    QFETCH(QList<int>, pcs);
    QFETCH(int, restored);
    QFETCH(QString, panel2);

    ConsoleFixture f;
    f.writeSettings(settings);
    f.console = std::make_unique<Console>(f.clock, f.prompts, *f.folder);
    Console& console = *f.console;
    console.openStorage();
    for (int pc : pcs)
        f.exec(QStringLiteral("INSERT INTO templog (CID, StartTime, aindex, isout, datelog, "
                              "TickStart, BkTick, pcstat, stopwatch) VALUES (?, '08:00:00', ?, 0, "
                              "?, 1000000, 0, 'LOG', 'U')"),
               {QStringLiteral("TRM-%1").arg(pc), pc, Today});
    // Yesterday's open session on PC 1 never counts.
    f.exec(QStringLiteral("INSERT INTO templog (CID, StartTime, aindex, isout, datelog) "
                          "VALUES ('TRM-1', '22:00:00', 1, 0, ?)"),
           {Today.addDays(-1)});

    QSignalSpy spy(&console, &Console::statusChanged);
    const auto report = console.startUp(0, f.iniPath());
    QCOMPARE(report.restored, restored);
    QCOMPARE(report.problems.size(), pcs.size() - restored);

    QStringList panel2Texts;
    for (const auto& call : spy)
        if (call.at(0).toInt() == 2)
            panel2Texts << call.at(1).toString();
    if (panel2.isEmpty())
        QVERIFY2(panel2Texts.isEmpty(), qPrintable(panel2Texts.join('|')));
    else
        QCOMPARE(panel2Texts, QStringList{panel2});
    QCOMPARE(console.terminals().count(), settings.startsWith("10") ? 10 : 24);
    QCOMPARE(console.terminals().loggedCount(), restored);
    QVERIFY(!console.terminals().at(1).logged);
}

QTEST_GUILESS_MAIN(TstSessionLog)
#include "tst_session_log.moc"
