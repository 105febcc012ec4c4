#include "base/format.h"

#include <QLocale>

#include <cmath>

namespace {

struct Decimal {
    bool negative = false;
    QString whole;    // digits, no leading zeros ("" for zero)
    QString fraction; // digits after the point
};

Decimal decimalOfText(QString text) {
    Decimal d;
    if (text.startsWith(QLatin1Char('-'))) {
        d.negative = true;
        text.remove(0, 1);
    }
    const qsizetype point = text.indexOf(QLatin1Char('.'));
    d.whole = point < 0 ? text : text.left(point);
    d.fraction = point < 0 ? QString() : text.mid(point + 1);
    while (d.whole.startsWith(QLatin1Char('0')))
        d.whole.remove(0, 1);
    return d;
}

// A double as the decimal a person typed: 15 significant digits, no exponent.
Decimal decimalOfDouble(double value) {
    if (!std::isfinite(value))
        return {};
    const QString sci = QString::number(value, 'e', 14); // d.dddddddddddddde+XX
    const qsizetype e = sci.indexOf(QLatin1Char('e'));
    int exponent = sci.mid(e + 1).toInt();
    QString mantissa = sci.left(e);
    Decimal d;
    if (mantissa.startsWith(QLatin1Char('-'))) {
        d.negative = true;
        mantissa.remove(0, 1);
    }
    mantissa.remove(QLatin1Char('.'));
    // mantissa holds 15 digits with the point after the first one.
    const int pointAt = 1 + exponent;
    if (pointAt <= 0) {
        d.fraction = QString(-pointAt, QLatin1Char('0')) + mantissa;
    } else if (pointAt >= mantissa.size()) {
        d.whole = mantissa + QString(pointAt - mantissa.size(), QLatin1Char('0'));
    } else {
        d.whole = mantissa.left(pointAt);
        d.fraction = mantissa.mid(pointAt);
    }
    while (d.whole.startsWith(QLatin1Char('0')))
        d.whole.remove(0, 1);
    return d;
}

// Rounds to `places` decimals, half away from zero.
void roundTo(Decimal& d, int places) {
    if (d.fraction.size() <= places) {
        d.fraction = d.fraction.leftJustified(places, QLatin1Char('0'));
        return;
    }
    const bool up = d.fraction.at(places) >= QLatin1Char('5');
    QString digits = d.whole + d.fraction.left(places);
    if (up) {
        int i = int(digits.size()) - 1;
        for (; i >= 0; --i) {
            if (digits[i] == QLatin1Char('9')) {
                digits[i] = QLatin1Char('0');
            } else {
                digits[i] = QChar(digits[i].unicode() + 1);
                break;
            }
        }
        if (i < 0)
            digits.prepend(QLatin1Char('1'));
    }
    d.whole = digits.left(digits.size() - places);
    d.fraction = digits.right(places);
    while (d.whole.startsWith(QLatin1Char('0')))
        d.whole.remove(0, 1);
}

bool isPlaceholder(QChar c) {
    return c == QLatin1Char('#') || c == QLatin1Char('0') || c == QLatin1Char(',') ||
           c == QLatin1Char('.');
}

QString applyMask(Decimal d, const QString& mask) {
    qsizetype start = 0;
    while (start < mask.size() && !isPlaceholder(mask[start]))
        ++start;
    qsizetype end = mask.size();
    while (end > start && !isPlaceholder(mask[end - 1]))
        --end;
    const QString prefix = mask.left(start);
    const QString suffix = mask.mid(end);
    const QString body = mask.mid(start, end - start);

    const qsizetype point = body.indexOf(QLatin1Char('.'));
    const QString wholeMask = point < 0 ? body : body.left(point);
    const QString fractionMask = point < 0 ? QString() : body.mid(point + 1);

    const bool grouping = wholeMask.contains(QLatin1Char(','));
    int forcedWhole = 0;
    {
        const qsizetype firstZero = wholeMask.indexOf(QLatin1Char('0'));
        if (firstZero >= 0)
            for (qsizetype i = firstZero; i < wholeMask.size(); ++i)
                if (wholeMask[i] == QLatin1Char('0') || wholeMask[i] == QLatin1Char('#'))
                    ++forcedWhole;
    }
    int places = 0, forcedPlaces = 0;
    for (qsizetype i = 0; i < fractionMask.size(); ++i) {
        if (fractionMask[i] == QLatin1Char('#') || fractionMask[i] == QLatin1Char('0'))
            ++places;
        if (fractionMask[i] == QLatin1Char('0'))
            forcedPlaces = places;
    }

    roundTo(d, places);
    QString fraction = d.fraction;
    while (fraction.size() > forcedPlaces && fraction.endsWith(QLatin1Char('0')))
        fraction.chop(1);
    QString whole = d.whole;
    if (whole.size() < forcedWhole)
        whole = whole.rightJustified(forcedWhole, QLatin1Char('0'));
    if (grouping)
        for (qsizetype i = whole.size() - 3; i > 0; i -= 3)
            whole.insert(i, QLatin1Char(','));

    auto allZero = [](const QString& digits) {
        for (const QChar c : digits)
            if (c != QLatin1Char('0'))
                return false;
        return true;
    };
    const bool isZero = allZero(d.whole) && allZero(d.fraction);
    QString out;
    if (d.negative && !isZero)
        out += QLatin1Char('-');
    out += prefix + whole;
    if (point >= 0)
        out += QLatin1Char('.') + fraction;
    return out + suffix;
}

} // namespace

QString formatNumber(double value, const QString& mask) {
    return applyMask(decimalOfDouble(value), mask);
}

QString formatNumber(Money value, const QString& mask) {
    return applyMask(decimalOfText(value.toDecimalText()), mask);
}

QString formatDateTime(const QDateTime& when, const QString& mask) {
    static const QLocale english(QLocale::English, QLocale::UnitedStates);
    const QDate date = when.date();
    const QTime time = when.time();
    QString out;
    bool afterHour = false;
    qsizetype i = 0;
    auto run = [&](QChar letter) {
        qsizetype n = 0;
        while (i + n < mask.size() && mask[i + n].toUpper() == letter)
            ++n;
        return n;
    };
    auto two = [](int v) {
        return QString::number(v).rightJustified(2, QLatin1Char('0'));
    };
    while (i < mask.size()) {
        const QChar c = mask[i].toUpper();
        qsizetype n = 0;
        if (c == QLatin1Char('D') && (n = run(c)) >= 2) {
            out += n >= 4   ? english.dayName(date.dayOfWeek(), QLocale::LongFormat)
                   : n == 3 ? english.dayName(date.dayOfWeek(), QLocale::ShortFormat)
                            : two(date.day());
            afterHour = false;
        } else if (c == QLatin1Char('M') && (n = run(c)) >= 2) {
            if (afterHour && n == 2)
                out += two(time.minute());
            else
                out += n >= 4   ? english.monthName(date.month(), QLocale::LongFormat)
                       : n == 3 ? english.monthName(date.month(), QLocale::ShortFormat)
                                : two(date.month());
            afterHour = false;
        } else if (c == QLatin1Char('Y') && (n = run(c)) >= 2) {
            out += n >= 4 ? QString::number(date.year()).rightJustified(4, QLatin1Char('0'))
                          : two(date.year() % 100);
            afterHour = false;
        } else if (c == QLatin1Char('H') && (n = run(c)) >= 2) {
            out += two(time.hour());
            afterHour = true;
        } else if (c == QLatin1Char('S') && (n = run(c)) >= 2) {
            out += two(time.second());
            afterHour = false;
        } else {
            n = 1;
            out += mask[i];
        }
        i += n;
    }
    return out;
}

QString formatDate(const QDate& day, const QString& mask) {
    return formatDateTime(QDateTime(day, QTime(0, 0)), mask);
}

QString formatTime(const QTime& time, const QString& mask) {
    return formatDateTime(QDateTime(QDate(1899, 12, 30), time), mask);
}

QString formatElapsed(qint32 milliseconds) {
    const qint32 wholeSeconds = milliseconds / 1000;
    const qint32 total = wholeSeconds > 0 ? wholeSeconds : 0;
    qint32 minutes = 0, seconds = total;
    if (total / 60 > 0) {
        minutes = total / 60;
        seconds = total % 60;
    }
    qint32 hours = 0;
    if (minutes / 60 > 0) {
        hours = minutes / 60;
        minutes = minutes % 60;
    }
    auto two = [](qint32 v) {
        return QString::number(v).rightJustified(2, QLatin1Char('0'));
    };
    return two(hours) + QLatin1Char(':') + two(minutes) + QLatin1Char(':') + two(seconds);
}
