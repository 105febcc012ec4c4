#include "host_actions.h"
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
            return !client.waitFor(Msg::accept()).isEmpty() &&
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
        QVERIFY(pair.console().snapshots().request(3));
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
        // Each request, and the start of what it would do here.
        const QList<std::pair<QByteArray, QString>> requests{
            {Msg::logOff(), "loginctl terminate-user "},
            {Msg::restart(), "systemctl reboot"},
            {Msg::shutDown(), "systemctl poweroff"},
            {Msg::killProcess("tst_terminal_client"),
             "end the processes named \"tst_terminal_client\" of user "},
        };
        for (const auto& [message, action] : requests) {
            QVERIFY(pair.console().control().sendToPc(6, message));
            QTRY_COMPARE(spy.size(), requests.indexOf({message, action}) + 1);
            QCOMPARE(spy.last().at(0).toByteArray(), message);
            QVERIFY2(spy.last().at(1).toString().startsWith(action),
                     qPrintable(spy.last().at(1).toString()));
            QCOMPARE(spy.last().at(2).toBool(), false);
        }
    }

    // Whatever the picture's size, its bitmap begins "BM6" (how the console knows a
    // snapshot's first piece) and is the same picture; its pieces are 8192 bytes, but
    // the last, which ends in "Close".
    void snapshotBitmapAndItsPieces_data() {
        QTest::addColumn<QSize>("size");
        QTest::newRow("one pixel") << QSize(1, 1);
        QTest::newRow("rows padded to four bytes") << QSize(3, 2);
        QTest::newRow("odd width") << QSize(101, 7);
        QTest::newRow("screen") << QSize(1024, 600);
        QTest::newRow("no picture") << QSize();
    }
    void snapshotBitmapAndItsPieces() {
        QFETCH(QSize, size);
        QImage picture(size, QImage::Format_RGB32);
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                picture.setPixel(x, y, qRgb(x * 37 % 256, y * 91 % 256, (x ^ y) % 256));
        const QByteArray bitmap = HostActions::encodeBitmap(picture);

        QVERIFY(bitmap.startsWith("BM6"));
        QCOMPARE(qFromLittleEndian<quint32>(bitmap.constData() + 2), quint32(bitmap.size()));
        const QImage decoded =
            QImage::fromData(bitmap, "BMP").convertToFormat(QImage::Format_RGB32);
        if (picture.isNull()) {
            QCOMPARE(decoded.size(), QSize(1, 1));
        } else {
            QCOMPARE(decoded.size(), picture.size());
            QCOMPARE(decoded, picture);
        }

        const L pieces = HostActions::snapshotPieces(bitmap);
        QCOMPARE(pieces.size(), (bitmap.size() + 8191) / 8192);
        for (qsizetype i = 0; i + 1 < pieces.size(); ++i)
            QCOMPARE(pieces[i].size(), 8192);
        QVERIFY(pieces.last().endsWith("Close"));
        QCOMPARE(pieces.join().chopped(5), bitmap);
    }
};

QTEST_MAIN(TerminalClientTest)
#include "tst_terminal_client.moc"
