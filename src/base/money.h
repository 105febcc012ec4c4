#pragma once

#include <QString>
#include <QtGlobal>

// Fixed-point pesos: a 64-bit count of ten-thousandths, so sums of amounts are exact.
class Money {
public:
    static constexpr qint64 Scale = 10000;

    constexpr Money() = default;
    static constexpr Money fromUnits(qint64 tenThousandths) {
        Money m;
        m.units_ = tenThousandths;
        return m;
    }
    // Rounds to four decimals, half away from zero.
    static Money fromDouble(double value);
    static Money fromPesos(qint64 pesos) { return fromUnits(pesos * Scale); }

    constexpr qint64 units() const { return units_; }
    double toDouble() const { return double(units_) / Scale; }
    // Exact decimal text with four decimals, e.g. "-12.5000"; the masks format from it.
    QString toDecimalText() const;

    constexpr Money operator+(Money o) const { return fromUnits(units_ + o.units_); }
    constexpr Money operator-(Money o) const { return fromUnits(units_ - o.units_); }
    constexpr Money operator-() const { return fromUnits(-units_); }
    Money& operator+=(Money o) {
        units_ += o.units_;
        return *this;
    }
    Money& operator-=(Money o) {
        units_ -= o.units_;
        return *this;
    }
    constexpr auto operator<=>(const Money&) const = default;

private:
    qint64 units_ = 0;
};
