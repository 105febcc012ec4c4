// The terminal table and its mirror in templog, and today's sessions put back at start-up.
#include "console/console.h"
#include "server/session_log.h"
#include "server/terminal_table.h"
#include "support/console_fixture.h"
#include "support/files.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>

namespace {

const QDate Today(2026, 11, 15);

// pc|cid|start|logged|cdtls|TickStart|BkTick|pcstat|stopwatch|auxflag|TrmIP|online
QString text(const TerminalRecord& r) {
    return QStringList{QString::number(r.pcNumber), r.cid,           r.startTime,
                       QString::number(r.logged),   r.customerLabel, QString::number(r.startTick),
                       QString::number(r.bankedMs), r.stateCode(),   r.timeLimit,
                       QString::number(r.auxFlag),  r.address,       QString::number(r.online)}
        .join(QLatin1Char('|'));
}
const QString Idle = QStringLiteral("%1|||0||0|0|NLG|U|0||0"); // a record in its first state

TerminalRecord session(const QString& cid, const QString& start, int pc = 3, qint32 bank = 0,
                       const char* stat = "LOG", const char* limit = "U") {
    TerminalRecord r{.cid = cid,
                     .startTime = start,
                     .pcNumber = quint8(pc),
                     .logged = true,
                     .customerLabel = cid + QStringLiteral(":Reyes, Ana"),
                     .startTick = 1000000,
                     .timeLimit = limit,
                     .bankedMs = bank};
    r.setStateCode(QString::fromLatin1(stat));
    return r;
}

// A data folder with a prepared database, the clock at 09:00 today.
struct LogFixture {
    ConsoleFixture f;
    Database db{*f.folder};
    SessionLog log{db, f.clock};

    LogFixture() { db.prepare(); }
    qint64 insert(const QString& cid, const QString& start, const QVariant& aindex, QDate day,
                  const QVariant& isout = 0, const QVariantList& clock = {1000000, 0, "LOG", "U"}) {
        f.exec(QStringLiteral("INSERT INTO templog (CID, StartTime, aindex, isout, cdtls, datelog, "
                              "TickStart, BkTick, pcstat, stopwatch) VALUES (?, ?, ?, ?, ?, ?, ?, "
                              "?, ?, ?)"),
               QVariantList{cid, start, aindex, isout, cid + QStringLiteral(":Name"), day} + clock);
        return f.scalar(QStringLiteral("SELECT max(rowid) FROM templog")).toLongLong();
    }
    // The named columns of one row, joined by '|'.
    QString fields(qint64 row, const char* columns = "BkTick, pcstat, stopwatch, isout") {
        const QString joined = QString::fromLatin1(columns).replace(", ", " || '|' || ");
        return f.scalar("SELECT " + joined + " FROM templog WHERE rowid = ?", {row}).toString();
    }
};

} // namespace

class SessionLogTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initialRecordsAndIds() {
        TerminalTable table;
        table.init(254);
        for (int p = 1; p <= 254; ++p)
            QCOMPARE(text(table.at(p)), Idle.arg(p));
        QVERIFY_THROWS_EXCEPTION(TerminalIndexError, table.at(0));
        QVERIFY_THROWS_EXCEPTION(TerminalIndexError, table.at(255));
        // Made again, every record is back to its first state.
        *table.edit(7) = session(QStringLiteral("ID-00001"), QStringLiteral("09:00:00"), 7);
        table.init(24);
        QCOMPARE(text(table.at(7)), Idle.arg(7));
        QVERIFY_THROWS_EXCEPTION(TerminalIndexError, table.at(25));
        table.edit(3)->cid = QStringLiteral("ID-00001");
        table.edit(10)->cid = QStringLiteral(" TRM-10 ");
        QVERIFY(table.isCidLogged("  ID-00001  "));
        QVERIFY(table.isCidLogged("TRM-10"));
        // Letter case counts, and only the whole id matches.
        for (const char* other : {"id-00001", "ID-0000", "ID-000011", "ID- 00001"})
            QVERIFY2(!table.isCidLogged(other), other);
    }

    void runningTime() {
        constexpr qint32 max = std::numeric_limits<qint32>::max();
        const auto time = [](qint32 start, TerminalState state, qint32 bank, qint32 now) {
            return TerminalRecord{.startTick = start, .state = state, .bankedMs = bank}.runningTime(
                now);
        };
        using enum TerminalState;
        // Banked time plus the counter's advance while running; the bank alone otherwise.
        QCOMPARE(time(-2000000, Running, 5000, -1000000), 1005000);
        QCOMPARE(time(1000000, Billing, 70000, 9000000), 70000);
        QVERIFY_THROWS_EXCEPTION(TickOverflow, time(0, Running, max - 10, 100));
        QVERIFY_THROWS_EXCEPTION(TickOverflow, time(max - 100, Running, 0, -max + 100));
    }

    void insertAndMarkOut() {
        LogFixture x;
        TerminalRecord r = session("ID-00001", "09:00:00", 17, 42000, "PAU", "45");
        r.startTick = -123456;
        x.log.insertSessionRow(r);
        x.log.insertSessionRow(session(QStringLiteral("TRM-4"), r.startTime, 4));
        QCOMPARE(x.fields(1, "CID, StartTime, aindex, isout, cdtls, datelog, TickStart, BkTick, "
                             "pcstat, stopwatch"),
                 QStringLiteral("ID-00001|09:00:00|17|0|ID-00001:Reyes, Ana|2026-11-15|-123456|"
                                "42000|PAU|45"));
        QVERIFY(!x.log.markSessionOut(4, QStringLiteral("id-00001"), r.startTime)); // not its PC
        QVERIFY(x.log.markSessionOut(17, QStringLiteral("id-00001"), r.startTime));
        QCOMPARE(x.fields(1, "aindex, isout"), QStringLiteral("17|-1"));
        QCOMPARE(x.fields(2, "aindex, isout"), QStringLiteral("4|0"));
        // Out is out: no second closing and no more clock saves.
        QVERIFY(!x.log.markSessionOut(17, r.cid, r.startTime));
        QVERIFY(!x.log.updateSessionRow(r));
    }

    // Only today's open row with this id (any letter case), start time and PC takes the clock.
    void updateFindsItsRow_data() {
        QTest::addColumn<QString>("cid");
        QTest::addColumn<QString>("start");
        QTest::addColumn<bool>("found");
        row("today open", "ID-00001", "09:00:00", true);
        row("id in lower case", "id-00001", "09:00:00", true);
        row("other start", "ID-00001", "09:00:01", false);
        row("other id", "ID-00002", "09:00:00", false);
        row("quote in id", "ID-00001' OR '1'='1", "09:00:00", false);
    }
    void updateFindsItsRow() {
        QFETCH(QString, cid);
        QFETCH(QString, start);
        QFETCH(bool, found);
        LogFixture x;
        const QString id = QStringLiteral("ID-00001"), at = QStringLiteral("09:00:00");
        // Rows that never match: yesterday's, closed ones, another start, another PC.
        const QList<qint64> others{x.insert(id, at, 3, Today.addDays(-1)),
                                   x.insert(id, at, 3, Today, -1), x.insert(id, at, 3, Today, 1),
                                   x.insert(id, QStringLiteral("10:00:00"), 4, Today),
                                   x.insert(id.toLower(), at, 5, Today)};
        const qint64 tested = x.insert(id, at, 3, Today);
        QCOMPARE(x.log.updateSessionRow(session(cid, start, 3, 777000, "PAU", "45")), found);
        QCOMPARE(x.fields(tested), found ? "777000|PAU|45|0" : "0|LOG|U|0");
        QStringList left;
        for (qint64 row : others)
            left << x.fields(row);
        QCOMPARE(left,
                 QStringList({"0|LOG|U|0", "0|LOG|U|-1", "0|LOG|U|1", "0|LOG|U|0", "0|LOG|U|0"}));
    }

    // Through the console's start-up on ten PCs; panel 2 is written only when some came back.
    void restoreAtStartUp_data() {
        QTest::addColumn<bool>("rows");
        row("nothing to restore", false);
        row("today's open rows", true);
    }
    void restoreAtStartUp() {
        QFETCH(bool, rows);
        LogFixture x;
        x.f.writeFile("TarvoQRB.INI", "10=NOFPC\n");
        x.f.open();
        if (rows) {
            x.insert("TRM-4", "08:10:00", 4, Today, 0,
                     {QVariant(), QVariant(), QVariant(), QVariant()});
            // Two rows for PC 6: the later one wins, and both count.
            x.insert("ID-00005", "08:20:00", 6, Today, 0, {1100000, 0, "LOG", "U"});
            x.insert("ID-00006", "08:30:00", 6, Today, 0, {1200000, 5000, "PAU", "60"});
            // Bad PC numbers are reported by id; a number stored as text is still a number.
            x.insert("ID-00012", "08:50:00", 12, Today);
            x.insert("ID-00090", "08:51:00", 0, Today);
            x.insert("ID-00091", "08:52:00", "abc", Today);
            x.insert("ID-00092", "08:53:00", QVariant(), Today);
            x.insert("ID-00007", "08:54:00", "7", Today);
        }
        x.insert("ID-00008", "08:40:00", 8, Today, -1);
        x.insert("ID-00010", "23:50:00", 10, Today.addDays(-1));
        QSignalSpy spy(&x.f.console->statusPanels(), &StatusPanels::changed);
        const auto report = x.f.console->startUp(0, x.f.iniPath());
        QStringList panel2;
        for (const auto& call : spy)
            if (call.at(0).value<StatusPanel>() == StatusPanel::Sessions)
                panel2 << call.at(1).toString();
        QCOMPARE(panel2, rows ? QStringList{"4 PC"} : QStringList());
        QCOMPARE(report.restored, rows ? 4 : 0);
        QCOMPARE(report.problems.size(), rows ? 5 : 0); // four sessions, and how to get them back
        const TerminalTable& t = x.f.console->terminals();
        QCOMPARE(t.loggedCount(), rows ? 3 : 0);
        QCOMPARE(QStringList({text(t.at(8)), text(t.at(10))}),
                 QStringList({Idle.arg(8), Idle.arg(10)}));
        if (!rows)
            return;
        const QString problems = report.problems.join(QLatin1Char('\n'));
        for (const char* id : {"ID-00012", "ID-00090", "ID-00091", "ID-00092", "=NOFPC"})
            QVERIFY2(problems.contains(id), qPrintable(problems));
        // Their rows are left as they were.
        QCOMPARE(x.f.scalar("SELECT count(*) FROM templog WHERE isout = 0 AND CID IN "
                            "('ID-00012', 'ID-00090', 'ID-00091', 'ID-00092')")
                     .toInt(),
                 4);
        QCOMPARE(text(t.at(4)), "4|TRM-4|08:10:00|1|TRM-4:Name|0|0|LOG|0|0||0"); // nulls
        QCOMPARE(text(t.at(6)), "6|ID-00006|08:30:00|1|ID-00006:Name|1200000|5000|PAU|60|0||0");
        QCOMPARE(t.at(7).cid, QStringLiteral("ID-00007"));
    }
};

QTEST_GUILESS_MAIN(SessionLogTest)
#include "tst_session_log.moc"
