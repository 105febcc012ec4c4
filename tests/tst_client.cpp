// The terminal client against the real console: a member's log-in, the meter beside the
// console's own running amount, pause and resume, the time limit, the bill, and the
// console going away. Real loopback connections, the client's windows offscreen.
#include "billing/charge.h"
#include "billing/settlement.h"
#include "member_form.h"
#include "server/operator_commands.h"
#include "support/client_rig.h"
#include "support/files.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using R = ClientRig;

class ClientTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ClientRig> rig;

    Console& console() { return rig->console(); }
    static QString text(const QString& window, const QString& name) {
        return R::text(window, name);
    }
    void pause() {
        pausePc(console().sessionParts(), 5);
        QTRY_VERIFY(R::showing("frmLock"));
    }
    // The meter runs on in step with the console's own figures.
    void expectRunning(int minutes, const QString& elapsed) {
        QVERIFY(R::showing("frmMeter"));
        rig->pass(minutes);
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), elapsed);
        QCOMPARE(rig->consoleElapsed(), elapsed);
        QCOMPARE(text("frmMeter", "lblAmount"), rig->consoleAmount());
    }
    // Paused, the banked time shown when known; resumed, the meter goes on from the console's.
    void expectPausedThenResume(const QString& banked) {
        QTRY_VERIFY(R::showing("frmLock"));
        QTRY_COMPARE(text("frmLock", "lblState"), u"Paused"_s);
        QCOMPARE(R::shown("frmLock", "lblBanked"), !banked.isEmpty());
        if (!banked.isEmpty())
            QCOMPARE(text("frmLock", "lblBanked"), banked);
        resumePc(console().sessionParts(), 5);
        QTRY_VERIFY(R::showing("frmMeter"));
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:20:00"_s);
        QCOMPARE(rig->consoleElapsed(), u"00:20:00"_s);
        QCOMPARE(text("frmMeter", "lblStartTime"), u"Started 09:00:00"_s);
    }

private Q_SLOTS:
    void init() {
        rig = std::make_unique<ClientRig>();
        rig->startConsole();
        rig->startClient();
    }
    void cleanup() { rig.reset(); }

    void startsLockedAndOnLine() {
        QVERIFY(R::showing("frmLock"));
        QCOMPARE(R::window("frmLock")->geometry(), QGuiApplication::primaryScreen()->geometry());
        QCOMPARE(text("frmLock", "lblState"), u"This PC is locked"_s);
        QCOMPARE(text("frmLock", "lblRates"), u"P 20.00 an hour\nMinimum charge P 10.00"_s);
        QVERIFY(text("frmLock", "lblProducts").contains(QRegularExpression(u"Chips.*P 15\\.50"_s)));
        QCOMPARE(text("frmLock", "lblConnection"), u"PC 5 · connected to the console"_s);
        // Offscreen there is no X server to grab from; the lock still shows.
        QVERIFY(!rig->client->lockWindow().holdsInput());
    }

    void memberLogIn_data() {
        QTest::addColumn<QStringList>("typed"); // id, last name, first name
        QTest::addColumn<QString>("result");    // the form's answer; "" when the session starts
        const auto row = [](const char* name, const QStringList& typed, const QString& result) {
            QTest::newRow(name) << typed << result;
        };
        const QString refused =
            "Member ID or name not recognised. Please check them, or ask the operator.";
        row("as registered", {"M-0001", "Dela Cruz", "Juan"}, "");
        row("in any letter case, with blanks", {"m-0001", " dela cruz ", "JUAN "}, "");
        row("wrong first name", {"M-0001", "Dela Cruz", "Jose"}, refused);
        row("unknown id", {"M-9999", "Dela Cruz", "Juan"}, refused);
        row("in use on another PC", {"M-0002", "Reyes", "Ana"},
            "Your session could not be started (is your ID in use on another PC?). Please ask "
            "the operator.");
        row("a name left out", {"M-0001", "", "Juan"},
            "Please fill in your member ID, last name and first name.");
        row("a semicolon in a name", {"M-0001", "Dela Cruz;6", "Juan"},
            "A member ID or name cannot contain \":\" or \";\".");
    }
    void memberLogIn() {
        QFETCH(QStringList, typed);
        QFETCH(QString, result);
        QVERIFY(logOnPc(console().sessionParts(), "6", "M-0002", "REYES, ANA", -1));
        for (int i = 0; i < 3; ++i)
            R::type("frmLock", QStringList{"txtMemberId", "txtLastName", "txtFirstName"}[i],
                    typed[i]);
        R::click("frmLock", "cmdLogIn");
        if (result.isEmpty()) {
            QTRY_VERIFY(R::showing("frmMeter"));
            QCOMPARE(rig->fx->record(5).cid, u"M-0001"_s); // as the register spells it
            QCOMPARE(text("frmMeter", "lblStartTime"), u"Started 09:00:00"_s);
            return;
        }
        QTRY_COMPARE(text("frmLock", "lblLogInResult"), result);
        QVERIFY(R::showing("frmLock"));
        QVERIFY(!rig->fx->record(5).logged);
    }

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
        QVERIFY(!R::shown("frmMeter", "lblTimeLeft")); // open time
        const int at[] = {10, 30, 45};
        for (int i = 0; i < 3; ++i) {
            expectRunning(at[i] - (i ? at[i - 1] : 0), formatElapsed(at[i] * 60000));
            QCOMPARE(rig->consoleAmount(), amounts[i]);
        }
    }

    // Paused, the lock shows the banked time, which does not grow; three stretches add up.
    void pauseAndResumeKeepTheBankedTime() {
        rig->assign();
        rig->pass(20);
        pause();
        QCOMPARE(text("frmLock", "lblState"), u"Paused"_s);
        QCOMPARE(text("frmLock", "lblBanked"), u"Time used 00:20:00    P 10.00"_s);
        rig->pass(15);
        QCOMPARE(text("frmLock", "lblBanked"), u"Time used 00:20:00    P 10.00"_s);
        resumePc(console().sessionParts(), 5);
        QTRY_VERIFY(R::showing("frmMeter"));
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:20:00"_s);
        expectRunning(10, u"00:30:00"_s);
        pause();
        QTRY_COMPARE(text("frmLock", "lblBanked"), u"Time used 00:30:00    P 10.00"_s);
        resumePc(console().sessionParts(), 5);
        QTRY_VERIFY(R::showing("frmMeter"));
        expectRunning(15, u"00:45:00"_s);
        QCOMPARE(rig->consoleAmount(), u"P 15.00"_s);
    }

    // Time left counts down; the warning comes five minutes before the limit, which pauses.
    void limitWarnsAndPauses() {
        rig->assign();
        chooseTimeLimit(console().board(), console().sessionParts(), 5, "10");
        const struct {
            int minutes;
            const char* left;
            bool warned;
        } steps[] = {{0, "00:10:00", false}, {4, "00:06:00", false}, {1, "00:05:00", true}};
        for (const auto& step : steps) {
            rig->pass(step.minutes);
            QTRY_VERIFY(R::shown("frmMeter", "lblTimeLeft"));
            QTRY_COMPARE(text("frmMeter", "lblTimeLeft"), QString::fromLatin1(step.left));
            QTRY_COMPARE(R::shown("frmMeter", "lblWarning"), step.warned);
        }
        QCOMPARE(text("frmMeter", "lblWarning"), u"Your time is almost up!"_s);
        rig->pass(5);
        QTRY_VERIFY(R::showing("frmLock"));
        QCOMPARE(text("frmLock", "lblState"), u"Paused"_s);
        QCOMPARE(text("frmLock", "lblBanked"), u"Time used 00:10:00    P 10.00"_s);
    }

    void billSavedLocksTheClient() {
        rig->assign();
        rig->pass(45);
        const auto bill = stopSession(console().billingParts(), 5, 5);
        QVERIFY(bill);
        QCOMPARE(saveBill(console().billingParts(), *bill), SaveOutcome::Saved);
        QTRY_VERIFY(R::showing("frmLock"));
        QCOMPARE(text("frmLock", "lblState"), u"Thank you!"_s);
        QCOMPARE(rig->client->session().screen(), CustomerSession::Screen::Thanks);
    }

    // Started again mid-session, the client takes up the session it kept. The console pauses
    // a session whose PC went away and says so ("PAUS") when it is back; with the console
    // away too, the session goes on running.
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
        QTest::newRow("running, console away meanwhile") << false << true << QByteArray() << "";
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
        rig->pass(20);
        if (paused)
            pause();
        if (consoleDown)
            rig->fx->console.reset();
        rig->client.reset();
        if (!consoleDown) // seen at once, not when time has passed
            QTRY_VERIFY(!rig->fx->record(5).online);
        if (!damage.isNull())
            QVERIFY(writeFile(rig->stateFile, damage));
        rig->fx->clock.advance(5 * 60000);
        if (!consoleDown) {
            rig->startClient();
            return expectPausedThenResume(banked);
        }
        rig->client = std::make_unique<ClientApp>(rig->settings(), rig->fx->clock);
        rig->client->start();
        QVERIFY(R::showing("frmMeter"));
        QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:25:00"_s);
        rig->restartConsole();
        rig->waitOnline();
        expectRunning(5, u"00:30:00"_s);
    }

    // The console goes away and comes back: the client reconnects by itself, says which PC
    // it is, and shows what the console holds.
    void consoleGoesAway_data() {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("banked"); // when paused afterwards, else "running"
        QTest::newRow("restarted with the session paused") << "pause, restart"
                                                           << "Time used 00:20:00    P 10.00";
        QTest::newRow("restarted with the session running") << "restart"
                                                            << "running";
        // Paused by the console on the lost connection; the client learns it from "PAUS".
        QTest::newRow("connection lost, console stays") << "drop"
                                                        << "Time used 00:20:00    P 10.00";
        QTest::newRow("client started afresh while paused") << "pause, restart, new client"
                                                            << "";
    }
    void consoleGoesAway() {
        QFETCH(QString, how);
        QFETCH(QString, banked);
        rig->assign();
        rig->pass(20);
        if (how.contains("pause"))
            pause();
        const int socketBefore = console().control().socketOfPc(5);
        if (how.contains("restart")) {
            rig->restartConsole();
            QTRY_VERIFY(!rig->client->link().isOnline());
            rig->fx->clock.advance(10 * 60000); // a running meter counts on meanwhile
            if (banked == "running")
                QTRY_COMPARE(text("frmMeter", "lblElapsed"), u"00:30:00"_s);
        } else {
            rig->client->terminal().abort();
            QTRY_COMPARE(rig->fx->record(5).state, TerminalState::Paused);
            // The client counts on until it hears; the console's figure stays at the loss.
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
        if (banked == "running")
            return expectRunning(15, u"00:45:00"_s);
        expectPausedThenResume(banked);
    }
};

QTEST_MAIN(ClientTest)
#include "tst_client.moc"
