#include "protocol/protocol.h"
#include "support/console_fixture.h"
#include "support/terminal_probe.h"

#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

using L = QByteArrayList;

class TerminalClientTest : public QObject {
    Q_OBJECT

    // A console and one terminal identified on it as `pc`.
    struct Pair {
        ConsoleFixture fx;
        TerminalClient client;
        Console& console() { return *fx.console; }
        bool up(int pc) {
            fx.start();
            client.connectToConsole("127.0.0.1", console().server().port());
            return !client.waitFor("ACPT").isEmpty() &&
                   TerminalProbe(console()).identify(client, pc);
        }
    };

private Q_SLOTS:
    void answersProcessRequestWithItsOwnProcesses() {
        Pair pair;
        QVERIFY(pair.up(2));
        QSignalSpy spy(&pair.console().terminalMessages(), &TerminalMessages::processesReceived);
        QVERIFY(pair.console().control().sendToPc(2, Msg::requestProcesses()));
        QVERIFY(spy.wait());
        const QString self =
            QStringLiteral("^%1:tst_terminal").arg(QCoreApplication::applicationPid());
        QCOMPARE(spy.at(0).at(0).toStringList().filter(QRegularExpression(self)).size(), 1);
    }

    void answersSnapshotRequestWithABitmap() {
        Pair pair;
        QVERIFY(pair.up(3));
        QSignalSpy done(&pair.console().snapshots(), &SnapshotReceiver::received);
        QVERIFY(pair.console().control().sendToPc(3, Msg::requestSnapshot()));
        QVERIFY(done.wait(20000));
        QFile file(done.at(0).at(0).toString());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(bytes.startsWith("BM6")); // how the console knows a snapshot's first piece
        QVERIFY(bytes.endsWith("Close"));
        QVERIFY(!QImage::fromData(bytes.chopped(5), "BMP").isNull());
    }

    // Unless told to obey, a test terminal must never log off or shut down this machine.
    void machineRequestsAreOnlyReportedUnlessObeyed() {
        Pair pair;
        QVERIFY(pair.up(6));
        QSignalSpy spy(&pair.client, &TerminalClient::systemRequest);
        const L requests{Msg::logOff(), Msg::restart(), Msg::shutDown(),
                         Msg::killProcess("tst_terminal_client")};
        for (const QByteArray& m : requests) {
            QVERIFY(pair.console().control().sendToPc(6, m));
            QTRY_COMPARE(spy.size(), requests.indexOf(m) + 1);
            QCOMPARE(spy.last().at(0).toByteArray(), m);
            QCOMPARE(spy.last().at(2).toBool(), false);
        }
    }
};

QTEST_MAIN(TerminalClientTest)
#include "tst_terminal_client.moc"
