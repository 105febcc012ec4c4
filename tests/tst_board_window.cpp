// The active terminal view and the billing dialog, driven through their own controls
// with real terminals on loopback connections.
#include "billing/bill_dialog.h"
#include "billing/board_window.h"
#include "server/operator_commands.h"
#include "server/session_start.h"
#include "store/printer_choice.h"
#include "support/files.h"
#include "support/frame_fixture.h"
#include "support/terminal_probe.h"

#include <QDir>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using L = QByteArrayList;
using Answer = Prompts::Answer;
Q_DECLARE_METATYPE(Prompts::Answer)

namespace {
constexpr qint32 Minute = 60 * 1000;
} // namespace

class BoardWindowTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;
    std::map<int, std::unique_ptr<TerminalClient>> terminals;

    Console& console() { return *fx->console; }
    const TerminalRecord& record(int pc) { return console().terminals().at(pc); }
    BoardWindow* board() { return fx->frame->findChild<BoardWindow*>(u"ATV"_s); }
    template <typename T = QWidget> T* find(const QString& name) {
        return board()->findChild<T*>(name);
    }
    // One control of a tile: every tile's has the same object name.
    template <typename T = QWidget> T* tile(const char* name, int tile) {
        for (T* w : board()->findChildren<T*>(QString::fromLatin1(name)))
            if (w->property("tile").toInt() == tile)
                return w;
        return nullptr;
    }
    QDialog* bill() {
        for (auto* d : fx->frame->findChildren<QDialog*>(u"frmBill"_s))
            if (d->isVisible())
                return d;
        return nullptr;
    }
    // The bill its tile's Stop button opens.
    QDialog* stop(int tile) {
        this->tile<QPushButton>("cmdStop", tile)->click();
        return bill();
    }
    template <typename T = QLineEdit> T* billPart(const QString& name) {
        return bill()->findChild<T*>(name);
    }

    // A terminal on line as the PC, idle or with a session started by the operator; what
    // the terminal got so far is drained.
    TerminalClient& online(int pc, bool session = false) {
        auto& t = terminals[pc];
        t = fx->probe().online(pc, u"127.0.0.%1"_s.arg(pc));
        if (!t)
            qFatal("PC %d did not come on line", pc);
        if (session)
            logOnPc(console().sessionParts(), QString::number(pc), u"M-%1"_s.arg(pc),
                    u"CRUZ, JUAN"_s, console().control().socketOfPc(pc));
        TerminalProbe::drain(*t);
        return *t;
    }
    TerminalClient& running(int pc) { return online(pc, true); }
    void pass(qint32 ms) {
        fx->clock.advance(ms);
        board()->tick();
    }
    void showPage(int page) {
        while (console().board().page() < page)
            find<QPushButton>(u"cmdNext"_s)->click();
    }
    void usePromo(const QString& type, int amount) {
        fx->exec(u"INSERT INTO promos (ddtls, drange, dtype, Amount) VALUES (?, ?, ?, ?)"_s,
                 {u"Promo"_s, u"All day"_s, type, amount});
        console().rates().loadPromos(console().database());
        console().rates().setPromoInForce(1);
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        fx->writeFile(QStringLiteral("TarvoQRB.INI"), "54=NOFPC\n");
        QVERIFY(fx->show(u"Admin"_s));
        QVERIFY(fx->probe().openOtherLine());
        fx->frame->findChild<QToolButton*>(u"tbar3"_s)->click();
        QVERIFY(board() && board()->isVisible());
        fx->prompts.clear();
    }
    void cleanup() {
        terminals.clear();
        fx.reset();
    }

    void pagesNumberTheTiles_data() {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("pageText");
        QTest::addColumn<int>("lastTile"); // the tiles after it have no terminal
        row("first", 1, "1 of 3", 24);
        row("second", 2, "2 of 3", 24);
        row("last, 54 terminals", 3, "3 of 3", 6);
    }
    void pagesNumberTheTiles() {
        QFETCH(int, page);
        QFETCH(QString, pageText);
        QFETCH(int, lastTile);
        showPage(page);
        QCOMPARE(find<QLineEdit>(u"txtpage"_s)->text(), pageText);
        QCOMPARE(find<QPushButton>(u"cmdPrev"_s)->isEnabled(), page > 1);
        QCOMPARE(find<QPushButton>(u"cmdNext"_s)->isEnabled(), page < 3);
        for (int t = 1; t <= 24; ++t) {
            const QString pc = QString::number(t + (page - 1) * 24);
            auto* number = tile<QPushButton>("lblTrmNo", t);
            QCOMPARE(number->isVisible(), t <= lastTile);
            QCOMPARE(console().board().hasTerminal(t), t <= lastTile);
            QCOMPARE(number->text(), pc);
            QCOMPARE(number->accessibleName(), u"PC "_s + pc);
            for (const auto& [name, label] : {std::pair{"lblamnt", "Amount of PC "},
                                              {"cmbTlmt", "Time limit of PC "},
                                              {"cmdStop", "Stop PC "},
                                              {"cmdFree", "Unlock PC "}})
                QCOMPARE(tile(name, t)->accessibleName(), QString::fromLatin1(label) + pc);
        }
        auto* limits = tile<QComboBox>("cmbTlmt", 1);
        QStringList choices;
        for (int i = 0; i < limits->count(); ++i)
            choices << limits->itemText(i);
        QCOMPARE(choices, (QStringList{"10", "15", "30", "60", "90", "120", "U"}));
        QCOMPARE(limits->toolTip(), u"Set Watch time for this PC in minutes"_s);
        QCOMPARE(board()->findChild<QTimer*>(u"ATVTmr"_s)->interval(), 1000);
    }

    void tilesShowTheirTerminal_data() {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("hint");
        QTest::addColumn<bool>("stops");
        row("running", "running", "In use", "Click Stop to discontinue.", true);
        row("paused", "paused", "Paused", "PC has been Paused", true);
        row("idle", "idle", "Idle", "Click number to log", false);
        row("off line", "off line", "Off line", "Click number to log", false);
    }
    void tilesShowTheirTerminal() {
        QFETCH(QString, state);
        QFETCH(QString, word);
        QFETCH(QString, hint);
        QFETCH(bool, stops);
        if (state != u"off line"_s)
            online(5, stops);
        if (state == u"paused"_s)
            pausePc(console().sessionParts(), 5);
        pass(Minute);
        QCOMPARE(tile<QLabel>("lblState", 5)->text(), word);
        QCOMPARE(tile("lblTrmNo", 5)->toolTip(), hint);
        QCOMPARE(tile("cmdStop", 5)->isEnabled(), stops);
        const QString amount = stops ? u"P 10.00"_s : u"P 0.00"_s;
        QCOMPARE(tile<QLabel>("lblamnt", 5)->text(), amount);
        // A screen reader hears the tile's state and figure from the tile itself.
        QCOMPARE(tile("fraTile", 5)->accessibleName(), u"PC 5: %1, %2"_s.arg(word, amount));
        if (state == u"running"_s)
            QCOMPARE(tile<QLabel>("lblDesc", 5)->text(),
                     u"Pc Number 5 is   logged @ 09:00:00 by - CRUZ, JUAN"_s);
    }

    void hidingUnusedTerminals() {
        running(2);
        online(3);
        auto* show = find<QPushButton>(u"cmdShow"_s);
        QCOMPARE(show->text(), u"Hide Unused PC's"_s);
        show->click();
        QCOMPARE(show->text(), u"Show Unused PC's"_s);
        for (int t = 1; t <= 24; ++t) // a session or a connection makes a terminal used
            QVERIFY2(tile("fraTile", t)->isVisible() == (t == 2 || t == 3),
                     qPrintable(u"%1"_s.arg(t)));
        terminals[3].reset(); // it goes off line: out of view
        QTRY_VERIFY(!tile("fraTile", 3)->isVisible());
        show->click();
        QCOMPARE(show->text(), u"Hide Unused PC's"_s);
        QVERIFY(tile("fraTile", 24)->isVisible());
    }

    void choosingALimit_data() {
        QTest::addColumn<QString>("state");
        QTest::addColumn<L>("sent");
        row("running", "running", L{"TLMT 10"});
        row("paused", "paused", L{});
        row("idle", "idle", L{});
        row("running, terminal down", "down", L{});
    }
    void choosingALimit() {
        QFETCH(QString, state);
        QFETCH(L, sent);
        showPage(2);
        TerminalClient* t = nullptr;
        if (state == u"down"_s)
            QVERIFY(logOnPc(console().sessionParts(), u"27"_s, u"M-27"_s, u"REYES, ANA"_s, -1));
        else
            t = &online(27, state != u"idle"_s);
        if (state == u"paused"_s) {
            pausePc(console().sessionParts(), 27);
            TerminalProbe::drain(*t);
        }
        fx->prompts.clear();
        auto* limit = tile<QComboBox>("cmbTlmt", 3);
        limit->setFocus();
        QTest::keyClick(limit, Qt::Key_Home); // the operator's choice: "10"
        QCOMPARE(limit->currentText(), u"10"_s);
        QCOMPARE(console().board().timeLimit(3), u"10"_s);
        QCOMPARE(record(27).timeLimit, u"10"_s); // stored even when it cannot be sent
        QCOMPARE(fx->prompts.texts(), QStringList{});
        if (t)
            QCOMPARE(TerminalProbe::drain(*t), sent);
    }

    void stopOpensAFilledBill() {
        showPage(2);
        running(27);
        pass(45 * Minute);
        QCOMPARE(tile<QLabel>("lblamnt", 3)->text(), u"P 15.00"_s);
        QVERIFY(stop(3));
        QCOMPARE(billPart<QLabel>(u"lblpcno"_s)->text(), u"27"_s);
        const std::pair<const char*, QString> fields[] = {
            {"txtbldate", u"11/15/2026"_s}, {"txtor", u"0"_s},
            {"txtCid", u"M-27"_s},          {"txtCname", u"CRUZ, JUAN"_s},
            {"txttstart", u"09:00:00"_s},   {"txttend", u"09:45:00"_s},
            {"txtconsumed", u"00:45:00"_s}, {"txthours", u"0.75"_s},
            {"txtrate", u"20"_s},           {"txtTotalRentG", u"15.00"_s},
            {"txtTotalOC", u"0.00"_s},      {"txtdisc", u"0"_s},
            {"txtAmountDue", u"15.00"_s},
        };
        for (const auto& [name, text] : fields)
            QCOMPARE(billPart(QString::fromLatin1(name))->text(), text);
        QCOMPARE(billPart<QComboBox>(u"cmbdisc"_s)->currentText(), u"None"_s);
        QVERIFY(billPart<QCheckBox>(u"chkPrint"_s)->isChecked());
        QCOMPARE(record(27).state, TerminalState::Billing);
        QCOMPARE(tile<QLabel>("lblState", 3)->text(), u"Billing"_s);
        QVERIFY(!tile("cmdStop", 3)->isEnabled());
    }

    void savingAsksFirst_data() {
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<bool>("print");
        row("no", Answer::No, true);
        row("yes, printed", Answer::Yes, true);
        row("yes, not printed", Answer::Yes, false);
    }
    void savingAsksFirst() {
        QFETCH(Answer, answer);
        QFETCH(bool, print);
        TerminalClient& t = running(3);
        pass(45 * Minute);
        QPointer<QDialog> dialog = stop(3);
        QVERIFY(dialog);
        QTest::keyClicks(billPart(u"txtor"_s), u"12"_s);
        billPart<QCheckBox>(u"chkPrint"_s)->setChecked(print);
        // The statement goes to a PDF file, never to a printer this machine may have.
        PrinterChoice{PrinterChoice::Kind::Pdf, {}, {}, {}}.save(*fx->folder);
        fx->prompts.clear();
        fx->prompts.answers = {answer};
        billPart<QPushButton>(u"cmdsave"_s)->click();
        const bool saved = answer == Answer::Yes;
        QStringList told = {u"Save Billing for this PC: 3?"_s};
        if (saved && print)
            told << u"Sending Billing Statement to Printer ..Please Wait.."_s;
        QCOMPARE(fx->prompts.texts(), told);
        QCOMPARE(QDir(PrinterChoice::defaultPdfFolder(*fx->folder)).entryList(QDir::Files).size(),
                 saved && print ? 1 : 0);
        QCOMPARE(dialog && dialog->isVisible(), !saved);
        QCOMPARE(record(3).state, saved ? TerminalState::NotLogged : TerminalState::Billing);
        QCOMPARE(TerminalProbe::drain(t), saved ? (L{"CMTR", "OFPS"}) : L{});
        QCOMPARE(fx->scalar(u"SELECT COUNT(*) FROM TmpRvnD WHERE Amount = 15"_s).toInt(),
                 saved ? 1 : 0);
        const QString log = console().billingLog().path(fx->clock.today());
        QCOMPARE(QFile::exists(log), saved);
        QCOMPARE(readFile(log).contains(" 000012 09:00:00 00:45:00 "), saved);
    }

    void closingTheBillLetsTheSessionGoOn_data() {
        QTest::addColumn<bool>("paused");
        QTest::addColumn<bool>("escape");
        row("running, cmdclose", false, false);
        row("running, Escape", false, true);
        row("paused, cmdclose", true, false);
    }
    void closingTheBillLetsTheSessionGoOn() {
        QFETCH(bool, paused);
        QFETCH(bool, escape);
        TerminalClient& t = running(3);
        if (paused)
            pausePc(console().sessionParts(), 3);
        TerminalProbe::drain(t);
        QPointer<QDialog> dialog = stop(3);
        QVERIFY(dialog);
        if (escape)
            QTest::keyClick(dialog, Qt::Key_Escape);
        else
            billPart<QPushButton>(u"cmdclose"_s)->click();
        QVERIFY(!dialog || !dialog->isVisible());
        QCOMPARE(record(3).state, paused ? TerminalState::Paused : TerminalState::Running);
        QVERIFY(record(3).logged);
        QCOMPARE(TerminalProbe::drain(t), L{});
        QVERIFY(tile("cmdStop", 3)->isEnabled());
        // Its time goes on counting only when it runs.
        pass(10 * Minute);
        QCOMPARE(record(3).runningTime(fx->clock.tickCount()), paused ? 0 : 10 * Minute);
    }

    // At 20 an hour, the promo giving 5 an hour: "Per Hour" from one hour on, fractions
    // counting; only "Fix" lets the operator type a discount, of digits and one point, the
    // amount due then in plain decimals.
    void discountByPromo_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("discount");
        QTest::addColumn<QString>("due");
        row("Fix, typed", "Fix", 5400, "7.5", "7.5", " 22.5");
        row("Fix, a second point", "Fix", 5400, "1.2.3", "1.23", " 28.77");
        row("Fix, letters, sign, blanks", "Fix", 5400, "a1 -b2,", "12", " 18");
        row("Fix, more than due", "Fix", 5400, "33.25", "33.25", "-3.25");
        row("Per Hour, 1.50 h", "Per Hour", 5400, "", "7.5", "22.50");
        row("Per Hour, 0.99 h", "Per Hour", 3564, "", "0", "19.80");
        row("None", "None", 5400, "", "0", "30.00");
    }
    void discountByPromo() {
        QFETCH(QString, type);
        QFETCH(int, seconds);
        QFETCH(QString, typed);
        QFETCH(QString, discount);
        QFETCH(QString, due);
        usePromo(type, 5);
        running(3);
        pass(seconds * 1000);
        QVERIFY(stop(3));
        auto* disc = billPart(u"txtdisc"_s);
        QCOMPARE(disc->isEnabled(), type == u"Fix"_s);
        QCOMPARE(billPart<QComboBox>(u"cmbdisc"_s)->currentText(), type);
        if (disc->isEnabled()) {
            QTest::keyClick(disc, Qt::Key_End);
            QTest::keyClick(disc, Qt::Key_Backspace);
            QTest::keyClicks(disc, typed);
        }
        QCOMPARE(disc->text(), discount);
        QCOMPARE(billPart(u"txtAmountDue"_s)->text(), due);
        if (disc->isEnabled()) {
            QTest::keyClick(disc, Qt::Key_Backspace);
            QCOMPARE(disc->text(), discount.chopped(1));
        }
    }

    void theViewStaysWhileASessionIsOpen() {
        running(2);
        auto* sub = qobject_cast<QMdiSubWindow*>(board()->parentWidget());
        QVERIFY(!sub->close());
        QVERIFY(board()->isVisible());
        QCOMPARE(fx->prompts.texts(),
                 QStringList{u"Application can't exit if there is an active terminal"_s});
        // Nor does the console close.
        QSignalSpy closing(fx->frame.get(), &MainWindow::applicationClosing);
        fx->frame->close();
        QCOMPARE(closing.count(), 0);
        QVERIFY(fx->frame->isVisible());
        stop(2);
        billPart<QPushButton>(u"cmdsave"_s)->click();
        QVERIFY(sub->close());
    }

    void unlockingIsForAnAdmin_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<bool>("enabled");
        row("Admin", "Admin", true);
        row("admin", "admin", false); // the case counts
        row("User", "User", false);
    }
    void unlockingIsForAnAdmin() {
        QFETCH(QString, type);
        QFETCH(bool, enabled);
        online(6);
        running(7);
        console().currentOperator().type = type;
        board()->tick(); // a switch of operator shows at the next tick
        QCOMPARE(tile("cmdFree", 6)->isEnabled(), enabled);
        QVERIFY(!tile("cmdFree", 7)->isEnabled()); // not while a session runs
        QVERIFY(!tile("cmdFree", 8)->isEnabled()); // nor off line
    }

    void unlockAsksThePassword_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("told");
        QTest::addColumn<L>("sent");
        row("right, any case", "PW", QStringList{}, L{"FREE Dummy Text"});
        row("wrong", "pass", QStringList{u"Access Denied.."_s}, L{});
        row("nothing", QString(), QStringList{}, L{});
    }
    void unlockAsksThePassword() {
        QFETCH(QString, typed);
        QFETCH(QStringList, told);
        QFETCH(L, sent);
        showPage(2);
        TerminalClient& t = online(27);
        fx->prompts.inputs = {typed};
        tile<QPushButton>("cmdFree", 3)->click();
        const auto& box = fx->prompts.shown.first().box;
        QCOMPARE(QStringList({box.mode, box.title, box.text, box.extra, box.passwordChar}),
                 QStringList({"Input", "Input", "Administrative previlege required to unlock PC:27",
                              "Please enter administrator password", "@"}));
        QCOMPARE(fx->prompts.texts().mid(1), told);
        QCOMPARE(TerminalProbe::drain(t), sent);
        QCOMPARE(tile<QLabel>("lblState", 3)->text(), sent.isEmpty() ? u"Idle"_s : u"Free use"_s);
    }

    // A free PC's number opens the log-on dialog on it; one in use is refused.
    void clickingANumber_data() {
        QTest::addColumn<bool>("busy");
        QTest::addColumn<QStringList>("told");
        QTest::newRow("free") << false << QStringList();
        QTest::newRow("in use") << true << QStringList{u"This pc is already logged."_s};
    }
    void clickingANumber() {
        QFETCH(bool, busy);
        QFETCH(QStringList, told);
        showPage(2);
        if (busy)
            running(27);
        fx->prompts.clear();
        tile<QPushButton>("lblTrmNo", 3)->click();
        QCOMPARE(fx->prompts.texts(), told);
        auto* logmem = fx->frame->findChild<QDialog*>(u"logmem"_s);
        QCOMPARE(logmem && logmem->isVisible(), !busy);
        if (logmem)
            QCOMPARE(logmem->findChild<QComboBox*>(u"cmbNum"_s)->currentText(), u"27"_s);
    }

    // The pop-up menu bills the amount at the PC's tile position of the page shown.
    void logOutFromTheListBillsTheTilePosition_data() {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("rentals");
        row("PC 27's own, page 2 shown", 2, "15.00");
        row("PC 3's, page 1 shown", 1, "20.00");
    }
    void logOutFromTheListBillsTheTilePosition() {
        QFETCH(int, page);
        QFETCH(QString, rentals);
        running(3);
        pass(15 * Minute);
        running(27);
        pass(45 * Minute); // PC 27: 45 minutes, 15.00; PC 3: an hour, 20.00
        showPage(page);
        auto* list = fx->frame->findChild<QListView*>(u"lstTerminals"_s);
        list->setCurrentIndex(list->model()->index(27 - 1, 0));
        fx->frame->action(u"mnuplogout"_s)->trigger();
        QVERIFY(bill());
        QCOMPARE(billPart<QLabel>(u"lblpcno"_s)->text(), u"27"_s);
        QCOMPARE(billPart(u"txtTotalRentG"_s)->text(), rentals);
        QCOMPARE(record(27).state, TerminalState::Billing);
    }
};

QTEST_MAIN(BoardWindowTest)
#include "tst_board_window.moc"
