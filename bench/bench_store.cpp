// How storage holds up after years of use: fills a database with a year of session rows
// and three years of revenue rows, then times what the console does against it at
// start-up (restoring today's sessions) and on every terminal message (one look-up on the
// kept connection, with the file's identity checked first).
#include "base/app_folder.h"
#include "base/clock.h"
#include "base/prompts.h"
#include "console/console.h"
#include "server/session_log.h"
#include "server/terminal_table.h"
#include "store/database.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int SessionRows = 100000;
constexpr int SessionDays = 365;
constexpr int RevenueRows = 1000000;
constexpr int RevenueDays = 3 * 365;
constexpr int BatchRows = 10000;
constexpr int Pcs = 24;
constexpr int OpenToday = 24;

// Median wall time of `runs` calls, in microseconds.
double medianMicros(int runs, const std::function<void()>& work) {
    std::vector<qint64> times;
    times.reserve(size_t(runs));
    QElapsedTimer t;
    for (int i = 0; i < runs; ++i) {
        t.start();
        work();
        times.push_back(t.nsecsElapsed());
    }
    std::sort(times.begin(), times.end());
    return double(times[times.size() / 2]) / 1000.0;
}

// Inserts `rows` rows in transactions of BatchRows, one prepared statement per batch.
void fill(const Database& db, const QString& sql, int rows,
          const std::function<QVariantList(int)>& rowValues) {
    for (int first = 0; first < rows; first += BatchRows) {
        DbSession s(db);
        if (!s.db().transaction())
            throw StoreError("cannot begin a transaction");
        {
            QSqlQuery q(s.db());
            if (!q.prepare(sql))
                throw StoreError("cannot prepare the insert");
            for (int i = first; i < std::min(rows, first + BatchRows); ++i) {
                const QVariantList values = rowValues(i);
                for (int v = 0; v < values.size(); ++v)
                    q.bindValue(v, values[v]);
                if (!q.exec())
                    throw StoreError("insert failed");
            }
        }
        if (!s.db().commit())
            throw StoreError("cannot commit");
    }
}

QString hms(int seconds) {
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 3600 % 24, 2, 10, QLatin1Char('0'))
        .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

void printPlan(const Database& db, const char* what, const QString& sql,
               const QVariantList& values) {
    DbSession s(db);
    auto q = s.run(QStringLiteral("EXPLAIN QUERY PLAN ") + sql, values);
    while (q.next())
        std::printf("  plan of %s: %s\n", what, qPrintable(q.value(3).toString()));
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    if (!dir.isValid()) {
        std::fprintf(stderr, "no temporary folder\n");
        return 1;
    }
    SystemClock clock;
    SilentPrompts prompts;
    const AppFolder folder(dir.path());
    Console console(clock, prompts, folder);

    try {
        console.openStorage();
        const Database& db = console.database();
        const QDate today = clock.today();
        QRandomGenerator gen(1066);

        QElapsedTimer fillTime;
        fillTime.start();
        // Rows are written day by day, oldest first, as the console writes them. Sessions:
        // about 274 a day; of today's, the last OpenToday are still running, and one in
        // fifty of earlier days was never closed (those must stay unrestored).
        auto sessionDay = [](int i) {
            return SessionDays - 1 - int(qint64(i) * SessionDays / SessionRows);
        };
        fill(db,
             QStringLiteral("INSERT INTO templog (CID, StartTime, aindex, isout, cdtls, datelog, "
                            "TickStart, BkTick, pcstat, stopwatch) VALUES (?, ?, ?, ?, ?, ?, ?, ?, "
                            "?, ?)"),
             SessionRows, [&](int i) {
                 const int day = sessionDay(i);
                 const int nth = i % 274;
                 const bool open = day == 0 ? i >= SessionRows - OpenToday : i % 50 == 0;
                 const QString cid =
                     QStringLiteral("ID-%1").arg(i % 5000 + 1, 5, 10, QLatin1Char('0'));
                 return QVariantList{cid,
                                     hms(8 * 3600 + nth * 180),
                                     i % Pcs + 1,
                                     yesNo(!open),
                                     cid + QStringLiteral(":MEMBER, NAME"),
                                     today.addDays(-day),
                                     int(gen.bounded(100000000)),
                                     int(gen.bounded(3600000)),
                                     open && nth % 3 == 0 ? QStringLiteral("PAU")
                                                          : QStringLiteral("LOG"),
                                     QStringLiteral("U")};
             });
        const double sessionFill = double(fillTime.elapsed()) / 1000.0;

        fillTime.restart();
        fill(db,
             QStringLiteral("INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID, TID, StartT, EndT, "
                            "Tcons, Orno, rdesc, subamnt, qty) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, "
                            "?, ?, ?)"),
             RevenueRows, [&](int i) {
                 const QDate day =
                     today.addDays(-(RevenueDays - 1 - int(qint64(i) * RevenueDays / RevenueRows)));
                 if (i % 10 < 7)
                     return QVariantList{day,
                                         QStringLiteral("GAMES_RENTALS"),
                                         10.0 + gen.bounded(9000) / 100.0,
                                         QStringLiteral("TRM-%1").arg(i % Pcs + 1),
                                         QString::number(i % Pcs + 1),
                                         hms(8 * 3600 + i % 36000),
                                         hms(9 * 3600 + i % 36000),
                                         QStringLiteral("01:00:00"),
                                         QVariant(),
                                         QVariant(),
                                         QVariant(),
                                         QVariant()};
                 return QVariantList{day,
                                     QStringLiteral("SERVICE"),
                                     25.0,
                                     QVariant(),
                                     QVariant(),
                                     QVariant(),
                                     QVariant(),
                                     QVariant(),
                                     i,
                                     "Print",
                                     QStringLiteral("5.00"),
                                     5};
             });
        const double revenueFill = double(fillTime.elapsed()) / 1000.0;

        {
            DbSession s(db);
            for (int pc = 1; pc <= 254; ++pc)
                s.run(QStringLiteral("INSERT INTO SrvIPTable (TrmIP, PCno, SKIndex, Status) "
                                     "VALUES (?, ?, ?, ?)"),
                      {QStringLiteral("10.0.%1.%2").arg(pc / 200).arg(pc % 200 + 1), pc, pc,
                       yesNo(pc <= Pcs)});
        }

        SessionLog& log = console.sessionLog();
        int restored = 0;
        const double restoreMedian = medianMicros(20, [&] {
            TerminalTable table;
            table.init(Pcs);
            restored = log.restoreSessions(table).count;
        });

        double todaysRentals = 0;
        const double lookupMedian = medianMicros(200, [&] {
            DbSession s(db);
            auto q = s.run(QStringLiteral("SELECT sum(Amount) FROM TmpRvnD WHERE Rdate = ? AND "
                                          "rtype = ?"),
                           {today, QStringLiteral("GAMES_RENTALS")});
            todaysRentals = q.next() ? q.value(0).toDouble() : -1;
        });

        int pc = 0, socket = 0;
        const double socketMedian = medianMicros(200, [&] {
            pc = pc % Pcs + 1;
            socket = console.control().socketOfPc(pc);
        });

        std::printf("database: %d session rows over %d days, %d revenue rows over %d days\n",
                    SessionRows, SessionDays, RevenueRows, RevenueDays);
        std::printf("fill: sessions %.2f s, revenue %.2f s (transactions of %d rows)\n",
                    sessionFill, revenueFill, BatchRows);
        std::printf("file size: %.1f MB\n", double(QFileInfo(db.path()).size()) / 1048576.0);
        std::printf("restore today's sessions: median %.0f us of 20 runs (%d rows restored)\n",
                    restoreMedian, restored);
        std::printf("look-up (today's rental sum): median %.0f us of 200 runs "
                    "(sum %.2f)\n",
                    lookupMedian, todaysRentals);
        std::printf("socketOfPc: median %.0f us of 200 runs (PC %d -> %d)\n", socketMedian, pc,
                    socket);
        printPlan(db, "restore",
                  QStringLiteral("SELECT CID FROM templog WHERE datelog = ? AND "
                                 "coalesce(isout, 0) = 0 ORDER BY rowid"),
                  {today});
        printPlan(db, "rental sum",
                  QStringLiteral("SELECT sum(Amount) FROM TmpRvnD WHERE Rdate = ? AND rtype = ?"),
                  {today, QStringLiteral("GAMES_RENTALS")});
        printPlan(db, "SocketOfPc",
                  QStringLiteral("SELECT SKIndex FROM SrvIPTable WHERE PCno = ? AND Status <> 0 "
                                 "ORDER BY rowid LIMIT 1"),
                  {1});
        if (restored != OpenToday) {
            std::fprintf(stderr, "expected %d sessions restored, got %d\n", OpenToday, restored);
            return 1;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "bench_store: %s\n", e.what());
        return 1;
    }
    return 0;
}
