// The money side of a session: the running amount, the board's time limits, the bill
// and its settlement, over real connections and a real database with a hand-set clock.
#include "billing/board_rules.h"
#include "billing/charge.h"
#include "server/operator_commands.h"
#include "support/console_fixture.h"
#include "support/files.h"
#include "support/terminal_probe.h"

#include <QDir>
#include <QFile>
#include <QtTest>

using L = QByteArrayList;
using namespace Qt::StringLiterals;

class BillingTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;

    Console& console() { return *fx->console; }
    const BillingParts& parts() { return console().billingParts(); }
    const TerminalRecord& record(int pc) { return console().terminals().at(pc); }
    // A terminal on line with a session its "LOG" started; what it was sent is drained.
    std::unique_ptr<TerminalClient> running(int pc, const QByteArray& who = "W-1:JUAN CRUZ") {
        auto t = fx->probe().online(pc, u"127.0.0.%1"_s.arg(pc));
        if (!t)
            qFatal("PC %d did not come on line", pc);
        fx->probe().exchange(*t, "LOG " + who + ";" + QByteArray::number(pc));
        return t;
    }
    // Time passes and the board ticks, as its window's timer would.
    void pass(qint32 ms) {
        fx->clock.advance(ms);
        boardTick(console().board(), console().sessionParts(), console().rates());
    }
    // The PC's session stopped after so many minutes more, and its bill.
    BillFields stopAfter(int pc, int minutes) {
        pass(minutes * 60000);
        const auto bill = stopSession(parts(), pc, pc);
        if (!bill)
            qFatal("PC %d had no session to stop", pc);
        return *bill;
    }
    QString scalar(const QString& sql) { return fx->scalar(sql).toString(); }
    QString billingLog() {
        return QString::fromUtf8(readFile(console().billingLog().path(QDate(2026, 11, 15))));
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->start();
    }
    void cleanup() { fx.reset(); }

    // The running amount with a minimum of 10, the bill made of it and its revenue row. A
    // grouped amount enters the amount due and the revenue row by its first group,
    // deliberately.
    void runningAmountAndBill_data() {
        QTest::addColumn<int>("minutes");
        QTest::addColumn<int>("rate");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("consumed");
        QTest::addColumn<QString>("hours");
        QTest::addColumn<QString>("due");
        row("10 minutes: the minimum", 10, 20, "P 10.00", "00:10:00", "0.17", "10.00");
        row("30 minutes: equal, the minimum", 30, 20, "P 10.00", "00:30:00", "0.50", "10.00");
        row("45 minutes", 45, 20, "P 15.00", "00:45:00", "0.75", "15.00");
        row("3 hours 25 minutes", 205, 20, "P 68.33", "03:25:00", "3.42", "68.33");
        row("grouped amount", 150, 500, "P 1,250.00", "02:30:00", "2.50", "1.00");
    }
    void runningAmountAndBill() {
        QFETCH(int, minutes);
        QFETCH(int, rate);
        QFETCH(QString, caption);
        QFETCH(QString, consumed);
        QFETCH(QString, hours);
        QFETCH(QString, due);
        console().rates().setValues(rate, Money::fromPesos(10), 30);
        auto t = running(3);
        pass(minutes * 60000);
        QCOMPARE(console().board().amountCaption(3), caption);
        const BillFields bill = stopAfter(3, 0);
        QCOMPARE((QStringList{bill.rentals, bill.amountDue, bill.consumed, bill.hours, bill.timeIn,
                              bill.timeOut, bill.date, bill.customerName}),
                 (QStringList{caption.mid(2), due, consumed, hours, "09:00:00",
                              QTime(9, 0).addSecs(minutes * 60).toString("HH:mm:ss"), "11/15/2026",
                              "JUAN CRUZ"}));
        QCOMPARE(record(3).state, TerminalState::Billing);
        QCOMPARE(saveBill(parts(), bill), SaveOutcome::Saved);
        QCOMPARE(scalar(u"SELECT printf('%.2f', Amount) FROM TmpRvnD"_s), due);
    }

    // A new rate reaches the next tick of a session already running; the minimum minutes
    // never change an amount.
    void rateChangedMidSession() {
        auto t = running(4);
        pass(60 * 60000);
        QCOMPARE(console().board().amountCaption(4), u"P 20.00"_s);
        for (int minutes : {30, 240}) {
            console().rates().setValues(25, Money::fromPesos(10), minutes);
            pass(0);
            QCOMPARE(console().board().amountCaption(4), u"P 25.00"_s);
        }
    }

    // The plain numbers of a "Fix" bill's amount due; a grouped amount reads its first group.
    void plainNumbersOfFix() {
        QCOMPARE(plainNumber(15), u" 15"_s);
        QCOMPARE(plainNumber(-3.25), u"-3.25"_s);
        QCOMPARE(fixAmountDue(u"1,234.50"_s, u"0"_s, u"2"_s), u"-1"_s);
    }

    // Limit "10": warned on every tick of the fifth minute before it, paused once at it;
    // "U" never. The operator is told in the console's own box, which never waits.
    void timeLimits() {
        auto limited = running(7, "W-7:ANA"), open = running(8, "W-8:BEN");
        chooseTimeLimit(console().board(), console().sessionParts(), 7, u"10"_s);
        QCOMPARE(TerminalProbe::drain(*limited), L{"TLMT 10"});
        QCOMPARE(scalar(u"SELECT stopwatch FROM templog WHERE aindex = 7"_s), u"10"_s);
        L sent; // each with the second of the tick that sent it
        for (int second = 20; second <= 11 * 60; second += 20) {
            pass(20000);
            for (const QByteArray& m : TerminalProbe::drain(*limited))
                sent << QByteArray::number(second) + ' ' + m;
        }
        // Each tick with 05:59 .. 05:00 left, then the pause.
        QCOMPARE(sent, (L{"260 WARN Just Warn", "280 WARN Just Warn", "300 WARN Just Warn",
                          "600 PAUS 600000"}));
        QCOMPARE(record(7).state, TerminalState::Paused);
        QCOMPARE(scalar(u"SELECT pcstat || BkTick FROM templog WHERE aindex = 7"_s),
                 u"PAU600000"_s);
        QCOMPARE(console().board().tile(7).description, u"Paused"_s);
        QCOMPARE(fx->prompts.texts(),
                 QStringList{u"Client has reached desired time limit, it has been paused!"_s});
        QCOMPARE(fx->prompts.last()->title, u"Notice.."_s);
        QVERIFY(!fx->prompts.last()->box.modal);
        QCOMPARE(TerminalProbe::drain(*open), L{});
        QCOMPARE(record(8).state, TerminalState::Running);
    }

    // The whole road: log on, time passes, stop, save; a second bill of the day only adds
    // its line to the log, a receipt left at 0 as 000000.
    void wholeRoadOfASession() {
        auto t = running(2, "ID-00007:REYES, ANA");
        BillFields bill = stopAfter(2, 45);
        bill.receipt = u"12"_s;
        fx->clock.advance(5000);
        QCOMPARE(saveBill(parts(), bill), SaveOutcome::Saved);
        QCOMPARE(TerminalProbe::drain(*t), (L{"CMTR", "OFPS"}));
        QCOMPARE(scalar(u"SELECT Rdate || '|' || printf('%g', Amount) || '|' || rtype || '|' || "
                        "StartT || '|' || EndT || '|' || CID || '|' || TID || '|' || Tcons "
                        "FROM TmpRvnD"_s),
                 u"2026-11-15|15|GAMES_RENTALS|09:00:00|09:45:05|ID-00007|2|00:45:00"_s);
        QCOMPARE(scalar(u"SELECT isout FROM templog WHERE aindex = 2"_s), u"-1"_s);
        const TerminalRecord& r = record(2);
        QCOMPARE(r.state, TerminalState::NotLogged);
        QVERIFY(!r.logged);
        QCOMPARE(r.cid, QString());
        QCOMPARE(r.timeLimit, u"U"_s);

        auto second = running(4, "W-4:BEN");
        QCOMPARE(saveBill(parts(), stopAfter(4, 30)), SaveOutcome::Saved);
        QCOMPARE(billingLog().split(u'\n'),
                 (QStringList{u"Save Log File for Billing Process: 11_15_2026"_s,
                              u" DATE        OR#    IN     Consumed  %   %type   Dtls           "
                              "TRG   TOC  DUE"_s,
                              u"11/15/2026 000012 09:00:00 00:45:00 0.00 None REYES, ANA 15.00 "
                              "0.00 15.00"_s,
                              u"11/15/2026 000000 09:45:05 00:30:00 0.00 None BEN 10.00 0.00 "
                              "10.00"_s,
                              QString()}));
    }

    // The revenue row and the session's close are one transaction: when the close cannot
    // be written, no revenue row is left behind and the bill stays open.
    void revenueAndCloseAreOneTransaction() {
        auto t = running(6);
        const BillFields bill = stopAfter(6, 40);
        fx->exec(u"CREATE TRIGGER refuse_close BEFORE UPDATE OF isout ON templog "
                 "BEGIN SELECT RAISE(ABORT, 'the close cannot be written'); END"_s);
        QCOMPARE(saveBill(parts(), bill), SaveOutcome::Failed);
        QVERIFY(fx->prompts.last()->text.contains(u"the close cannot be written"_s));
        QCOMPARE(scalar(u"SELECT count(*) FROM TmpRvnD"_s), u"0"_s);
        QCOMPARE(record(6).state, TerminalState::Billing);
        QCOMPARE(TerminalProbe::drain(*t), L{}); // not told: nothing was settled
        fx->exec(u"DROP TRIGGER refuse_close"_s);
        QCOMPARE(saveBill(parts(), bill), SaveOutcome::Saved);
        QCOMPARE(scalar(u"SELECT count(*) || isout FROM TmpRvnD, templog"_s), u"1-1"_s);
    }

    // A log that cannot be written (here a folder stands where the day's file must go)
    // raises the writer's flag and the operator is given the line; the bill is saved all the
    // same.
    void logThatCannotBeWrittenLeavesTheBillSaved() {
        QVERIFY(QDir().mkpath(console().billingLog().path(QDate(2026, 11, 15))));
        auto t = running(3);
        QCOMPARE(saveBill(parts(), stopAfter(3, 30)), SaveOutcome::Saved);
        QVERIFY(console().billingLog().failed());
        QVERIFY(fx->prompts.last()->text.contains(u"could not be added to the billing log"_s));
        QCOMPARE(TerminalProbe::drain(*t), (L{"CMTR", "OFPS"}));
        QCOMPARE(record(3).state, TerminalState::NotLogged);
        QCOMPARE(scalar(u"SELECT count(*) FROM TmpRvnD"_s), u"1"_s);
    }
};

QTEST_MAIN(BillingTest)
#include "tst_billing.moc"
