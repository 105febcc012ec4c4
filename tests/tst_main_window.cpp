#include "base/text.h"
#include "people/log_in.h"
#include "server/session_start.h"
#include "server/terminal_list.h"
#include "server/terminal_server.h"
#include "support/console_fixture.h"
#include "terminal_client.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QSysInfo>
#include <QTest>
#include <QToolBar>

#include <memory>

using Icon = Prompts::Icon;
Q_DECLARE_METATYPE(Prompts::Icon)

class MainWindowTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<MainWindow> window;
    std::vector<std::unique_ptr<TerminalClient>> terminals;

    Console& console() { return *fx->console; }
    template <typename T = QAction> T* find(const QString& name) {
        return window->findChild<T*>(name);
    }
    QListWidget* list() { return find<QListWidget>(QStringLiteral("lstTerminals")); }
    QMdiArea* mdi() { return find<QMdiArea>(QStringLiteral("mdiArea")); }
    QAction* popupHead() { return find(QStringLiteral("mnuhead")); }

    // A real terminal on its own loopback address, identified as the PC.
    bool connectTerminal(int pc) {
        auto client = std::make_unique<TerminalClient>();
        client->setPcNumber(pc);
        const QHostAddress local(QStringLiteral("127.0.0.%1").arg(10 + pc));
        if (!client->connectToConsole(QStringLiteral("127.0.0.1"), console().server().port(),
                                      local) ||
            !client->waitConnected() || client->waitFor("ACPT").isEmpty())
            return false;
        client->identify();
        terminals.push_back(std::move(client));
        return QTest::qWaitFor([&] { return console().server().SocketOfPc(pc) != -1; }, 5000);
    }
    // Selects the PC's item in the terminal list and opens the pop-up menu on it.
    void popUpOn(int pc) {
        QListWidgetItem* item = list()->item(pc - 1);
        QVERIFY(item);
        list()->setCurrentItem(item);
        Q_EMIT list()->customContextMenuRequested(list()->visualItemRect(item).center());
        find<QMenu>(QStringLiteral("mnuPopup"))->hide();
    }
    int visibleTopLevels() const {
        int n = 0;
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w->isVisible() && w != window.get() && !qobject_cast<QMenu*>(w))
                ++n;
        return n;
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->start();
        console().currentOperator() = {QStringLiteral("ANA"), QStringLiteral("User"),
                                       QStringLiteral("pw")};
        window = std::make_unique<MainWindow>(console());
        window->setModalShowsBlock(false);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        fx->prompts.clear();
    }
    void cleanup() {
        terminals.clear();
        window.reset();
        for (QWidget* w : QApplication::topLevelWidgets())
            w->deleteLater();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        fx.reset();
    }

    void captions_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("caption");
        const char* rows[][2] = {
            {"mnuSystem", "&Tarvo System   "},
            {"mnuCset", "Clients &Section"},
            {"mnuPCTerm", "Terminal Attachment Infos"},
            {"mnuRateS", "Tarvo System Settings"},
            {"mnuuser", "System Users for Tarvo"},
            {"mnuBkDB", "Back-Up Database"},
            {"mnuTxtview", "Message Archiver"},
            {"mnuPrinter", "Tarvo Printer Setup"},
            {"mnuSwitch", "Switch User Log Session"},
            {"mnuexit", "&Close Tarvo System"},
            {"mnuTrm", "Client PC Maintenance"},
            {"mnulogoff", "Log Off All Clients PC"},
            {"mnuReboot", "Reboot/Restart All Clients PC"},
            {"mnuShutdown", "Shutdown All Clients PC"},
            {"mnuReps", "&Report Generation"},
            {"mnuEarn", "&What we gather today"},
            {"mnuSDate", "&Retro Reports"},
            {"mnuClist", "Clients we Currently Have"},
            {"mnuTinfo", "Terminal Attachment Information "},
            {"mnuPopup", "Upop1"},
            {"mnuhead", "On PC :"},
            {"mnuplog", "Assign this PC to client"},
            {"mnuplock", "Lock Client PC"},
            {"mnupulock", "Unlock Client PC"},
            {"mnupXtnd", "Extend Client Time"},
            {"mnupx5", "  5 Minutes"},
            {"mnupx10", "10 Minutes"},
            {"mnupx15", "15 Minutes"},
            {"mnupx20", "20 Minutes"},
            {"mnupx30", "30 Minutes"},
            {"mnupx1hr", "  1 Hour"},
            {"mnupPause", "Pause Client PC"},
            {"mnupRes", "Resume Client PC"},
            {"mnuplogout", "Log-Out Client PC"},
            {"mnupMnt", "Client PC Maintenance"},
            {"mnuTlogoff", "Log Off Client PC"},
            {"mnutreb", "Reboot CLient PC"},
            {"mnutshut", "Shutdown Client PC"},
            {"mnupeek", "Show Client PC Processes"},
            {"mnuWin", "&Active Sessions "},
            {"mnuHelp", "Tarvo Help"},
            {"mnumanual", "Tarvo Systems Manual"},
            {"mnuAbout", "What is Tarvo?"},
        };
        for (const auto& r : rows)
            QTest::newRow(r[0]) << QString::fromLatin1(r[0]) << QString::fromLatin1(r[1]);
    }
    void captions() {
        QFETCH(QString, name);
        QFETCH(QString, caption);
        if (auto* menu = find<QMenu>(name)) {
            QCOMPARE(menu->title(), caption);
            QVERIFY(!find(name)); // one control per name
        } else {
            QAction* action = find(name);
            QVERIFY2(action, qPrintable(name));
            QCOMPARE(action->text(), caption);
        }
    }

    void menuBarOrderAndHiddenPopup() {
        QStringList titles;
        for (QAction* a : window->menuBar()->actions())
            titles << a->text();
        QCOMPARE(titles,
                 QStringList({QStringLiteral("&Tarvo System   "),
                              QStringLiteral("Client PC Maintenance"),
                              QStringLiteral("&Report Generation"),
                              QStringLiteral("&Active Sessions "), QStringLiteral("Tarvo Help")}));
        auto* bar = find<QToolBar>(QStringLiteral("tbar"));
        QVERIFY(bar);
        for (int i = 1; i <= 10; ++i) {
            QAction* button = find(QStringLiteral("tbar%1").arg(i));
            QVERIFY(button);
            QVERIFY(bar->actions().contains(button));
            QVERIFY(!button->toolTip().isEmpty());
            QVERIFY(!button->icon().isNull());
        }
    }

    void adminOnlyCommands_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("refusal");
        QTest::addColumn<Icon>("icon");
        QTest::addColumn<QString>("allowed"); // what an "Admin" sees instead (PC 3 is down)
        const QString denied = QStringLiteral("Access Denied..");
        const QString adminsOnly = QStringLiteral("Access denied, for Administrator accounts only");
        const QString notYet = QStringLiteral(" is not available yet in this version.");
        const std::tuple<const char*, QString, Icon, QString> commands[] = {
            {"mnuRateS", denied, Icon::None, notYet},
            {"mnuuser", denied, Icon::Critical, notYet},
            {"tbar4", denied, Icon::Critical, notYet},
            {"tbar6", denied, Icon::Critical, notYet},
            {"mnupulock", adminsOnly, Icon::Critical,
             QStringLiteral("Performing unlock on closed terminal is not allowed")},
            {"mnupeek", adminsOnly, Icon::Critical,
             QStringLiteral("Performing peek on terminal is currently not available")},
        };
        for (const auto& [command, refusal, icon, allowed] : commands)
            for (const char* type : {"User", "admin", "Admin"})
                QTest::addRow("%s by %s", command, type)
                    << QString::fromLatin1(command) << QString::fromLatin1(type) << refusal << icon
                    << allowed;
    }
    void adminOnlyCommands() {
        QFETCH(QString, command);
        QFETCH(QString, type);
        QFETCH(QString, refusal);
        QFETCH(Icon, icon);
        QFETCH(QString, allowed);
        console().currentOperator().CurrentUserType = type;
        popUpOn(3);
        const int before = visibleTopLevels();
        fx->prompts.clear();

        find(command)->trigger();

        QCOMPARE(fx->prompts.shown.size(), 1);
        if (type != QLatin1String("Admin")) {
            QCOMPARE(fx->prompts.last()->text, refusal);
            QCOMPARE(fx->prompts.last()->icon, icon);
            QVERIFY(mdi()->subWindowList().isEmpty());
            QCOMPARE(visibleTopLevels(), before);
        } else {
            QVERIFY2(fx->prompts.last()->text.endsWith(allowed),
                     qPrintable(fx->prompts.last()->text));
        }
    }

    void closingAsksEveryWay_data() {
        QTest::addColumn<QString>("way");
        QTest::newRow("window frame") << QString();
        QTest::newRow("menu") << QStringLiteral("mnuexit");
        QTest::newRow("toolbar 10") << QStringLiteral("tbar10");
    }
    void closingAsksEveryWay() {
        QFETCH(QString, way);
        QSignalSpy closing(window.get(), &MainWindow::applicationClosing);
        fx->prompts.answers = {Prompts::Answer::Cancel};
        if (way.isEmpty())
            window->close();
        else
            find(way)->trigger();
        QCOMPARE(fx->prompts.shown.size(), 1);
        const auto& box = fx->prompts.shown.first();
        QCOMPARE(box.text, QStringLiteral("Close Application?"));
        QCOMPARE(box.buttons, Prompts::Buttons::OkCancel);
        QCOMPARE(box.icon, Icon::Critical);
        QVERIFY(window->isVisible());
        QCOMPARE(closing.count(), 0);
    }

    void cancelKeepsSessionsAndConnectionsAndOkLeavesThemInTheLog() {
        QVERIFY(connectTerminal(2));
        QVERIFY(LogOnPc(console(), QStringLiteral("2"), QStringLiteral("M-0001"),
                        QStringLiteral("CRUZ, JUAN"), console().server().SocketOfPc(2)));
        const int socket = console().server().SocketOfPc(2);
        const QVariant rows = fx->scalar(QStringLiteral("SELECT COUNT(*) FROM templog"));
        QCOMPARE(rows.toInt(), 1);
        const TerminalRecord before = console().terminals().at(2);
        QVERIFY(!terminals.front()->waitFor("SMTR").isEmpty());
        terminals.front()->clearInbox();
        QSignalSpy closing(window.get(), &MainWindow::applicationClosing);

        fx->prompts.answers = {Prompts::Answer::Cancel};
        QVERIFY(!window->close());
        QTest::qWait(50); // lets anything the console might have sent arrive
        QVERIFY(window->isVisible());
        QCOMPARE(closing.count(), 0);
        QCOMPARE(console().server().SocketOfPc(2), socket);
        QVERIFY(terminals.front()->isConnected());
        QVERIFY(terminals.front()->inbox().isEmpty());
        const TerminalRecord& after = console().terminals().at(2);
        QCOMPARE(after.pcstat, before.pcstat);
        QCOMPARE(after.logged, true);
        QCOMPARE(after.TickStart, before.TickStart);
        QCOMPARE(fx->scalar(QStringLiteral("SELECT COUNT(*) FROM templog")), rows);

        // OK ends the program without telling the terminal or closing the session.
        fx->prompts.answers = {Prompts::Answer::Ok};
        QVERIFY(window->close());
        QCOMPARE(closing.count(), 1);
        QVERIFY(terminals.front()->inbox().isEmpty());
        QCOMPARE(console().terminals().at(2).pcstat, QStringLiteral("LOG"));
        QCOMPARE(fx->scalar(QStringLiteral("SELECT COUNT(*) FROM templog")), rows);
    }

    void showFormPlacement_data() {
        QTest::addColumn<int>("mainWidth");
        QTest::addColumn<int>("formWidth");
        QTest::addColumn<bool>("modal");
        QTest::newRow("modeless, even") << 1000 << 300 << false;
        QTest::newRow("modeless, odd difference") << 1001 << 300 << false;
        QTest::newRow("modal") << 1001 << 420 << true;
    }
    void showFormPlacement() {
        QFETCH(int, mainWidth);
        QFETCH(int, formWidth);
        QFETCH(bool, modal);
        window->resize(mainWidth, 700);
        QCOMPARE(window->width(), mainWidth);
        const int top = 100 * window->logicalDpiY() / 1440;
        QWidget* form = modal ? new QDialog : new QWidget;
        form->resize(formWidth, 200);
        form->setWindowTitle(QStringLiteral("Some window"));

        window->ShowForm(form, modal);

        QVERIFY(form->isVisible());
        if (modal) {
            QVERIFY(form->isWindow());
            QVERIFY(form->isModal());
            QCOMPARE(form->x() - window->frameGeometry().x(),
                     (window->frameGeometry().width() - form->width()) / 2);
            QCOMPARE(form->y() - window->frameGeometry().y(), top);
            QVERIFY(mdi()->subWindowList().isEmpty());
        } else {
            QCOMPARE(mdi()->subWindowList().size(), 1);
            QMdiSubWindow* sub = mdi()->subWindowList().first();
            QCOMPARE(sub->widget(), form);
            QCOMPARE(sub->x(), (mainWidth - sub->width()) / 2);
            QCOMPARE(sub->y(), top);
        }
        QVERIFY(fx->prompts.shown.isEmpty());
    }

    void showFormRefusedWhenMinimised() {
        window->setWindowState(Qt::WindowMinimized);
        QVERIFY(window->isMinimized());
        QPointer<QWidget> form = new QWidget;
        window->ShowForm(form, false);
        QCOMPARE(
            fx->prompts.texts(),
            QStringList{QStringLiteral("Windows is in minimized state, just select windows menu")});
        QVERIFY(mdi()->subWindowList().isEmpty());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(form.isNull());
    }

    void windowMenuListsOpenChildWindows() {
        for (const char* title : {"First", "Second"}) {
            auto* w = new QWidget;
            w->setWindowTitle(QString::fromLatin1(title));
            window->ShowForm(w, false);
        }
        QMenu* menu = find<QMenu>(QStringLiteral("mnuWin"));
        Q_EMIT menu->aboutToShow();
        QStringList listed;
        for (QAction* a : menu->actions())
            listed << a->text();
        QCOMPARE(listed, QStringList({QStringLiteral("First"), QStringLiteral("Second")}));
        menu->actions().first()->trigger();
        QCOMPARE(mdi()->activeSubWindow()->windowTitle(), QStringLiteral("First"));
    }

    void terminalEntries_data() {
        QTest::addColumn<QString>("pcstat");
        QTest::addColumn<bool>("online");
        QTest::addColumn<int>("state");
        using S = TerminalListEntry::State;
        QTest::newRow("locked") << QStringLiteral("NLG") << false << int(S::Locked);
        QTest::newRow("running") << QStringLiteral("LOG") << true << int(S::Running);
        QTest::newRow("paused") << QStringLiteral("PAU") << false << int(S::Paused);
        QTest::newRow("free") << QStringLiteral("FRE") << true << int(S::Free);
        QTest::newRow("billing") << QStringLiteral("BIL") << true << int(S::Billing);
        QTest::newRow("unknown with colons") << QStringLiteral("X:9:") << true << int(S::Unknown);
        QTest::newRow("empty") << QString() << false << int(S::Unknown);
    }
    void terminalEntries() {
        QFETCH(QString, pcstat);
        QFETCH(bool, online);
        QFETCH(int, state);
        for (int pc : {1, 9, 24, 254}) {
            TerminalRecord r;
            r.pcstat = pcstat;
            r.online = online;
            r.cdtls = QStringLiteral("M-1:CRUZ, JUAN");
            const TerminalListEntry e = MakeTerminalListEntry(r, pc);
            QVERIFY2(e.text.endsWith(QLatin1Char(':') + QString::number(pc)), qPrintable(e.text));
            QCOMPARE(NumberAfterColon(e.text), pc);
            QCOMPARE(int(e.state), state);
            QCOMPARE(e.text.contains(QStringLiteral("on line")), online);
        }
    }

    void listFollowsTheTable() {
        QCOMPARE(list()->count(), console().nofpc());
        for (int pc = 1; pc <= console().nofpc(); ++pc)
            QCOMPARE(NumberAfterColon(list()->item(pc - 1)->text()), pc);
        const QString untouched = list()->item(0)->text();
        console().terminals().at(5).pcstat = QStringLiteral("PAU");
        console().terminals().at(5).online = true;
        window->mainTimerTick();
        QVERIFY(list()->item(4)->text().contains(QStringLiteral("paused")));
        QVERIFY(list()->item(4)->text().contains(QStringLiteral("on line")));
        QCOMPARE(list()->item(0)->text(), untouched);
    }

    void popupHeadingFollowsTheSelectedItem() {
        for (int pc : {7, 12, 1}) {
            popUpOn(pc);
            QCOMPARE(window->selectedPc(), pc);
            QCOMPARE(popupHead()->text(), QStringLiteral("On PC :") + QString::number(pc));
        }
    }

    void popupReachesItsCommand() {
        popUpOn(4);
        find(QStringLiteral("mnupPause"))->trigger();
        QCOMPARE(fx->prompts.texts(),
                 QStringList{QStringLiteral("Pausing terminal at this moment is not possible")});

        // On a connected terminal the command goes through and the list shows it at once.
        console().currentOperator().CurrentUserType = QStringLiteral("Admin");
        QVERIFY(connectTerminal(6));
        window->mainTimerTick();
        popUpOn(6);
        fx->prompts.clear();
        find(QStringLiteral("mnupulock"))->trigger();
        QVERIFY(fx->prompts.shown.isEmpty());
        QVERIFY(!terminals.front()->waitFor("FREE ").isEmpty());
        QCOMPARE(console().terminals().at(6).pcstat, QStringLiteral("FRE"));
        QVERIFY(list()->item(5)->text().contains(QStringLiteral("unlocked")));
    }

    void notYetAvailableWindows_data() {
        QTest::addColumn<QString>("command");
        for (const char* c :
             {"mnuCset", "mnuPCTerm", "mnuBkDB", "mnuTxtview", "mnuEarn", "mnuSDate", "mnuClist",
              "mnuTinfo", "tbar1", "tbar2", "tbar3", "tbar5", "tbar7", "tbar9", "mnuplogout"})
            QTest::newRow(c) << QString::fromLatin1(c);
    }
    void notYetAvailableWindows() {
        QFETCH(QString, command);
        popUpOn(2);
        fx->prompts.clear();
        find(command)->trigger();
        QCOMPARE(fx->prompts.shown.size(), 1);
        QVERIFY(fx->prompts.last()->text.endsWith(
            QStringLiteral(" is not available yet in this version.")));
    }

    void statusPanelsAfterATick() {
        QVERIFY(connectTerminal(3));
        QVERIFY(LogOnPc(console(), QStringLiteral("3"), QStringLiteral("M-0002"),
                        QStringLiteral("REYES, ANA"), console().server().SocketOfPc(3)));
        window->mainTimerTick();
        QCOMPARE(window->panelText(2), QStringLiteral("1 PC"));
        QCOMPARE(window->panelText(4), QStringLiteral("2"));
        QCOMPARE(window->panelText(5), QStringLiteral("(on)Port: 2"));
        QCOMPARE(window->panelText(10), QStringLiteral("Sunday, November 15 2026 09:00:00 "));
        QCOMPARE(find<QLabel>(QStringLiteral("panel10"))->text(), window->panelText(10));

        // Panels written from elsewhere reach the bar too.
        console().setStatus(9, QStringLiteral("RQST CONN : 127.0.0.9"));
        QCOMPARE(find<QLabel>(QStringLiteral("panel9"))->text(),
                 QStringLiteral("RQST CONN : 127.0.0.9"));
    }

    void backgroundCyclesThroughThePictures() {
        window->finishLoading();
        QCOMPARE(window->backgroundIndex(), 0);
        QList<int> seen;
        for (int i = 0; i < MainWindow::PictureCount; ++i) {
            window->backgroundTimerTick();
            seen << window->backgroundIndex();
        }
        QCOMPARE(seen, QList<int>({1, 2, 3, 0}));
    }

    void switchingOperatorSetsTheCaption() {
        fx->exec(QStringLiteral("INSERT INTO sysusers (\"user\", utype, keys) VALUES (?, ?, ?)"),
                 {QStringLiteral("BEN"), QStringLiteral("Admin"), QStringLiteral("secret")});
        QCOMPARE(window->windowTitle(), QStringLiteral("Tarvo QRB [User : ANA Type : User ]"));
        find(QStringLiteral("mnuSwitch"))->trigger();
        auto* dialog = find<QDialog>(QStringLiteral("frmLog2"));
        QVERIFY(dialog && dialog->isVisible());
        auto* user = dialog->findChild<QLineEdit*>(QStringLiteral("txtuser"));
        auto* pass = dialog->findChild<QLineEdit*>(QStringLiteral("txtpass"));
        QTest::keyClicks(user, QStringLiteral("ben"));
        QTest::keyClick(user, Qt::Key_Return);
        QTest::keyClicks(pass, QStringLiteral("SECRET"));
        QTest::keyClick(pass, Qt::Key_Return);
        QCOMPARE(window->windowTitle(),
                 SwitchCaption(QStringLiteral("BEN"), QStringLiteral("Admin")));
    }

    void aboutNamesProgramAndMachine() {
        find(QStringLiteral("mnuAbout"))->trigger();
        auto* about = find<QDialog>(QStringLiteral("frmAbout"));
        QVERIFY(about && about->isVisible());
        const QString info = about->findChild<QPlainTextEdit*>()->toPlainText();
        QVERIFY(info.contains(QSysInfo::machineHostName()));
        QVERIFY(info.contains(QSysInfo::currentCpuArchitecture()));
        QVERIFY(info.contains(console().folder().path()));
        QVERIFY(about->findChild<QLabel*>(QStringLiteral("lblVersion"))
                    ->text()
                    .contains(QStringLiteral(TARVO_VERSION)));
    }

    void printerSetupFromMenuAndToolbar() {
        for (const char* command : {"mnuPrinter", "tbar8"}) {
            find(QString::fromLatin1(command))->trigger();
            auto* dialog = find<QDialog>(QStringLiteral("dlgPrinter"));
            QVERIFY2(dialog && dialog->isVisible() && dialog->isModal(), command);
            dialog->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        QVERIFY(fx->prompts.shown.isEmpty());
    }

    void missingManualIsTold() {
        find(QStringLiteral("mnumanual"))->trigger();
        QCOMPARE(fx->prompts.shown.size(), 1);
        QVERIFY(fx->prompts.last()->text.contains(QStringLiteral("tarvoqrbhelp.hlp")));
    }
};

QTEST_MAIN(MainWindowTest)
#include "tst_main_window.moc"
