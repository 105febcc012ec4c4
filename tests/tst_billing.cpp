// The money side of a session: the running amount, the board's time limits, the bill
// and its settlement, over real connections and a real database with a hand-set clock.
#include "billing/board_rules.h"
#include "billing/charge.h"
#include "server/operator_commands.h"
#include "support/console_fixture.h"
#include "support/terminal_probe.h"

#include <QDir>
#include <QFile>
#include <QtTest>

using L = QByteArrayList;
using namespace Qt::StringLiterals;

class BillingTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<TerminalProbe> probe;

    Console& console() { return *fx->console; }
    const TerminalRecord& record(int pc) { return console().terminals().at(pc); }
    void start(const QByteArray& settings = "24=NOFPC\n") {
        fx->writeFile(QStringLiteral("TarvoQRB.INI"), settings);
        probe = std::make_unique<TerminalProbe>(fx->start());
        QVERIFY(probe->openOtherLine());
    }
    // A terminal on line with a session started; what it was sent is drained.
    std::unique_ptr<TerminalClient> running(int pc, const QByteArray& who = "W-1:JUAN CRUZ") {
        auto t = probe->online(pc, u"127.0.0.%1"_s.arg(pc));
        if (t)
            probe->exchange(*t, "LOG " + who + ";" + QByteArray::number(pc));
        return t;
    }
    // Time passes and the board ticks, as its window's timer would.
    void pass(qint32 ms) {
        fx->clock.advance(ms);
        boardTick(console().board(), console().sessionParts(), console().rates());
    }
    QString scalar(const QString& sql) { return fx->scalar(sql).toString(); }

private Q_SLOTS:
    void init() { fx = std::make_unique<ConsoleFixture>(); }
    void cleanup() {
        probe.reset();
        fx.reset();
    }

    // The running amount at 20 an hour with a minimum of 10, and what a bill makes of it.
    void runningAmountAndBill_data() {
        QTest::addColumn<int>("minutes");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("consumed");
        QTest::addColumn<QString>("hours");
        QTest::newRow("10 minutes: the minimum") << 10 << "P 10.00"
                                                 << "00:10:00"
                                                 << "0.17";
        QTest::newRow("30 minutes: equal, the minimum") << 30 << "P 10.00"
                                                        << "00:30:00"
                                                        << "0.50";
        QTest::newRow("45 minutes") << 45 << "P 15.00"
                                    << "00:45:00"
                                    << "0.75";
        QTest::newRow("3 hours 25 minutes") << 205 << "P 68.33"
                                            << "03:25:00"
                                            << "3.42";
    }
    void runningAmountAndBill() {
        QFETCH(int, minutes);
        QFETCH(QString, caption);
        QFETCH(QString, consumed);
        QFETCH(QString, hours);
        start();
        auto t = running(3);
        QVERIFY(t);
        pass(minutes * 60000);
        QCOMPARE(console().board().amountCaption(3), caption);
        const auto bill = stopSession(console().billingParts(), 3, 3);
        QVERIFY(bill);
        QCOMPARE(bill->rentals, caption.mid(2));
        QCOMPARE(bill->amountDue, caption.mid(2));
        QCOMPARE(bill->consumed, consumed);
        QCOMPARE(bill->hours, hours);
        QCOMPARE(bill->timeIn, u"09:00:00"_s);
        QCOMPARE(bill->timeOut, QTime(9, 0).addSecs(minutes * 60).toString(u"HH:mm:ss"_s));
        QCOMPARE(bill->date, u"11/15/2026"_s);
        QCOMPARE(bill->customerName, u"JUAN CRUZ"_s);
        QCOMPARE(record(3).state, TerminalState::Billing);
    }

    // A new rate reaches the next tick of a session already running; the minimum minutes
    // never change an amount.
    void rateChangedMidSession() {
        start();
        auto t = running(4);
        QVERIFY(t);
        pass(60 * 60000);
        QCOMPARE(console().board().amountCaption(4), u"P 20.00"_s);
        console().rates().setValues(25, Money::fromPesos(10), 30);
        pass(0);
        QCOMPARE(console().board().amountCaption(4), u"P 25.00"_s);
        console().rates().setValues(25, Money::fromPesos(10), 240);
        pass(0);
        QCOMPARE(console().board().amountCaption(4), u"P 25.00"_s);
    }

    // The promo in force on the bill: "Per Hour" from one hour on, fractions counting;
    // "Fix" typed by the operator; "None" nothing.
    void promoDiscounts_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("discount");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<QString>("due");
        QTest::newRow("per hour, 0.99 h") << "Per Hour" << 3564 << "0" << false << "19.80";
        QTest::newRow("per hour, 1.50 h") << "Per Hour" << 5400 << "7.5" << false << "22.50";
        QTest::newRow("fix") << "Fix" << 5400 << "0" << true << "30.00";
        QTest::newRow("none") << "None" << 5400 << "0" << false << "30.00";
    }
    void promoDiscounts() {
        QFETCH(QString, type);
        QFETCH(int, seconds);
        QFETCH(QString, discount);
        QFETCH(bool, editable);
        QFETCH(QString, due);
        start();
        fx->exec(u"INSERT INTO promos VALUES ('Promo', 'all day', ?, 5)"_s, {type});
        console().rates().loadPromos(console().database());
        console().rates().setPromoInForce(1);
        auto t = running(5);
        QVERIFY(t);
        pass(seconds * 1000);
        auto bill = stopSession(console().billingParts(), 5, 5);
        QVERIFY(bill);
        QCOMPARE(bill->discountType, type);
        QCOMPARE(bill->discount, discount);
        QCOMPARE(bill->discountEditable, editable);
        QCOMPARE(bill->amountDue, due);
        // Typing a discount changes the amount due only for "Fix", as plain decimals.
        bill->discount = u"2.5"_s;
        discountEdited(*bill);
        QCOMPARE(bill->amountDue, type == "Fix"_L1 ? u" 27.5"_s : due);
    }

    // The tile's caption is what is billed: a grouped amount enters the amount due by its
    // first group, and the revenue row the same way; both deliberately.
    void groupedAmountReadsItsFirstGroup() {
        start();
        auto t = running(6);
        QVERIFY(t);
        console().rates().setValues(500, Money::fromPesos(10), 30);
        pass(9000 * 1000); // 2.5 hours at 500: 1,250.00
        QCOMPARE(console().board().amountCaption(6), u"P 1,250.00"_s);
        const auto bill = stopSession(console().billingParts(), 6, 6);
        QVERIFY(bill);
        QCOMPARE(bill->rentals, u"1,250.00"_s);
        QCOMPARE(bill->amountDue, u"1.00"_s);
        QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Saved);
        QCOMPARE(scalar(u"SELECT printf('%g', Amount) FROM TmpRvnD"_s), u"1"_s);
    }

    // The key filter of the discount box and the plain numbers of "Fix".
    void discountKeysAndPlainNumbers() {
        QVERIFY(discountKeyAccepted(u"12"_s, u'3', false));
        QVERIFY(discountKeyAccepted(u"12"_s, u'.', false));
        QVERIFY(!discountKeyAccepted(u"1.2"_s, u'.', false));
        QVERIFY(!discountKeyAccepted(u"12"_s, u'a', false));
        QVERIFY(!discountKeyAccepted(u"12"_s, u'-', false));
        QVERIFY(discountKeyAccepted(u"1.2"_s, QChar(), true));
        QCOMPARE(plainNumber(15), u" 15"_s);
        QCOMPARE(plainNumber(-3.25), u"-3.25"_s);
        QCOMPARE(fixAmountDue(u"1,234.50"_s, u"0"_s, u"2"_s), u"-1"_s);
    }

    // Page 2 tile 3 is PC 27; a page shows as "2 of 3" with 54 terminals.
    void boardPages() {
        start("54=NOFPC\n");
        ActiveBoard& board = console().board();
        QCOMPARE(board.pageCount(), 3);
        board.setPage(2);
        QCOMPARE(board.pcOfTile(3), 27);
        QCOMPARE(board.pageText(), u"2 of 3"_s);
        board.setPage(3);
        QVERIFY(board.hasTerminal(6));
        QVERIFY(!board.hasTerminal(7));
    }

    // Limit "10": warned on every tick of the fifth minute before it, paused once at it;
    // "U" never. The operator is told in the console's own box, which never waits.
    void timeLimits() {
        start();
        auto limited = running(7, "W-7:ANA"), open = running(8, "W-8:BEN");
        QVERIFY(limited);
        QVERIFY(open);
        chooseTimeLimit(console().board(), console().sessionParts(), 7, u"10"_s);
        QCOMPARE(TerminalProbe::drain(*limited), L{"TLMT 10"});
        QCOMPARE(scalar(u"SELECT stopwatch FROM templog WHERE aindex = 7"_s), u"10"_s);
        L warned;
        for (int second = 1; second <= 11 * 60; second += 20) {
            pass(20000);
            warned += TerminalProbe::drain(*limited);
        }
        QCOMPARE(warned.count("WARN Just Warn"), 3); // each tick of 05:00 .. 05:59
        L pauses;
        for (const QByteArray& m : warned)
            if (m.startsWith("PAUS"))
                pauses << m;
        QCOMPARE(pauses, L{"PAUS 600000"});
        QCOMPARE(record(7).state, TerminalState::Paused);
        QCOMPARE(scalar(u"SELECT pcstat || BkTick FROM templog WHERE aindex = 7"_s),
                 u"PAU600000"_s);
        QCOMPARE(console().board().tile(7).description, u"Paused"_s);
        const auto* box = fx->prompts.last();
        QVERIFY(box);
        QCOMPARE(box->text, u"Client has reached desired time limit, it has been paused!"_s);
        QCOMPARE(box->title, u"Notice.."_s);
        QVERIFY(!box->box.modal);
        QCOMPARE(TerminalProbe::drain(*open), L{});
        QCOMPARE(record(8).state, TerminalState::Running);
    }

    // A limit chosen for a terminal that is down is stored and not sent.
    void limitForATerminalThatIsDown() {
        start();
        auto t = running(9);
        QVERIFY(t);
        t->abort();
        QTRY_VERIFY(!record(9).online);
        chooseTimeLimit(console().board(), console().sessionParts(), 9, u"30"_s);
        QCOMPARE(record(9).timeLimit, u"30"_s);
        QCOMPARE(console().timeLimits().limit(9), u"30"_s);
    }

    // The whole road: connect, identify, log on, time passes, stop, bill, save.
    void wholeRoadOfASession() {
        start();
        auto t = running(2, "ID-00007:REYES, ANA");
        QVERIFY(t);
        pass(45 * 60000);
        auto bill = stopSession(console().billingParts(), 2, 2);
        QVERIFY(bill);
        bill->receipt = u"12"_s;

        // No to the question: still being billed.
        fx->prompts.answers = {Prompts::Answer::No};
        QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Declined);
        QCOMPARE(fx->prompts.last()->text, u"Save Billing for this PC: 2?"_s);
        QCOMPARE(record(2).state, TerminalState::Billing);
        QCOMPARE(scalar(u"SELECT count(*) FROM TmpRvnD"_s), u"0"_s);

        fx->clock.advance(5000);
        QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Saved);
        QCOMPARE(TerminalProbe::drain(*t), (L{"CMTR", "OFPS"}));
        QCOMPARE(scalar(u"SELECT Rdate || '|' || printf('%g', Amount) || '|' || rtype || '|' || "
                        u"StartT || '|' || "
                        "EndT || '|' || CID || '|' || TID || '|' || Tcons FROM TmpRvnD"_s),
                 u"2026-11-15|15|GAMES_RENTALS|09:00:00|09:45:05|ID-00007|2|00:45:00"_s);
        QCOMPARE(scalar(u"SELECT isout FROM templog WHERE aindex = 2"_s), u"-1"_s);
        const TerminalRecord& r = record(2);
        QCOMPARE(r.state, TerminalState::NotLogged);
        QVERIFY(!r.logged);
        QCOMPARE(r.cid, QString());
        QCOMPARE(r.timeLimit, u"U"_s);

        QFile log(console().billingLog().path(QDate(2026, 11, 15)));
        QVERIFY(log.open(QIODevice::ReadOnly | QIODevice::Text));
        QCOMPARE(QString::fromUtf8(log.readAll()).split(u'\n'),
                 (QStringList{u"Save Log File for Billing Process: 11_15_2026"_s,
                              u" DATE        OR#    IN     Consumed  %   %type   Dtls           "
                              "TRG   TOC  DUE"_s,
                              u"11/15/2026 000012 09:00:00 00:45:00 0.00 None REYES, ANA 15.00 "
                              "0.00 15.00"_s,
                              QString()}));
    }

    // The second bill of a day only adds its line; a receipt left at 0 is 000000.
    void secondBillAppends() {
        start();
        for (int pc : {3, 4}) {
            auto t = running(pc, "W-" + QByteArray::number(pc) + ":ANA");
            QVERIFY(t);
            pass(30 * 60000);
            const auto bill = stopSession(console().billingParts(), pc, pc);
            QVERIFY(bill);
            QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Saved);
        }
        QFile log(console().billingLog().path(QDate(2026, 11, 15)));
        QVERIFY(log.open(QIODevice::ReadOnly | QIODevice::Text));
        const QStringList lines = QString::fromUtf8(log.readAll()).trimmed().split(u'\n');
        QCOMPARE(lines.size(), 4);
        QVERIFY(lines[2].startsWith(u"11/15/2026 000000 09:00:00 00:30:00"_s));
        QVERIFY(lines[3].startsWith(u"11/15/2026 000000 09:30:00 00:30:00"_s));
    }

    // Closed without saving, the session goes on as it was: running, or paused.
    void closingTheBillReturnsTheSession_data() {
        QTest::addColumn<bool>("paused");
        QTest::newRow("running") << false;
        QTest::newRow("paused") << true;
    }
    void closingTheBillReturnsTheSession() {
        QFETCH(bool, paused);
        start();
        auto t = running(5);
        QVERIFY(t);
        pass(20 * 60000);
        if (paused)
            pausePc(console().sessionParts(), 5);
        const auto bill = stopSession(console().billingParts(), 5, 5);
        QVERIFY(bill);
        closeBill(console().billingParts(), *bill);
        QCOMPARE(record(5).state, paused ? TerminalState::Paused : TerminalState::Running);
        pass(10 * 60000);
        QCOMPARE(record(5).runningTime(fx->clock.tickCount()), (paused ? 20 : 30) * 60000);
    }

    // The revenue row and the session's close are one transaction: when the close cannot
    // be written, no revenue row is left behind and the bill stays open.
    void revenueAndCloseAreOneTransaction() {
        start();
        auto t = running(6);
        QVERIFY(t);
        pass(40 * 60000);
        const auto bill = stopSession(console().billingParts(), 6, 6);
        QVERIFY(bill);
        fx->exec(u"CREATE TRIGGER refuse_close BEFORE UPDATE OF isout ON templog "
                 "BEGIN SELECT RAISE(ABORT, 'the close cannot be written'); END"_s);
        QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Failed);
        QVERIFY(fx->prompts.last()->text.contains(u"the close cannot be written"_s));
        QCOMPARE(scalar(u"SELECT count(*) FROM TmpRvnD"_s), u"0"_s);
        QCOMPARE(record(6).state, TerminalState::Billing);
        QCOMPARE(TerminalProbe::drain(*t), L{}); // not told: nothing was settled
        fx->exec(u"DROP TRIGGER refuse_close"_s);
        QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Saved);
        QCOMPARE(scalar(u"SELECT count(*) || isout FROM TmpRvnD, templog"_s), u"1-1"_s);
    }

    // A log that cannot be written (here a folder stands where the day's file must go)
    // raises the writer's flag; the bill is saved all the same.
    void logThatCannotBeWrittenLeavesTheBillSaved() {
        start();
        QVERIFY(QDir().mkpath(console().billingLog().path(QDate(2026, 11, 15))));
        auto t = running(3);
        QVERIFY(t);
        pass(30 * 60000);
        const auto bill = stopSession(console().billingParts(), 3, 3);
        QVERIFY(bill);
        QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Saved);
        QVERIFY(console().billingLog().failed());
        QCOMPARE(TerminalProbe::drain(*t), (L{"CMTR", "OFPS"}));
        QCOMPARE(record(3).state, TerminalState::NotLogged);
        QCOMPARE(scalar(u"SELECT count(*) FROM TmpRvnD"_s), u"1"_s);
    }
};

QTEST_MAIN(BillingTest)
#include "tst_billing.moc"
