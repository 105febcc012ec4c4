// The demo's fast clock: held still, both of its readings stand; released, the day goes
// on from where it stood, without the held time lost or made up in a jump.
#include "../tools/demo/speed_clock.h"

#include <QtTest>

class SpeedClockTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void holdAndRelease_data() {
        QTest::addColumn<int>("holds");    // hold() calls in a row
        QTest::addColumn<int>("releases"); // release() calls in a row after the wait
        QTest::newRow("held once") << 1 << 1;
        QTest::newRow("held twice: the first instant stays") << 2 << 1;
        QTest::newRow("released twice") << 1 << 2;
        QTest::newRow("released without a hold") << 0 << 1;
    }
    void holdAndRelease() {
        QFETCH(int, holds);
        QFETCH(int, releases);
        constexpr int Factor = 1000;
        constexpr int WaitMs = 300;
        const QDateTime start(QDate(2026, 11, 15), QTime(9, 0));
        SpeedClock clock(Factor, start);
        QTest::qWait(20);
        const QDateTime before = clock.now();
        QVERIFY(before > start);
        QDateTime atHold;
        qint32 tickAtHold = 0;
        for (int i = 0; i < holds; ++i) {
            clock.hold();
            if (i == 0) {
                atHold = clock.now();
                tickAtHold = clock.tickCount();
            }
            QTest::qWait(5);
        }
        QTest::qWait(WaitMs);
        if (holds > 0) {
            QCOMPARE(clock.now(), atHold);
            QCOMPARE(clock.tickCount(), tickAtHold);
        }
        const QDateTime held = clock.now();
        for (int i = 0; i < releases; ++i)
            clock.release();
        const qint64 jump = held.msecsTo(clock.now());
        QTest::qWait(20);
        const qint64 moved = held.msecsTo(clock.now());
        // A release goes on from the held instant: well under the held stretch, at speed.
        QVERIFY2(jump >= 0 && jump < WaitMs / 3 * Factor, qPrintable(QString::number(jump)));
        QVERIFY(moved > jump);
        if (holds > 0) { // the up-time counter went on with the wall clock
            clock.hold();
            QCOMPARE(qint64(clock.tickCount()) - tickAtHold, atHold.msecsTo(clock.now()));
        }
        if (holds == 0) // nothing held: the day never stood
            QVERIFY(before.msecsTo(held) >= WaitMs * Factor);
    }
};

QTEST_GUILESS_MAIN(SpeedClockTest)
#include "tst_speed_clock.moc"
