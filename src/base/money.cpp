#include "base/money.h"

#include <cmath>

Money Money::fromDouble(double value) {
    // Through 15 significant digits first, so 2.675 counts as the 2.675 that was typed
    // and not as the binary 2.67499999...
    const double cleaned = QString::number(value, 'g', 15).toDouble();
    // The product is cleaned the same way: 0.00845 * 10000 comes out as 84.4999...
    const double scaled = QString::number(cleaned * Scale, 'g', 15).toDouble();
    return fromUnits(qint64(scaled < 0 ? std::ceil(scaled - 0.5) : std::floor(scaled + 0.5)));
}

QString Money::toDecimalText() const {
    const bool negative = units_ < 0;
    const quint64 magnitude = negative ? quint64(0) - quint64(units_) : quint64(units_);
    QString text = QString::number(magnitude / Scale) + QLatin1Char('.') +
                   QString::number(magnitude % Scale).rightJustified(4, QLatin1Char('0'));
    return negative ? QLatin1Char('-') + text : text;
}
