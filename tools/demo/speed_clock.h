#pragma once

#include "base/clock.h"

#include <QElapsedTimer>

// Real time run faster: every real millisecond is `factor` milliseconds of the café's
// day, on both the up-time counter and the wall clock. It can be held still for a moment,
// so that windows that refresh on their own timers all come to show one instant; the day
// goes on from there when it is released.
class SpeedClock final : public Clock {
public:
    SpeedClock(int factor, const QDateTime& start) : factor_(factor), start_(start) {
        real_.start();
    }
    qint32 tickCount() const override { return qint32(quint32(StartTick) + quint32(dayMs())); }
    QDateTime now() const override { return start_.addMSecs(dayMs()); }
    int factor() const { return factor_; }

    void hold() {
        if (!held_)
            heldAt_ = dayMs();
        held_ = true;
    }
    void release() {
        if (held_)
            offset_ = heldAt_ - real_.elapsed() * factor_;
        held_ = false;
    }

private:
    qint64 dayMs() const { return held_ ? heldAt_ : real_.elapsed() * factor_ + offset_; }

    static constexpr qint32 StartTick = 5'000'000;
    int factor_;
    QDateTime start_;
    QElapsedTimer real_;
    bool held_ = false;
    qint64 heldAt_ = 0;
    qint64 offset_ = 0; // the café's milliseconds lost to holds, as a negative
};
