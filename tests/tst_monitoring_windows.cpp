// The process viewer, the terminal listing, the IP table and the message window, driven
// through their own controls with real terminals on loopback connections.
#include "billing/board_window.h"
#include "people/listing_window.h"
#include "people/message_log_model.h"
#include "server/operator_commands.h"
#include "support/frame_fixture.h"
#include "ui/prompts_dialog.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using L = QByteArrayList;
using Answer = Prompts::Answer;
Q_DECLARE_METATYPE(Prompts::Answer)

namespace {
constexpr qint32 Minute = 60 * 1000;
} // namespace

class MonitoringTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;
    std::map<int, std::unique_ptr<TerminalClient>> terminals;

    Console& console() { return *fx->console; }
    MainWindow& frame() { return *fx->frame; }
    template <typename T = QWidget> T* find(const QString& name) {
        for (T* w : frame().findChildren<T*>(name))
            if (w->isVisible())
                return w;
        return nullptr;
    }
    template <typename T = QWidget> T* in(const QString& window, const QString& name) {
        QWidget* w = find(window);
        return w ? w->findChild<T*>(name) : nullptr;
    }
    TerminalClient& online(int pc) {
        auto& t = terminals[pc];
        t = fx->probe().online(pc);
        if (!t)
            qFatal("PC %d did not come on line", pc);
        return *t;
    }
    QWidget* peekAt(int pc) {
        auto* list = frame().findChild<QListView*>(u"lstTerminals"_s);
        list->setCurrentIndex(list->model()->index(pc - 1, 0));
        frame().action(u"mnupeek"_s)->trigger();
        return find(u"frmpeek"_s);
    }
    // A row's texts, or the headings for row -1.
    static QStringList rowOf(const QAbstractItemModel* m, int row, int columns = 0) {
        QStringList texts;
        for (int c = 0; c < (columns ? columns : m->columnCount()); ++c)
            texts << (row < 0 ? m->headerData(c, Qt::Horizontal) : m->index(row, c).data())
                         .toString();
        return texts;
    }
    // A connection is logged in the message window as it comes up; start with it closed.
    TerminalClient& onlineWithMessagesClosed(int pc) {
        TerminalClient& t = online(pc);
        if (!QTest::qWaitFor([&] { return find(u"frmtxtv"_s) != nullptr; }))
            qFatal("the connection of PC %d was not logged", pc);
        find(u"frmtxtv"_s)->parentWidget()->close();
        return t;
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Admin"_s));
        fx->prompts.clear();
    }
    void cleanup() {
        terminals.clear();
        fx.reset();
    }

    // The viewer opens for an administrator on a connected terminal only.
    void peekOpening_data() {
        QTest::addColumn<QString>("operatorType");
        QTest::addColumn<int>("pc");
        QTest::addColumn<QStringList>("told");
        QTest::newRow("admin, connected") << u"Admin"_s << 7 << QStringList();
        QTest::newRow("admin, not connected")
            << u"Admin"_s << 8
            << QStringList{u"Performing peek on terminal is currently not available "
                           "(Terminal is down, Critical)"_s};
        const QStringList denied{u"Access denied, for Administrator accounts only (, Critical)"_s};
        QTest::newRow("not an admin") << u"Operator"_s << 7 << denied;
        QTest::newRow("admin spelled otherwise") << u"admin"_s << 7 << denied;
    }
    void peekOpening() {
        QFETCH(QString, operatorType);
        QFETCH(int, pc);
        QFETCH(QStringList, told);
        online(7);
        console().currentOperator().type = operatorType;
        fx->prompts.clear();
        QWidget* peek = peekAt(pc);
        QCOMPARE(fx->prompts.described(), told);
        QCOMPARE(peek != nullptr, told.isEmpty());
        if (!peek)
            return;
        QCOMPARE(peek->findChild<QLabel*>(u"lblpcno"_s)->text(), u"7"_s);
        QCOMPARE(peek->findChild<QLineEdit*>(u"txtsk"_s)->text(),
                 QString::number(console().control().socketOfPc(7)));
        QCOMPARE(peek->findChild<QLineEdit*>(u"txtip"_s)->text(), u"127.0.0.7"_s);
        QCOMPARE(peek->findChild<QLineEdit*>(u"txthname"_s)->text(), u"Not Known"_s);
        QCOMPARE(peek->findChild<QLineEdit*>(u"txtOS"_s)->text(), u"Unknown"_s);
        QCOMPARE(peek->findChild<QListWidget*>(u"lstProc"_s)->count(), 0);
    }

    // "RQPR" asks; the terminal's answer fills the list, other terminals' answers do
    // not; the chosen processes are ended one "KLPR " each in the list's order.
    void peekListsAndEnds_data() {
        QTest::addColumn<QList<int>>("clicked"); // rows, in the order they are clicked
        QTest::addColumn<Answer>("answer");      // to the warning
        QTest::addColumn<QByteArrayList>("sent");
        QTest::addColumn<QStringList>("told");
        const QString warning = u"Killing a Process from the terminal PC may hang or force \r the "
                                "terminal to restart! (Kill Process, Exclamation)"_s;
        const QString done = u"Kill process done (Kill Process, None)"_s;
        QTest::newRow("none chosen")
            << QList<int>{} << Answer::Ok << L{}
            << QStringList{warning, u"NO process to kill (Kill Process, None)"_s};
        QTest::newRow("one") << QList<int>{1} << Answer::Ok << L{"KLPR game.exe"}
                             << QStringList{warning, done};
        QTest::newRow("three, clicked out of order")
            << QList<int>{3, 0, 2} << Answer::Ok
            << L{"KLPR explorer.exe", "KLPR chat.exe", "KLPR notes: today.txt"}
            << QStringList{warning, done};
        QTest::newRow("cancelled")
            << QList<int>{0, 1} << Answer::Cancel << L{} << QStringList{warning};
    }
    void peekListsAndEnds() {
        QFETCH(QList<int>, clicked);
        QFETCH(Answer, answer);
        QFETCH(QByteArrayList, sent);
        QFETCH(QStringList, told);
        TerminalClient& seven = online(7);
        TerminalClient& eight = online(8);
        seven.setAutoAnswer(false);
        QWidget* peek = peekAt(7);
        QVERIFY(peek);
        auto* list = peek->findChild<QListWidget*>(u"lstProc"_s);
        peek->findChild<QPushButton*>(u"cmdpeek"_s)->click();
        QCOMPARE(TerminalProbe::drain(seven), L{"RQPR"});
        fx->probe().exchange(eight, "APL 1:intruder.exe;");
        seven.sendProcessList(
            {u"11:explorer.exe"_s, u"12:game.exe"_s, u"13:chat.exe"_s, u"14:notes: today.txt"_s});
        QTRY_COMPARE(list->count(), 4);
        QCOMPARE(list->item(0)->text(), u"11:explorer.exe"_s);

        for (int row : clicked)
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                              list->visualItemRect(list->item(row)).center());
        QCOMPARE(list->selectedItems().size(), clicked.size());
        fx->prompts.clear();
        fx->prompts.answers = {answer};
        peek->findChild<QPushButton*>(u"cmdkill"_s)->click();
        QCOMPARE(fx->prompts.described(), told);
        QCOMPARE(fx->prompts.shown.first().buttons, Prompts::Buttons::OkCancel);
        QCOMPARE(TerminalProbe::drain(seven), sent);
        QCOMPARE(TerminalProbe::drain(eight), L{});
    }

    // "SNPS": the screen comes in pieces, the viewer counts them and the picture opens
    // titled with the customer and the terminal's address.
    void peekSnapshot() {
        TerminalClient& seven = online(7);
        QVERIFY(fx->probe().assign(seven, 7, u"ID-00011"_s));
        QWidget* peek = peekAt(7);
        QVERIFY(peek);
        auto* progress = peek->findChild<QLabel*>(u"lblsnap"_s);
        QStringList seen;
        connect(&console().snapshots(), &SnapshotReceiver::progress, this,
                [&](const QString& text) { seen << text; });
        peek->findChild<QPushButton*>(u"CmdTrmPrv"_s)->click();
        QTRY_VERIFY_WITH_TIMEOUT(find(u"frmTrmPrv"_s), 20000);
        QCOMPARE(progress->text(), u"Done.!"_s);
        QVERIFY(seen.size() >= 2);
        QCOMPARE(seen.first(), u"Receiving bytes... 16384 Bytes"_s);
        QWidget* shown = find(u"frmTrmPrv"_s);
        QCOMPARE(shown->windowTitle(), u"ID-00011:CRUZ, JUAN from IP : 127.0.0.7"_s);
        QVERIFY(!shown->findChild<QLabel*>(u"imgSnap"_s)->pixmap().isNull());
    }

    // Every second the rows of terminals on line follow their records; a terminal gone
    // off line keeps what its row last showed.
    void listing() {
        for (int pc : {3, 4})
            QVERIFY(fx->probe().assign(online(pc), pc, u"M-%1"_s.arg(pc)));
        online(5);
        fx->clock.advance(10 * Minute);
        frame().findChild<QToolButton*>(u"tbar1"_s)->click();
        auto* listing = find<ListingWindow>(u"frmTabList"_s);
        QVERIFY(listing);
        auto* grid = listing->findChild<QTableWidget*>(u"msFlxg"_s);
        QCOMPARE(rowOf(grid->model(), -1),
                 (QStringList{u"TRM"_s, u"Client#"_s, u"Time In"_s, u"Lapse"_s, u"PauseCtr"_s,
                              u"Time Ceiling"_s, u"Is Open"_s, u"TRM Status"_s, u"Is Connected"_s,
                              u"I.P."_s}));
        QCOMPARE(grid->rowCount(), 24);
        QCOMPARE(listing->findChild<QLineEdit*>(u"txtNpc"_s)->text(), u"24"_s);
        QCOMPARE(grid->currentRow(), 0);
        const QStringList fourAtOpening = rowOf(grid->model(), 3);
        QCOMPARE(fourAtOpening.mid(0, 4),
                 (QStringList{u"4"_s, u"M-4"_s, u"09:00:00"_s, u"00:10:00"_s}));

        terminals[4]->abort(); // PC 4's session pauses as its connection goes
        QTRY_VERIFY(!console().terminals().at(4).online);
        QCOMPARE(console().terminals().at(4).state, TerminalState::Paused);
        unlockPc(console().sessionParts(), 5);
        fx->clock.advance(5 * Minute);
        listing->tick();

        const QList<QStringList> expected = {
            {u"3"_s, u"M-3"_s, u"09:00:00"_s, u"00:15:00"_s, u"0"_s, u"U"_s, u"NO"_s, u"LOG"_s,
             u"<Connected>"_s, u"127.0.0.3"_s},
            fourAtOpening,
            {u"5"_s, u""_s, u""_s, u""_s, u"0"_s, u"U"_s, u"YES"_s, u"FRE"_s, u"<Connected>"_s,
             u"127.0.0.5"_s},
            {u"6"_s, u""_s, u""_s, u""_s, u"0"_s, u"U"_s, u"NO"_s, u"NLG"_s, u"<0>"_s, u""_s},
        };
        for (int pc = 3; pc <= 6; ++pc)
            QCOMPARE(rowOf(grid->model(), pc - 1), expected[pc - 3]);
        QCOMPARE(listing->findChild<QLineEdit*>(u"txtinactpc"_s)->text(), u"2"_s);
    }

    // The registry as a grid and a list, read again on Refresh.
    void ipTable() {
        frame().findChild<QToolButton*>(u"tbar9"_s)->click();
        QWidget* view = find(u"ciptbl"_s);
        QVERIFY(view);
        auto* grid = view->findChild<QTableView*>(u"DBGrid1"_s);
        auto* list = view->findChild<QTreeWidget*>(u"lstips"_s);
        QCOMPARE(grid->model()->rowCount(), 0);
        QCOMPARE(list->topLevelItemCount(), 0);

        online(7);
        online(2);
        const int seven = console().control().socketOfPc(7);
        terminals[7]->abort();
        QTRY_VERIFY(!console().terminals().at(7).online);
        QCOMPARE(list->topLevelItemCount(), 0); // as it was read
        view->findChild<QPushButton*>(u"cmdRef"_s)->click();
        const QList<QStringList> expected = {
            {u"127.0.0.7"_s, u"7"_s, QString::number(seven), u"NO"_s},
            {u"127.0.0.2"_s, u"2"_s, QString::number(console().control().socketOfPc(2)), u"YES"_s},
        };
        QCOMPARE(grid->model()->rowCount(), 2);
        QCOMPARE(list->topLevelItemCount(), 2);
        for (int row = 0; row < 2; ++row) {
            QCOMPARE(rowOf(grid->model(), row, 4), expected[row]);
            QCOMPARE(rowOf(list->model(), row, 4), expected[row]);
        }
        QCOMPARE(rowOf(grid->model(), -1, 4),
                 (QStringList{u"TmIP"_s, u"PC"_s, u"XCON"_s, u"ON LINE"_s}));
    }

    // A reply goes to a connected PC with "TEXT "; a PC that never said who it is is
    // refused. The box is ready for the next line either way.
    void reply() {
        TerminalClient& three = onlineWithMessagesClosed(3);
        frame().action(u"mnuTxtview"_s)->trigger();
        QWidget* messages = find(u"frmtxtv"_s);
        QVERIFY(messages);
        QCOMPARE(frame().findChild<QMdiArea*>()->activeSubWindow(), messages->parentWidget());
        auto* number = messages->findChild<QComboBox*>(u"cmdPCn"_s);
        QCOMPARE(number->count(), 24);
        auto* text = messages->findChild<QLineEdit*>(u"txtrply"_s);
        QCOMPARE(text->text(), u">>"_s);
        const auto replyTo = [&](int pc) { // whether the reply was logged
            number->setCurrentIndex(pc - 1);
            text->end(false);
            QTest::keyClicks(text, u"see you"_s);
            fx->prompts.clear();
            messages->findChild<QPushButton*>(u"cmdrep"_s)->click();
            return in<QListView>(u"frmtxtv"_s, u"lstLog"_s)
                ->model()
                ->index(0, 0)
                .data()
                .toString()
                .contains(u"see you"_s);
        };
        QVERIFY(!replyTo(7)); // never identified
        QCOMPARE(fx->prompts.texts(), QStringList{u"Terminal 7 is not logged for chatting"_s});
        QCOMPARE(text->text(), u">>"_s);
        QVERIFY(replyTo(3));
        QCOMPARE(fx->prompts.texts(), QStringList());
        QCOMPARE(text->text(), u">>"_s);
        QCOMPARE(TerminalProbe::drain(three), L{"TEXT >>see you"});
    }

    // The log reads newest first, one line an entry; a long entry is cut short on its
    // line and read whole below.
    void messageLog() {
        TerminalClient& three = online(3);
        const QString longText = u"TXT "_s + QString(1000, u'x') + u"\nEND"_s;
        for (const QString& t : {u"TXT first"_s, u"TXT second"_s, longText})
            fx->probe().exchange(three, t.toUtf8());
        QTRY_VERIFY(find(u"frmtxtv"_s));
        auto* list = in<QListView>(u"frmtxtv"_s, u"lstLog"_s);
        const auto line = [&](int row) {
            return list->model()->index(row, 0).data().toString();
        };
        QCOMPARE(line(0).size(), MessageLogModel::LineLength);
        QVERIFY(!line(0).contains(u'\n'));
        QCOMPARE(line(1), u"TXT second"_s);
        QCOMPARE(line(2), u"TXT first"_s);
        Q_EMIT list->clicked(list->model()->index(0, 0));
        QCOMPARE(in<QPlainTextEdit>(u"frmtxtv"_s, u"txtWhole"_s)->toPlainText(), longText);
    }

    // The message window comes up for what terminals say without taking the keyboard
    // from the window the operator is typing in.
    void messagesLeaveTheKeyboardAlone_data() {
        QTest::addColumn<QStringList>("typingIn"); // opened by, window, field
        QTest::newRow("log-on dialog") << QStringList{u"tbar2"_s, u"logmem"_s, u"txtName"_s};
        QTest::newRow("active terminal view") << QStringList{u"tbar3"_s, u"ATV"_s, u"cmbTlmt"_s};
        QTest::newRow("terminal list, no child window") << QStringList{{}, {}, u"lstTerminals"_s};
    }
    void messagesLeaveTheKeyboardAlone() {
        QFETCH(QStringList, typingIn);
        TerminalClient& three = onlineWithMessagesClosed(3);
        if (!typingIn[0].isEmpty())
            frame().findChild<QToolButton*>(typingIn[0])->click();
        QWidget* field = typingIn[1].isEmpty() ? frame().findChild<QListView*>(typingIn[2])
                                               : in(typingIn[1], typingIn[2]);
        field->window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(field->window()));
        field->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), field);
        QWidget* active = QApplication::activeWindow();

        fx->probe().exchange(three, "TXT are you there?");
        QTRY_VERIFY(find(u"frmtxtv"_s));
        QTest::qWait(20);
        QCOMPARE(QApplication::activeWindow(), active);
        QCOMPARE(QApplication::focusWidget(), field);
        if (typingIn[1] == u"ATV")
            QCOMPARE(frame().findChild<QMdiArea*>()->activeSubWindow(),
                     find(u"ATV"_s)->parentWidget());
    }

    // The console's notices are read in the message window, not in a window of their own.
    void noticesBesideTheLog() {
        WidgetPrompts boxes(fx->clock);
        frame().readNoticesOf(boxes);
        boxes.notice(u"EMT the printer is out of paper"_s, u"PC 3"_s, Prompts::Icon::Information);
        QTRY_VERIFY(find(u"frmtxtv"_s));
        auto* list = in<QListView>(u"frmtxtv"_s, u"lstNotices"_s);
        QVERIFY(list);
        QVERIFY(list->model()->index(0, 0).data().toString().endsWith(
            u"PC 3: EMT the printer is out of paper"_s));
        for (QWidget* w : QApplication::topLevelWidgets())
            QVERIFY2(!(w->objectName() == u"frmNotices" && w->isVisible()), "a second window");
    }
};

QTEST_MAIN(MonitoringTest)
#include "tst_monitoring_windows.moc"
