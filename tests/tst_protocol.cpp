#include "protocol/protocol.h"
#include "protocol/splitter.h"

#include <QRandomGenerator>
#include <QtTest>

using L = QByteArrayList;

namespace {

// What the splitter cuts out of `reads` arriving in turn, and what it leaves waiting.
L split(const L& reads, QByteArray& pending) {
    L got;
    for (const QByteArray& r : reads) {
        pending += r;
        got += Protocol::splitConsoleMessages(pending);
    }
    return got;
}

} // namespace

class ProtocolTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The console adds no terminator, so messages written back to back arrive joined.
    void splitsWhatArrives_data() {
        QTest::addColumn<L>("reads");
        QTest::addColumn<L>("expected");
        QTest::addColumn<QByteArray>("left");
        const auto row = [](const char* name, const L& reads, const L& expected,
                            const QByteArray& left = {}) {
            QTest::newRow(name) << reads << expected << left;
        };
        row("close pair", {"CMTROFPS"}, {"CMTR", "OFPS"});
        // A product list runs to ";End", whatever its items say.
        row("product named End-something", {"RAVP Endive @ 2.00;EndCMTR"},
            {"RAVP Endive @ 2.00;End", "CMTR"});
        row("list across reads", {"RAVP None @ 0", ".00;", "En", "dACPT"},
            {"RAVP None @ 0.00;End", "ACPT"});
        row("list not finished yet", {"MSGRRAVP a;b;"}, {"MSGR"}, "RAVP a;b;");
        // Free text runs to the next command word that begins a message.
        row("free text up to the next word", {"TEXT hello thereCMTROFPS"},
            {"TEXT hello there", "CMTR", "OFPS"});
        row("command word inside free text", {"TEXT please PAUSE the game nowCMTR"},
            {"TEXT please PAUSE the game now", "CMTR"});
        row("time across reads", {"SM", "TR 09:0", "0:00CMTR"}, {"SMTR 09:00:00", "CMTR"});
        row("word cut at the end waits", {"ACPTOF"}, {"ACPT"}, "OF");
        const QByteArray junk("\x00\x01zz", 4);
        row("garbage before a word", {junk + "ACPT"}, {junk, "ACPT"});
        row("garbage keeps a cut word", {"xyzAC", "PT"}, {"xyzAC"}, "PT");
        row("started word that turns to garbage", {"AC", "XY"}, {"ACXY"});
    }
    void splitsWhatArrives() {
        QFETCH(L, reads);
        QFETCH(L, expected);
        QFETCH(QByteArray, left);
        QByteArray pending;
        QCOMPARE(split(reads, pending), expected);
        QCOMPARE(pending, left);
    }

    void everyConsoleMessageSurvivesBeingJoined() {
        const L catalogue =
            L{} << Msg::accept() << Msg::startMeter("13:05:59") << Msg::pause(987654)
                << Msg::pausedState() << Msg::resume("07:00:01") << Msg::bankedTime(-42)
                << Msg::timeLimit("90") << Msg::warn("5 left") << Msg::unlock() << Msg::lock()
                << Msg::closeMeter() << Msg::idle() << Msg::logOff() << Msg::restart()
                << Msg::shutDown() << Msg::text("Bye now") << Msg::requestProcesses()
                << Msg::killProcess("game.exe") << Msg::requestSnapshot() << Msg::rates(20, 30, 10)
                << Msg::textReceived() << Msg::invalidMember() << Msg::logSuccessful()
                << Msg::failedLog() << Msg::formLoggerLoaded() << Msg::products("Coke @ 15.00;End");
        for (const QByteArray& first : catalogue)
            for (const QByteArray& second : catalogue) {
                QByteArray pending;
                const L got = split({first + second}, pending);
                QVERIFY2(got == (L{first, second}) && pending.isEmpty(),
                         (first + " + " + second + " came as " + got.join('|')).constData());
            }
    }

    // Cut at random places, the messages put back together are the stream exactly,
    // with only an unfinished tail left waiting.
    void nothingIsLostOrInvented() {
        const L parts = QByteArray("ACPT|SMTR 09:00:00|PAUS|PAUS 12|SBTK @7|RAVP a;b;End|RAVP End|"
                                   "TEXT hi|CMTR|En|SM|RAVP|@|;|\x01\xff")
                            .split('|');
        for (quint32 seed : {1u, 2u, 3u, 42u, 1066u}) {
            QRandomGenerator random(seed);
            QByteArray stream;
            for (int i = 0; i < 400; ++i)
                stream += parts[random.bounded(int(parts.size()))];
            L reads;
            for (qsizetype at = 0; at < stream.size(); at += reads.last().size())
                reads << stream.mid(at, 1 + random.bounded(40));
            QByteArray pending;
            const L got = split(reads, pending);
            QVERIFY(!got.contains(QByteArray()));
            QCOMPARE(got.join() + pending, stream);
        }
    }
};

QTEST_GUILESS_MAIN(ProtocolTest)
#include "tst_protocol.moc"
