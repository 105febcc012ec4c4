// The active terminal view and the billing dialog, driven through their own controls
// with real terminals on loopback connections.
#include "billing/bill_dialog.h"
#include "billing/board_window.h"
#include "server/operator_commands.h"
#include "server/session_start.h"
#include "store/printer_choice.h"
#include "support/console_fixture.h"
#include "support/terminal_probe.h"
#include "ui/main_window.h"

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

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<TerminalProbe> probe;
    std::unique_ptr<MainWindow> window;
    std::map<int, std::unique_ptr<TerminalClient>> terminals;

    Console& console() { return *fx->console; }
    const TerminalRecord& record(int pc) { return console().terminals().at(pc); }
    BoardWindow* board() { return window->findChild<BoardWindow*>(u"ATV"_s); }
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
        for (auto* d : window->findChildren<QDialog*>(u"frmBill"_s))
            if (d->isVisible())
                return d;
        return nullptr;
    }
    QString billField(const QString& name) { return bill()->findChild<QLineEdit*>(name)->text(); }
    QPushButton* billButton(const QString& name) { return bill()->findChild<QPushButton*>(name); }

    // A terminal on line as the PC with a session started by the operator; what the
    // terminal got so far is drained.
    TerminalClient& running(int pc) {
        auto& t = terminals[pc];
        t = probe->online(pc, u"127.0.0.%1"_s.arg(pc));
        if (!t)
            qFatal("PC %d did not come on line", pc);
        logOnPc(console().sessionParts(), QString::number(pc), u"M-%1"_s.arg(pc), u"CRUZ, JUAN"_s,
                console().control().socketOfPc(pc));
        TerminalProbe::drain(*t);
        return *t;
    }
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
    void popUpOn(int pc) {
        auto* list = window->findChild<QListView*>(u"lstTerminals"_s);
        list->setCurrentIndex(list->model()->index(pc - 1, 0));
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->writeFile(QStringLiteral("TarvoQRB.INI"), "54=NOFPC\n");
        fx->start();
        probe = std::make_unique<TerminalProbe>(console());
        QVERIFY(probe->openOtherLine());
        console().currentOperator() = {u"ANA"_s, u"Admin"_s, u"pw"_s};
        window = std::make_unique<MainWindow>(console());
        window->setModalShowsBlock(false);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        window->findChild<QToolButton*>(u"tbar3"_s)->click();
        QVERIFY(board() && board()->isVisible());
        fx->prompts.clear();
    }
    void cleanup() {
        terminals.clear();
        probe.reset();
        window.reset();
        for (QWidget* w : QApplication::topLevelWidgets())
            w->deleteLater();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        fx.reset();
    }

    void pagesNumberTheTiles_data() {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("pageText");
        QTest::addColumn<int>("lastTile"); // the tiles after it have no terminal
        QTest::newRow("first") << 1 << u"1 of 3"_s << 24;
        QTest::newRow("second") << 2 << u"2 of 3"_s << 24;
        QTest::newRow("last, 54 terminals") << 3 << u"3 of 3"_s << 6;
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
            QCOMPARE(number->text(), pc);
            QCOMPARE(number->accessibleName(), u"PC "_s + pc);
            QCOMPARE(tile("lblamnt", t)->accessibleName(), u"Amount of PC "_s + pc);
            QCOMPARE(tile("cmbTlmt", t)->accessibleName(), u"Time limit of PC "_s + pc);
            QCOMPARE(tile("cmdStop", t)->accessibleName(), u"Stop PC "_s + pc);
            QCOMPARE(tile("cmdFree", t)->accessibleName(), u"Unlock PC "_s + pc);
        }
        if (page == 2)
            QCOMPARE(tile<QPushButton>("lblTrmNo", 3)->text(), u"27"_s);
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
        QTest::newRow("running") << u"running"_s << u"In use"_s << u"Click Stop to discontinue."_s
                                 << true;
        QTest::newRow("paused") << u"paused"_s << u"Paused"_s << u"PC has been Paused"_s << true;
        QTest::newRow("idle") << u"idle"_s << u"Idle"_s << u"Click number to log"_s << false;
        QTest::newRow("off line") << u"off line"_s << u"Off line"_s << u"Click number to log"_s
                                  << false;
    }
    void tilesShowTheirTerminal() {
        QFETCH(QString, state);
        QFETCH(QString, word);
        QFETCH(QString, hint);
        QFETCH(bool, stops);
        if (stops)
            running(5);
        else if (state == u"idle"_s)
            terminals[5] = probe->online(5, u"127.0.0.5"_s);
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
        terminals[3] = probe->online(3, u"127.0.0.3"_s);
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
        QTest::newRow("running") << u"running"_s << L{"TLMT 10"};
        QTest::newRow("paused") << u"paused"_s << L{};
        QTest::newRow("idle") << u"idle"_s << L{};
        QTest::newRow("running, terminal down") << u"down"_s << L{};
    }
    void choosingALimit() {
        QFETCH(QString, state);
        QFETCH(L, sent);
        showPage(2);
        TerminalClient* t = nullptr;
        if (state == u"down"_s) {
            QVERIFY(logOnPc(console().sessionParts(), u"27"_s, u"M-27"_s, u"REYES, ANA"_s, -1));
        } else if (state == u"idle"_s) {
            terminals[27] = probe->online(27, u"127.0.0.27"_s);
            t = terminals[27].get();
        } else {
            t = &running(27);
        }
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
        tile<QPushButton>("cmdStop", 3)->click();
        QVERIFY(bill());
        QCOMPARE(bill()->findChild<QLabel*>(u"lblpcno"_s)->text(), u"27"_s);
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
            QCOMPARE(billField(QString::fromLatin1(name)), text);
        QCOMPARE(bill()->findChild<QComboBox*>(u"cmbdisc"_s)->currentText(), u"None"_s);
        QVERIFY(bill()->findChild<QCheckBox*>(u"chkPrint"_s)->isChecked());
        QCOMPARE(record(27).state, TerminalState::Billing);
        QCOMPARE(tile<QLabel>("lblState", 3)->text(), u"Billing"_s);
        QVERIFY(!tile("cmdStop", 3)->isEnabled());
    }

    void savingAsksFirst_data() {
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<bool>("print");
        QTest::newRow("no") << Answer::No << true;
        QTest::newRow("yes, printed") << Answer::Yes << true;
        QTest::newRow("yes, not printed") << Answer::Yes << false;
    }
    void savingAsksFirst() {
        QFETCH(Answer, answer);
        QFETCH(bool, print);
        TerminalClient& t = running(3);
        pass(45 * Minute);
        tile<QPushButton>("cmdStop", 3)->click();
        QPointer<QDialog> dialog = bill();
        QVERIFY(dialog);
        QTest::keyClicks(dialog->findChild<QLineEdit*>(u"txtor"_s), u"12"_s);
        dialog->findChild<QCheckBox*>(u"chkPrint"_s)->setChecked(print);
        // The statement goes to a PDF file, never to a printer this machine may have.
        PrinterChoice pdf;
        pdf.kind = PrinterChoice::Kind::Pdf;
        pdf.save(*fx->folder);
        fx->prompts.clear();
        fx->prompts.answers = {answer};
        billButton(u"cmdsave"_s)->click();
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
        QFile log(console().billingLog().path(fx->clock.today()));
        QCOMPARE(log.exists(), saved);
        if (saved) {
            QVERIFY(log.open(QIODevice::ReadOnly));
            QVERIFY(log.readAll().contains(" 000012 09:00:00 00:45:00 "));
        }
    }

    void closingTheBillLetsTheSessionGoOn_data() {
        QTest::addColumn<bool>("paused");
        QTest::addColumn<bool>("escape");
        QTest::newRow("running, cmdclose") << false << false;
        QTest::newRow("running, Escape") << false << true;
        QTest::newRow("paused, cmdclose") << true << false;
    }
    void closingTheBillLetsTheSessionGoOn() {
        QFETCH(bool, paused);
        QFETCH(bool, escape);
        TerminalClient& t = running(3);
        if (paused)
            pausePc(console().sessionParts(), 3);
        TerminalProbe::drain(t);
        tile<QPushButton>("cmdStop", 3)->click();
        QPointer<QDialog> dialog = bill();
        QVERIFY(dialog);
        if (escape)
            QTest::keyClick(dialog, Qt::Key_Escape);
        else
            billButton(u"cmdclose"_s)->click();
        QVERIFY(!dialog || !dialog->isVisible());
        QCOMPARE(record(3).state, paused ? TerminalState::Paused : TerminalState::Running);
        QVERIFY(record(3).logged);
        QCOMPARE(TerminalProbe::drain(t), L{});
        QVERIFY(tile("cmdStop", 3)->isEnabled());
    }

    void discountKeys_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("digits and a point") << u"12.5"_s << u"12.5"_s;
        QTest::newRow("a second point") << u"1.2.3"_s << u"1.23"_s;
        QTest::newRow("letters, sign, blanks") << u"a1 -b2,"_s << u"12"_s;
    }
    void discountKeys() {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        usePromo(u"Fix"_s, 0);
        running(3);
        tile<QPushButton>("cmdStop", 3)->click();
        auto* disc = bill()->findChild<QLineEdit*>(u"txtdisc"_s);
        disc->clear();
        QTest::keyClicks(disc, typed);
        QCOMPARE(disc->text(), shown);
        QTest::keyClick(disc, Qt::Key_Backspace);
        QCOMPARE(disc->text(), shown.chopped(1));
    }

    void discountByPromo_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<QString>("discount");
        QTest::addColumn<QString>("due");
        // 90 minutes at 20 an hour: 30.00; the promo gives 5 an hour.
        QTest::newRow("Fix, typed") << u"Fix"_s << u"7.5"_s << true << u"7.5"_s << u" 22.5"_s;
        QTest::newRow("Per Hour") << u"Per Hour"_s << QString() << false << u"7.5"_s << u"22.50"_s;
        QTest::newRow("None") << u"None"_s << QString() << false << u"0"_s << u"30.00"_s;
    }
    void discountByPromo() {
        QFETCH(QString, type);
        QFETCH(QString, typed);
        QFETCH(bool, editable);
        QFETCH(QString, discount);
        QFETCH(QString, due);
        usePromo(type, 5);
        running(3);
        pass(90 * Minute);
        tile<QPushButton>("cmdStop", 3)->click();
        auto* disc = bill()->findChild<QLineEdit*>(u"txtdisc"_s);
        QCOMPARE(disc->isEnabled(), editable);
        QCOMPARE(bill()->findChild<QComboBox*>(u"cmbdisc"_s)->currentText(), type);
        if (editable) {
            QTest::keyClick(disc, Qt::Key_End);
            QTest::keyClick(disc, Qt::Key_Backspace);
            QTest::keyClicks(disc, typed);
        }
        QCOMPARE(disc->text(), discount);
        QCOMPARE(billField(u"txtAmountDue"_s), due);
    }

    void theViewStaysWhileASessionIsOpen() {
        running(2);
        auto* sub = qobject_cast<QMdiSubWindow*>(board()->parentWidget());
        QVERIFY(!sub->close());
        QVERIFY(board()->isVisible());
        QCOMPARE(fx->prompts.texts(),
                 QStringList{u"Application can't exit if there is an active terminal"_s});
        // Nor does the console close.
        QSignalSpy closing(window.get(), &MainWindow::applicationClosing);
        window->close();
        QCOMPARE(closing.count(), 0);
        QVERIFY(window->isVisible());
        tile<QPushButton>("cmdStop", 2)->click();
        billButton(u"cmdsave"_s)->click();
        QVERIFY(sub->close());
    }

    void unlockingIsForAnAdmin_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("Admin") << u"Admin"_s << true;
        QTest::newRow("admin") << u"admin"_s << false; // the case counts
        QTest::newRow("User") << u"User"_s << false;
    }
    void unlockingIsForAnAdmin() {
        QFETCH(QString, type);
        QFETCH(bool, enabled);
        terminals[6] = probe->online(6, u"127.0.0.6"_s);
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
        QTest::newRow("right, any case") << u"PW"_s << QStringList{} << L{"FREE Dummy Text"};
        QTest::newRow("wrong") << u"pass"_s << QStringList{u"Access Denied.."_s} << L{};
        QTest::newRow("nothing") << QString() << QStringList{} << L{};
    }
    void unlockAsksThePassword() {
        QFETCH(QString, typed);
        QFETCH(QStringList, told);
        QFETCH(L, sent);
        showPage(2);
        auto t = probe->online(27, u"127.0.0.27"_s);
        QVERIFY(t);
        TerminalProbe::drain(*t);
        fx->prompts.inputs = {typed};
        tile<QPushButton>("cmdFree", 3)->click();
        const auto& box = fx->prompts.shown.first().box;
        QCOMPARE(box.mode, u"Input"_s);
        QCOMPARE(box.title, u"Input"_s);
        QCOMPARE(box.text, u"Administrative previlege required to unlock PC:27"_s);
        QCOMPARE(box.extra, u"Please enter administrator password"_s);
        QCOMPARE(box.passwordChar, u'@');
        QCOMPARE(fx->prompts.texts().mid(1), told);
        QCOMPARE(TerminalProbe::drain(*t), sent);
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
        auto* logmem = window->findChild<QDialog*>(u"logmem"_s);
        QCOMPARE(logmem && logmem->isVisible(), !busy);
        if (logmem)
            QCOMPARE(logmem->findChild<QComboBox*>(u"cmbNum"_s)->currentText(), u"27"_s);
    }

    // The pop-up menu bills the amount at the PC's tile position of the page shown.
    void logOutFromTheListBillsTheTilePosition_data() {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("rentals");
        QTest::newRow("PC 27's own, page 2 shown") << 2 << u"15.00"_s;
        QTest::newRow("PC 3's, page 1 shown") << 1 << u"20.00"_s;
    }
    void logOutFromTheListBillsTheTilePosition() {
        QFETCH(int, page);
        QFETCH(QString, rentals);
        running(3);
        pass(15 * Minute);
        running(27);
        pass(45 * Minute); // PC 27: 45 minutes, 15.00; PC 3: an hour, 20.00
        showPage(page);
        popUpOn(27);
        window->action(u"mnuplogout"_s)->trigger();
        QVERIFY(bill());
        QCOMPARE(bill()->findChild<QLabel*>(u"lblpcno"_s)->text(), u"27"_s);
        QCOMPARE(billField(u"txtTotalRentG"_s), rentals);
        QCOMPARE(record(27).state, TerminalState::Billing);
    }
};

QTEST_MAIN(BoardWindowTest)
#include "tst_board_window.moc"
