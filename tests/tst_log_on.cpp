// The log-on dialog, driven through its own controls from every place that opens it,
// with real terminals on loopback connections.
#include "billing/board_window.h"
#include "people/log_on_dialog.h"
#include "server/operator_commands.h"
#include "server/session_start.h"
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using L = QByteArrayList;

class LogOnTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;
    std::map<int, std::unique_ptr<TerminalClient>> terminals;

    Console& console() { return *fx->console; }
    MainWindow& frame() { return *fx->frame; }
    QDialog* logmem() {
        QDialog* shown = nullptr;
        for (auto* d : frame().findChildren<QDialog*>(u"logmem"_s))
            if (d->isVisible()) {
                if (shown)
                    qFatal("two log-on dialogs");
                shown = d;
            }
        return shown;
    }
    template <typename T> T* part(const char* name) {
        return logmem()->findChild<T*>(QString::fromLatin1(name));
    }
    QComboBox* cmbNum() { return part<QComboBox>("cmbNum"); }
    QString id() { return part<QLineEdit>("txtid")->text(); }
    QString name() { return part<QLineEdit>("txtName")->text(); }

    // A number chosen from the drop-down list, as the operator clicks it.
    void pick(int pc) {
        QComboBox* combo = cmbNum();
        combo->showPopup();
        QAbstractItemView* list = combo->view();
        QTRY_VERIFY(list->isVisible());
        const QModelIndex item = list->model()->index(pc - 1, 0);
        list->scrollTo(item);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(item).center());
        QTRY_VERIFY(!list->isVisible());
        QCOMPARE(combo->currentText(), QString::number(pc));
    }
    void typeNumber(const QString& text) {
        QLineEdit* edit = cmbNum()->lineEdit();
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }
    TerminalClient& online(int pc) {
        auto& t = terminals[pc];
        t = fx->probe().online(pc);
        if (!t)
            qFatal("PC %d did not come on line", pc);
        return *t;
    }
    // Opens the log-on dialog for PC 3 from the pop-up menu or its board tile, or an
    // empty one from toolbar button 2.
    void openFrom(const QString& from) {
        if (from == u"tbar2") {
            frame().findChild<QToolButton*>(from)->click();
        } else if (from == u"mnuplog") {
            auto* list = frame().findChild<QListView*>(u"lstTerminals"_s);
            list->setCurrentIndex(list->model()->index(2, 0));
            frame().action(from)->trigger();
        } else {
            frame().findChild<QToolButton*>(u"tbar3"_s)->click();
            for (auto* n :
                 frame().findChild<BoardWindow*>(u"ATV"_s)->findChildren<QPushButton*>(from))
                if (n->property("tile").toInt() == 3)
                    n->click();
        }
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Operator"_s));
        fx->prompts.clear();
    }
    void cleanup() {
        terminals.clear();
        fx.reset();
    }

    // Every place the dialog opens from, what it shows, and what picking a terminal and
    // typing one do to a walk-in and to a member handed in.
    void openingAndChoosing_data() {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("number"); // the terminal box at opening
        QTest::addColumn<QString>("openId"); // and the customer
        QTest::addColumn<QString>("openName");
        QTest::addColumn<bool>("walkIn"); // becomes the walk-in of the PC picked
        QTest::newRow("toolbar button 2")
            << u"tbar2"_s << u""_s << u"TRM-"_s << u"WALK-IN ON TRM "_s << true;
        for (const QString& from : {u"mnuplog"_s, u"lblTrmNo"_s, u"Loa"_s})
            QTest::addRow("PC 3 from %s", qPrintable(from))
                << from << u"3"_s << u"TRM-3"_s << u"WALK-IN ON TRM 3"_s << true;
        QTest::newRow("member handed in")
            << u"member"_s << u""_s << u"ID-00011"_s << u"SANTOS, MARIA L"_s << false;
        // An id that merely begins like a walk-in's is taken for one, as it always was.
        QTest::newRow("member whose id begins TRM")
            << u"member"_s << u""_s << u"TRMX-1"_s << u"REYES, ANA"_s << true;
    }
    void openingAndChoosing() {
        QFETCH(QString, from);
        QFETCH(QString, number);
        QFETCH(QString, openId);
        QFETCH(QString, openName);
        QFETCH(bool, walkIn);
        if (from == u"Loa") {
            TerminalClient& t = online(3);
            QCOMPARE(fx->probe().exchange(t, "Loa"), L{"Form logger loaded"});
            QTRY_VERIFY(logmem());
        } else if (from == u"member") {
            openLogOnDialog(console(), frame(), {0, openId, openName});
        } else {
            openFrom(from);
        }
        QVERIFY(logmem());
        QCOMPARE(fx->prompts.texts(), QStringList());
        QCOMPARE(part<QLabel>("lbldate")->text(), u"Log Date Checked : 11/15/2026"_s);
        QStringList numbers;
        for (int i = 0; i < cmbNum()->count(); ++i)
            numbers << cmbNum()->itemText(i);
        QCOMPARE(numbers.size(), 24);
        QCOMPARE(numbers.first(), u"1"_s);
        QCOMPARE(numbers.last(), u"24"_s);
        QCOMPARE(cmbNum()->currentText(), number);
        QCOMPARE(id(), openId);
        QCOMPARE(name(), openName);

        const QStringList picked =
            walkIn ? QStringList{u"TRM-7"_s, u"WALK-IN ON TRM 7"_s} : QStringList{openId, openName};
        pick(7);
        QCOMPARE((QStringList{id(), name()}), picked);
        // Typing a number leaves the customer as it stands.
        typeNumber(u"12"_s);
        QCOMPARE(cmbNum()->currentText(), u"12"_s);
        QCOMPARE((QStringList{id(), name()}), picked);
        // Cancel closes without any check (PC 12 is not connected).
        part<QPushButton>("cmdCancel")->click();
        QVERIFY(!logmem());
        QCOMPARE(fx->prompts.texts(), QStringList());
    }

    // The checks of the log-on button, in their order: each refusal, whether the dialog
    // stays, and what the session start then does and tells.
    void logOnChecks_data() {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("cid");
        QTest::addColumn<QString>("customer");
        QTest::addColumn<QString>("told"); // "text (title, icon)"; empty: nothing
        QTest::addColumn<bool>("staysOpen");
        QTest::addColumn<bool>("started");
        // PC 3: on line, M-1 running on it. PC 5: on line, free. PC 6: free use, never
        // connected. PC 8: never connected. PC 9: on line, in free use.
        const QString noPc = u"Please choose a pc terminal number (No Terminal, Critical)"_s;
        const QString empty =
            u"Please choose a client id and name properly  (Info Empty, Critical)"_s;
        const QString freeMode = u"Terminal is in Free mode!(Lock)\rUnlock it first (, Critical)"_s;
        QTest::newRow("nothing chosen, every other check failing too")
            << u""_s << u""_s << u""_s << noPc << true << false;
        QTest::newRow("not a number")
            << u"abc"_s << u"TRM-"_s << u"WALK-IN ON TRM "_s << noPc << true << false;
        QTest::newRow("zero") << u"0"_s << u"TRM-0"_s << u"X"_s << noPc << true << false;
        QTest::newRow("no id, a free-use PC")
            << u"6"_s << u""_s << u"WALK-IN ON TRM 6"_s << empty << true << false;
        QTest::newRow("no name") << u"5"_s << u"TRM-5"_s << u""_s << empty << true << false;
        QTest::newRow("free use, not connected")
            << u"6"_s << u"TRM-6"_s << u"WALK-IN ON TRM 6"_s << freeMode << true << false;
        QTest::newRow("free use, on line")
            << u"9"_s << u"TRM-9"_s << u"WALK-IN ON TRM 9"_s << freeMode << true << false;
        QTest::newRow("not connected")
            << u"8"_s << u"TRM-8"_s << u"WALK-IN ON TRM 8"_s
            << u"Pc number 8 is not connected to server (, Critical)"_s << false << false;
        QTest::newRow("past the last terminal")
            << u"30"_s << u"TRM-30"_s << u"WALK-IN ON TRM 30"_s
            << u"There is no PC 30 here: the terminals are numbered 1 to 24. (No Terminal, "
               "Critical)"_s
            << true << false;
        QTest::newRow("walk-in on a connected PC")
            << u"5"_s << u"TRM-5"_s << u"WALK-IN ON TRM 5"_s << u""_s << false << true;
        QTest::newRow("member on a connected PC")
            << u"5"_s << u"ID-00011"_s << u"SANTOS, MARIA L"_s << u""_s << false << true;
        QTest::newRow("member already on another PC")
            << u"5"_s << u"M-1"_s << u"CRUZ, JUAN"_s
            << u"Client ID is already logged (Duplicate ID, Critical)"_s << false << false;
        QTest::newRow("PC already in use")
            << u"3"_s << u"TRM-3"_s << u"WALK-IN ON TRM 3"_s
            << u"This PC is already logged (Not Allowed, Information)"_s << false << false;
    }
    void logOnChecks() {
        QFETCH(QString, number);
        QFETCH(QString, cid);
        QFETCH(QString, customer);
        QFETCH(QString, told);
        QFETCH(bool, staysOpen);
        QFETCH(bool, started);
        QVERIFY(fx->probe().assign(online(3), 3, u"M-1"_s));
        TerminalClient& five = online(5);
        unlockPc(console().sessionParts(), online(9).pcNumber());
        console().terminals().edit(6)->state = TerminalState::Free;
        for (auto& [pc, t] : terminals)
            TerminalProbe::drain(*t);
        const int pc = number.toInt();
        const TerminalRecord before =
            console().terminals().contains(pc) ? console().terminals().at(pc) : TerminalRecord();
        fx->prompts.clear();

        frame().findChild<QToolButton*>(u"tbar2"_s)->click();
        typeNumber(number);
        part<QLineEdit>("txtid")->setText(cid);
        part<QLineEdit>("txtName")->setText(customer);
        part<QPushButton>("cmdLogM")->click();

        QCOMPARE(fx->prompts.described(), told.isEmpty() ? QStringList() : QStringList{told});
        QCOMPARE(logmem() != nullptr, staysOpen);
        if (started) {
            const TerminalRecord& r = console().terminals().at(pc);
            QCOMPARE(r.state, TerminalState::Running);
            QCOMPARE(r.cid, cid);
            QCOMPARE(r.customerLabel, cid + u':' + customer);
            QCOMPARE(TerminalProbe::drain(five), L{"SMTR 09:00:00"});
        } else if (console().terminals().contains(pc)) {
            QCOMPARE(console().terminals().at(pc).cid, before.cid);
            QCOMPARE(console().terminals().at(pc).state, before.state);
        }
        QCOMPARE(console().terminals().loggedCount(), started ? 2 : 1);
    }

    // Either search button: the member passed from the search fills the customer; the
    // terminal chosen stays, and picking another one keeps the member.
    void memberFromTheSearch_data() {
        QTest::addColumn<QString>("button");
        QTest::newRow("by id") << u"imgID"_s;
        QTest::newRow("by name") << u"imgName"_s;
    }
    void memberFromTheSearch() {
        QFETCH(QString, button);
        fx->exec(u"INSERT INTO members (CID, LN, FN, MN) VALUES "
                 "('ID-00003', 'SANTOS', 'MARIA', 'L'), ('ID-00001', 'DELA CRUZ', 'JUAN', 'P')"_s);
        frame().findChild<QToolButton*>(u"tbar2"_s)->click();
        pick(5);
        part<QToolButton>(qPrintable(button))->click();
        auto* search = frame().findChild<QDialog*>(u"Gsearch"_s);
        QVERIFY(search && search->isVisible());
        QTest::keyClicks(search->findChild<QLineEdit*>(u"txtskey"_s), u"ID-00003"_s);
        search->findChild<QPushButton*>(u"cmdpassd"_s)->click();
        QTRY_VERIFY(!search->isVisible());
        QCOMPARE(cmbNum()->currentText(), u"5"_s);
        QCOMPARE(id(), u"ID-00003"_s);
        QCOMPARE(name(), u"SANTOS, MARIA L"_s);
        pick(7);
        QCOMPARE(id(), u"ID-00003"_s);
        QCOMPARE(fx->prompts.texts(), QStringList());
    }

    // A PC in use is refused before the dialog opens, from the pop-up menu and the board.
    void assigningAPcInUse_data() {
        QTest::addColumn<QString>("from");
        QTest::newRow("pop-up menu") << u"mnuplog"_s;
        QTest::newRow("board tile") << u"lblTrmNo"_s;
    }
    void assigningAPcInUse() {
        QFETCH(QString, from);
        QVERIFY(fx->probe().assign(online(3), 3, u"M-1"_s));
        fx->prompts.clear();
        openFrom(from);
        QCOMPARE(fx->prompts.described(),
                 QStringList{u"This pc is already logged. (Not allowed, Information)"_s});
        QVERIFY(!logmem());
    }

    // One log-on dialog at a time. A terminal's request waits while the operator answers
    // another window, and comes up after it; a connection that never said which PC it
    // is gets its answer and no dialog.
    void terminalRequests() {
        TerminalClient& three = online(3);
        TerminalClient& four = online(4);
        frame().findChild<QToolButton*>(u"tbar2"_s)->click();
        QVERIFY(logmem());
        for (int i = 0; i < 50; ++i)
            three.requestLogOnDialog();
        QCOMPARE(fx->probe().exchange(four, "Loa"), L{"Form logger loaded"});
        QTest::qWait(20);
        QCOMPARE(cmbNum()->currentText(), QString()); // still the operator's own
        part<QPushButton>("cmdCancel")->click();
        QVERIFY(!logmem());

        // Another modal window up: the latest request waits for it.
        auto* other = new QDialog(&frame());
        other->setObjectName(u"frmOther"_s);
        other->setWindowModality(Qt::ApplicationModal);
        other->show();
        QCOMPARE(fx->probe().exchange(three, "Loa"), L{"Form logger loaded"});
        QCOMPARE(fx->probe().exchange(four, "Loa"), L{"Form logger loaded"});
        QTest::qWait(20);
        QVERIFY(!logmem());
        other->reject();
        QTRY_VERIFY(logmem());
        QCOMPARE(cmbNum()->currentText(), u"4"_s);
        part<QPushButton>("cmdCancel")->click();

        auto stranger = fx->probe().connect(u"127.0.0.77"_s);
        QVERIFY(stranger);
        QCOMPARE(fx->probe().exchange(*stranger, "Loa"), L{"Form logger loaded"});
        QTest::qWait(20);
        QVERIFY(!logmem());
    }
};

QTEST_MAIN(LogOnTest)
#include "tst_log_on.moc"
