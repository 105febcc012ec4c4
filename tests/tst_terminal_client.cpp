#include "host_actions.h"
#include "support/console_fixture.h"
#include "support/files.h"

#include <QImage>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

using L = QByteArrayList;

class TerminalClientTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<TerminalClient> client; // on line as PC 2

    Console& console() { return *fx->console; }

private Q_SLOTS:
    void initTestCase() {
        fx = std::make_unique<ConsoleFixture>();
        fx->start();
        client = fx->probe().online(2);
        QVERIFY(client);
    }
    void cleanupTestCase() {
        client.reset();
        fx.reset();
    }

    void answersProcessRequestWithItsOwnProcesses() {
        QSignalSpy spy(&console().terminalMessages(), &TerminalMessages::processesReceived);
        QVERIFY(console().control().sendToPc(2, Msg::requestProcesses()));
        QVERIFY(spy.wait());
        const QString self =
            QStringLiteral("^%1:tst_terminal").arg(QCoreApplication::applicationPid());
        QCOMPARE(spy.at(0).at(0).toStringList().filter(QRegularExpression(self)).size(), 1);
    }

    void answersSnapshotRequestWithABitmap() {
        QSignalSpy done(&console().snapshots(), &SnapshotReceiver::received);
        QVERIFY(console().snapshots().request(2));
        QVERIFY(done.wait(20000));
        const QByteArray bytes = readFile(done.at(0).at(0).toString());
        QVERIFY(bytes.startsWith("BM6")); // how the console knows a snapshot's first piece
        QVERIFY(bytes.endsWith("Close"));
        QVERIFY(!QImage::fromData(bytes.chopped(5), "BMP").isNull());
    }

    // Unless told to obey, a test terminal must never log off or shut down this machine.
    void machineRequestsAreOnlyReportedUnlessObeyed() {
        QSignalSpy spy(client.get(), &TerminalClient::systemRequest);
        // Each request, and the start of what it would do here.
        const QList<std::pair<QByteArray, QString>> requests{
            {Msg::logOff(), "loginctl terminate-user "},
            {Msg::restart(), "systemctl reboot"},
            {Msg::shutDown(), "systemctl poweroff"},
            {Msg::killProcess("tst_terminal_client"),
             "end the processes named \"tst_terminal_client\" of user "},
        };
        for (const auto& [message, action] : requests) {
            QVERIFY(console().control().sendToPc(2, message));
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
