// Pictures of the takings windows for people to look at, written to
// $TARVO_BUILD_DIR/screenshots; under xvfb-run with QT_QPA_PLATFORM=xcb they are as drawn.
#include "sales/date_report_window.h"
#include "support/console_fixture.h"
#include "support/revenue_rows.h"
#include "ui/main_window.h"

#include <QRandomGenerator>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class SalesScreenshots : public QObject {
    Q_OBJECT

    ConsoleFixture fx;
    std::unique_ptr<MainWindow> window;
    QDir out;

    Console& console() { return *fx.console; }
    void save(QWidget* w, const QString& file) {
        QTest::qWait(50);
        const QPixmap picture = w->grab();
        QVERIFY(picture.save(out.filePath(file)));
        qInfo("screenshot: %s (%dx%d)", qPrintable(out.filePath(file)), picture.width(),
              picture.height());
    }
    QWidget* sub(const QString& name) { return window->findChild<QWidget*>(name)->parentWidget(); }

    // A café's takings from August to the end of November: busier at weekends and on
    // paydays, a few counter sales a day.
    void trade() {
        const QList<std::pair<QString, double>> items{
            {u"Print, black"_s, 5}, {u"Print, colour"_s, 15}, {u"Scan"_s, 10},
            {u"Lamination"_s, 25},  {u"Burn CD"_s, 30},       {u"Typing, per page"_s, 20}};
        for (const auto& [name, price] : items)
            fx.exec(u"INSERT INTO services (Description, Amount) VALUES (?, ?)"_s, {name, price});
        const auto hms = [](const QTime& t) {
            return t.toString(u"HH:mm:ss"_s);
        };
        QRandomGenerator gen(2026);
        Database db(*fx.folder);
        RowWriter rows(db); // thousands of rows, in one transaction
        int orno = 1200;
        for (QDate day(2026, 8, 1); day <= QDate(2026, 11, 30); day = day.addDays(1)) {
            const bool weekend = day.dayOfWeek() >= 6;
            const bool payday = day.day() == 15 || day.day() == day.daysInMonth();
            const int sessions = int(gen.bounded(18, 30)) + (weekend ? 22 : 0) + (payday ? 12 : 0);
            for (int i = 0; i < sessions; ++i) {
                const int minutes = int(gen.bounded(30, 240));
                const QTime in = QTime(9, 0).addSecs(int(gen.bounded(0, 12 * 60)) * 60);
                rows.add(
                    RentalRow{day, qMax(10.0, minutes * 20.0 / 60),
                              u"ID-%1"_s.arg(int(gen.bounded(1, 400)), 5, 10, QLatin1Char('0')),
                              int(gen.bounded(1, 25)), hms(in), hms(in.addSecs(minutes * 60)),
                              hms(QTime(0, 0).addSecs(minutes * 60))});
            }
            const int sales = int(gen.bounded(3, 12)) + (weekend ? 4 : 0);
            for (int i = 0; i < sales; ++i) {
                const auto& [name, price] = items[gen.bounded(int(items.size()))];
                const int qty = int(gen.bounded(1, 6));
                rows.add(ServiceRow{day, price * qty, name, double(++orno),
                                    QString::number(price, 'f', 2), double(qty)});
            }
        }
        rows.commit();
    }

private Q_SLOTS:
    void initTestCase() {
        out = QDir(qEnvironmentVariable("TARVO_BUILD_DIR", u"."_s) + u"/screenshots"_s);
        QVERIFY(out.mkpath(u"."_s));
        fx.clock.setNow(QDateTime(QDate(2026, 11, 30), QTime(19, 30)));
        fx.start();
        trade();
        console().rates().loadServices(console().database());
        console().currentOperator() = {u"ANA"_s, u"Admin"_s, u"pw"_s};
        window = std::make_unique<MainWindow>(console());
        window->setModalShowsBlock(false);
        window->resize(1366, 768); // a common counter screen
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }

    void dateReport() {
        window->action(u"mnuSDate"_s)->trigger();
        auto* report = window->findChild<DateReportWindow*>(u"frmSDates"_s);
        QVERIFY(report);
        report->findChild<QRadioButton*>(u"optsd"_s)->click();
        report->findChild<QLineEdit*>(u"txtbdate"_s)->setText(u"11/01/2026"_s);
        report->findChild<QLineEdit*>(u"txtedate"_s)->setText(u"11/30/2026"_s);
        QCOMPARE(report->report().chart().bars.size(), 30);
        save(sub(u"frmSDates"_s), u"frm_sdates_november.png"_s);
        save(window.get(), u"main_with_frm_sdates.png"_s);
        report->findChild<QRadioButton*>(u"optad"_s)->click();
        QCOMPARE(report->report().chart().step, TakingsChart::Step::Month);
        save(sub(u"frmSDates"_s), u"frm_sdates_all_dates.png"_s);
    }

    void todaysSales() {
        window->action(u"mnuEarn"_s)->trigger();
        QVERIFY(window->findChild<QWidget*>(u"ASlsSrv"_s));
        save(sub(u"ASlsSrv"_s), u"aslssrv.png"_s);
        window->findChild<QWidget*>(u"ASlsSrv"_s)->findChild<QPushButton*>(u"Addsrv"_s)->click();
        auto* sale = window->findChild<QDialog*>(u"NewSrv"_s);
        QVERIFY(sale);
        auto* combo = sale->findChild<QComboBox*>(u"cmbSrvc"_s);
        combo->setCurrentIndex(combo->findText(u"Lamination"_s));
        sale->findChild<QLineEdit*>(u"txtor"_s)->setText(u"1432"_s);
        sale->findChild<QLineEdit*>(u"txtQty"_s)->setText(u"4"_s);
        save(sale, u"new_srv.png"_s);
    }
};

QTEST_MAIN(SalesScreenshots)
#include "tst_long_sales_screenshots.moc"
