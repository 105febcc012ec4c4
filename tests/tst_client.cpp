// The terminal client against the real console: a member's log-in, the meter beside the
// console's own running amount, pause and resume, the time limit, the bill, and the
// console going away. Real loopback connections, the client's windows offscreen.
#include "billing/board_rules.h"
#include "billing/charge.h"
#include "billing/settlement.h"
#include "member_form.h"
#include "server/operator_commands.h"
#include "support/client_rig.h"

#include "base/format.h"

#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

class ClientTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ClientRig> rig;

    Console& console() { return rig->console(); }
    QString text(const QString& window, const QString& name) { return rig->text(window, name); }
    bool visible(const QString& window) { return ClientRig::visible(window); }
    // Time passes and the console's board ticks, as its window's timer would.
    void pass(int minutes) {
        rig->fx->clock.advance(minutes * 60000);
        boardTick(console().board(), console().sessionParts(), console().rates());
    }
    // What the console shows for the session now: its running time and amount.
    QString consoleElapsed() {
        return formatElapsed(rig->fx->record(rig->pc).runningTime(rig->fx->clock.tickCount()));
    }
    QString consoleAmount() {
        return console().board().amountCaption(TimeLimitSlots::slotOfPc(rig->pc));
    }
    void typeInto(const QString& name, const QString& value) {
        auto* field = rig->control<QLineEdit>("frmLock", name);
        QVERIFY(field);
        field->clear();
        QTest::keyClicks(field, value);
    }

private Q_SLOTS:
    void init() {
        rig = std::make_unique<ClientRig>();
        rig->startConsole();
        rig->startClient();
    }
    void cleanup() { rig.reset(); }

    // Locked from the start: the whole screen, the café's rates and products, the PC on line.
    void startsLockedAndOnLine() {
        QVERIFY(visible("frmLock"));
        QVERIFY(!visible("frmMeter"));
        QCOMPARE(rig->window("frmLock")->geometry(), QGuiApplication::primaryScreen()->geometry());
        QCOMPARE(text("frmLock", "lblState"), u"This PC is locked"_s);
        QCOMPARE(text("frmLock", "lblRates"), u"P 20.00 an hour\nMinimum charge P 10.00"_s);
        QVERIFY(text("frmLock", "lblProducts").contains(u"Chips"_s));
        QVERIFY(text("frmLock", "lblProducts").contains(u"P 15.50"_s));
        QCOMPARE(text("frmLock", "lblConnection"), u"PC 5 · connected to the console"_s);
        // Offscreen there is no X server to grab from; the lock still shows.
        QVERIFY(!rig->client->lockWindow().holdsInput());
    }

    void memberLogIn_data() {
        QTest::addColumn<QStringList>("typed"); // id, last name, first name
        QTest::addColumn<bool>("started");
        QTest::addColumn<QString>("result"); // the form's answer, when the PC stays locked
        QTest::newRow("as registered") << QStringList{"M-0001", "Dela Cruz", "Juan"} << true << "";
        QTest::newRow("in any letter case, with blanks")
            << QStringList{"m-0001", " dela cruz ", "JUAN "} << true << "";
        const QString refused = "Member ID or name not recognised. Please check them, or ask the "
                                "operator.";
        QTest::newRow("wrong first name")
            << QStringList{"M-0001", "Dela Cruz", "Jose"} << false << refused;
        QTest::newRow("unknown id")
            << QStringList{"M-9999", "Dela Cruz", "Juan"} << false << refused;
        QTest::newRow("in use on another PC")
            << QStringList{"M-0002", "Reyes", "Ana"} << false
            << "Your session could not be started (is your ID in use on another PC?). Please ask "
               "the operator.";
        QTest::newRow("a name left out") << QStringList{"M-0001", "", "Juan"} << false
                                         << "Please fill in your member ID, last name and first "
                                            "name.";
        QTest::newRow("a semicolon in a name")
            << QStringList{"M-0001", "Dela Cruz;6", "Juan"} << false
            << "A member ID or name cannot contain \":\" or \";\".";
    }
    void memberLogIn() {
        QFETCH(QStringList, typed);
        QFETCH(bool, started);
        QFETCH(QString, result);
        // Ana is already at PC 6.
        QVERIFY(logOnPc(console().sessionParts(), "6", "M-0002", "REYES, ANA", -1));
        typeInto("txtMemberId", typed[0]);
        typeInto("txtLastName", typed[1]);
        typeInto("txtFirstName", typed[2]);
        rig->control<QPushButton>("frmLock", "cmdLogIn")->click();
        if (started) {
            QTRY_VERIFY(visible("frmMeter"));
            QVERIFY(!visible("frmLock"));
            QCOMPARE(rig->fx->record(5).cid, u"M-0001"_s); // as the register spells it
            QCOMPARE(text("frmMeter", "lblStartTime"), u"Started 09:00:00"_s);
            return;
        }
        QTRY_COMPARE(text("frmLock", "lblLogInResult"), result);
        QVERIFY(visible("frmLock"));
        QVERIFY(!rig->fx->record(5).logged);
    }

    // The meter's amount is the console's running amount at every moment, minimum included.
    void meterMatchesConsole_data() {
        QTest::addColumn<double>("rate");
        QTest::addColumn<double>("minimum");
        QTest::addColumn<QStringList>("amounts"); // after 10, 30 and 45 minutes
        QTest::newRow("20 an hour, minimum 10")
            << 20.0 << 10.0 << QStringList{"P 10.00", "P 10.00", "P 15.00"};
        QTest::newRow("25.50 an hour, minimum 12.75")
            << 25.5 << 12.75 << QStringList{"P 12.75", "P 12.75", "P 19.13"};
        QTest::newRow("90 an hour, no minimum")
            << 90.0 << 0.0 << QStringList{"P 15.00", "P 45.00", "P 67.50"};
    }
    void meterMatchesConsole() {
        QFETCH(double, rate);
        QFETCH(double, minimum);
        QFETCH(QStringList, amounts);
        // Changed after the client asked: a session's start brings the new rates.
        console().rates().setValues(rate, Money::fromDouble(minimum), 30);
        rig->assign();
        QTRY_COMPARE(rig->client->session().ratePerHour(), rate);
        QVERIFY(!ClientRig::shown("frmMeter", "lblTimeLeft")); // open time
        int minutes = 0;
        for (int i = 0; i < 3; ++i) {
            pass(QList<int>{10, 30, 45}[i] - minutes);
            minutes = QList<int>{10, 30, 45}[i];
            QCOMPARE(consoleAmount(), amounts[i]);
            QTRY_COMPARE(text("frmMeter", "lblElapsed"), consoleElapsed());
            QCOMPARE(text("frmMeter", "lblAmount"), consoleAmount());
        }
    }

    // Paused, the PC locks and shows the banked time, which does not grow; resumed, the
    // meter goes on from it. Three stretches add up.
    void pauseAndResumeKeepTheBankedTime() {
        rig->assign();
        pass(20);
        pausePc(console().sessionParts(), 5);
        QTRY_VERIFY(visible("frmLock"));
        QVERIFY(!visible("frmMeter"));
        QCOMPARE(text("frmLock", "lblState"), u"Paused"_s);
        QCOMPARE(text("frmLock", "lblBanked"), u"Time used 00:20:00    P 10.00"_s);
        pass(15);
        QCOMPARE(text("frmLock", "lblBanked"), u"Time used 00:20:00    P 10.00"_s);

        resumePc(console().sessionParts(), 5);
        QTRY_VERIFY(visible("frmMeter"));
        QVERIFY(!visible("frmLock"));
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:20:00"_s);
        pass(10);
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:30:00"_s);
        QCOMPARE(consoleElapsed(), u"00:30:00"_s);

        pausePc(console().sessionParts(), 5);
        QTRY_COMPARE(text("frmLock", "lblBanked"), u"Time used 00:30:00    P 10.00"_s);
        resumePc(console().sessionParts(), 5);
        QTRY_VERIFY(visible("frmMeter"));
        pass(15);
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:45:00"_s);
        QCOMPARE(text("frmMeter", "lblAmount"), u"P 15.00"_s);
        QCOMPARE(consoleAmount(), u"P 15.00"_s);
    }

    // The board's limit shows as time left; five minutes before it the customer is
    // warned; at the limit the PC pauses and locks.
    void limitWarnsAndPauses() {
        rig->assign();
        chooseTimeLimit(console().board(), console().sessionParts(), 5, "10");
        QTRY_VERIFY(ClientRig::shown("frmMeter", "lblTimeLeft"));
        QCOMPARE(text("frmMeter", "lblTimeLeft"), u"00:10:00"_s);
        QVERIFY(!ClientRig::shown("frmMeter", "lblWarning"));
        pass(4);
        QTRY_COMPARE(text("frmMeter", "lblTimeLeft"), u"00:06:00"_s);
        QVERIFY(!ClientRig::shown("frmMeter", "lblWarning"));
        pass(1);
        QTRY_VERIFY(ClientRig::shown("frmMeter", "lblWarning"));
        QCOMPARE(text("frmMeter", "lblWarning"), u"Your time is almost up!"_s);
        QTRY_COMPARE(text("frmMeter", "lblTimeLeft"), u"00:05:00"_s);
        pass(5);
        QTRY_VERIFY(visible("frmLock"));
        QVERIFY(!visible("frmMeter"));
        QCOMPARE(text("frmLock", "lblState"), u"Paused"_s);
        QCOMPARE(text("frmLock", "lblBanked"), u"Time used 00:10:00    P 10.00"_s);
    }

    // Billed and saved at the console: the PC thanks the customer and locks.
    void billSavedLocksTheClient() {
        rig->assign();
        pass(45);
        const auto bill = stopSession(console().billingParts(), 5, 5);
        QVERIFY(bill);
        QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Saved);
        QTRY_VERIFY(visible("frmLock"));
        QVERIFY(!visible("frmMeter"));
        QCOMPARE(text("frmLock", "lblState"), u"Thank you!"_s);
        QCOMPARE(rig->client->session().screen(), CustomerSession::Screen::Thanks);
    }

    // A client started again mid-session (after a crash, or killed) takes up the session
    // it kept. The console pauses a session whose PC went away, and says so ("PAUS") when
    // the PC is back; a console that went away itself takes the session up running.
    void clientStartedAgain_data() {
        QTest::addColumn<bool>("paused");
        QTest::addColumn<bool>("consoleDown");  // the console away while the client starts
        QTest::addColumn<QByteArray>("damage"); // what the kept session is replaced by
        QTest::addColumn<QString>("banked");    // the lock's banked time, "" when not known
        QTest::newRow("paused: the banked time kept")
            << true << false << QByteArray() << "Time used 00:20:00    P 10.00";
        QTest::newRow("paused, kept session damaged")
            << true << false << QByteArray("screen=pau\x01sed\nbanked=") << "";
        QTest::newRow("paused, kept before this machine started")
            << true << false
            << QByteArray("boot=0\nscreen=paused\nstart=09:00:00\nbanked=1200000\nresumed=0\n")
            << "";
        // When the client stopped is not known; the resume brings the console's figure.
        QTest::newRow("running: paused by the console") << false << false << QByteArray() << "";
        QTest::newRow("running, console away meanwhile")
            << false << true << QByteArray() << "running";
    }
    void clientStartedAgain() {
        QFETCH(bool, paused);
        QFETCH(bool, consoleDown);
        QFETCH(QByteArray, damage);
        QFETCH(QString, banked);
        QTemporaryDir dir;
        rig->stateFile = dir.filePath("client.state");
        rig->client.reset();
        rig->startClient();
        rig->assign();
        pass(20);
        if (paused) {
            pausePc(console().sessionParts(), 5);
            QTRY_VERIFY(visible("frmLock"));
        }
        const quint16 port = console().server().port();
        if (consoleDown)
            rig->fx->console.reset();
        rig->client.reset();
        if (!consoleDown) // the console sees the PC go now, not when time has passed
            QTRY_VERIFY(!rig->fx->record(5).online);
        if (!damage.isNull()) {
            QFile file(rig->stateFile);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(damage);
        }
        rig->fx->clock.advance(5 * 60000);
        if (consoleDown) {
            // Started while the console is away: the meter goes on from where it stood.
            rig->client = std::make_unique<ClientApp>(rig->settings(), rig->fx->clock);
            rig->client->start();
            QVERIFY(visible("frmMeter"));
            QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:25:00"_s);
            rig->fx->open().startUp(port, rig->fx->iniPath());
            rig->waitOnline();
            pass(5);
            QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:30:00"_s);
            QCOMPARE(consoleElapsed(), u"00:30:00"_s);
            QCOMPARE(text("frmMeter", "lblAmount"), consoleAmount());
            return;
        }
        rig->startClient();
        QTRY_COMPARE(text("frmLock", "lblState"), u"Paused"_s);
        QVERIFY(visible("frmLock"));
        QVERIFY(!visible("frmMeter"));
        QCOMPARE(ClientRig::shown("frmLock", "lblBanked"), !banked.isEmpty());
        if (!banked.isEmpty())
            QCOMPARE(text("frmLock", "lblBanked"), banked);
        resumePc(console().sessionParts(), 5);
        QTRY_VERIFY(visible("frmMeter"));
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:20:00"_s);
    }

    // The console goes away and comes back: the client reconnects by itself, says which
    // PC it is, and shows what the console holds.
    void consoleGoesAway_data() {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("state");  // what the PC shows afterwards
        QTest::addColumn<QString>("banked"); // its banked time, when paused
        QTest::newRow("restarted with the session paused") << "pause, restart"
                                                           << "Paused"
                                                           << "Time used 00:20:00    P 10.00";
        QTest::newRow("restarted with the session running") << "restart"
                                                            << "running"
                                                            << "";
        // The console pauses a session whose connection is lost; the client learns it on
        // reconnecting, from "PAUS".
        QTest::newRow("connection lost, console stays") << "drop"
                                                        << "Paused"
                                                        << "Time used 00:20:00    P 10.00";
        QTest::newRow("client started afresh while paused") << "pause, restart, new client"
                                                            << "Paused"
                                                            << "";
    }
    void consoleGoesAway() {
        QFETCH(QString, how);
        QFETCH(QString, state);
        QFETCH(QString, banked);
        rig->assign();
        pass(20);
        if (how.contains("pause")) {
            pausePc(console().sessionParts(), 5);
            QTRY_VERIFY(visible("frmLock"));
        }
        const int socketBefore = console().control().socketOfPc(5);
        if (how.contains("restart")) {
            rig->restartConsole();
            QTRY_VERIFY(!rig->client->link().isOnline());
            // Away for ten minutes: a running meter keeps counting meanwhile.
            rig->fx->clock.advance(10 * 60000);
            if (state == "running")
                QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:30:00"_s);
        } else {
            rig->client->terminal().abort();
            QTRY_COMPARE(rig->fx->record(5).state, TerminalState::Paused);
            // The client's own count runs on until it hears of the pause; the console's
            // figure is the time at the loss.
            rig->fx->clock.advance(3 * 60000);
        }
        if (how.contains("new client")) {
            rig->client.reset();
            rig->startClient();
        }
        rig->waitOnline();
        QVERIFY(console().control().socketOfPc(5) != -1);
        if (!how.contains("restart"))
            QVERIFY(console().control().socketOfPc(5) != socketBefore);
        if (state == "running") {
            QVERIFY(visible("frmMeter"));
            pass(15);
            QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:45:00"_s);
            QCOMPARE(consoleElapsed(), u"00:45:00"_s);
            QCOMPARE(text("frmMeter", "lblAmount"), consoleAmount());
            return;
        }
        QTRY_VERIFY(visible("frmLock"));
        QTRY_COMPARE(text("frmLock", "lblState"), state);
        QCOMPARE(text("frmLock", "lblBanked"), banked);
        QCOMPARE(ClientRig::shown("frmLock", "lblBanked"), !banked.isEmpty());
        // Resumed, the console's banked time is the meter's.
        resumePc(console().sessionParts(), 5);
        QTRY_VERIFY(visible("frmMeter"));
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), consoleElapsed());
        QCOMPARE(text("frmMeter", "lblStartTime"), u"Started 09:00:00"_s);
    }
};

QTEST_MAIN(ClientTest)
#include "tst_client.moc"
