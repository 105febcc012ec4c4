// Pictures of the log-on dialog and the monitoring windows filled with a café's morning,
// for people to look at. Written to $TARVO_BUILD_DIR/screenshots (or ./screenshots).
// Run it under xvfb-run with QT_QPA_PLATFORM=xcb to see the windows as a real display
// draws them.
#include "people/listing_window.h"
#include "people/log_on_dialog.h"
#include "server/operator_commands.h"
#include "server/session_start.h"
#include "support/console_fixture.h"
#include "support/terminal_probe.h"
#include "ui/main_window.h"
#include "ui/prompts_dialog.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class LogOnScreenshots : public QObject {
    Q_OBJECT

    ConsoleFixture fx;
    std::unique_ptr<TerminalProbe> probe;
    std::map<int, std::unique_ptr<TerminalClient>> terminals;
    std::unique_ptr<WidgetPrompts> boxes; // notices, read in the message window
    std::unique_ptr<MainWindow> window;   // gone before the boxes it reads
    QDir out;

    Console& console() { return *fx.console; }
    void online(int pc) {
        auto t = probe->online(pc, u"127.0.0.%1"_s.arg(pc));
        QVERIFY2(t, qPrintable(u"PC %1 did not come on line"_s.arg(pc)));
        terminals[pc] = std::move(t);
    }
    void logOn(int pc, const QString& cid, const QString& name) {
        online(pc);
        QVERIFY(logOnPc(console().sessionParts(), QString::number(pc), cid, name,
                        console().control().socketOfPc(pc)));
    }
    void save(QWidget* w, const QString& file) {
        QTest::qWait(50);
        const QPixmap picture = w->grab();
        QVERIFY(picture.save(out.filePath(file)));
        qInfo("screenshot: %s (%dx%d)", qPrintable(out.filePath(file)), picture.width(),
              picture.height());
    }
    template <typename T = QWidget> T* shown(const QString& name) {
        for (T* w : window->findChildren<T*>(name))
            if (w->isVisible())
                return w;
        return nullptr;
    }

private Q_SLOTS:
    void initTestCase() {
        const QString build = qEnvironmentVariable("TARVO_BUILD_DIR", u"."_s);
        out = QDir(build + u"/screenshots"_s);
        QVERIFY(out.mkpath(u"."_s));
        fx.writeFile(QStringLiteral("TarvoQRB.INI"), "20=NOFPC\n");
        fx.start();
        probe = std::make_unique<TerminalProbe>(console());
        QVERIFY(probe->openOtherLine());
        console().currentOperator() = {u"ANA"_s, u"Admin"_s, u"pw"_s};

        logOn(1, u"ID-00001"_s, u"DELA CRUZ, JUAN"_s);
        logOn(2, u"TRM-2"_s, u"WALK-IN ON TRM 2"_s);
        fx.clock.advance(35 * 60 * 1000);
        logOn(4, u"ID-00011"_s, u"SANTOS, MARIA L"_s);
        logOn(6, u"ID-00006"_s, u"BAUTISTA, LEA"_s);
        fx.clock.advance(40 * 60 * 1000);
        logOn(7, u"ID-00014"_s, u"MENDOZA, ROSE"_s);
        logOn(9, u"TRM-9"_s, u"WALK-IN ON TRM 9"_s);
        fx.clock.advance(12 * 60 * 1000);
        pausePc(console().sessionParts(), 6);
        extendPcMinutes(console().sessionParts(), 7, u"30"_s);
        for (int pc : {3, 10, 12})
            online(pc);
        unlockPc(console().sessionParts(), 10);
        terminals[12]->abort(); // came on line, then went away
        QTRY_VERIFY(!console().terminals().at(12).online);
        fx.clock.advance(3 * 60 * 1000 + 17 * 1000);

        window = std::make_unique<MainWindow>(console());
        window->setModalShowsBlock(false);
        window->resize(1366, 768);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        boxes = std::make_unique<WidgetPrompts>(fx.clock);
        window->readNoticesOf(*boxes);
    }

    void logOnDialog() {
        openLogOnDialog(console(), *window, {0, u"ID-00023"_s, u"VILLANUEVA, MARK ANTHONY R"_s});
        auto* dialog = shown<QDialog>(u"logmem"_s);
        QVERIFY(dialog);
        auto* number = dialog->findChild<QComboBox*>(u"cmbNum"_s);
        number->setCurrentIndex(2);
        Q_EMIT number->textActivated(number->currentText());
        save(dialog, u"logmem.png"_s);
        dialog->findChild<QPushButton*>(u"cmdCancel"_s)->click();
    }

    void listing() {
        window->findChild<QToolButton*>(u"tbar1"_s)->click();
        auto* listing = shown<ListingWindow>(u"frmTabList"_s);
        QVERIFY(listing);
        listing->tick();
        save(listing->parentWidget(), u"frm_tab_list.png"_s);
    }

    void messagesAndRegistry() {
        probe->exchange(*terminals[4], "TXT PC 4: the headset has no sound, please check");
        probe->exchange(*terminals[9], "TXT can I have a cup of coffee?");
        boxes->notice(u"EMT Printer in the corner is out of paper"_s, u"PC 7"_s,
                      Prompts::Icon::Information);
        boxes->notice(u"The daily billing log cannot be written: the disk is full."_s,
                      u"Billing log"_s, Prompts::Icon::Critical);
        window->action(u"mnuTxtview"_s)->trigger();
        QWidget* messages = shown(u"frmtxtv"_s);
        QVERIFY(messages);
        save(messages->parentWidget(), u"frmtxtv.png"_s);
        window->findChild<QToolButton*>(u"tbar9"_s)->click();
        QWidget* registry = shown(u"ciptbl"_s);
        QVERIFY(registry);
        save(registry->parentWidget(), u"ciptbl.png"_s);
    }

    void peek() {
        terminals[4]->setAutoAnswer(false);
        auto* list = window->findChild<QListView*>(u"lstTerminals"_s);
        list->setCurrentIndex(list->model()->index(3, 0));
        window->action(u"mnupeek"_s)->trigger();
        QWidget* viewer = shown(u"frmpeek"_s);
        QVERIFY(viewer);
        viewer->findChild<QPushButton*>(u"cmdpeek"_s)->click();
        terminals[4]->sendProcessList({u"412:explorer.exe"_s, u"988:chrome.exe"_s,
                                       u"1204:dota2.exe"_s, u"1310:discord.exe"_s,
                                       u"1422:tarvoqrb-terminal.exe"_s, u"1630:notepad.exe"_s});
        auto* processes = viewer->findChild<QListWidget*>(u"lstProc"_s);
        QTRY_COMPARE(processes->count(), 6);
        processes->item(2)->setSelected(true);
        save(viewer->parentWidget(), u"frmpeek.png"_s);
        terminals[4]->setAutoAnswer(true); // its own screen, as the terminal takes it
        viewer->findChild<QPushButton*>(u"CmdTrmPrv"_s)->click();
        QTRY_VERIFY_WITH_TIMEOUT(shown(u"frmTrmPrv"_s), 30000);
        save(shown(u"frmTrmPrv"_s)->parentWidget(), u"frm_trm_prv.png"_s);
        save(window.get(), u"main_with_monitoring.png"_s);
    }
};

QTEST_MAIN(LogOnScreenshots)
#include "tst_long_logon_screenshots.moc"
