#include "base/text.h"
#include "support/files.h"
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Icon = Prompts::Icon;
using L = QByteArrayList;
Q_DECLARE_METATYPE(Prompts::Icon)

class MainWindowTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;
    MainWindow* window = nullptr;
    std::vector<std::unique_ptr<TerminalClient>> terminals;

    Console& console() { return *fx->console; }
    template <typename T = QAction> T* find(const QString& n) { return window->findChild<T*>(n); }
    QListView* list() { return find<QListView>(u"lstTerminals"_s); }
    QMdiArea* mdi() { return find<QMdiArea>(u"mdiArea"_s); }
    // The message window opens by itself when the probe connects, so it is left out.
    QList<QMdiSubWindow*> opened() {
        QList<QMdiSubWindow*> subs = mdi()->subWindowList();
        subs.removeIf([](QMdiSubWindow* sub) {
            return sub->widget() && sub->widget()->objectName() == "frmtxtv"_L1;
        });
        return subs;
    }
    QString itemText(int pc) { return list()->model()->index(pc - 1, 0).data().toString(); }
    static int visibleWindows() {
        return int(std::ranges::count_if(QApplication::topLevelWidgets(), &QWidget::isVisible));
    }
    // A menu or pop-up item by its action, a toolbar button by its number ("tbar5").
    void trigger(const QString& name) {
        if (auto* button = find<QToolButton>(name))
            button->click();
        else
            find(name)->trigger();
    }

    bool logOnTerminal(int pc) {
        auto t = fx->probe().online(pc);
        if (!t)
            return false;
        terminals.push_back(std::move(t));
        return fx->probe().assign(*terminals.back(), pc, u"M-0001"_s);
    }
    template <size_t N>
    static void pairRows(const char* first, const char* second, const char* const (&rows)[N][2]) {
        QTest::addColumn<QString>(first);
        QTest::addColumn<QString>(second);
        for (const auto& r : rows)
            QTest::newRow(r[0]) << QString::fromLatin1(r[0]) << QString::fromLatin1(r[1]);
    }
    void popUpOn(int pc) {
        const QModelIndex index = list()->model()->index(pc - 1, 0);
        list()->setCurrentIndex(index);
        Q_EMIT list()->customContextMenuRequested(list()->visualRect(index).center());
        find<QMenu>(u"mnuPopup"_s)->hide();
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"User"_s));
        window = fx->frame.get();
        fx->probe();
        fx->prompts.clear();
    }
    void cleanup() {
        terminals.clear();
        fx.reset();
    }

    void captions_data() {
        // clang-format off
        const char* const rows[][2] = {
            {"mnuSystem", "&Tarvo System   "}, {"mnuCset", "Clients &Section"},
            {"mnuPCTerm", "Terminal Attachment Infos"}, {"mnuRateS", "Tarvo System Settings"},
            {"mnuuser", "System Users for Tarvo"}, {"mnuBkDB", "Back-Up Database"},
            {"mnuTxtview", "Message Archiver"}, {"mnuPrinter", "Tarvo Printer Setup"},
            {"mnuSwitch", "Switch User Log Session"}, {"mnuexit", "&Close Tarvo System"},
            {"mnuTrm", "Client PC Maintenance"}, {"mnulogoff", "Log Off All Clients PC"},
            {"mnuReboot", "Reboot/Restart All Clients PC"},
            {"mnuShutdown", "Shutdown All Clients PC"}, {"mnuReps", "&Report Generation"},
            {"mnuEarn", "&What we gather today"}, {"mnuSDate", "&Retro Reports"},
            {"mnuClist", "Clients we Currently Have"},
            {"mnuTinfo", "Terminal Attachment Information "}, {"mnuPopup", "Upop1"},
            {"mnuhead", "On PC :"}, {"mnuplog", "Assign this PC to client"},
            {"mnuplock", "Lock Client PC"}, {"mnupulock", "Unlock Client PC"},
            {"mnupXtnd", "Extend Client Time"}, {"mnupx5", "  5 Minutes"},
            {"mnupx10", "10 Minutes"}, {"mnupx15", "15 Minutes"}, {"mnupx20", "20 Minutes"},
            {"mnupx30", "30 Minutes"}, {"mnupx1hr", "  1 Hour"}, {"mnupPause", "Pause Client PC"},
            {"mnupRes", "Resume Client PC"}, {"mnuplogout", "Log-Out Client PC"},
            {"mnupMnt", "Client PC Maintenance"}, {"mnuTlogoff", "Log Off Client PC"},
            {"mnutreb", "Reboot CLient PC"}, {"mnutshut", "Shutdown Client PC"},
            {"mnupeek", "Show Client PC Processes"}, {"mnuWin", "&Active Sessions "},
            {"mnuHelp", "Tarvo Help"}, {"mnumanual", "Tarvo Systems Manual"},
            {"mnuAbout", "What is Tarvo?"},
        };
        // clang-format on
        pairRows("name", "caption", rows);
    }
    void captions() {
        QFETCH(QString, name);
        QFETCH(QString, caption);
        QMenu* menu = find<QMenu>(name);
        QCOMPARE(menu ? menu->title() : find(name) ? find(name)->text() : QString(), caption);
    }

    void adminOnlyCommands_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("refusal");
        QTest::addColumn<Icon>("icon");
        const QString denied = u"Access Denied.."_s;
        QTest::newRow("mnuRateS") << u"mnuRateS"_s << denied << Icon::None; // deliberately
        for (const char* c : {"mnuuser", "tbar4", "tbar6"})
            QTest::newRow(c) << QString::fromLatin1(c) << denied << Icon::Critical;
        QTest::newRow("mnupulock") << u"mnupulock"_s
                                   << u"Access denied, for Administrator accounts only"_s
                                   << Icon::Critical;
    }
    void adminOnlyCommands() {
        QFETCH(QString, command);
        QFETCH(QString, refusal);
        QFETCH(Icon, icon);
        for (const QString& type : {u"User"_s, u"admin"_s, u"Admin"_s}) { // the case counts
            console().currentOperator().type = type;
            popUpOn(3);
            const int before = visibleWindows();
            fx->prompts.clear();
            trigger(command);
            const bool refused = type != "Admin"_L1;
            const bool opensRates = command == "mnuRateS"_L1 || command == "tbar4"_L1;
            const bool opensUsers = command == "mnuuser"_L1 || command == "tbar6"_L1;
            if (!refused && (opensRates || opensUsers)) {
                QCOMPARE(fx->prompts.texts(), QStringList());
                QVERIFY(find<QDialog>(opensRates ? u"RatesSrv"_s : u"frmUsers"_s));
                continue;
            }
            QCOMPARE(fx->prompts.shown.size(), 1); // PC 3 is down: even an "Admin" is told so
            const auto& shown = *fx->prompts.last();
            if (type == "Admin"_L1) {
                QVERIFY2(shown.text != refusal, qPrintable(shown.text));
                continue;
            }
            QCOMPARE(shown.text, refusal);
            QCOMPARE(shown.icon, icon);
            QVERIFY(opened().isEmpty());
            QCOMPARE(visibleWindows(), before);
        }
    }

    void closingAsksAndNeverEndsSessions_data() {
        QTest::addColumn<QString>("way");
        for (const char* way : {"", "mnuexit", "tbar10"})
            QTest::newRow(*way ? way : "window frame") << QString::fromLatin1(way);
    }
    void closingAsksAndNeverEndsSessions() {
        QFETCH(QString, way);
        QVERIFY(logOnTerminal(2));
        TerminalClient& terminal = *terminals.front();
        QSignalSpy closing(window, &MainWindow::applicationClosing);
        // Neither answer tells the terminal or closes its session: OK just ends the console.
        fx->prompts.answers = {Prompts::Answer::Cancel, Prompts::Answer::Ok};
        for (int answered : {0, 1}) {
            way.isEmpty() ? void(window->close()) : trigger(way);
            QCOMPARE(fx->prompts.shown.size(), answered + 1);
            const auto& box = *fx->prompts.last();
            QCOMPARE(box.text, u"Close Application?"_s);
            QCOMPARE(box.buttons, Prompts::Buttons::OkCancel);
            QCOMPARE(box.icon, Icon::Critical);
            QCOMPARE(closing.count(), answered);
            QCOMPARE(window->isVisible(), answered == 0);
            QVERIFY(terminal.isConnected());
            QCOMPARE(TerminalProbe::drain(terminal), L{});
            QCOMPARE(console().terminals().at(2).state, TerminalState::Running);
            QCOMPARE(fx->scalar(u"SELECT COUNT(*) FROM templog"_s).toInt(), 1);
        }
    }

    // A form opens centred on the frame, 100 twips from its top: a modal one as a window of
    // its own, placed against the frame's outer edge, a modeless one inside. None opens while
    // the frame is minimised.
    void showForm_data() {
        QTest::addColumn<bool>("modal");
        QTest::addColumn<bool>("minimised");
        row("modeless", false, false);
        row("modal", true, false);
        row("minimised", false, true);
    }
    void showForm() {
        QFETCH(bool, modal);
        QFETCH(bool, minimised);
        window->resize(1001, 700); // an odd difference to the form's width
        if (minimised)
            window->setWindowState(Qt::WindowMinimized);
        QPointer<QWidget> form = modal ? new QDialog : new QWidget;
        form->resize(300, 200);
        window->showForm(form, modal);
        QCOMPARE(fx->prompts.texts(),
                 minimised
                     ? QStringList{u"Windows is in minimized state, just select windows menu"_s}
                     : QStringList());
        const auto subs = opened();
        QCOMPARE(subs.size(), modal || minimised ? 0 : 1);
        if (minimised) {
            if (form)
                QVERIFY(!form->isVisible());
            return;
        }
        QVERIFY(form->isVisible());
        QCOMPARE(form->isModal(), modal);
        QWidget* placed = modal ? form.data() : subs.first();
        const QRect outer = modal ? window->frameGeometry() : QRect(0, 0, 1001, 1);
        QCOMPARE(placed->pos() - outer.topLeft(),
                 QPoint((outer.width() - placed->width()) / 2, 100 * window->logicalDpiY() / 1440));
    }

    // The list follows the table by itself, with no timer tick; each item ends with its
    // PC number after its only ":", whatever state or customer id the record holds.
    void listItemsEndWithTheirPcAndHeadingFollowsTheSelection() {
        const QString states[] = {u"NLG"_s, u"LOG"_s, u"PAU"_s, u"FRE"_s, u"BIL"_s, u"X:9:"_s, {}};
        for (int pc = 1; pc <= 7; ++pc) {
            auto r = console().terminals().edit(pc);
            r->setStateCode(states[pc - 1]);
            r->online = pc % 2;
            r->logged = pc == 2;
            r->cid = u"ID:00:2"_s; // a ":" in an id from another tool
        }
        QCOMPARE(list()->model()->rowCount(), console().nofpc());
        QCOMPARE(itemText(2), u"Pc Number 2 is running (ID002), off line :2"_s);
        QCOMPARE(itemText(6), u"Pc Number 6 is X9, off line :6"_s);
        for (int pc = 1; pc <= console().nofpc(); ++pc) {
            const QString text = itemText(pc);
            QCOMPARE(numberAfterColon(text), pc); // what the pop-up menu reads
            QCOMPARE(text.contains(u"on line"_s), pc <= 7 && pc % 2);
        }
        for (int pc : {7, 12, 1}) {
            popUpOn(pc);
            QCOMPARE(window->selectedPc(), pc);
            QCOMPARE(find(u"mnuhead"_s)->text(), u"On PC :"_s + QString::number(pc));
        }
    }

    // The dialog each command opens, or what the operator is told.
    void commandsReachTheirWindows_data() {
        // clang-format off
        const char* const rows[][2] = {
            {"mnupPause", "Pausing terminal at this moment is not possible"},
            {"mnumanual", "tarvoqrbhelp.hlp"}, {"mnuPrinter", "frmPrinter"},
            {"tbar8", "frmPrinter"}, {"mnuSwitch", "frmLog2"}, {"mnuAbout", "frmAbout"},
            {"mnuClist", "DRMemList"}, {"tbar3", "ATV"}, {"mnuCset", "Members"},
            {"tbar5", "Members"}, {"mnuEarn", "ASlsSrv"}, {"tbar7", "ASlsSrv"},
            {"mnuSDate", "frmSDates"}, {"mnuBkDB", "Database file is successfully written to "},
            {"mnuplogout", "PC 2 has no session to bill."}, {"mnuplog", "logmem"},
            {"tbar1", "frmTabList"}, {"tbar2", "logmem"}, {"mnuPCTerm", "ciptbl"},
            {"mnuTinfo", "ciptbl"}, {"tbar9", "ciptbl"}, {"mnuTxtview", "frmtxtv"},
        };
        // clang-format on
        pairRows("command", "expected", rows);
    }
    void commandsReachTheirWindows() {
        QFETCH(QString, command);
        QFETCH(QString, expected);
        popUpOn(2);
        fx->prompts.clear();
        // The backup goes under the home drive: here, the test's own folder.
        qputenv("HOMEDRIVE", fx->dir.path().toLocal8Bit());
        trigger(command);
        qunsetenv("HOMEDRIVE");
        const QWidget* dialog = find<QWidget>(expected);
        const QStringList told = fx->prompts.texts();
        if (dialog) {
            QVERIFY(dialog->isVisible());
            QCOMPARE(told, QStringList());
        } else {
            QCOMPARE(told.size(), 1);
            QVERIFY2(told.first().contains(expected), qPrintable(told.first()));
        }
    }

    void statusPanelsAfterATick() {
        QVERIFY(logOnTerminal(3));
        window->mainTimerTick();
        QCOMPARE(window->panelText(StatusPanel::Sessions), u"1 PC"_s);
        QCOMPARE(window->panelText(StatusPanel::Sockets), u"3"_s); // listening, probe, PC 3
        QCOMPARE(window->panelText(StatusPanel::Port), u"(on)Port: 3"_s);
        QCOMPARE(find<QLabel>(u"pnlDateTime"_s)->text(), u"Sunday, November 15 2026 09:00:00 "_s);
        QCOMPARE(find<QLabel>(u"pnlLastRequest"_s)->text(), u"RQST CONN : 127.0.0.3"_s);
    }
};

QTEST_MAIN(MainWindowTest)
#include "tst_main_window.moc"
