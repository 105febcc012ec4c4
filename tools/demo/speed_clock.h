#pragma once

#include "base/clock.h"

#include <QElapsedTimer>

// Real time run faster: every real millisecond is `factor` milliseconds of the café's
// day, on both the up-time counter and the wall clock.
class SpeedClock final : public Clock {
public:
    SpeedClock(int factor, const QDateTime& start) : factor_(factor), start_(start) {
        real_.start();
    }
    qint32 tickCount() const override {
        return qint32(quint32(StartTick) + quint32(real_.elapsed() * factor_));
    }
    QDateTime now() const override { return start_.addMSecs(real_.elapsed() * factor_); }
    int factor() const { return factor_; }

private:
    static constexpr qint32 StartTick = 5'000'000;
    int factor_;
    QDateTime start_;
    QElapsedTimer real_;
};
