#include "base/clock.h"

#include <ctime>

qint32 SystemClock::tickCount() const {
    timespec ts{};
    // CLOCK_BOOTTIME keeps counting through suspend, like an up-time counter should.
    clock_gettime(CLOCK_BOOTTIME, &ts);
    const quint64 ms = quint64(ts.tv_sec) * 1000u + quint64(ts.tv_nsec) / 1000000u;
    return qint32(quint32(ms));
}

QDateTime SystemClock::now() const {
    return QDateTime::currentDateTime();
}

qint32 tickAdd(qint32 a, qint32 b) {
    qint32 r;
    if (__builtin_add_overflow(a, b, &r))
        throw TickOverflow();
    return r;
}

qint32 tickSub(qint32 a, qint32 b) {
    qint32 r;
    if (__builtin_sub_overflow(a, b, &r))
        throw TickOverflow();
    return r;
}

void Clock::busyWait(qint32 milliseconds) {
    const qint32 start = tickCount();
    while (qint64(tickCount()) - qint64(start) <= milliseconds) {
    }
}
