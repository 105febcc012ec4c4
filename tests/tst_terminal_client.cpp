#include "terminal_client.h"

#include "server/protocol.h"
#include "server/terminal_server.h"
#include "support/console_fixture.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {
QByteArray joined(const QList<QByteArray>& list) {
    return list.join('|');
}
} // namespace

class TerminalClientTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void splitsWhatArrives_data();
    void splitsWhatArrives();
    void everyConsoleMessageSurvivesBeingJoined();
    void nothingIsLostOrInvented_data();
    void nothingIsLostOrInvented();
    void bitmapSizeFieldBeginsWithSix_data();
    void bitmapSizeFieldBeginsWithSix();
    void snapshotPieces_data();
    void snapshotPieces();
    void messagesSentBackToBackArriveApart();
    void answersProcessRequestWithItsOwnProcesses();
    void answersSnapshotRequestWithABitmap();
    void machineRequestsAreOnlyReportedUnlessObeyed_data();
    void machineRequestsAreOnlyReportedUnlessObeyed();
    void obeyedKillEndsTheNamedProcess();

private:
    // A console and one identified terminal on it.
    struct Pair {
        ConsoleFixture fx;
        TerminalClient client;
        bool up(int pc) {
            fx.start();
            client.setPcNumber(pc);
            client.connectToConsole(QStringLiteral("127.0.0.1"), fx.console->server().port());
            if (client.waitFor("ACPT").isEmpty())
                return false;
            client.identify();
            return QTest::qWaitFor([&] { return fx.console->server().SocketOfPc(pc) > 0; });
        }
    };
};

void TerminalClientTest::splitsWhatArrives_data() {
    QTest::addColumn<QByteArrayList>("reads");
    QTest::addColumn<QByteArrayList>("expected");
    QTest::addColumn<QByteArray>("left");

    using L = QByteArrayList;
    QTest::newRow("close pair") << L{"CMTROFPS"} << L{"CMTR", "OFPS"} << QByteArray();
    QTest::newRow("start then reply")
        << L{"SMTR 09:00:00Log Successful"} << L{"SMTR 09:00:00", "Log Successful"} << QByteArray();
    QTest::newRow("pause, resume, bank, limit")
        << L{"PAUS 123456PAUX 10:11:12SBTK @123456TLMT U"}
        << L{"PAUS 123456", "PAUX 10:11:12", "SBTK @123456", "TLMT U"} << QByteArray();
    QTest::newRow("bare pause before a word") << L{"PAUSACPT"} << L{"PAUS", "ACPT"} << QByteArray();
    QTest::newRow("bare pause alone") << L{"PAUS"} << L{"PAUS"} << QByteArray();
    QTest::newRow("negative bank") << L{"SBTK @-5INVD"} << L{"SBTK @-5", "INVD"} << QByteArray();
    QTest::newRow("product list then reply")
        << L{"RAVP Coke @ 15.00;Weekend pass @ 5.00;EndMSGR"}
        << L{"RAVP Coke @ 15.00;Weekend pass @ 5.00;End", "MSGR"} << QByteArray();
    QTest::newRow("product named End-something")
        << L{"RAVP Endive @ 2.00;EndCMTR"} << L{"RAVP Endive @ 2.00;End", "CMTR"} << QByteArray();
    QTest::newRow("empty list") << L{"RAVP EndOFPS"} << L{"RAVP End", "OFPS"} << QByteArray();
    QTest::newRow("list across reads") << L{"RAVP None @ 0", ".00;", "En", "dACPT"}
                                       << L{"RAVP None @ 0.00;End", "ACPT"} << QByteArray();
    QTest::newRow("list not finished yet")
        << L{"MSGRRAVP a;b;"} << L{"MSGR"} << QByteArray("RAVP a;b;");
    QTest::newRow("free text up to the next word")
        << L{"TEXT hello thereCMTROFPS"} << L{"TEXT hello there", "CMTR", "OFPS"} << QByteArray();
    QTest::newRow("command word inside free text")
        << L{"TEXT please PAUSE the game nowCMTR"} << L{"TEXT please PAUSE the game now", "CMTR"}
        << QByteArray();
    QTest::newRow("unlock then limit")
        << L{"FREE Dummy TextTLMT 60"} << L{"FREE Dummy Text", "TLMT 60"} << QByteArray();
    QTest::newRow("rates then kill")
        << L{"SRPH 20.:30.;10.KLPR notepad.exeSNPS"}
        << L{"SRPH 20.:30.;10.", "KLPR notepad.exe", "SNPS"} << QByteArray();
    QTest::newRow("long replies") << L{"Form logger loadedFailed LogINVDLog Successful"}
                                  << L{"Form logger loaded", "Failed Log", "INVD", "Log Successful"}
                                  << QByteArray();
    QTest::newRow("time across reads")
        << L{"SM", "TR 09:0", "0:00CMTR"} << L{"SMTR 09:00:00", "CMTR"} << QByteArray();
    QTest::newRow("word cut at the end waits") << L{"ACPTOF"} << L{"ACPT"} << QByteArray("OF");
    QTest::newRow("garbage before a word")
        << L{QByteArray("\x00\x01zz", 4) + "ACPT"} << L{QByteArray("\x00\x01zz", 4), "ACPT"}
        << QByteArray();
    QTest::newRow("garbage alone") << L{"hello"} << L{"hello"} << QByteArray();
    QTest::newRow("garbage keeps a cut word") << L{"xyzAC", "PT"} << L{"xyzAC"} << QByteArray("PT");
    QTest::newRow("started word that turns to garbage")
        << L{"AC", "XY"} << L{"ACXY"} << QByteArray();
}

void TerminalClientTest::splitsWhatArrives() {
    QFETCH(QByteArrayList, reads);
    QFETCH(QByteArrayList, expected);
    QFETCH(QByteArray, left);
    QByteArray pending;
    QByteArrayList got;
    for (const QByteArray& r : reads) {
        pending += r;
        got += TerminalClient::SplitMessages(pending);
    }
    QCOMPARE(joined(got), joined(expected));
    QCOMPARE(pending, left);
}

void TerminalClientTest::everyConsoleMessageSurvivesBeingJoined() {
    // The whole catalogue, each message followed by every other one.
    const QByteArrayList catalogue = {
        Msg::ACPT(),
        Msg::SMTR(QStringLiteral("13:05:59")),
        Msg::PAUS(987654),
        Msg::PAUSBare(),
        Msg::PAUX(QStringLiteral("07:00:01")),
        Msg::SBTK(42),
        Msg::TLMT(QStringLiteral("90")),
        Msg::WARN(QStringLiteral("5 minutes left")),
        Msg::FREE(),
        Msg::XFRE(),
        Msg::CMTR(),
        Msg::OFPS(),
        Msg::LGOF(),
        Msg::RSTR(),
        Msg::PTAY(),
        Msg::TEXT(QStringLiteral("Your time is almost up")),
        Msg::RQPR(),
        Msg::KLPR(QStringLiteral("game.exe")),
        Msg::SNPS(),
        Msg::SRPH(20, 30, 10),
        Msg::MSGR(),
        Msg::INVD(),
        Msg::LogSuccessful(),
        Msg::FailedLog(),
        Msg::FormLoggerLoaded(),
        Msg::RAVP(QStringLiteral("Coke @ 15.00;End")),
    };
    for (const QByteArray& first : catalogue)
        for (const QByteArray& second : catalogue) {
            QByteArray pending = first + second;
            const QByteArrayList got = TerminalClient::SplitMessages(pending);
            QVERIFY2(got == (QByteArrayList{first, second}) && pending.isEmpty(),
                     (first + " + " + second + " came as " + joined(got)).constData());
        }
}

void TerminalClientTest::nothingIsLostOrInvented_data() {
    QTest::addColumn<quint32>("seed");
    for (quint32 seed : {1u, 2u, 3u, 42u, 1066u})
        QTest::addRow("seed %u", seed) << seed;
}

void TerminalClientTest::nothingIsLostOrInvented() {
    // Whatever arrives, cut at random places: the messages put back together are the
    // stream exactly, with only an unfinished tail left waiting.
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    const QByteArrayList parts = {"ACPT",
                                  "SMTR 09:00:00",
                                  "PAUS",
                                  "PAUS 12",
                                  "SBTK @7",
                                  "RAVP a;b;End",
                                  "RAVP End",
                                  "TEXT hi",
                                  "CMTR",
                                  "OFPS",
                                  "En",
                                  "SM",
                                  "RAVP",
                                  "@",
                                  ";",
                                  " ",
                                  QByteArray("\0\xff", 2)};
    QByteArray stream;
    for (int i = 0; i < 400; ++i)
        stream += parts[random.bounded(int(parts.size()))];
    QByteArray pending;
    QByteArray rebuilt;
    for (qsizetype at = 0; at < stream.size();) {
        const qsizetype n = qMin<qsizetype>(stream.size() - at, 1 + random.bounded(40));
        pending += stream.mid(at, n);
        at += n;
        const QByteArrayList got = TerminalClient::SplitMessages(pending);
        for (const QByteArray& m : got) {
            QVERIFY(!m.isEmpty());
            rebuilt += m;
        }
    }
    QCOMPARE(rebuilt + pending, stream);
}

void TerminalClientTest::bitmapSizeFieldBeginsWithSix_data() {
    QTest::addColumn<QSize>("size");
    QTest::newRow("1x1") << QSize(1, 1);
    QTest::newRow("odd width") << QSize(37, 11);
    QTest::newRow("640x480") << QSize(640, 480);
    QTest::newRow("1366x768") << QSize(1366, 768);
    QTest::newRow("1000x3") << QSize(1000, 3);
}

void TerminalClientTest::bitmapSizeFieldBeginsWithSix() {
    QFETCH(QSize, size);
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(10, 20, 30));
    image.setPixelColor(size.width() - 1, 0, QColor(200, 100, 50));
    const QByteArray bmp = TerminalClient::EncodeBitmap(image);
    QVERIFY(bmp.startsWith("BM6"));
    const quint32 sizeField =
        quint8(bmp[2]) | quint8(bmp[3]) << 8 | quint8(bmp[4]) << 16 | quint32(quint8(bmp[5])) << 24;
    QCOMPARE(qsizetype(sizeField), bmp.size());
    const QImage back = QImage::fromData(bmp, "BMP");
    QCOMPARE(back.size(), size);
    if (size.width() > 1)
        QCOMPARE(back.pixelColor(0, size.height() - 1), QColor(10, 20, 30));
    QCOMPARE(back.pixelColor(size.width() - 1, 0), QColor(200, 100, 50));
}

void TerminalClientTest::snapshotPieces_data() {
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("pieces");
    QTest::newRow("smaller than a piece") << 100 << 1;
    QTest::newRow("exactly one piece") << 8192 << 1;
    QTest::newRow("one byte over") << 8193 << 2;
    QTest::newRow("three pieces") << 20000 << 3;
}

void TerminalClientTest::snapshotPieces() {
    QFETCH(int, bytes);
    QFETCH(int, pieces);
    QByteArray bitmap(bytes, '\0');
    for (int i = 0; i < bytes; ++i)
        bitmap[i] = char(i * 7);
    const QByteArrayList got = TerminalClient::SnapshotPieces(bitmap);
    QCOMPARE(got.size(), pieces);
    for (int i = 0; i + 1 < got.size(); ++i)
        QCOMPARE(got[i].size(), TerminalClient::SnapshotPieceSize);
    QVERIFY(got.last().endsWith("Close"));
    QCOMPARE(got.join(), bitmap + "Close");
}

void TerminalClientTest::messagesSentBackToBackArriveApart() {
    Pair pair;
    QVERIFY(pair.up(4));
    TerminalServer& server = pair.fx.console->server();
    // Written in one go, they reach the terminal as one read.
    QVERIFY(server.SendToPc(4, Msg::CMTR()));
    QVERIFY(server.SendToPc(4, Msg::OFPS()));
    QVERIFY(server.SendToPc(4, Msg::TEXT(QStringLiteral("closing time"))));
    QVERIFY(server.SendToPc(4, Msg::PAUS(5000)));
    QCOMPARE(pair.client.waitFor("PAUS"), QByteArray("PAUS 5000"));
    QCOMPARE(pair.client.inbox(), (QByteArrayList{"CMTR", "OFPS", "TEXT closing time"}));
}

void TerminalClientTest::answersProcessRequestWithItsOwnProcesses() {
    Pair pair;
    QVERIFY(pair.up(2));
    TerminalServer& server = pair.fx.console->server();
    QSignalSpy spy(&server, &TerminalServer::processesReceived);
    QVERIFY(server.SendToPc(2, Msg::RQPR()));
    QVERIFY(spy.wait());
    const QStringList items = spy.at(0).at(0).toStringList();
    QFile comm(QStringLiteral("/proc/self/comm"));
    QVERIFY(comm.open(QIODevice::ReadOnly));
    const QString self = QString::number(QCoreApplication::applicationPid()) + QLatin1Char(':') +
                         QString::fromUtf8(comm.readAll()).trimmed();
    QVERIFY2(items.contains(self), qPrintable(self));
    for (const QString& item : items)
        QVERIFY2(item.indexOf(QLatin1Char(':')) > 0, qPrintable(item));
}

void TerminalClientTest::answersSnapshotRequestWithABitmap() {
    Pair pair;
    QVERIFY(pair.up(3));
    TerminalServer& server = pair.fx.console->server();
    QSignalSpy done(&server, &TerminalServer::snapshotReceived);
    QVERIFY(server.SendToPc(3, Msg::SNPS()));
    QVERIFY(done.wait(20000));
    QFile file(done.at(0).at(0).toString());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    QVERIFY(bytes.startsWith("BM6"));
    QVERIFY(bytes.endsWith("Close"));
    bytes.chop(5);
    QVERIFY(!QImage::fromData(bytes, "BMP").isNull());
    QCOMPARE(done.at(0).at(1).toString(), QStringLiteral(" from IP : 127.0.0.1"));
}

void TerminalClientTest::machineRequestsAreOnlyReportedUnlessObeyed_data() {
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("action");
    QTest::newRow("log off") << Msg::LGOF() << QStringLiteral("loginctl terminate-user");
    QTest::newRow("restart") << Msg::RSTR() << QStringLiteral("systemctl reboot");
    QTest::newRow("shut down") << Msg::PTAY() << QStringLiteral("systemctl poweroff");
    QTest::newRow("kill") << Msg::KLPR(QStringLiteral("tst_terminal_client"))
                          << QStringLiteral("end the processes named \"tst_terminal_client\"");
}

void TerminalClientTest::machineRequestsAreOnlyReportedUnlessObeyed() {
    QFETCH(QByteArray, message);
    QFETCH(QString, action);
    Pair pair;
    QVERIFY(pair.up(6));
    QSignalSpy spy(&pair.client, &TerminalClient::systemRequest);
    QVERIFY(pair.fx.console->server().SendToPc(6, message));
    QVERIFY(spy.wait());
    QCOMPARE(spy.at(0).at(0).toByteArray(), message);
    QVERIFY2(spy.at(0).at(1).toString().startsWith(action), qPrintable(spy.at(0).at(1).toString()));
    QCOMPARE(spy.at(0).at(2).toBool(), false);
}

void TerminalClientTest::obeyedKillEndsTheNamedProcess() {
    // A copy of sleep under a name nothing else on the machine carries.
    QTemporaryDir dir;
    const QString name = QStringLiteral("tkl%1").arg(QCoreApplication::applicationPid());
    const QString program = dir.filePath(name);
    QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), program));
    QProcess victim;
    victim.start(program, {QStringLiteral("300")});
    QVERIFY(victim.waitForStarted());

    Pair pair;
    QVERIFY(pair.up(8));
    pair.client.setObey(true);
    QSignalSpy spy(&pair.client, &TerminalClient::systemRequest);
    QVERIFY(pair.fx.console->server().SendToPc(8, Msg::KLPR(name)));
    QVERIFY(spy.wait());
    QCOMPARE(spy.at(0).at(2).toBool(), true);
    QVERIFY(victim.waitForFinished(10000));
    QCOMPARE(victim.exitStatus(), QProcess::CrashExit);
}

QTEST_MAIN(TerminalClientTest)
#include "tst_terminal_client.moc"
