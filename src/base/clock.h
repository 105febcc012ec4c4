#pragma once

#include <QDateTime>
#include <QtGlobal>

#include <stdexcept>

// The two clocks of the console: the millisecond up-time counter that times every
// session, and the wall clock for dates and times of day.
class Clock {
public:
    virtual ~Clock() = default;
    // Milliseconds since the machine booted, as a signed 32-bit value (it wraps after
    // about 24.8 days). It survives a console restart on the same boot.
    virtual qint32 tickCount() const = 0;
    virtual QDateTime now() const = 0;
    QDate today() const { return now().date(); }
    // Spins, without yielding to the event loop, until the up-time counter has moved on
    // by more than the given milliseconds.
    virtual void busyWait(qint32 milliseconds);
};

class SystemClock final : public Clock {
public:
    qint32 tickCount() const override;
    QDateTime now() const override;
};

// A clock a test sets by hand.
class ManualClock final : public Clock {
public:
    explicit ManualClock(qint32 tick = 1000000,
                         QDateTime now = QDateTime(QDate(2026, 11, 15), QTime(9, 0)))
        : tick_(tick), now_(std::move(now)) {}
    qint32 tickCount() const override { return tick_; }
    QDateTime now() const override { return now_; }

    void setTick(qint32 tick) { tick_ = tick; }
    void setNow(const QDateTime& now) { now_ = now; }
    // Moves both clocks on together, as real time does.
    // Nothing spins in a test: the time just passes.
    void busyWait(qint32 milliseconds) override { advance(milliseconds + 1); }
    void advance(qint32 milliseconds) {
        tick_ = qint32(quint32(tick_) + quint32(milliseconds));
        now_ = now_.addMSecs(milliseconds);
    }

private:
    qint32 tick_;
    QDateTime now_;
};

// Signed 32-bit tick arithmetic: an overflow is an error that abandons the operation.
struct TickOverflow : std::runtime_error {
    TickOverflow() : std::runtime_error("Overflow") {}
};
qint32 tickAdd(qint32 a, qint32 b);
qint32 tickSub(qint32 a, qint32 b);
