// The kept connection: what another program sees between two operations, files changed
// under the console, sessions inside sessions, transactions.
#include "base/app_folder.h"
#include "store/database.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

namespace {

// Runs SQL in another process, the sqlite3 tool, which gives up at once on a locked file.
// Its output, or nothing when it failed.
std::optional<QString> sqliteTool(const QString& path, const QString& sql) {
    QProcess p;
    p.start(QStringLiteral("sqlite3"), {QStringLiteral("-bail"), path, sql});
    if (!p.waitForFinished() || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(p.readAllStandardOutput()).trimmed();
}

bool otherProgramCanLock(const QString& path) {
    return sqliteTool(path, QStringLiteral("BEGIN EXCLUSIVE; ROLLBACK;")).has_value();
}

QByteArray bytesOf(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Replaces a file as a copy tool does: the new one takes the old one's name at once.
int renameOver(const QString& from, const QString& to) {
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData());
}

// One table row a line; arguments decay so string literals land in QString columns.
template <typename... T> void row(const char* name, T... values) {
    (QTest::newRow(name) << ... << values);
}

QStringList readAll(QSqlQuery& q) {
    QStringList out;
    while (q.next())
        out << q.value(0).toString();
    return out;
}

const QString Insert = QStringLiteral("INSERT INTO SrvIPTable (TrmIP, PCno) VALUES (?, ?)");
const QString ByPc = QStringLiteral("SELECT TrmIP FROM SrvIPTable WHERE PCno <= ? ORDER BY rowid");

// A prepared database in a folder of its own.
struct Store {
    QTemporaryDir dir;
    AppFolder folder{dir.path()};
    Database db{folder};

    explicit Store(const QStringList& addresses = {}) {
        db.prepare();
        DbSession s(db);
        for (int i = 0; i < addresses.size(); ++i)
            s.run(Insert, {addresses[i], i + 1});
    }

    // The registry's addresses, as the console reads them.
    QStringList addresses() {
        DbSession s(db);
        auto q = s.run(QStringLiteral("SELECT TrmIP FROM SrvIPTable ORDER BY rowid"));
        return readAll(q);
    }
};

} // namespace

class TstDatabase : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // However an operation used its statements, once it ends another program can lock the
    // file and even replace it, and the next operation reads the new file.
    void fileFreeBetweenOperations_data() {
        QTest::addColumn<QString>("how");
        QTest::addColumn<bool>("lockedDuring"); // the file is locked before the session ends
        row("rows read to the end", "all", false);
        row("stopped before the last row", "first", true);
        row("run, not read", "none", true);
        row("write", "write", false);
        row("stopped in an inner session", "inner", true);
        row("failed statement", "fail", false);
    }
    void fileFreeBetweenOperations() {
        QFETCH(QString, how);
        QFETCH(bool, lockedDuring);
        Store st({"10.0.0.1", "10.0.0.2", "10.0.0.3"});
        {
            DbSession s(st.db);
            if (how == "all") {
                auto q = s.run(ByPc, {9});
                QCOMPARE(readAll(q).size(), 3);
            } else if (how == "first") {
                auto q = s.run(ByPc, {9});
                QVERIFY(q.next());
            } else if (how == "none") {
                s.run(ByPc, {9});
            } else if (how == "write") {
                s.run(QStringLiteral("UPDATE SrvIPTable SET Status = ?"), {yesNo(true)});
            } else if (how == "inner") {
                DbSession inner(st.db);
                auto q = inner.run(ByPc, {9});
                QVERIFY(q.next());
            } else {
                QVERIFY_THROWS_EXCEPTION(StoreError, s.run("SELECT nothing FROM SrvIPTable"));
            }
            QCOMPARE(!otherProgramCanLock(st.db.path()), lockedDuring);
        }
        QVERIFY(otherProgramCanLock(st.db.path()));

        Store other({"192.168.1.9"});
        QCOMPARE(renameOver(other.db.path(), st.db.path()), 0);
        QCOMPARE(st.addresses(), QStringList{"192.168.1.9"});
    }

    // A file changed between two operations is read as it is now; a missing one is reported
    // until it is back.
    void changedFileReadAfresh_data() {
        QTest::addColumn<QString>("how");
        QTest::newRow("replaced by rename") << "rename";
        QTest::newRow("rewritten in place") << "rewrite";
        QTest::newRow("deleted and copied back") << "copy";
        QTest::newRow("missing for a while") << "missing";
    }
    void changedFileReadAfresh() {
        QFETCH(QString, how);
        // Made alike, so that only the row differs: same size, same page count, same change
        // counter in the header.
        Store st({"10.0.0.1"});
        Store other({"10.9.9.9"});
        const QString path = st.db.path();
        {
            // An hour back, so the rewrite below cannot fall in the same tick of the clock.
            QFile f(path);
            QVERIFY(f.open(QIODevice::ReadWrite));
            QVERIFY(f.setFileTime(QDateTime::currentDateTime().addSecs(-3600),
                                  QFileDevice::FileModificationTime));
        }
        QCOMPARE(st.addresses(), QStringList{"10.0.0.1"});
        if (how == "rename") {
            QCOMPARE(renameOver(other.db.path(), path), 0);
        } else if (how == "rewrite") {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            const QByteArray bytes = bytesOf(other.db.path());
            QCOMPARE(f.write(bytes), bytes.size());
        } else {
            QVERIFY(QFile::remove(path));
            if (how == "missing") {
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
        QCOMPARE(st.addresses(), QStringList{"10.9.9.9"});
        QVERIFY(otherProgramCanLock(path));
    }

    // A second run of the same statement, in the same session or in one inside it, never
    // takes the rows from a query still being read.
    void sameStatementWhileReading_data() {
        QTest::addColumn<int>("depth"); // sessions between the reader and the second run
        QTest::newRow("same session") << 0;
        QTest::newRow("inner session") << 1;
        QTest::newRow("inner session of an inner one") << 2;
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
                second = readAll(again);
                // A handler that read a row and then writes elsewhere.
                at.run(QStringLiteral("INSERT INTO templog (CID, aindex) VALUES (?, ?)"),
                       {"ID-00001", 2});
                while (!inner.empty())
                    inner.pop_back(); // innermost first
            }
            outer << readAll(q);
        }
        QCOMPARE(outer, (QStringList{"10.0.0.1", "10.0.0.2", "10.0.0.3"}));
        QCOMPARE(second, (QStringList{"10.0.0.1", "10.0.0.2"}));
        QCOMPARE(sqliteTool(st.db.path(), "SELECT count(*) FROM templog"), "1");
        QVERIFY(otherProgramCanLock(st.db.path()));
    }

    // Writes in a transaction are kept only when it commits; a savepoint inside it only when
    // both commit.
    void transactions_data() {
        QTest::addColumn<QString>("outer"); // commit, end (session ends), throw, raw (db())
        QTest::addColumn<QString>("inner"); // none, commit, end
        QTest::addColumn<QStringList>("kept");
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

    // A failed statement is reported, and the same statement run rightly afterwards works:
    // values left bound from an earlier run never stand in for missing ones.
    void failedStatement_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QVariantList>("values");
        QTest::newRow("a value missing") << ByPc << QVariantList{};
        QTest::newRow("a value too many") << ByPc << QVariantList{1, 2};
        QTest::newRow("unknown column")
            << "SELECT TrmIP FROM SrvIPTable WHERE nothing = ?" << QVariantList{1};
    }
    void failedStatement() {
        QFETCH(QString, sql);
        QFETCH(QVariantList, values);
        Store st({"10.0.0.1", "10.0.0.2"});
        for (int pass = 0; pass < 2; ++pass) {
            DbSession s(st.db);
            auto q = s.run(ByPc, {1});
            QCOMPARE(readAll(q), QStringList{"10.0.0.1"});
            QVERIFY_THROWS_EXCEPTION(StoreError, s.run(sql, values));
            q = s.run(ByPc, {2});
            QCOMPARE(readAll(q), (QStringList{"10.0.0.1", "10.0.0.2"}));
        }
    }

    // The file alone holds everything after each operation: a rollback journal that is gone
    // when the write is done, full syncs, and a file in WAL mode turned back to rollback.
    void fileAloneIsWhole_data() {
        QTest::addColumn<bool>("wal"); // made by the sqlite3 tool in WAL mode
        QTest::newRow("made by the console") << false;
        QTest::newRow("made in WAL mode") << true;
    }
    void fileAloneIsWhole() {
        QFETCH(bool, wal);
        QTemporaryDir dir;
        const Database db{AppFolder(dir.path())};
        if (wal)
            QVERIFY(sqliteTool(db.path(), "PRAGMA journal_mode = WAL; CREATE TABLE rates "
                                          "(RPH NUMBER, mina NUMBER, mint NUMBER);"));
        db.prepare();
        {
            DbSession s(db);
            s.run(Insert, {"10.0.0.1", 1});
            auto q = s.run("PRAGMA journal_mode");
            QVERIFY(q.next());
            QCOMPARE(q.value(0).toString(), "delete");
            q = s.run("PRAGMA synchronous");
            QVERIFY(q.next());
            QCOMPARE(q.value(0).toInt(), 2); // FULL
        }
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{Database::FileName});
        QCOMPARE(bytesOf(db.path()).mid(18, 2), QByteArray("\x01\x01")); // rollback journal
    }

    // A sum over a range of dates, of one type in any letter case or of all, reads an index
    // alone: in a new file, and in one prepared with the earlier revenue indexes.
    void revenueSumFromIndex_data() {
        QTest::addColumn<bool>("earlier");
        QTest::addColumn<QString>("type"); // empty: every type
        QTest::addColumn<double>("sum");
        row("one type", false, "Games_Rentals", 30.0);
        row("every type", false, "", 35.0);
        row("one type, earlier file", true, "Games_Rentals", 30.0);
        row("every type, earlier file", true, "", 35.0);
    }
    void revenueSumFromIndex() {
        QFETCH(bool, earlier);
        QFETCH(QString, type);
        QFETCH(double, sum);
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
        DbSession s(st.db);
        for (const auto& [day, kind, amount] :
             {std::tuple{first.addDays(-1), "GAMES_RENTALS", 1000},
              {first, "GAMES_RENTALS", 10},
              {first.addDays(14), "games_rentals", 20},
              {last, "SERVICE", 5},
              {last.addDays(1), "GAMES_RENTALS", 2000}})
            s.run("INSERT INTO TmpRvnD (Rdate, rtype, Amount) VALUES (?, ?, ?)",
                  {day, kind, amount});
        QString sql = "SELECT sum(Amount) FROM TmpRvnD WHERE Rdate >= ? AND Rdate <= ?";
        QVariantList values{first, last};
        if (!type.isEmpty()) {
            sql += " AND rtype = ? COLLATE NOCASE";
            values << type;
        }
        auto plan = s.run("EXPLAIN QUERY PLAN " + sql, values);
        QVERIFY(plan.next());
        QVERIFY2(plan.value(3).toString().contains("COVERING INDEX"),
                 qPrintable(plan.value(3).toString()));
        auto q = s.run(sql, values);
        QVERIFY(q.next());
        QCOMPARE(q.value(0).toDouble(), sum);
    }

    // Another program's file in WAL mode is refused without a byte of it changed.
    void foreignWalFileUntouched() {
        QTemporaryDir dir;
        const Database db{AppFolder(dir.path())};
        QVERIFY(sqliteTool(db.path(), "PRAGMA journal_mode = WAL; CREATE TABLE photos (id, "
                                      "path); INSERT INTO photos VALUES (1, 'a.jpg');"));
        const QByteArray before = bytesOf(db.path());
        QVERIFY_THROWS_EXCEPTION(StoreError, db.prepare());
        QCOMPARE(bytesOf(db.path()), before);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{Database::FileName});
    }
};

QTEST_GUILESS_MAIN(TstDatabase)
#include "tst_database.moc"
