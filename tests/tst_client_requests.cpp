// What the terminal client does with each message from the console, and with its requests
// for this machine: processes, ending one, a picture of the screens, log off, restart, shut
// down; and the customer talking to the operator. Real console and loopback connections.
#include "client_widgets.h"
#include "server/operator_commands.h"
#include "support/client_rig.h"
#include "support/files.h"

#include <QImage>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtEndian>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using R = ClientRig;

class ClientRequestsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ClientRig> rig;

    Console& console() { return rig->console(); }
    bool send(const QByteArray& message) { return console().control().sendToPc(5, message); }

private Q_SLOTS:
    void init() {
        rig = std::make_unique<ClientRig>();
        rig->startConsole();
    }
    void cleanup() { rig.reset(); }

    // With no console to reach: tries again after 1, 2, 4, ... seconds, saying where.
    void retriesWithAGrowingDelay() {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        rig->port = closed.serverPort();
        closed.close(); // nothing listens there now
        rig->client = std::make_unique<ClientApp>(rig->settings(), rig->fx->clock);
        rig->client->start();
        QCOMPARE(R::text("frmLock", "lblConnection"),
                 u"PC 5 · connecting to the console at 127.0.0.1:%1…"_s.arg(rig->port));
        QTRY_COMPARE_WITH_TIMEOUT(rig->client->link().attempts(), 3, 5000); // at 0, 1 and 3 s
        QTRY_COMPARE(rig->client->link().nextDelayMs(), 8000);
        QTest::qWait(2500);
        QCOMPARE(rig->client->link().attempts(), 3);
        QVERIFY(R::visible("frmLock"));
    }

    void everyMessageShows_data() {
        QTest::addColumn<QByteArrayList>("messages");
        QTest::addColumn<QString>("window");  // the one shown: frmLock, frmMeter or none
        QTest::addColumn<QString>("control"); // window.label
        QTest::addColumn<QString>("shows");   // the label's text; "hidden" when not shown
        const auto row = [](const char* name, const QByteArrayList& messages, const char* window,
                            const char* control, const QString& shows) {
            QTest::newRow(name) << messages << window << control << shows;
        };
        const QByteArray start = "SMTR 10:15:00";
        row("start", {start}, "frmMeter", "frmMeter.lblStartTime", "Started 10:15:00");
        row("pause with the banked time", {start, "PAUS 3723000"}, "frmLock", "frmLock.lblBanked",
            "Time used 01:02:03    P 20.68");
        row("paused, time unknown", {"PAUS"}, "frmLock", "frmLock.lblState", "Paused");
        row("paused, time unknown, no figures", {"PAUS"}, "frmLock", "frmLock.lblBanked", "hidden");
        row("resume with the banked time", {start, "PAUS 65000", "PAUX 10:15:00", "SBTK @65000"},
            "frmMeter", "frmMeter.lblElapsed", "00:01:05");
        row("time limit", {start, "TLMT 90"}, "frmMeter", "frmMeter.lblTimeLeft", "01:30:00");
        row("open time again", {start, "TLMT 90", "TLMT U"}, "frmMeter", "frmMeter.lblTimeLeft",
            "hidden");
        row("warning", {start, "TLMT 10", "WARN Just Warn"}, "frmMeter", "frmMeter.lblWarning",
            "Your time is almost up!");
        row("warning ends with a longer limit", {start, "TLMT 10", "WARN Just Warn", "TLMT 60"},
            "frmMeter", "frmMeter.lblWarning", "hidden");
        row("unlocked for free use", {"FREE Dummy Text"}, "", "", "");
        row("locked again", {"FREE Dummy Text", "XFRE Dummy Text"}, "frmLock", "frmLock.lblState",
            "This PC is locked");
        row("locked during a session", {start, "XFRE Dummy Text"}, "frmLock", "frmLock.lblState",
            "This PC is locked");
        row("billed", {start, "CMTR", "OFPS"}, "frmLock", "frmLock.lblState", "Thank you!");
        row("operator's text while locked", {"TEXT Your PC is ready"}, "frmLock",
            "frmLock.lblOperatorText", "Your PC is ready");
        row("operator's text in a session", {start, "TEXT 10 minutes left, José"}, "frmMeter",
            "frmMessage.lblOperatorText", "10 minutes left, José");
    }
    void everyMessageShows() {
        QFETCH(QByteArrayList, messages);
        QFETCH(QString, window);
        QFETCH(QString, control);
        QFETCH(QString, shows);
        rig->startClient();
        for (const QByteArray& m : messages)
            QVERIFY(send(m));
        // The last message has been handled once the client's session says so.
        const auto& inbox = rig->client->terminal().inbox();
        QTRY_COMPARE(inbox.value(inbox.size() - 1), messages.last());
        for (const QString& w : {u"frmLock"_s, u"frmMeter"_s})
            QCOMPARE(R::visible(w), w == window);
        QCOMPARE(R::visible("frmMessage"), control.startsWith(u"frmMessage"_s));
        if (control.isEmpty())
            return;
        const QString at = control.section(u'.', 0, 0), label = control.section(u'.', 1);
        QCOMPARE(R::shown(at, label), shows != u"hidden"_s);
        if (shows != u"hidden"_s)
            QCOMPARE(R::text(at, label), shows);
    }

    // The customer talks to the operator: a call for the log-on dialog, a note, a reply.
    void talksWithTheOperator() {
        rig->startClient();
        QSignalSpy called(&console().terminalMessages(), &TerminalMessages::logOnDialogRequested);
        R::click("frmLock", "cmdCallOperator");
        QTRY_COMPARE(called.count(), 1);
        QTRY_COMPARE(R::text("frmLock", "lblCallState"),
                     u"The operator has been called. Please wait."_s);

        R::type("frmLock", "txtNote", "Headset broken on PC 5");
        R::click("frmLock", "cmdSendNote");
        QCOMPARE(R::text("frmLock", "lblNoteState"), u"Sent to the operator."_s);
        QTRY_COMPARE(rig->fx->prompts.texts("notice"), QStringList{"EMT Headset broken on PC 5"});

        QVERIFY(send(Msg::text("Which headset?")));
        QTRY_COMPARE(R::text("frmLock", "lblOperatorText"), u"Which headset?"_s);
        R::type("frmLock", "txtReply", "The left one");
        R::click("frmLock", "cmdReply");
        QTRY_COMPARE(R::text("frmLock", "lblReplyState"), u"Delivered."_s);
        QVERIFY(console().messageLog().text().startsWith(u"TXT The left one\r"_s));
    }

    // Log off, restart and shut down run loginctl or systemctl only where the settings
    // allow it; either way the customer is told.
    void powerRequests_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<bool>("allowed");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("notice");
        const passwd* pw = getpwuid(getuid());
        const QString user =
            pw ? QString::fromLocal8Bit(pw->pw_name) : qEnvironmentVariable("USER");
        using M = Maintenance;
        const auto row = [](const char* name, M kind, bool allowed, const QString& command,
                            const char* notice) {
            QTest::newRow(name) << int(kind) << allowed << command << notice;
        };
        row("log off, not allowed", M::LogOff, false, "", "The operator asked this PC to log off.");
        row("restart, not allowed", M::Reboot, false, "", "The operator asked this PC to restart.");
        row("shut down, not allowed", M::ShutDown, false, "",
            "The operator asked this PC to shut down.");
        row("log off", M::LogOff, true, "loginctl terminate-user " + user,
            "The operator is logging this PC off.");
        row("restart", M::Reboot, true, "systemctl reboot", "The operator is restarting this PC.");
        row("shut down", M::ShutDown, true, "systemctl poweroff",
            "The operator is shutting this PC down.");
    }
    void powerRequests() {
        QFETCH(int, kind);
        QFETCH(bool, allowed);
        QFETCH(QString, command);
        QFETCH(QString, notice);
        rig->startClient(allowed);
        maintainPc(console().sessionParts(), 5, Maintenance(kind));
        QTRY_COMPARE(R::text("frmLock", "lblOperatorText"), notice);
        QCOMPARE(rig->commands, command.isEmpty() ? QStringList() : QStringList{command});
    }

    // "RQPR" is answered with this user's processes, the client among them.
    void listsThisUsersProcesses() {
        rig->startClient();
        QSignalSpy listed(&console().terminalMessages(), &TerminalMessages::processesReceived);
        QVERIFY(send(Msg::requestProcesses()));
        QTRY_COMPARE(listed.count(), 1);
        const QStringList items = listed.at(0).at(0).toStringList();
        QVERIFY(items.contains(u"%1:tst_client_requ"_s.arg(QCoreApplication::applicationPid())));
        for (const QString& item : items) {
            struct stat st {};
            const QByteArray dir = "/proc/" + item.section(':', 0, 0).toLatin1();
            if (::stat(dir.constData(), &st) == 0) // not gone meanwhile
                QVERIFY2(st.st_uid == getuid(), qPrintable(item));
        }
    }

    // "KLPR " ends this user's processes of that name, and only those.
    void endsAProcessByName() {
        rig->startClient();
        QTemporaryDir dir;
        const QString name = u"tqv%1"_s.arg(QCoreApplication::applicationPid() % 100000);
        const QString program = dir.filePath(name), other = dir.filePath(name + u"x"_s);
        QVERIFY(QFile::copy(u"/bin/sleep"_s, program) && QFile::copy(u"/bin/sleep"_s, other));
        QProcess victim, bystander;
        victim.start(program, {u"60"_s});
        bystander.start(other, {u"60"_s});
        QVERIFY(victim.waitForStarted() && bystander.waitForStarted());
        QVERIFY(send(Msg::killProcess(name)));
        // The client answers in this process's event loop: wait without blocking it.
        QTRY_COMPARE_WITH_TIMEOUT(victim.state(), QProcess::NotRunning, 10000);
        QCOMPARE(victim.exitStatus(), QProcess::CrashExit); // ended by a signal
        QCOMPARE(bystander.state(), QProcess::Running);
        bystander.kill();
        bystander.waitForFinished();
    }

    // "SNPS" brings a bitmap of the screens, which the console stores whole.
    void snapshotReachesTheConsoleWhole() {
        rig->startClient();
        QSignalSpy done(&console().snapshots(), &SnapshotReceiver::received);
        QVERIFY(console().snapshots().request(5));
        QVERIFY(done.wait(20000));
        const QByteArray file = readFile(done.at(0).at(0).toString());
        QVERIFY(file.startsWith("BM6"));
        QVERIFY(file.endsWith("Close"));
        const QByteArray bitmap = file.chopped(5);
        // The file's own size field: every piece arrived, none twice.
        QCOMPARE(qFromLittleEndian<quint32>(bitmap.constData() + 2), quint32(bitmap.size()));
        const QImage picture = QImage::fromData(bitmap, "BMP");
        QCOMPARE(picture.size(), QGuiApplication::primaryScreen()->virtualGeometry().size());
        // It is the lock screen the customer sees, not a drawn stand-in.
        const QColor night = QColor::fromString(QLatin1String(ClientWidgets::Night));
        QCOMPARE(picture.pixelColor(2, picture.height() / 2), night);
        QCOMPARE(done.at(0).at(1).toString(), u" from IP : 127.0.0.5"_s);
    }
};

QTEST_MAIN(ClientRequestsTest)
#include "tst_client_requests.moc"
