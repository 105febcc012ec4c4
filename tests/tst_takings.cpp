// Today's sales window and the date report, driven through their controls on a real database.
#include "sales/date_report_window.h"
#include "sales/todays_sales_window.h"
#include "support/frame_fixture.h"

#include <QSignalSpy>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Answer = Prompts::Answer;
Q_DECLARE_METATYPE(Prompts::Answer)

namespace {

QDate day(int month, int d) {
    return QDate(2026, month, d);
}

template <typename... T> void row(const char* name, const T&... values) {
    (QTest::newRow(name) << ... << values);
}

// The chosen columns of every row of a grid as shown: cells by spaces, rows by commas.
QString rows(const QTableView* view, const QList<int>& columns) {
    QStringList out;
    for (int r = 0; r < view->model()->rowCount(); ++r) {
        QStringList cells;
        for (int c : columns)
            cells << view->model()->index(r, c).data().toString();
        out << cells.join(u' ');
    }
    return out.join(u", "_s);
}

QList<int> widths(const QTableView* v) {
    return {v->columnWidth(0), v->columnWidth(1), v->columnWidth(2)};
}

QString describe(const ReportRequest& r) {
    const char* kinds[] = {"Rentals", "Services", "Summary", "Members"};
    const char* modes[] = {"today", "range", "all"};
    QString span = QString::fromLatin1(modes[int(r.span.mode)]);
    if (r.span.mode == DateSpan::Mode::Range)
        span = r.span.begin.toString(u"MM/dd/yyyy-"_s) + r.span.end.toString(u"MM/dd/yyyy"_s);
    return QStringList{QString::fromLatin1(kinds[int(r.kind)]), r.rangeText,
                       r.ordered ? u"sorted"_s : u"unsorted"_s, span}
        .join(u" | "_s);
}

} // namespace

class TakingsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;

    template <typename T = QWidget> T* find(const QString& name) {
        return fx->frame->findChild<T*>(name);
    }
    QTableView* grid(const QString& window, const QString& name) {
        return find(window)->findChild<QTableView*>(name);
    }
    QString text(const QString& name) { return find<QLineEdit>(name)->text(); }
    QString boxes(const QStringList& names) {
        QStringList out;
        for (const QString& name : names)
            out << text(name);
        return out.join(u' ');
    }

    void rental(const QDate& when, double amount) {
        fx->exec(u"INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID, TID, StartT, EndT, Tcons) "
                 "VALUES (?, 'GAMES_RENTALS', ?, 'ID-00001', '3', '09:00:00', '10:00:00', "
                 "'01:00:00')"_s,
                 {when, amount});
    }
    void service(const QDate& when, int orno, const QString& what, double qty, double amount,
                 const QString& rtype = u"SERVICE"_s) {
        fx->exec(u"INSERT INTO TmpRvnD (Rdate, rtype, Amount, Orno, rdesc, subamnt, qty) "
                 "VALUES (?, ?, ?, ?, ?, ?, ?)"_s,
                 {when, rtype, amount, orno, what, QString::number(amount / qty), qty});
    }
    // A month of the café around today, the 15th of November.
    void someTakings() {
        const QList<std::pair<QDate, double>> rentals{{day(10, 31), 10}, {day(11, 1), 20},
                                                      {day(11, 15), 30}, {day(11, 15), 5.5},
                                                      {day(11, 30), 40}, {day(12, 1), 50}};
        for (const auto& [when, amount] : rentals)
            rental(when, amount);
        service(day(11, 1), 7, u"Print"_s, 3, 75);
        service(day(11, 15), 8, u"Scan"_s, 1, 12.25);
        service(day(11, 30), 9, u"Lamination"_s, 2, 1250);
        service(day(11, 30), 10, u"Burn CD"_s, 1, 1, u"service"_s); // another tool's letter case
    }

    // "today", "all", or what the operator types in the two boxes: "begin to end".
    QWidget* openDates(const QString& days) {
        fx->frame->action(u"mnuSDate"_s)->trigger();
        if (days == u"today"_s) {
            find<QRadioButton>(u"optdy"_s)->click();
        } else if (days == u"all"_s) {
            find<QRadioButton>(u"optad"_s)->click();
        } else {
            find<QRadioButton>(u"optsd"_s)->click();
            find<QLineEdit>(u"txtbdate"_s)->setText(days.section(u" to "_s, 0, 0));
            find<QLineEdit>(u"txtedate"_s)->setText(days.section(u" to "_s, 1));
        }
        return find(u"frmSDates"_s);
    }
    DateReportWindow* dates() { return find<DateReportWindow>(u"frmSDates"_s); }
    QWidget* openToday() {
        fx->frame->action(u"mnuEarn"_s)->trigger();
        return find(u"ASlsSrv"_s);
    }
    TodaysSalesWindow* today() { return find<TodaysSalesWindow>(u"ASlsSrv"_s); }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Admin"_s));
        fx->prompts.clear();
    }
    void cleanup() { fx.reset(); }

    void dateReportHoldsTheChosenDays_data() {
        QTest::addColumn<QString>("days");
        QTest::addColumn<QString>("shown"); // rentals; services (date amount); the three totals
        const char* nothing = "; ; 0.00 0.00 0.00";
        row("today, in the order written", "today",
            "11/15/2026 30.00, 11/15/2026 5.50; 11/15/2026 12.25; 35.50 12.25 47.75");
        row("a range includes both end days", "11/01/2026 to 11/30/2026",
            "11/01/2026 20.00, 11/15/2026 5.50, 11/15/2026 30.00, 11/30/2026 40.00; "
            "11/01/2026 75.00, 11/15/2026 12.25, 11/30/2026 1.00, 11/30/2026 1,250.00; "
            "95.50 1,338.25 1,433.75");
        row("a reversed range holds nothing", "11/30/2026 to 11/01/2026", nothing);
        row("a range with no takings", "01/01/2027 to 01/31/2027", nothing);
        row("every date", "all",
            "10/31/2026 10.00, 11/01/2026 20.00, 11/15/2026 5.50, 11/15/2026 30.00, "
            "11/30/2026 40.00, 12/01/2026 50.00; 11/01/2026 75.00, 11/15/2026 12.25, "
            "11/30/2026 1.00, 11/30/2026 1,250.00; 155.50 1,338.25 1,493.75");
        row("one-digit month and day", "11/1/2026 to 11/1/2026",
            "11/01/2026 20.00; 11/01/2026 75.00; 20.00 75.00 95.00");
        row("two-digit years", "11/30/26 to 12/31/26",
            "11/30/2026 40.00, 12/01/2026 50.00; 11/30/2026 1.00, 11/30/2026 1,250.00; "
            "90.00 1,251.00 1,341.00");
        // The begin box took its date (to today's end); the end box is still being typed.
        row("a half-typed date waits", "11/01/2026 to 11/3",
            "11/01/2026 20.00, 11/15/2026 5.50, 11/15/2026 30.00; 11/01/2026 75.00, "
            "11/15/2026 12.25; 55.50 87.25 142.75");
        row("no date at all waits", "Nov 1 to '; DROP TABLE TmpRvnD; --",
            "11/15/2026 5.50, 11/15/2026 30.00; 11/15/2026 12.25; 35.50 12.25 47.75");
    }
    void dateReportHoldsTheChosenDays() {
        QFETCH(QString, days);
        QFETCH(QString, shown);
        someTakings();
        QVERIFY(openDates(days));
        QCOMPARE(QStringList({rows(grid(u"frmSDates"_s, u"DBGrid1"_s), {0, 3}),
                              rows(grid(u"frmSDates"_s, u"DBGrid2"_s), {1, 4}),
                              boxes({u"txtSRG"_s, u"txtSrv"_s, u"txtGtotal"_s})})
                     .join(u"; "_s),
                 shown);
        // The summary tab repeats the subtotals.
        QCOMPARE(boxes({u"txtSRentals"_s, u"txtSService"_s}), boxes({u"txtSRG"_s, u"txtSrv"_s}));
        QCOMPARE(find<QLabel>(u"lblmess"_s)->text(), u"Process complete.."_s);
        QCOMPARE(fx->prompts.texts(), QStringList()); // nothing typed is an error
        QCOMPARE(find<QLineEdit>(u"txtbdate"_s)->isEnabled(), days.contains(u" to "_s));
        if (days == u"all"_s)
            QCOMPARE(boxes({u"txtbdate"_s, u"txtedate"_s}), u"Start End"_s);
        QCOMPARE(fx->scalar(u"SELECT count(*) FROM TmpRvnD"_s).toInt(), 10);
    }

    void printRequests_data() {
        QTest::addColumn<QString>("days"); // or "today's window", whose buttons ask for a kind
        QTest::addColumn<int>("popt");
        QTest::addColumn<QString>("request"); // kind | range line | order | span
        const char* nov = "11/01/2026 to 11/30/2026";
        row("today, rentals", "today", 0, "Rentals | 11/15/2026 To 11/15/2026 | sorted | today");
        row("today, summary", "today", 2, "Summary | Today | sorted | today");
        row("range, services", nov, 1,
            "Services | 11/01/2026 To 11/30/2026 | sorted | 11/01/2026-11/30/2026");
        row("range, summary", nov, 7,
            "Summary | 11/01/2026 To 11/30/2026 | sorted | 11/01/2026-11/30/2026");
        // The boxes print as they stand; the rows are those the grids show.
        row("range being typed", "11/01/2026 to 11/3", 0,
            "Rentals | 11/01/2026 To 11/3 | sorted | 11/01/2026-11/15/2026");
        row("every date, rentals", "all", 0, "Rentals | Start To End | unsorted | all");
        row("every date, services", "all", 1, "Services | Start To End | unsorted | all");
        row("every date, summary", "all", 2, "Summary | ALL Dates | sorted | all");
        row("cmdPRG", "today's window", 0, "Rentals | ( Today ) 11-15-2026 | sorted | today");
        row("cmdPSRV", "today's window", 1, "Services | ( Today ) 11-15-2026 | sorted | today");
        row("cmdPSum", "today's window", 2, "Summary | Today | sorted | today");
    }
    void printRequests() {
        QFETCH(QString, days);
        QFETCH(int, popt);
        QFETCH(QString, request);
        if (days == u"today's window"_s) {
            QVERIFY(openToday());
            QCOMPARE(describe(today()->sales().printRequest(ReportKind(popt))), request);
        } else {
            QVERIFY(openDates(days));
            QCOMPARE(describe(dates()->report().printRequest(popt)), request);
        }
    }

    void chartFollowsTheChosenDays_data() {
        QTest::addColumn<QString>("days");
        QTest::addColumn<bool>("january");  // a rental of 100 on the 15th of January too
        QTest::addColumn<QString>("chart"); // title | each bar not empty: rentals+services
        const QString bars = u" | 10/31: 10+0 | 11/01: 20+75 | 11/15: 35.5+12.25 | 11/30: 40+1251"
                             " | 12/01: 50+0"_s;
        const QString months = u"Takings per month, 01/15/2026 to 12/01/2026 | Jan 2026: 100+0 | "
                               "Oct 2026: 10+0 | Nov 2026: 95.5+1338.25 | Dec 2026: 50+0"_s;
        row("today", "today", false, "Takings per day, Today, 11/15/2026 | 15: 35.5+12.25");
        row("a month, every day a bar", "11/01/2026 to 11/30/2026", false,
            "Takings per day, 11/01/2026 to 11/30/2026 | 1: 20+75 | 15: 35.5+12.25 | 30: 40+1251");
        row("across two months", "10/31/2026 to 12/01/2026", false,
            u"Takings per day, 10/31/2026 to 12/01/2026"_s + bars);
        row("years of range: the days with takings", "01/01/2020 to 12/31/2030", false,
            u"Takings per day, 10/31/2026 to 12/01/2026"_s + bars);
        row("takings over months: a bar a month", "01/01/2020 to 12/31/2030", true, months);
        row("every date over months", "all", true, months);
        row("reversed", "11/30/2026 to 11/01/2026", false, "Takings per day, No days chosen");
        row("years without takings", "01/01/2030 to 12/31/2031", false,
            "Takings per day, No takings from 01/01/2030 to 12/31/2031");
    }
    void chartFollowsTheChosenDays() {
        QFETCH(QString, days);
        QFETCH(bool, january);
        QFETCH(QString, chart);
        someTakings();
        if (january)
            rental(day(1, 15), 100);
        QVERIFY(openDates(days));
        const TakingsChart& shown = dates()->report().chart();
        QStringList parts{shown.title + u", "_s + shown.period};
        for (const auto& bar : shown.bars)
            if (bar.rentals != Money() || bar.services != Money())
                parts << u"%1: %2+%3"_s.arg(bar.label)
                             .arg(bar.rentals.toDouble())
                             .arg(bar.services.toDouble());
        QCOMPARE(parts.join(u" | "_s), chart);
        // Every day or month between the first bar and the last has its bar, takings or not.
        if (!shown.bars.isEmpty()) {
            const QDate first = shown.bars.first().first, last = shown.bars.last().first;
            QCOMPARE(shown.bars.size(),
                     shown.step == TakingsChart::Step::Day
                         ? first.daysTo(last) + 1
                         : (last.year() - first.year()) * 12 + last.month() - first.month() + 1);
        }
        const QString name = find(u"chtTakings"_s)->accessibleName();
        QVERIFY2(name.startsWith(parts.first()), qPrintable(name));
    }

    void todaysWindowShowsTodayOnly() {
        someTakings();
        QVERIFY(openToday());
        QTableView* rentals = grid(u"ASlsSrv"_s, u"DBGrid1"_s);
        QTableView* services = grid(u"ASlsSrv"_s, u"DBGrid2"_s);
        QCOMPARE(rows(rentals, {3}) + u" / "_s + rows(services, {1}), u"30.00, 5.50 / Scan"_s);
        QCOMPARE(boxes({u"txtRG"_s, u"txtSrv"_s}), u"35.50 12.25"_s);
        // 1200, 1000, 1000 and 1000, 3700, 500 twips at 15 twips a pixel.
        QCOMPARE(widths(rentals), (QList<int>{80, 67, 67}));
        QCOMPARE(widths(services), (QList<int>{67, 247, 33}));
        QCOMPARE(rentals->currentIndex().row(), 1); // the last rows in view, so new sales show
        QVERIFY(find<QTimer>(u"Timer1"_s)->isActive());
        fx->frame->action(u"mnuEarn"_s)->trigger(); // brings the same window forward
        QCOMPARE(fx->frame->findChildren<TodaysSalesWindow*>().size(), 1);
    }

    void timerKeepsTodayCurrent_data() {
        QTest::addColumn<QString>("event");
        QTest::addColumn<int>("rentals");
        QTest::addColumn<QString>("totals");
        QTest::addColumn<bool>("reread"); // the grids were read again
        row("nothing new", "none", 2, "35.50 12.25", false);
        row("a bill saved", "bill", 3, "1,035.50 12.25", true);
        row("a row of another day", "yesterday", 2, "35.50 12.25", false);
        row("an amount corrected", "correct", 2, "36.50 12.25", true);
        row("the day turns", "midnight", 0, "0.00 0.00", true);
    }
    void timerKeepsTodayCurrent() {
        QFETCH(QString, event);
        QFETCH(int, rentals);
        QFETCH(QString, totals);
        QFETCH(bool, reread);
        someTakings();
        QVERIFY(openToday());
        QTableView* grid1 = grid(u"ASlsSrv"_s, u"DBGrid1"_s);
        QSignalSpy resets(grid1->model(), &QAbstractItemModel::modelReset);
        if (event == u"bill"_s)
            rental(day(11, 15), 1000);
        else if (event == u"yesterday"_s)
            rental(day(11, 14), 1000);
        else if (event == u"correct"_s)
            fx->exec(u"UPDATE TmpRvnD SET Amount = 31 WHERE Amount = 30"_s);
        else if (event == u"midnight"_s)
            fx->clock.advance(15 * 60 * 60 * 1000);
        today()->tick();
        QCOMPARE(grid1->model()->rowCount(), rentals);
        QCOMPARE(boxes({u"txtRG"_s, u"txtSrv"_s}), totals);
        QCOMPARE(!resets.isEmpty(), reread);
        if (rentals > 0) // the newest row in view, the columns as wide as before
            QCOMPARE(grid1->currentIndex().row(), rentals - 1);
        QCOMPARE(grid1->columnWidth(0), 80);
    }

    void takingBackASaleIsForAdministrators_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<QString>("told");
        QTest::addColumn<QString>("left"); // today's services afterwards, and their total
        const char* asked = "Delete the sale of Scan (OR 8, quantity 1, amount 12.25)?";
        row("cashier", "Cashier", Answer::Yes, "Access Denied..", "Scan, Print / 22.25");
        row("admin in small letters", "admin", Answer::Yes, "Access Denied..",
            "Scan, Print / 22.25");
        row("Admin, yes", "Admin", Answer::Yes, asked, "Print / 10.00");
        row("Admin, no", "Admin", Answer::No, asked, "Scan, Print / 22.25");
    }
    void takingBackASaleIsForAdministrators() {
        QFETCH(QString, type);
        QFETCH(Answer, answer);
        QFETCH(QString, told);
        QFETCH(QString, left);
        someTakings();
        service(day(11, 15), 11, u"Print"_s, 2, 10);
        fx->console->currentOperator().type = type;
        QVERIFY(openToday());
        QTableView* services = grid(u"ASlsSrv"_s, u"DBGrid2"_s);
        services->setCurrentIndex(services->model()->index(0, 0));
        fx->prompts.answers = {answer};
        services->findChild<QAction*>(u"mnuDelSale"_s)->trigger();
        QCOMPARE(fx->prompts.texts(), QStringList{told});
        if (told == u"Access Denied.."_s)
            QCOMPARE(fx->prompts.last()->icon, Prompts::Icon::Critical);
        QCOMPARE(rows(services, {1}) + u" / "_s + text(u"txtSrv"_s), left);
        QCOMPARE(
            fx->scalar(u"SELECT count(*) FROM TmpRvnD WHERE Rdate = ?"_s, {day(11, 15)}).toInt(),
            2 + services->model()->rowCount());
    }

    void aFailingDatabaseIsToldNotThrown() {
        someTakings();
        QVERIFY(openDates(u"today"_s));
        QVERIFY(openToday());
        fx->exec(u"ALTER TABLE TmpRvnD RENAME TO TmpRvnD_gone"_s);
        fx->prompts.clear();
        find<QRadioButton>(u"optad"_s)->click();
        QCOMPARE(fx->prompts.shown.size(), 1);
        QVERIFY(fx->prompts.last()->text.startsWith(u"The takings could not be read: "_s));
        QCOMPARE(text(u"txtSRG"_s), u"35.50"_s); // the grids keep what they showed
        // A tick tells once, without holding the timer up, however long it lasts.
        fx->prompts.clear();
        today()->tick();
        today()->tick();
        QCOMPARE(fx->prompts.texts(u"notice"_s).size(), 1);
        QCOMPARE(text(u"txtRG"_s), u"35.50"_s);
        fx->exec(u"ALTER TABLE TmpRvnD_gone RENAME TO TmpRvnD"_s);
        rental(day(11, 15), 1);
        today()->tick();
        QCOMPARE(text(u"txtRG"_s), u"36.50"_s);
    }
};

QTEST_MAIN(TakingsTest)
#include "tst_takings.moc"
