// Pictures of the active terminal view and of a filled bill, for people to look at: a
// page of terminals running, paused, billed, free, idle and off line. Written to
// $TARVO_BUILD_DIR/screenshots (or ./screenshots). Run it under xvfb-run with
// QT_QPA_PLATFORM=xcb to see the windows as a real display draws them.
#include "billing/board_window.h"
#include "server/operator_commands.h"
#include "server/session_start.h"
#include "support/console_fixture.h"
#include "support/terminal_probe.h"
#include "ui/main_window.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class BoardScreenshots : public QObject {
    Q_OBJECT

    ConsoleFixture fx;
    std::unique_ptr<TerminalProbe> probe;
    std::vector<std::unique_ptr<TerminalClient>> terminals;
    std::unique_ptr<MainWindow> window;
    QDir out;

    Console& console() { return *fx.console; }
    void online(int pc) {
        auto t = probe->online(pc, u"127.0.0.%1"_s.arg(pc));
        QVERIFY2(t, qPrintable(u"PC %1 did not come on line"_s.arg(pc)));
        terminals.push_back(std::move(t));
    }
    void logOn(int pc, const QString& cid, const QString& name) {
        online(pc);
        QVERIFY(logOnPc(console().sessionParts(), QString::number(pc), cid, name,
                        console().control().socketOfPc(pc)));
    }
    void save(QWidget* w, const QString& file) {
        const QPixmap picture = w->grab();
        QVERIFY(picture.save(out.filePath(file)));
        qInfo("screenshot: %s (%dx%d)", qPrintable(out.filePath(file)), picture.width(),
              picture.height());
    }

private Q_SLOTS:
    void initTestCase() {
        const QString build = qEnvironmentVariable("TARVO_BUILD_DIR", u"."_s);
        out = QDir(build + u"/screenshots"_s);
        QVERIFY(out.mkpath(u"."_s));
        fx.writeFile(QStringLiteral("TarvoQRB.INI"), "30=NOFPC\n");
        fx.start();
        probe = std::make_unique<TerminalProbe>(console());
        QVERIFY(probe->openOtherLine());
        console().currentOperator() = {u"ANA"_s, u"Admin"_s, u"pw"_s};
        fx.exec(u"INSERT INTO promos (ddtls, drange, dtype, Amount) VALUES (?, ?, ?, ?)"_s,
                {u"Five off every hour"_s, u"All day"_s, u"Per Hour"_s, 5});
        console().rates().loadPromos(console().database());
        console().rates().setPromoInForce(1);
        fx.exec(u"INSERT INTO members (CID, LN, FN, ADR) VALUES (?, ?, ?, ?)"_s,
                {u"ID-00011"_s, u"SANTOS"_s, u"MARIA"_s, u"12 Mabini St., Malate, Manila"_s});
    }

    void boardAndBill() {
        // Sessions started at different times, so the amounts differ.
        logOn(1, u"ID-00001"_s, u"DELA CRUZ, JUAN"_s);
        logOn(9, u"TRM-9"_s, u"Walk-in"_s);
        fx.clock.advance(35 * 60 * 1000);
        logOn(11, u"ID-00011"_s, u"SANTOS, MARIA"_s);
        logOn(2, u"ID-00002"_s, u"REYES, ANA"_s);
        logOn(6, u"ID-00006"_s, u"BAUTISTA, LEA"_s);
        fx.clock.advance(40 * 60 * 1000);
        logOn(5, u"ID-00005"_s, u"GARCIA, PEDRO"_s);
        logOn(14, u"ID-00014"_s, u"MENDOZA, ROSE"_s);
        fx.clock.advance(25 * 60 * 1000);
        logOn(12, u"TRM-12"_s, u"Walk-in"_s);
        logOn(17, u"ID-00017"_s, u"VILLANUEVA, MARK ANTHONY"_s);
        fx.clock.advance(7 * 60 * 1000);
        for (int pc : {6, 14})
            pausePc(console().sessionParts(), pc);
        for (int pc : {3, 8, 15, 18, 20, 22})
            online(pc);
        for (int pc : {8, 20})
            unlockPc(console().sessionParts(), pc);
        console().timeLimits().setLimit(2, u"60"_s);
        console().timeLimits().setLimit(5, u"90"_s);
        console().timeLimits().setLimit(17, u"75"_s); // extended past the choices

        window = std::make_unique<MainWindow>(console());
        window->setModalShowsBlock(false);
        window->resize(1366, 768); // a common counter screen
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        window->findChild<QToolButton*>(u"tbar3"_s)->click();
        auto* board = window->findChild<BoardWindow*>(u"ATV"_s);
        QVERIFY(board);
        board->tick();
        // PC 11 is being billed.
        for (auto* stop : board->findChildren<QPushButton*>(u"cmdStop"_s))
            if (stop->property("tile").toInt() == 11)
                stop->click();
        auto* bill = window->findChild<QDialog*>(u"frmBill"_s);
        QVERIFY(bill);
        bill->hide(); // the view first, as it stands behind the bill
        board->tick();
        QTest::qWait(50);
        save(board->parentWidget(), u"atv.png"_s);
        save(window.get(), u"main_with_atv.png"_s);
        bill->show();
        QTest::qWait(50);
        save(bill, u"frm_bill.png"_s);
        // Unused terminals hidden.
        board->findChild<QPushButton*>(u"cmdShow"_s)->click();
        QTest::qWait(50);
        save(board->parentWidget(), u"atv_used_only.png"_s);
    }
};

QTEST_MAIN(BoardScreenshots)
#include "tst_long_board_screenshots.moc"
