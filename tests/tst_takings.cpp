// Today's sales window and the date report, driven through their controls on a real
// database: which rows each span holds, the totals, what the print buttons ask of the
// report, how the timer keeps today's window current, and who may take back a sale.
#include "sales/date_report_window.h"
#include "sales/todays_sales_window.h"
#include "support/frame_fixture.h"

#include <QSignalSpy>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Answer = Prompts::Answer;
Q_DECLARE_METATYPE(Prompts::Answer)
Q_DECLARE_METATYPE(ReportKind)
Q_DECLARE_METATYPE(DateSpan::Mode)

namespace {

QDate day(int month, int d, int year = 2026) {
    return QDate(year, month, d);
}

// One column of every row of a grid, as shown.
QStringList column(const QAbstractItemModel* model, int c) {
    QStringList out;
    for (int r = 0; r < model->rowCount(); ++r)
        out << model->index(r, c).data().toString();
    return out;
}

} // namespace

class TakingsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;

    Console& console() { return *fx->console; }
    template <typename T = QWidget> T* find(const QString& name) {
        return fx->frame->findChild<T*>(name);
    }
    QTableView* grid(const QString& window, const QString& name) {
        return find<QWidget>(window)->findChild<QTableView*>(name);
    }
    QString text(const QString& name) { return find<QLineEdit>(name)->text(); }

    void rental(const QDate& when, double amount, const QString& rtype = u"GAMES_RENTALS"_s) {
        fx->exec(u"INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID, TID, StartT, EndT, Tcons) "
                 "VALUES (?, ?, ?, 'ID-00001', '3', '09:00:00', '10:00:00', '01:00:00')"_s,
                 {when, rtype, amount});
    }
    void service(const QDate& when, int orno, const QString& what, double qty, double amount,
                 const QString& rtype = u"SERVICE"_s) {
        fx->exec(u"INSERT INTO TmpRvnD (Rdate, rtype, Amount, Orno, rdesc, subamnt, qty) "
                 "VALUES (?, ?, ?, ?, ?, ?, ?)"_s,
                 {when, rtype, amount, orno, what, QString::number(amount / qty), qty});
    }
    // A month of the café around today, the 15th of November.
    void someTakings() {
        rental(day(10, 31), 10);
        rental(day(11, 1), 20);
        rental(day(11, 15), 30);
        rental(day(11, 15), 5.5);
        rental(day(11, 30), 40);
        rental(day(12, 1), 50);
        service(day(11, 1), 7, u"Print"_s, 3, 75);
        service(day(11, 15), 8, u"Scan"_s, 1, 12.25);
        service(day(11, 30), 9, u"Lamination"_s, 2, 1250);
        // Written by another tool, in its own letter case.
        service(day(11, 30), 10, u"Burn CD"_s, 1, 1, u"service"_s);
    }

    QWidget* openDates() {
        fx->frame->action(u"mnuSDate"_s)->trigger();
        return find<QWidget>(u"frmSDates"_s);
    }
    // The date mode and boxes as the operator sets them: "today", "all", or a range.
    void choose(const QString& choice, const QString& begin, const QString& end) {
        if (choice == u"today"_s) {
            find<QRadioButton>(u"optdy"_s)->click();
        } else if (choice == u"all"_s) {
            find<QRadioButton>(u"optad"_s)->click();
        } else {
            find<QRadioButton>(u"optsd"_s)->click();
            find<QLineEdit>(u"txtbdate"_s)->setText(begin);
            find<QLineEdit>(u"txtedate"_s)->setText(end);
        }
    }
    QWidget* openToday() {
        fx->frame->action(u"mnuEarn"_s)->trigger();
        return find<QWidget>(u"ASlsSrv"_s);
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
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QString>("begin");
        QTest::addColumn<QString>("end");
        QTest::addColumn<QStringList>("rentals");  // DateIn and Amount of each row
        QTest::addColumn<QStringList>("services"); // DateIN and Amount of each row
        QTest::addColumn<QStringList>("totals");   // txtSRG, txtSrv, txtGtotal
        const QStringList none;
        QTest::newRow("today, in the order written")
            << u"today"_s << QString() << QString()
            << QStringList{"11/15/2026 30.00", "11/15/2026 5.50"} << QStringList{"11/15/2026 12.25"}
            << QStringList{"35.50", "12.25", "47.75"};
        QTest::newRow("a range includes both end days")
            << u"range"_s << u"11/01/2026"_s << u"11/30/2026"_s
            << QStringList{"11/01/2026 20.00", "11/15/2026 5.50", "11/15/2026 30.00",
                           "11/30/2026 40.00"}
            << QStringList{"11/01/2026 75.00", "11/15/2026 12.25", "11/30/2026 1.00",
                           "11/30/2026 1,250.00"}
            << QStringList{"95.50", "1,338.25", "1,433.75"};
        QTest::newRow("a reversed range holds nothing")
            << u"range"_s << u"11/30/2026"_s << u"11/01/2026"_s << none << none
            << QStringList{"0.00", "0.00", "0.00"};
        QTest::newRow("a range with no takings")
            << u"range"_s << u"01/01/2027"_s << u"01/31/2027"_s << none << none
            << QStringList{"0.00", "0.00", "0.00"};
        QTest::newRow("every date")
            << u"all"_s << QString() << QString()
            << QStringList{"10/31/2026 10.00", "11/01/2026 20.00", "11/15/2026 5.50",
                           "11/15/2026 30.00", "11/30/2026 40.00", "12/01/2026 50.00"}
            << QStringList{"11/01/2026 75.00", "11/15/2026 12.25", "11/30/2026 1.00",
                           "11/30/2026 1,250.00"}
            << QStringList{"155.50", "1,338.25", "1,493.75"};
        QTest::newRow("one-digit month and day")
            << u"range"_s << u"11/1/2026"_s << u"11/1/2026"_s << QStringList{"11/01/2026 20.00"}
            << QStringList{"11/01/2026 75.00"} << QStringList{"20.00", "75.00", "95.00"};
        QTest::newRow("two-digit years") << u"range"_s << u"11/30/26"_s << u"12/31/26"_s
                                         << QStringList{"11/30/2026 40.00", "12/01/2026 50.00"}
                                         << QStringList{"11/30/2026 1.00", "11/30/2026 1,250.00"}
                                         << QStringList{"90.00", "1,251.00", "1,341.00"};
        // The begin box took its date (to today's end); the end box is still being typed.
        QTest::newRow("a half-typed date waits")
            << u"range"_s << u"11/01/2026"_s << u"11/3"_s
            << QStringList{"11/01/2026 20.00", "11/15/2026 5.50", "11/15/2026 30.00"}
            << QStringList{"11/01/2026 75.00", "11/15/2026 12.25"}
            << QStringList{"55.50", "87.25", "142.75"};
        QTest::newRow("no date at all waits")
            << u"range"_s << u"Nov 1"_s << u"'; DROP TABLE TmpRvnD; --"_s
            << QStringList{"11/15/2026 5.50", "11/15/2026 30.00"} << QStringList{"11/15/2026 12.25"}
            << QStringList{"35.50", "12.25", "47.75"};
    }
    void dateReportHoldsTheChosenDays() {
        QFETCH(QString, choice);
        QFETCH(QString, begin);
        QFETCH(QString, end);
        QFETCH(QStringList, rentals);
        QFETCH(QStringList, services);
        QFETCH(QStringList, totals);
        someTakings();
        QVERIFY(openDates());
        choose(choice, begin, end);

        auto rows = [](const QAbstractItemModel* m, int date, int amount) {
            QStringList out;
            const QStringList days = column(m, date), amounts = column(m, amount);
            for (int i = 0; i < days.size(); ++i)
                out << days[i] + u' ' + amounts[i];
            return out;
        };
        QCOMPARE(rows(grid(u"frmSDates"_s, u"DBGrid1"_s)->model(), 0, 3), rentals);
        QCOMPARE(rows(grid(u"frmSDates"_s, u"DBGrid2"_s)->model(), 1, 4), services);
        QCOMPARE((QStringList{text(u"txtSRG"_s), text(u"txtSrv"_s), text(u"txtGtotal"_s)}), totals);
        // The summary tab repeats the subtotals.
        QCOMPARE(text(u"txtSRentals"_s), totals[0]);
        QCOMPARE(text(u"txtSService"_s), totals[1]);
        QCOMPARE(find<QLabel>(u"lblmess"_s)->text(), u"Process complete.."_s);
        QCOMPARE(fx->prompts.texts(), QStringList()); // nothing typed is an error
        QCOMPARE(find<QLineEdit>(u"txtbdate"_s)->isEnabled(), choice == u"range"_s);
        if (choice == u"all"_s) {
            QCOMPARE(text(u"txtbdate"_s), u"Start"_s);
            QCOMPARE(text(u"txtedate"_s), u"End"_s);
        }
        QCOMPARE(fx->scalar(u"SELECT count(*) FROM TmpRvnD"_s).toInt(), 10);
    }

    void printRequests_data() {
        QTest::addColumn<QString>("choice"); // a date mode, or a print button of ASlsSrv
        QTest::addColumn<QString>("end");    // typed into txtedate in range mode
        QTest::addColumn<int>("popt");
        QTest::addColumn<ReportKind>("kind");
        QTest::addColumn<QString>("range");
        QTest::addColumn<bool>("ordered");
        QTest::addColumn<DateSpan::Mode>("mode");
        QTest::addColumn<QDate>("begin"); // of a range span
        QTest::addColumn<QDate>("last");
        using K = ReportKind;
        using M = DateSpan::Mode;
        const QString nov30 = u"11/30/2026"_s;
        QTest::newRow("today, rentals")
            << u"today"_s << QString() << 0 << K::Rentals << u"11/15/2026 To 11/15/2026"_s << true
            << M::Today << QDate() << QDate();
        QTest::newRow("today, summary") << u"today"_s << QString() << 2 << K::Summary << u"Today"_s
                                        << true << M::Today << QDate() << QDate();
        QTest::newRow("range, services")
            << u"range"_s << nov30 << 1 << K::Services << u"11/01/2026 To 11/30/2026"_s << true
            << M::Range << day(11, 1) << day(11, 30);
        QTest::newRow("range, summary")
            << u"range"_s << nov30 << 7 << K::Summary << u"11/01/2026 To 11/30/2026"_s << true
            << M::Range << day(11, 1) << day(11, 30);
        // The boxes print as they stand; the rows are those the grids show.
        QTest::newRow("range being typed")
            << u"range"_s << u"11/3"_s << 0 << K::Rentals << u"11/01/2026 To 11/3"_s << true
            << M::Range << day(11, 1) << day(11, 15);
        QTest::newRow("every date, rentals, unsorted")
            << u"all"_s << QString() << 0 << K::Rentals << u"Start To End"_s << false << M::All
            << QDate() << QDate();
        QTest::newRow("every date, services, unsorted")
            << u"all"_s << QString() << 1 << K::Services << u"Start To End"_s << false << M::All
            << QDate() << QDate();
        QTest::newRow("every date, summary")
            << u"all"_s << QString() << 2 << K::Summary << u"ALL Dates"_s << true << M::All
            << QDate() << QDate();
        QTest::newRow("cmdPRG") << u"cmdPRG"_s << QString() << 0 << K::Rentals
                                << u"( Today ) 11-15-2026"_s << true << M::Today << QDate()
                                << QDate();
        QTest::newRow("cmdPSRV") << u"cmdPSRV"_s << QString() << 0 << K::Services
                                 << u"( Today ) 11-15-2026"_s << true << M::Today << QDate()
                                 << QDate();
        QTest::newRow("cmdPSum") << u"cmdPSum"_s << QString() << 0 << K::Summary << u"Today"_s
                                 << true << M::Today << QDate() << QDate();
    }
    void printRequests() {
        QFETCH(QString, choice);
        QFETCH(QString, end);
        QFETCH(int, popt);
        QFETCH(ReportKind, kind);
        QFETCH(QString, range);
        QFETCH(bool, ordered);
        QFETCH(DateSpan::Mode, mode);
        QFETCH(QDate, begin);
        QFETCH(QDate, last);
        ReportRequest request;
        if (choice.startsWith(u"cmdP"_s)) {
            QVERIFY(openToday());
            const ReportKind button = choice == u"cmdPRG"_s    ? ReportKind::Rentals
                                      : choice == u"cmdPSRV"_s ? ReportKind::Services
                                                               : ReportKind::Summary;
            request = today()->sales().printRequest(button);
        } else {
            QVERIFY(openDates());
            choose(choice, u"11/01/2026"_s, end);
            request = find<DateReportWindow>(u"frmSDates"_s)->report().printRequest(popt);
        }
        QCOMPARE(request.kind, kind);
        QCOMPARE(request.rangeText, range);
        QCOMPARE(request.ordered, ordered);
        QCOMPARE(request.span.mode, mode);
        if (mode == DateSpan::Mode::Range) {
            QCOMPARE(request.span.begin, begin);
            QCOMPARE(request.span.end, last);
        }
    }

    void chartFollowsTheChosenDays_data() {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QString>("begin");
        QTest::addColumn<QString>("end");
        QTest::addColumn<QDate>("earlier"); // a rental of 100 months before, when valid
        QTest::addColumn<QString>("title");
        QTest::addColumn<QStringList>("bars"); // label: rentals + services, where not zero
        const QDate none;
        const QDate january = day(1, 15);
        QTest::newRow("today") << u"today"_s << QString() << QString() << none
                               << u"Takings per day, Today, 11/15/2026"_s
                               << QStringList{"15: 35.5+12.25"};
        QTest::newRow("a month, every day a bar")
            << u"range"_s << u"11/01/2026"_s << u"11/30/2026"_s << none
            << u"Takings per day, 11/01/2026 to 11/30/2026"_s
            << QStringList{"1: 20+75", "15: 35.5+12.25", "30: 40+1251"};
        QTest::newRow("across two months")
            << u"range"_s << u"10/31/2026"_s << u"12/01/2026"_s << none
            << u"Takings per day, 10/31/2026 to 12/01/2026"_s
            << QStringList{"10/31: 10+0", "11/01: 20+75", "11/15: 35.5+12.25", "11/30: 40+1251",
                           "12/01: 50+0"};
        QTest::newRow("years of range: the days with takings")
            << u"range"_s << u"01/01/2020"_s << u"12/31/2030"_s << none
            << u"Takings per day, 10/31/2026 to 12/01/2026"_s
            << QStringList{"10/31: 10+0", "11/01: 20+75", "11/15: 35.5+12.25", "11/30: 40+1251",
                           "12/01: 50+0"};
        QTest::newRow("takings over months: a bar a month")
            << u"range"_s << u"01/01/2020"_s << u"12/31/2030"_s << january
            << u"Takings per month, 01/15/2026 to 12/01/2026"_s
            << QStringList{"Jan 2026: 100+0", "Oct 2026: 10+0", "Nov 2026: 95.5+1338.25",
                           "Dec 2026: 50+0"};
        QTest::newRow("every date over months")
            << u"all"_s << QString() << QString() << january
            << u"Takings per month, 01/15/2026 to 12/01/2026"_s
            << QStringList{"Jan 2026: 100+0", "Oct 2026: 10+0", "Nov 2026: 95.5+1338.25",
                           "Dec 2026: 50+0"};
        QTest::newRow("reversed") << u"range"_s << u"11/30/2026"_s << u"11/01/2026"_s << none
                                  << u"Takings per day, No days chosen"_s << QStringList();
        QTest::newRow("years without takings")
            << u"range"_s << u"01/01/2030"_s << u"12/31/2031"_s << none
            << u"Takings per day, No takings from 01/01/2030 to 12/31/2031"_s << QStringList();
    }
    void chartFollowsTheChosenDays() {
        QFETCH(QString, choice);
        QFETCH(QString, begin);
        QFETCH(QString, end);
        QFETCH(QDate, earlier);
        QFETCH(QString, title);
        QFETCH(QStringList, bars);
        someTakings();
        if (earlier.isValid())
            rental(earlier, 100);
        QVERIFY(openDates());
        choose(choice, begin, end);
        const TakingsChart& chart = find<DateReportWindow>(u"frmSDates"_s)->report().chart();
        QCOMPARE(chart.title + u", "_s + chart.period, title);
        QStringList shown;
        for (const auto& bar : chart.bars)
            if (bar.rentals != Money() || bar.services != Money())
                shown << u"%1: %2+%3"_s.arg(bar.label)
                             .arg(bar.rentals.toDouble())
                             .arg(bar.services.toDouble());
        QCOMPARE(shown, bars);
        // Every day or month between the first bar and the last has its bar, takings or not.
        if (!chart.bars.isEmpty()) {
            const QDate first = chart.bars.first().first, last = chart.bars.last().first;
            QCOMPARE(chart.bars.size(),
                     chart.step == TakingsChart::Step::Day
                         ? first.daysTo(last) + 1
                         : (last.year() - first.year()) * 12 + last.month() - first.month() + 1);
        }
        auto* view = find<QWidget>(u"chtTakings"_s);
        QVERIFY2(view->accessibleName().startsWith(title), qPrintable(view->accessibleName()));
    }

    void todaysWindowShowsTodayOnly() {
        someTakings();
        QVERIFY(openToday());
        QTableView* rentals = grid(u"ASlsSrv"_s, u"DBGrid1"_s);
        QTableView* services = grid(u"ASlsSrv"_s, u"DBGrid2"_s);
        QCOMPARE(column(rentals->model(), 3), (QStringList{"30.00", "5.50"}));
        QCOMPARE(column(services->model(), 1), QStringList{"Scan"});
        QCOMPARE(text(u"txtRG"_s), u"35.50"_s);
        QCOMPARE(text(u"txtSrv"_s), u"12.25"_s);
        // 1200, 1000, 1000 and 1000, 3700, 500 twips at 15 twips a pixel.
        QCOMPARE(
            (QList<int>{rentals->columnWidth(0), rentals->columnWidth(1), rentals->columnWidth(2)}),
            (QList<int>{80, 67, 67}));
        QCOMPARE((QList<int>{services->columnWidth(0), services->columnWidth(1),
                             services->columnWidth(2)}),
                 (QList<int>{67, 247, 33}));
        // The last rows are in view, so new sales show.
        QCOMPARE(rentals->currentIndex().row(), 1);
        QVERIFY(find<QTimer>(u"Timer1"_s)->isActive());
        // Opening it again brings the same window forward.
        fx->frame->action(u"mnuEarn"_s)->trigger();
        QCOMPARE(fx->frame->findChildren<TodaysSalesWindow*>().size(), 1);
    }

    void timerKeepsTodayCurrent_data() {
        QTest::addColumn<QString>("event");
        QTest::addColumn<int>("rentals");
        QTest::addColumn<QString>("rentalsTotal");
        QTest::addColumn<QString>("servicesTotal");
        QTest::addColumn<bool>("reread"); // the grids were read again
        QTest::newRow("nothing new") << u"none"_s << 2 << u"35.50"_s << u"12.25"_s << false;
        QTest::newRow("a bill saved") << u"bill"_s << 3 << u"1,035.50"_s << u"12.25"_s << true;
        QTest::newRow("a row of another day")
            << u"yesterday"_s << 2 << u"35.50"_s << u"12.25"_s << false;
        QTest::newRow("an amount corrected")
            << u"correct"_s << 2 << u"36.50"_s << u"12.25"_s << true;
        QTest::newRow("the day turns") << u"midnight"_s << 0 << u"0.00"_s << u"0.00"_s << true;
    }
    void timerKeepsTodayCurrent() {
        QFETCH(QString, event);
        QFETCH(int, rentals);
        QFETCH(QString, rentalsTotal);
        QFETCH(QString, servicesTotal);
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
        QCOMPARE(text(u"txtRG"_s), rentalsTotal);
        QCOMPARE(text(u"txtSrv"_s), servicesTotal);
        QCOMPARE(!resets.isEmpty(), reread);
        if (rentals > 0) // the newest row in view, the columns as wide as before
            QCOMPARE(grid1->currentIndex().row(), rentals - 1);
        QCOMPARE(grid1->columnWidth(0), 80);
    }

    void takingBackASaleIsForAdministrators_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<QStringList>("told");
        QTest::addColumn<QStringList>("left"); // today's services afterwards
        const QString asked = u"Delete the sale of Scan (OR 8, quantity 1, amount 12.25)?"_s;
        QTest::newRow("cashier") << u"Cashier"_s << Answer::Yes << QStringList{"Access Denied.."}
                                 << QStringList{"Scan", "Print"};
        QTest::newRow("admin in small letters")
            << u"admin"_s << Answer::Yes << QStringList{"Access Denied.."}
            << QStringList{"Scan", "Print"};
        QTest::newRow("Admin, yes")
            << u"Admin"_s << Answer::Yes << QStringList{asked} << QStringList{"Print"};
        QTest::newRow("Admin, no")
            << u"Admin"_s << Answer::No << QStringList{asked} << QStringList{"Scan", "Print"};
    }
    void takingBackASaleIsForAdministrators() {
        QFETCH(QString, type);
        QFETCH(Answer, answer);
        QFETCH(QStringList, told);
        QFETCH(QStringList, left);
        someTakings();
        service(day(11, 15), 11, u"Print"_s, 2, 10);
        console().currentOperator().type = type;
        QVERIFY(openToday());
        QTableView* services = grid(u"ASlsSrv"_s, u"DBGrid2"_s);
        services->setCurrentIndex(services->model()->index(0, 0));
        fx->prompts.answers = {answer};
        services->findChild<QAction*>(u"mnuDelSale"_s)->trigger();
        QCOMPARE(fx->prompts.texts(), told);
        if (told.first() == u"Access Denied.."_s)
            QCOMPARE(fx->prompts.last()->icon, Prompts::Icon::Critical);
        QCOMPARE(column(services->model(), 1), left);
        QCOMPARE(
            fx->scalar(u"SELECT count(*) FROM TmpRvnD WHERE Rdate = ?"_s, {day(11, 15)}).toInt(),
            2 + left.size());
        QCOMPARE(text(u"txtSrv"_s), left.size() == 2 ? u"22.25"_s : u"10.00"_s);
    }

    void aFailingDatabaseIsToldNotThrown() {
        someTakings();
        QVERIFY(openDates());
        QVERIFY(openToday());
        fx->exec(u"ALTER TABLE TmpRvnD RENAME TO TmpRvnD_gone"_s);
        fx->prompts.clear();
        find<QRadioButton>(u"optad"_s)->click();
        QCOMPARE(fx->prompts.shown.size(), 1);
        QVERIFY(fx->prompts.last()->text.startsWith(u"The takings could not be read: "_s));
        // The grids keep what they showed.
        QCOMPARE(text(u"txtSRG"_s), u"35.50"_s);
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
