// What one database operation costs on the console's hottest paths: the registry look-up
// made for every message sent to a PC, a registry update, and a 30-day revenue sum. Each
// is a whole operation through DbSession, as the console runs it. The file holds a full
// registry and three years of revenue rows.
#include "base/app_folder.h"
#include "store/database.h"

#include <QCoreApplication>
#include <QDate>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int Pcs = 254;
constexpr int RevenueRows = 100000;
constexpr int RevenueDays = 3 * 365;

struct Figures {
    double median;
    double p99;
};

// Wall time of `runs` calls, in microseconds.
Figures measure(int runs, const std::function<void(int)>& work) {
    std::vector<qint64> times;
    times.reserve(size_t(runs));
    for (int i = 0; i < 50; ++i) // warm the caches first
        work(i);
    QElapsedTimer t;
    for (int i = 0; i < runs; ++i) {
        t.start();
        work(i);
        times.push_back(t.nsecsElapsed());
    }
    std::sort(times.begin(), times.end());
    return {double(times[times.size() / 2]) / 1000.0,
            double(times[times.size() * 99 / 100]) / 1000.0};
}

void print(const char* what, int runs, Figures f) {
    std::printf("%-34s median %8.1f us   p99 %8.1f us   (%d runs)\n", what, f.median, f.p99, runs);
}

void fill(const Database& db, const QDate& today) {
    DbSession s(db);
    if (!s.db().transaction())
        throw StoreError("cannot begin a transaction");
    for (int k = 1; k <= Pcs; ++k)
        s.run(QStringLiteral("INSERT INTO SrvIPTable (TrmIP, PCno, SKIndex, Status) "
                             "VALUES (?, ?, ?, ?)"),
              {QStringLiteral("127.0.0.%1").arg(k), k, k, yesNo(true)});
    const QString insert =
        QStringLiteral("INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID, TID, StartT, EndT, "
                       "Tcons) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    for (int i = 0; i < RevenueRows; ++i) {
        const QDate day =
            today.addDays(-(RevenueDays - 1 - int(qint64(i) * RevenueDays / RevenueRows)));
        const bool rental = i % 10 < 7;
        s.run(insert, {day, rental ? QStringLiteral("GAMES_RENTALS") : QStringLiteral("SERVICE"),
                       rental ? 10.0 + (i % 9000) / 100.0 : 25.0,
                       QStringLiteral("ID-%1").arg(i % 5000 + 1, 5, 10, QLatin1Char('0')),
                       QString::number(i % 24 + 1), QStringLiteral("08:00:00"),
                       QStringLiteral("09:00:00"), QStringLiteral("01:00:00")});
    }
    if (!s.db().commit())
        throw StoreError("cannot commit");
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    if (!dir.isValid()) {
        std::fprintf(stderr, "no temporary folder\n");
        return 1;
    }
    try {
        const Database db{AppFolder(dir.path())};
        db.prepare();
        const QDate today = QDate::currentDate();
        fill(db, today);
        std::printf("database: %d registry rows, %d revenue rows over %d days, %.1f MB\n", Pcs,
                    RevenueRows, RevenueDays, double(QFileInfo(db.path()).size()) / 1048576.0);

        const QString lookup = QStringLiteral("SELECT SKIndex FROM SrvIPTable WHERE PCno = ? AND "
                                              "Status <> 0 ORDER BY rowid LIMIT 1");
        qint64 found = 0;
        constexpr int LookupRuns = 5000;
        const Figures a = measure(LookupRuns, [&](int i) {
            DbSession s(db);
            auto q = s.run(lookup, {i % Pcs + 1});
            found += q.next() ? q.value(0).toInt() : 0;
        });

        constexpr int UpdateRuns = 2000;
        const Figures b = measure(UpdateRuns, [&](int i) {
            DbSession s(db);
            s.run(QStringLiteral("UPDATE SrvIPTable SET SKIndex = ? WHERE rowid = ?"),
                  {i, i % Pcs + 1});
        });

        const QString sum = QStringLiteral("SELECT sum(Amount) FROM TmpRvnD WHERE Rdate >= ? AND "
                                           "Rdate <= ? AND rtype = ? COLLATE NOCASE");
        double total = 0;
        constexpr int SumRuns = 2000;
        const Figures c = measure(SumRuns, [&](int i) {
            const QDate last = today.addDays(-(i % (RevenueDays - 30)));
            DbSession s(db);
            auto q =
                s.run(sum, {last.addDays(-29), last,
                            i % 2 ? QStringLiteral("service") : QStringLiteral("GAMES_RENTALS")});
            total += q.next() ? q.value(0).toDouble() : 0;
        });

        print("(a) registry look-up by PC", LookupRuns, a);
        print("(b) registry update", UpdateRuns, b);
        print("(c) 30-day revenue sum by type", SumRuns, c);
        {
            DbSession s(db);
            auto q = s.run(QStringLiteral("EXPLAIN QUERY PLAN ") + sum,
                           {today.addDays(-29), today, QStringLiteral("SERVICE")});
            while (q.next())
                std::printf("plan of (c): %s\n", qPrintable(q.value(3).toString()));
        }
        if (found == 0 || total <= 0) {
            std::fprintf(stderr, "bench_lookup: the look-ups found nothing\n");
            return 1;
        }
    } catch (const StoreError& e) {
        std::fprintf(stderr, "bench_lookup: %s\n", e.what());
        return 1;
    }
    return 0;
}
