// How the takings windows hold up after three years of trade: a real database file with a
// million revenue rows, then the time to open the date report on a 30-day range (window
// shown, grids and sums filled), to switch it to every date, to jump to the last of
// seven hundred thousand rentals, a tick of today's window, and a backup of the file.
#include "base/app_folder.h"
#include "base/clock.h"
#include "base/form_host.h"
#include "base/prompts.h"
#include "console/console.h"
#include "sales/date_report_window.h"
#include "sales/todays_sales_window.h"
#include "store/backup.h"
#include "store/database.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QRadioButton>
#include <QRandomGenerator>
#include <QSqlQuery>
#include <QTableView>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int RevenueRows = 1000000;
constexpr int Days = 3 * 365;
constexpr int Ticks = 200;

class ShowingHost final : public FormHost {
public:
    void showForm(QWidget* form, bool) override {
        form->resize(form->sizeHint());
        form->show();
    }
};

double millis(const QElapsedTimer& t) {
    return double(t.nsecsElapsed()) / 1e6;
}

// Shown as the screen would show it: every pending event handled, the window drawn.
void settle(QWidget* window) {
    QCoreApplication::processEvents();
    (void)window->grab();
}

long residentKb() {
    QFile f(QStringLiteral("/proc/self/statm"));
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    const QList<QByteArray> fields = f.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toLong() * 4 : -1;
}

void fill(const Database& db, const QDate& today) {
    QRandomGenerator gen(1066);
    DbSession s(db);
    s.begin();
    {
        QSqlQuery q(s.db());
        q.prepare(QStringLiteral("INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID, TID, StartT, "
                                 "EndT, Tcons, Orno, rdesc, subamnt, qty) VALUES (?, ?, ?, ?, ?, "
                                 "?, ?, ?, ?, ?, ?, ?)"));
        const QString rentals = QStringLiteral("GAMES_RENTALS");
        const QString services = QStringLiteral("SERVICE");
        const QVariant none;
        for (int i = 0; i < RevenueRows; ++i) {
            const QDate day = today.addDays(-(Days - 1 - int(qint64(i) * Days / RevenueRows)));
            const bool rental = i % 10 < 7;
            q.bindValue(0, day);
            q.bindValue(1, rental ? rentals : services);
            q.bindValue(2, rental ? 10.0 + gen.bounded(9000) / 100.0 : 5.0 * (1 + i % 5));
            q.bindValue(
                3, rental ? QVariant(QStringLiteral("ID-%1").arg(i % 5000, 5, 10, QLatin1Char('0')))
                          : none);
            q.bindValue(4, rental ? QVariant(QString::number(i % 24 + 1)) : none);
            q.bindValue(5, rental ? QVariant(QStringLiteral("09:00:00")) : none);
            q.bindValue(6, rental ? QVariant(QStringLiteral("10:00:00")) : none);
            q.bindValue(7, rental ? QVariant(QStringLiteral("01:00:00")) : none);
            q.bindValue(8, rental ? none : QVariant(i));
            q.bindValue(9, rental ? none : QVariant(QStringLiteral("Print")));
            q.bindValue(10, rental ? none : QVariant(QStringLiteral("5.00")));
            q.bindValue(11, rental ? none : QVariant(1 + i % 5));
            if (!q.exec())
                throw StoreError("insert failed");
        }
    }
    s.commit();
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
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir dir;
    QTemporaryDir home;
    if (!dir.isValid() || !home.isValid()) {
        std::fprintf(stderr, "no temporary folder\n");
        return 1;
    }
    const QDate today(2026, 11, 15);
    ManualClock clock(1000000, QDateTime(today, QTime(18, 0)));
    SilentPrompts prompts;
    const AppFolder folder(dir.path());
    Console console(clock, prompts, folder);
    ShowingHost host;

    try {
        console.openStorage();
        const Database& db = console.database();
        QElapsedTimer t;
        t.start();
        fill(db, today);
        std::printf("database: %d revenue rows over %d days, written in %.2f s (one transaction, "
                    "one prepared insert); file %.1f MB\n",
                    RevenueRows, Days, millis(t) / 1000,
                    double(QFileInfo(db.path()).size()) / 1048576.0);
        const long before = residentKb();

        // The date report on the last 30 days.
        t.restart();
        auto* window = new DateReportWindow(console, host);
        host.showForm(window, false);
        settle(window);
        const double openToday = millis(t);
        t.restart();
        window->findChild<QRadioButton*>(QStringLiteral("optsd"))->click();
        window->findChild<QLineEdit*>(QStringLiteral("txtbdate"))
            ->setText(today.addDays(-29).toString(QStringLiteral("MM/dd/yyyy")));
        settle(window);
        const double range = millis(t);
        const long afterRange = residentKb();
        const int rangeRows =
            window->report().rentals().rowCount() + window->report().services().rowCount();
        std::printf("frmSDates opened on today: %.1f ms; then a 30-day range (%d rows, %s + %s = "
                    "%s): %.1f ms; together %.1f ms\n",
                    openToday, rangeRows, qPrintable(window->report().rentalsTotal()),
                    qPrintable(window->report().servicesTotal()),
                    qPrintable(window->report().grandTotal()), range, openToday + range);

        // Every date: the sums and the chart over a million rows.
        t.restart();
        window->findChild<QRadioButton*>(QStringLiteral("optad"))->click();
        settle(window);
        std::printf("switched to every date (%lld rentals, %lld services, grand total %s, %d "
                    "chart bars): %.1f ms\n",
                    window->report().rentals().total().rows,
                    window->report().services().total().rows,
                    qPrintable(window->report().grandTotal()),
                    int(window->report().chart().bars.size()), millis(t));

        // The last rentals, as Ctrl+End shows them.
        auto* grid = window->findChild<QTableView*>(QStringLiteral("DBGrid1"));
        t.restart();
        grid->scrollToBottom();
        settle(window);
        std::printf("every date, rentals scrolled to the last row: %.1f ms\n", millis(t));
        t.restart();
        grid->scrollToTop();
        settle(window);
        std::printf("and back to the first: %.1f ms\n", millis(t));
        std::printf("memory: %ld kB more resident with the report open on 30 days, %ld kB on "
                    "every date (the grids' row headers take 8 bytes a row)\n",
                    afterRange - before, residentKb() - before);

        // Today's window: what its timer costs when nothing changed.
        auto* todays = new TodaysSalesWindow(console, host);
        host.showForm(todays, false);
        settle(todays);
        std::vector<qint64> ticks;
        for (int i = 0; i < Ticks; ++i) {
            t.restart();
            todays->tick();
            ticks.push_back(t.nsecsElapsed());
        }
        std::sort(ticks.begin(), ticks.end());
        std::printf(
            "ASlsSrv tick with nothing new (%d rows today): median %.0f us of %d\n",
            int(todays->sales().rentals().rowCount() + todays->sales().services().rowCount()),
            double(ticks[ticks.size() / 2]) / 1000.0, Ticks);

        t.restart();
        const Backup::Outcome copy = Backup::makeCopy(db, home.path(), today);
        if (!copy.ok)
            throw StoreError(copy.error.toStdString());
        std::printf("backup of the whole file, checked: %.2f s\n", millis(t) / 1000);

        const QVariantList range30 = {QStringLiteral("GAMES_RENTALS"), today.addDays(-29), today};
        printPlan(db, "the sum of a range",
                  QStringLiteral("SELECT Rdate, count(*), max(rowid), sum(CAST(round(Amount * "
                                 "10000) AS INTEGER)) FROM TmpRvnD WHERE rtype = ? COLLATE NOCASE "
                                 "AND Rdate >= ? AND Rdate <= ? GROUP BY Rdate"),
                  range30);
        printPlan(db, "a block of a range",
                  QStringLiteral("SELECT rowid, Rdate, StartT, EndT, Amount, TID, CID FROM TmpRvnD "
                                 "WHERE rtype = ? COLLATE NOCASE AND Rdate >= ? AND Rdate <= ? "
                                 "ORDER BY Rdate, Amount, rowid LIMIT 100 OFFSET 1000"),
                  range30);
        delete todays;
        delete window;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "bench_takings: %s\n", e.what());
        return 1;
    }
    return 0;
}
