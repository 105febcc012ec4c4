// The kept database connection, the schema, and the settings, report and product files.
#include "billing/rates.h"
#include "store/database.h"
#include "store/printer_choice.h"
#include "store/product_list.h"
#include "store/report_source.h"
#include "store/settings_file.h"
#include "support/console_fixture.h"
#include "support/files.h"
#include "support/scratch_disk.h"

#include <QDir>
#include <QRegularExpression>
#include <QSqlRecord>
#include <QTest>

#include <cstdio>
#include <tuple>
#include <vector>

Q_DECLARE_METATYPE(PrinterChoice)
Q_DECLARE_METATYPE(PrintTarget)

namespace {

// Declares one table column per type, named in order.
template <typename... T> void columns(std::initializer_list<const char*> names) {
    auto name = names.begin();
    (QTest::addColumn<T>(*name++), ...);
}

bool otherProgramCanLock(const QString& path) {
    return sqliteTool(path, QStringLiteral("BEGIN EXCLUSIVE; ROLLBACK;")).has_value();
}

// Replaces a file as a copy tool does: the new one takes the old one's name at once.
int renameOver(const QString& from, const QString& to) {
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData());
}

QStringList firstColumn(QSqlQuery& q) {
    QStringList out;
    while (q.next())
        out << q.value(0).toString();
    return out;
}

const QString Insert = QStringLiteral("INSERT INTO SrvIPTable (TrmIP, PCno) VALUES (?, ?)");
const QString ByPc = QStringLiteral("SELECT TrmIP FROM SrvIPTable WHERE PCno <= ? ORDER BY rowid");

// The tables as declared by hand with the sqlite3 tool: no collations.
const QString ToolSchema = QStringLiteral(
    "CREATE TABLE members (CID TEXT, LN TEXT, FN TEXT, MN TEXT, ADR TEXT, Disc NUMBER, "
    "Status TEXT, mdate DATE, Accuhrs NUMBER);\n"
    "CREATE TABLE rates (RPH NUMBER, mina NUMBER, mint NUMBER);\n"
    "CREATE TABLE Services (Description TEXT, Amount NUMBER);\n"
    "CREATE TABLE Promos (ddtls TEXT, drange TEXT, dtype TEXT, Amount NUMBER);\n"
    "CREATE TABLE Templog (CID TEXT, StartTime TEXT, aindex NUMBER, isout YESNO, cdtls TEXT, "
    "datelog DATE, TickStart TEXT, BkTick TEXT, pcstat TEXT, stopwatch TEXT);\n"
    "CREATE TABLE SrvIPTable (TrmIP TEXT, PCno NUMBER, SKIndex NUMBER, Status YESNO);\n"
    "CREATE TABLE TmpRvnD (Rdate DATE, rtype TEXT, Amount NUMBER, CID TEXT, TID TEXT, "
    "StartT TEXT, EndT TEXT, Tcons TEXT, Orno NUMBER, rdesc TEXT, subamnt TEXT, qty NUMBER);\n"
    "CREATE TABLE sysusers (user TEXT, utype TEXT, keys TEXT);\n");

QString toolSchemaWithout(const QString& column) {
    return QString(ToolSchema).remove(QRegularExpression(", " + column + " \\w+"));
}

// A database in a folder of its own, prepared with these registry addresses unless not.
struct Store {
    QTemporaryDir dir;
    AppFolder folder{dir.path()};
    Database db{folder};

    explicit Store(const QStringList& addresses = {}, bool prepared = true) {
        if (!prepared)
            return;
        db.prepare();
        DbSession s(db);
        for (int i = 0; i < addresses.size(); ++i)
            s.run(Insert, {addresses[i], i + 1});
    }
    // The registry's addresses, as the console reads them.
    QStringList addresses() {
        DbSession s(db);
        auto q = s.run(QStringLiteral("SELECT TrmIP FROM SrvIPTable ORDER BY rowid"));
        return firstColumn(q);
    }
    // Runs a statement; the first row of its result, values joined by '|'.
    QString query(const QString& sql, const QVariantList& values = {}) {
        DbSession s(db);
        auto q = s.run(sql, values);
        QStringList out;
        if (q.next())
            for (int i = 0; i < q.record().count(); ++i)
                out << q.value(i).toString();
        return out.join('|');
    }
};

} // namespace

class StoreTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Once an operation ends, another program can lock or replace the file, and the next
    // operation reads it as it is now; a missing one is reported until it is back.
    void fileFreeAndReadAfreshBetweenOperations_data() {
        // How the operation used its statements; whether the file is locked before it ends;
        // how the file then changes under the console.
        columns<QString, bool, QString>({"use", "lockedDuring", "change"});
        row("rows read to the end", "all", false, "rename");
        row("stopped before the last row", "first", true, "rename");
        row("run, not read", "none", true, "rename");
        row("write", "write", false, "rename");
        row("stopped in an inner session", "inner", true, "rename");
        row("rewritten in place", "all", false, "rewrite");
        row("deleted and copied back", "all", false, "copy");
        row("missing for a while", "all", false, "missing");
    }
    void fileFreeAndReadAfreshBetweenOperations() {
        QFETCH(QString, use);
        QFETCH(bool, lockedDuring);
        QFETCH(QString, change);
        // Made alike, so that only a row differs: same size, page count and change counter.
        Store st({"10.0.0.1", "10.0.0.2", "10.0.0.3"}), other({"10.9.9.9", "10.0.0.2", "10.0.0.3"});
        const QString path = st.db.path();
        QFile file(path); // an hour back, so that a rewrite cannot fall in the same clock tick
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-3600),
                                 QFileDevice::FileModificationTime));
        file.close();
        {
            DbSession s(st.db);
            if (use == "all") {
                auto q = s.run(ByPc, {9});
                QCOMPARE(firstColumn(q), (QStringList{"10.0.0.1", "10.0.0.2", "10.0.0.3"}));
            } else if (use == "first" || use == "inner") {
                std::optional<DbSession> inner;
                auto q = use == "inner" ? inner.emplace(st.db).run(ByPc, {9}) : s.run(ByPc, {9});
                QVERIFY(q.next());
            } else if (use == "none") {
                s.run(ByPc, {9});
            } else {
                s.run(QStringLiteral("UPDATE SrvIPTable SET Status = ?"), {yesNo(true)});
            }
            QCOMPARE(!otherProgramCanLock(path), lockedDuring);
        }
        QVERIFY(otherProgramCanLock(path));

        if (change == "rename") {
            QCOMPARE(renameOver(other.db.path(), path), 0);
        } else if (change == "rewrite") {
            QVERIFY(writeFile(path, readFile(other.db.path())));
        } else {
            QVERIFY(QFile::remove(path));
            if (change == "missing") {
                try {
                    DbSession s(st.db);
                    QFAIL("opened a missing file");
                } catch (const StoreError& e) {
                    QCOMPARE(e.text(), "The database file " + path + " is missing.");
                }
                QVERIFY(!QFile::exists(path)); // and not made again by looking for it
            }
            QVERIFY(QFile::copy(other.db.path(), path));
        }
        QCOMPARE(st.addresses(), (QStringList{"10.9.9.9", "10.0.0.2", "10.0.0.3"}));
        QVERIFY(otherProgramCanLock(path));
    }

    // Running a statement again, in the same session or an inner one, leaves its reader be.
    void sameStatementWhileReading_data() {
        QTest::addColumn<int>("depth"); // sessions between the reader and the second run
        row("same session", 0);
        row("inner session", 1);
        row("inner session of an inner one", 2);
    }
    void sameStatementWhileReading() {
        QFETCH(int, depth);
        Store st({"10.0.0.1", "10.0.0.2", "10.0.0.3"});
        QStringList outer, second;
        {
            DbSession s(st.db);
            auto q = s.run(ByPc, {3});
            QVERIFY(q.next());
            outer << q.value(0).toString();
            {
                std::vector<std::unique_ptr<DbSession>> inner;
                for (int i = 0; i < depth; ++i)
                    inner.push_back(std::make_unique<DbSession>(st.db));
                DbSession& at = inner.empty() ? s : *inner.back();
                auto again = at.run(ByPc, {2});
                second = firstColumn(again);
                // A handler that read a row and then writes elsewhere.
                at.run(QStringLiteral("INSERT INTO templog (CID, aindex) VALUES (?, ?)"),
                       {"ID-00001", 2});
                while (!inner.empty())
                    inner.pop_back(); // innermost first
            }
            outer << firstColumn(q);
        }
        QCOMPARE(outer, (QStringList{"10.0.0.1", "10.0.0.2", "10.0.0.3"}));
        QCOMPARE(second, (QStringList{"10.0.0.1", "10.0.0.2"}));
        QCOMPARE(sqliteTool(st.db.path(), "SELECT count(*) FROM templog"), "1");
        QVERIFY(otherProgramCanLock(st.db.path()));
    }

    // Writes are kept only when their transaction commits; a savepoint's only when both do.
    void transactions_data() {
        // outer: commit, end (session ends), throw, raw (db()); inner: none, commit, end.
        columns<QString, QString, QStringList>({"outer", "inner", "kept"});
        row("committed", "commit", "none", QStringList{"a", "c"});
        row("session ended first", "end", "none", QStringList{});
        row("left by an exception", "throw", "none", QStringList{});
        row("begun on the connection", "raw", "none", QStringList{});
        row("both committed", "commit", "commit", QStringList{"a", "b", "c"});
        row("inner only committed", "end", "commit", QStringList{});
        row("outer only committed", "commit", "end", QStringList{"a", "c"});
    }
    void transactions() {
        QFETCH(QString, outer);
        QFETCH(QString, inner);
        QFETCH(QStringList, kept);
        Store st;
        try {
            DbSession s(st.db);
            if (outer == "raw")
                QVERIFY(s.db().transaction());
            else
                s.begin();
            s.run(Insert, {"a", 1});
            if (inner != "none") {
                DbSession in(st.db);
                in.begin();
                in.run(Insert, {"b", 2});
                if (inner == "commit")
                    in.commit();
            }
            s.run(Insert, {"c", 3});
            // Not yet written for another program.
            QCOMPARE(sqliteTool(st.db.path(), "SELECT count(*) FROM SrvIPTable"), "0");
            if (outer == "throw")
                throw StoreError("stop");
            if (outer == "commit")
                s.commit();
        } catch (const StoreError& e) {
            QCOMPARE(e.text(), "stop");
        }
        QCOMPARE(sqliteTool(st.db.path(), "SELECT group_concat(TrmIP, ' ') FROM SrvIPTable")
                     ->split(' ', Qt::SkipEmptyParts),
                 kept);
        QCOMPARE(st.addresses(), kept);
        QVERIFY(otherProgramCanLock(st.db.path()));
    }

    // A failed statement throws; values bound by an earlier run never stand in for missing ones.
    void failedStatement_data() {
        columns<QString, QVariantList>({"sql", "values"});
        row("a value missing", ByPc, QVariantList{});
        row("a value too many", ByPc, QVariantList{1, 2});
        row("unknown column", "SELECT TrmIP FROM SrvIPTable WHERE nothing = ?", QVariantList{1});
    }
    void failedStatement() {
        QFETCH(QString, sql);
        QFETCH(QVariantList, values);
        Store st({"10.0.0.1", "10.0.0.2"});
        for (int pass = 0; pass < 2; ++pass) {
            DbSession s(st.db);
            auto q = s.run(ByPc, {1});
            QCOMPARE(firstColumn(q), QStringList{"10.0.0.1"});
            QVERIFY_THROWS_EXCEPTION(StoreError, s.run(sql, values));
            q = s.run(ByPc, {2});
            QCOMPARE(firstColumn(q), (QStringList{"10.0.0.1", "10.0.0.2"}));
        }
        QVERIFY(otherProgramCanLock(st.db.path()));
    }

    // The file alone holds everything after each operation: rollback journal, full syncs.
    void fileAloneIsWhole_data() {
        QTest::addColumn<bool>("wal"); // made by the sqlite3 tool in WAL mode
        row("made by the console", false);
        row("made in WAL mode", true);
    }
    void fileAloneIsWhole() {
        QFETCH(bool, wal);
        Store st({}, false);
        if (wal)
            QVERIFY(sqliteTool(st.db.path(), "PRAGMA journal_mode = WAL; CREATE TABLE rates "
                                             "(RPH NUMBER, mina NUMBER, mint NUMBER);"));
        st.db.prepare();
        st.query(Insert, {"10.0.0.1", 1});
        QCOMPARE(st.query("PRAGMA journal_mode"), "delete");
        QCOMPARE(st.query("PRAGMA synchronous"), "2"); // FULL
        QCOMPARE(QDir(st.dir.path()).entryList(QDir::Files), QStringList{Database::FileName});
        QCOMPARE(readFile(st.db.path()).mid(18, 2), QByteArray("\x01\x01")); // rollback journal
    }

    // A revenue sum over dates, of one type in any case or of all, reads a covering index.
    void revenueSumFromIndex_data() {
        QTest::addColumn<bool>("earlier");
        row("new file", false);
        row("earlier indexes", true);
    }
    void revenueSumFromIndex() {
        QFETCH(bool, earlier);
        Store st;
        if (earlier) {
            QVERIFY(sqliteTool(st.db.path(),
                               "DROP INDEX tarvo_revenue_sum; DROP INDEX tarvo_revenue_type_sum; "
                               "CREATE INDEX tarvo_revenue_day ON TmpRvnD (Rdate, rtype COLLATE "
                               "NOCASE); CREATE INDEX tarvo_revenue_type ON TmpRvnD (rtype COLLATE "
                               "NOCASE, Rdate);"));
            st.db.prepare();
        }
        QCOMPARE(sqliteTool(st.db.path(), "SELECT name FROM sqlite_master WHERE name LIKE "
                                          "'tarvo_revenue%' ORDER BY name"),
                 "tarvo_revenue_sum\ntarvo_revenue_type_sum");

        const QDate first(2026, 3, 1), last(2026, 3, 30);
        for (const auto& [day, kind, amount] :
             {std::tuple{first.addDays(-1), "GAMES_RENTALS", 1000},
              {first, "GAMES_RENTALS", 10},
              {first.addDays(14), "games_rentals", 20},
              {last, "SERVICE", 5},
              {last.addDays(1), "GAMES_RENTALS", 2000}})
            st.query("INSERT INTO TmpRvnD (Rdate, rtype, Amount) VALUES (?, ?, ?)",
                     {day, kind, amount});
        const QString sum = "SELECT sum(Amount) FROM TmpRvnD WHERE Rdate >= ? AND Rdate <= ?";
        for (const auto& [sql, type, expected] :
             {std::tuple{sum + " AND rtype = ? COLLATE NOCASE", "Games_Rentals", "30"},
              {sum, "", "35"}}) {
            QVariantList values{first, last};
            if (*type)
                values << type;
            const QString plan = st.query("EXPLAIN QUERY PLAN " + sql, values);
            QVERIFY2(plan.contains("COVERING INDEX"), qPrintable(plan));
            QCOMPARE(st.query(sql, values), expected);
        }
    }

    void newFileAndPreparedAgain() {
        Store s;
        // Every table with every column the console reads and writes (a missing one throws).
        static const QRegularExpression table(R"(CREATE TABLE (\w+) \((.*)\);)");
        for (const auto& m : table.globalMatch(ToolSchema))
            DbSession(s.db).run("SELECT " +
                                m.captured(2).remove(QRegularExpression(" [A-Z]+(?=,|$)")) +
                                " FROM " + m.captured(1));
        QCOMPARE(s.query("SELECT count(*), RPH, mina, mint FROM rates"), "1|20|10|30");
        // Text compares without regard to letter case in a file the console made.
        s.query("INSERT INTO TmpRvnD (Rdate, rtype, Amount) VALUES (?, 'SERVICE', 15)",
                {QDate(2026, 11, 15)});
        QCOMPARE(s.query("SELECT sum(amount) FROM tmprvnd WHERE RTYPE = ?", {"service"}), "15");
        // Prepared again, the file keeps what it holds; an emptied rates table stays empty.
        s.query("DELETE FROM rates");
        s.db.prepare();
        QCOMPARE(s.query("SELECT (SELECT count(*) FROM rates), count(*) FROM TmpRvnD"), "0|1");
        Rates rates;
        rates.setValues(33, Money::fromPesos(1), 2);
        QVERIFY(!rates.loadRates(s.db));
        QCOMPARE(rates.ratePerHour(), 33.0); // what was in force stays
        // Yes is written as -1; anything stored but zero or null reads as yes.
        s.query("INSERT INTO SrvIPTable (TrmIP, Status) VALUES ('a', ?), ('b', ?)",
                {yesNo(true), yesNo(false)});
        QCOMPARE(s.query("SELECT group_concat(Status) FROM SrvIPTable"), "-1,0");
        const QVariantList yes = {1, 255, 0.5, "-1"}, no = {0, "0", QVariant()};
        for (const QVariant& v : yes + no)
            QVERIFY2(isYes(v) == yes.contains(v), qPrintable(v.toString()));
    }

    void toolMadeFileOpensAndRestores() {
        ConsoleFixture f;
        const QString rows = QStringLiteral(
            "INSERT INTO rates VALUES (25, 12.5, 45);\n"
            "INSERT INTO members (CID, LN, FN) VALUES ('ID-00001', 'Dela Cruz', 'Juan');\n"
            "INSERT INTO Services VALUES ('scan', 10), ('Burn CD', 40), ('print', 5), ('Xerox', 2);"
            "INSERT INTO Templog VALUES ('ID-00002', '08:30:00', 3, 0, 'ID-00002:Reyes, Ana',"
            " '2026-11-15', '1000000', '60000', 'PAU', '30');\n");
        QVERIFY(sqliteTool(Database(*f.folder).path(), ToolSchema + rows));

        Console& console = f.start();
        TerminalRecord r = console.terminals().at(3);
        QCOMPARE(
            QStringList({QString::number(r.logged), r.cid, r.stateCode(),
                         QString::number(r.startTick), QString::number(r.bankedMs), r.timeLimit}),
            QStringList({"1", "ID-00002", "PAU", "1000000", "60000", "30"}));
        const Rates& rates = console.rates();
        QStringList loaded{QString::number(rates.ratePerHour()),
                           rates.minimumAmount().toDecimalText(),
                           QString::number(rates.minimumMinutes())};
        for (const auto& sv : rates.services())
            loaded << sv.description;
        QCOMPARE(loaded, (QStringList{"25", "12.5000", "45", "Burn CD", "print", "scan", "Xerox"}));

        // Look-ups typed in another letter case find the row.
        r.cid = QStringLiteral("id-00002");
        r.bankedMs = 90000;
        QVERIFY(console.sessionLog().updateSessionRow(r));
        QCOMPARE(f.scalar("SELECT BkTick FROM templog WHERE aindex = 3").toInt(), 90000);
        console.server().handleMessage(1, "CHK id-00001:Dela Cruz, Juan;7");
        QVERIFY2(console.terminals().at(7).logged, qPrintable(console.messageLog().text()));
    }

    // A damaged or foreign file, or ours missing a column, is refused at every start and left
    // untouched; the refusal names the file and what is wrong with it.
    void foreignFileRefusedUntouched_data() {
        // sql for the sqlite3 tool, bytes then written mid-file, the share of the file kept
        // (a copy cut short), what the refusal says.
        columns<QString, QByteArray, double, QString>({"sql", "bytes", "kept", "named"});
        const QByteArray junk = QByteArray("SQLite format 3\0", 16) + QByteArray(4080, 'Z');
        const QString rows = ToolSchema +
                             "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
                             "i < 3000) INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID) SELECT "
                             "'2026-11-01', 'SERVICE', i, printf('%040d', i) FROM n;";
        row("sqlite header then junk", QString(), junk, 1.0, "");
        row("text file", QString(), QByteArray("24=NOFPC\r\n1=PAGE\r\n"), 1.0, "");
        row("another program's", "CREATE TABLE photos (id, path);", QByteArray(), 1.0, "");
        row("another program's, in WAL mode",
            "PRAGMA journal_mode = WAL; CREATE TABLE photos (id, path); "
            "INSERT INTO photos VALUES (1, 'a.jpg');",
            QByteArray(), 1.0, "");
        row("no templog stopwatch", toolSchemaWithout("stopwatch"), QByteArray(), 1.0,
            "Templog|stopwatch");
        row("no registry socket", toolSchemaWithout("SKIndex"), QByteArray(), 1.0,
            "SrvIPTable|SKIndex");
        row("no users keys", toolSchemaWithout("keys"), QByteArray(), 1.0, "sysusers|keys");
        row("damaged in its middle", rows, QByteArray(4096, 'Z'), 1.0,
            "is damaged|Restore the last backup");
        row("cut short at its middle", rows, QByteArray(), 0.5,
            "is damaged|Restore the last backup");
        row("cut short in its first page", rows, QByteArray(), 0.0005, "damaged");
    }
    void foreignFileRefusedUntouched() {
        QFETCH(QString, sql);
        QFETCH(QByteArray, bytes);
        QFETCH(double, kept);
        QFETCH(QString, named);
        Store s({}, false);
        if (!sql.isEmpty())
            QVERIFY(sqliteTool(s.db.path(), sql));
        QFile file(s.db.path());
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.seek(file.size() / 2));
        QCOMPARE(file.write(bytes), bytes.size());
        QVERIFY(file.resize(qint64(file.size() * kept)));
        file.close();
        const QByteArray before = readFile(s.db.path());
        const QStringList words = named.split('|', Qt::SkipEmptyParts) << Database::FileName;
        for (int start = 0; start < 2; ++start) {
            try {
                s.db.prepare();
                QFAIL("accepted");
            } catch (const StoreError& e) {
                for (const QString& word : words)
                    QVERIFY2(e.text().contains(word, Qt::CaseInsensitive), qPrintable(e.text()));
            }
            QCOMPARE(readFile(s.db.path()), before);
        }
        QCOMPARE(QDir(s.dir.path()).entryList(QDir::Files), QStringList{Database::FileName});
    }

    void settingsNofpc_data() {
        columns<QByteArray, int>({"content", "expected"}); // null: no file; -1: refused
        row("no file", QByteArray(), 24);
        row("not first line", QByteArray("1=PAGE\n12=NOFPC\nPlease don't Modify....\n"), 12);
        row("windows lines", QByteArray("16=NOFPC\r\n1=PAGE\r\n"), 16);
        row("no final newline", QByteArray("30=NOFPC"), 30);
        row("leading blank", QByteArray(" 30=NOFPC\n"), 30);
        row("largest", QByteArray("254=NOFPC\n"), 254);
        row("key at the very start", QByteArray("=NOFPC\n1=PAGE\n"), 24);
        row("empty file", QByteArray(""), 24);
        row("255", QByteArray("255=NOFPC\n"), -1);
    }
    void settingsNofpc() {
        QFETCH(QByteArray, content);
        QFETCH(int, expected);
        Store s({}, false);
        const QString path = s.folder.file("TarvoQRB.INI");
        if (!content.isNull())
            QVERIFY(writeFile(path, content));
        if (expected < 0)
            QVERIFY_THROWS_EXCEPTION(SettingsError, SettingsFile::loadNofpc(s.folder));
        else
            QCOMPARE(SettingsFile::loadNofpc(s.folder), expected);
        if (content.isNull()) {
            QCOMPARE(
                QString::fromLatin1(readFile(path)).remove('\r').split('\n', Qt::SkipEmptyParts),
                (QStringList{"24=NOFPC", "1=PAGE", "Please don't Modify...."}));
            QCOMPARE(SettingsFile::loadNofpc(s.folder), 24); // the file it made reads back the same
        } else {
            QCOMPARE(readFile(path), content); // an existing file is only read
        }
    }

    // A setting replaces its own line or is added in the file's line ends; all else stays.
    void settingsValue_data() {
        // Null before: no file; null after: refused, file untouched; null readBefore: unset.
        columns<QByteArray, QString, QByteArray, QString>(
            {"before", "value", "after", "readBefore"});
        const QByteArray made = "24=NOFPC\n1=PAGE\nPlease don't Modify....\n";
        row("no file: made first", QByteArray(), "Laser", made + "Laser=PRINTER\n", QString());
        row("replaced in place, windows lines",
            QByteArray("24=NOFPC\r\nHP 1=PRINTER\r\nPlease don't Modify....\r\n"), "Laser",
            QByteArray("24=NOFPC\r\nLaser=PRINTER\r\nPlease don't Modify....\r\n"), "HP 1");
        row("added in the file's line ends", QByteArray("24=NOFPC\r\n1=PAGE\r\n"), "Laser",
            QByteArray("24=NOFPC\r\n1=PAGE\r\nLaser=PRINTER\r\n"), QString());
        row("last line without an end", QByteArray("24=NOFPC\n1=PAGE"), "Laser",
            QByteArray("24=NOFPC\n1=PAGE\nLaser=PRINTER\n"), QString());
        row("the last of two is read and replaced", QByteArray("A=PRINTER\nB=PRINTER\nx\n"),
            "Laser", QByteArray("A=PRINTER\nLaser=PRINTER\nx\n"), "B");
        row("like keys are other settings", QByteArray("A=PRINTERS\nB=MYPRINTER\n=PRINTER\n"),
            "Laser", QByteArray("A=PRINTERS\nB=MYPRINTER\n=PRINTER\nLaser=PRINTER\n"), QString());
        row("value holding the key", QByteArray("24=NOFPC\n"), "Lab=PRINTER",
            QByteArray("24=NOFPC\nLab=PRINTER=PRINTER\n"), QString());
        row("non-ASCII value", QByteArray("24=NOFPC\n"), "Impresora Peña",
            QByteArray("24=NOFPC\nImpresora Peña=PRINTER\n"), QString());
        row("empty value removes every line of it", QByteArray("A=PRINTER\n24=NOFPC\nB=PRINTER"),
            "", QByteArray("24=NOFPC\n"), "B");
        row("line break refused", QByteArray("A=PRINTER\n"), "Two\nlines", QByteArray(), "A");
    }
    void settingsValue() {
        QFETCH(QByteArray, before);
        QFETCH(QString, value);
        QFETCH(QByteArray, after);
        QFETCH(QString, readBefore);
        Store s({}, false); // no database: only the settings file is in the folder
        const QString path = s.folder.file("TarvoQRB.INI");
        if (!before.isNull())
            writeFile(path, before);
        const QString key = QStringLiteral("PRINTER");
        QCOMPARE(SettingsFile::readValue(s.folder, key).value_or(QString()), readBefore);
        if (after.isNull()) {
            QVERIFY_THROWS_EXCEPTION(SettingsError,
                                     SettingsFile::writeValues(s.folder, {{key, value}}));
            QCOMPARE(readFile(path), before);
            return;
        }
        SettingsFile::writeValues(s.folder, {{key, value}});
        QCOMPARE(readFile(path), after);
        QCOMPARE(SettingsFile::readValue(s.folder, key).value_or(QString()), value);
        QCOMPARE(QDir(s.dir.path()).entryList(QDir::Files), QStringList{"TarvoQRB.INI"});
    }

    // A disk that fills up while the file is written leaves the old file whole.
    void settingsSurviveAFullDisk() {
        ScratchDisk disk;
        if (!disk.mounted())
            QSKIP(qPrintable("no disk of its own can be mounted here: " + disk.why()));
        const AppFolder folder(disk.path());
        const QByteArray before = "30=NOFPC\n1=PAGE\nHP=PRINTER\n";
        writeFile(folder.file("TarvoQRB.INI"), before);
        QVERIFY(disk.fill());
        QVERIFY_THROWS_EXCEPTION(
            SettingsError,
            SettingsFile::writeValues(folder, {{"PDFFOLDER", QString(8192, QLatin1Char('x'))}}));
        disk.free();
        QCOMPARE(readFile(folder.file("TarvoQRB.INI")), before);
        QCOMPARE(QDir(disk.path()).entryList(QDir::Files), QStringList{"TarvoQRB.INI"});
    }

    // Choosing again replaces the four printer settings; what is no longer set leaves the file.
    void printerChoiceKept() {
        Store s;
        const QString path = s.folder.file("TarvoQRB.INI");
        writeFile(path, "16=NOFPC\r\n1=PAGE\r\nPlease don't Modify....\r\n");
        QCOMPARE(PrinterChoice::load(s.folder), PrinterChoice());

        PrinterChoice laser{PrinterChoice::Kind::Printer, "Counter Laser", "Receipts",
                            QSizeF(80, 200)};
        laser.save(s.folder);
        QCOMPARE(readFile(path), "16=NOFPC\r\n1=PAGE\r\nPlease don't Modify....\r\n"
                                 "PRINTER=PRINTTO\r\nCounter Laser=PRINTER\r\n"
                                 "Receipts=PDFFOLDER\r\n80x200=PAPER\r\n");
        QCOMPARE(PrinterChoice::load(s.folder), laser);
        QCOMPARE(laser.pdfFolderIn(s.folder), s.dir.filePath("Receipts"));
        QCOMPARE(SettingsFile::loadNofpc(s.folder), 16);

        const PrinterChoice pdf{PrinterChoice::Kind::Pdf, "Counter Laser", {}, {}};
        pdf.save(s.folder);
        QCOMPARE(readFile(path), "16=NOFPC\r\n1=PAGE\r\nPlease don't Modify....\r\n"
                                 "PDF=PRINTTO\r\nCounter Laser=PRINTER\r\n");
        QCOMPARE(PrinterChoice::load(s.folder), pdf);

        // Values a person typed wrongly read as not chosen.
        writeFile(path, "PRINTER=PRINTTO\nA4=PAPER\n");
        QCOMPARE(PrinterChoice::load(s.folder), PrinterChoice());
    }

    // Where a statement prints, and the offers of the set-up list with the one selected.
    void printerOffers_data() {
        using K = PrinterChoice::Kind;
        using R = PrintTarget::Route;
        columns<PrinterChoice, QStringList, PrintTarget, QString, int>(
            {"choice", "printers", "target", "captions", "current"});
        const QStringList two{"Lobby", "Front"}; // the first is the system's default
        const char* offered = "Lobby (the system's default)|Front|PDF file";
        row("nothing chosen: the default", PrinterChoice(), two, PrintTarget{R::Printer, "Lobby"},
            offered, 0);
        row("a printer chosen", PrinterChoice{K::Printer, "Front", {}, {}}, two,
            PrintTarget{R::Printer, "Front"}, offered, 1);
        row("PDF though printers exist", PrinterChoice{K::Pdf, "Front", {}, {}}, two,
            PrintTarget{R::Pdf, {}}, offered, 2);
        row("chosen printer gone: shown, not replaced",
            PrinterChoice{K::Printer, "Back Office", {}, {}}, two, PrintTarget{R::NoPrinter, {}},
            "Lobby (the system's default)|Front|Back Office (not found)|PDF file", 2);
        row("no printer at all", PrinterChoice(), QStringList(), PrintTarget{R::NoPrinter, {}},
            "PDF file", 0);
    }
    void printerOffers() {
        QFETCH(PrinterChoice, choice);
        QFETCH(QStringList, printers);
        QFETCH(PrintTarget, target);
        QFETCH(QString, captions);
        QFETCH(int, current);
        const QString defaultPrinter = printers.value(0);
        QCOMPARE(::printTarget(choice, printers, defaultPrinter), target);
        const PrinterOffers o = ::printerOffers(choice, printers, defaultPrinter);
        QStringList shown;
        for (const PrinterOffer& offer : o.offers)
            shown << offer.caption;
        QCOMPARE(shown.join('|'), captions);
        QCOMPARE(o.current, current);
        // Each offer is the choice it says.
        QCOMPARE(o.offers.last().kind, PrinterChoice::Kind::Pdf);
        for (qsizetype i = 0; i + 1 < o.offers.size(); ++i)
            QVERIFY(!o.offers[i].printer.isEmpty() && shown[i].startsWith(o.offers[i].printer));
    }

    void reportSource() {
        QTemporaryDir dir;
        const AppFolder folder(dir.path() + QStringLiteral("/Tarvo QRB"));
        QCOMPARE(ReportSource::setReportConnection(folder),
                 "DSN=MS Access Database;DBQ=TarvoQRBDB.MDB;DefaultDir=" + dir.path() +
                     "/Tarvo QRB;DriverId=25;FIL=MS Access;MaxBufferSize=2048;PageTimeout=5;"
                     "PWD=TKvelm7342;UID=admin;");
        // The data source definition: ours written whole, once, every start; others kept.
        const QString ini = dir.filePath("odbc.ini");
        const QByteArray other = "[Other Source]\nDriver=Other\nDatabase=/srv/other.db\n";
        QVERIFY(writeFile(ini, other + "\n[MS Access Database]\nOldValue=1\nDriverId=3\n"));
        QString error;
        for (int start = 0; start < 2; ++start)
            QVERIFY(ReportSource::registerReportDataSource(folder, ini, &error));
        const QString text = QString::fromUtf8(readFile(ini));
        QCOMPARE(text.count("[MS Access Database]"), 1);
        const QStringList ours = text.section("[MS Access Database]\n", 1).split('\n');
        for (const char* line : {"DriverId=25", "FIL=MS Access;", "SafeTransaction=0", "UID="})
            QVERIFY2(ours.contains(line), qPrintable(text));
        QVERIFY(!text.contains("OldValue"));
        QVERIFY(text.startsWith(other));
    }

    void productList_data() {
        columns<QByteArray, QString>({"content", "expected"});
        row("empty", QByteArray(""), "End");
        row("no final newline", QByteArray("Coke @ 25.00\nChips"), "Coke @ 25.00;Chips;End");
        row("windows lines", QByteArray("a\r\nb\r\n"), "a;b;End");
        row("blank line kept", QByteArray("a\n\nb\n"), "a;;b;End");
        row("semicolon passes", QByteArray("x;y @ 1.00\n"), "x;y @ 1.00;End");
    }
    void productList() {
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        Store s({}, false);
        QVERIFY(writeFile(s.folder.file("Products.LST"), content));
        QCOMPARE(ProductList::listText(s.folder), expected);
    }
};

QTEST_GUILESS_MAIN(StoreTest)
#include "tst_store.moc"
