#include "base/text.h"

#include <cmath>

double leadingNumber(const QString& text) {
    QString digits;
    bool seenDigit = false, seenPoint = false, seenSign = false;
    for (const QChar c : text) {
        if (c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n') ||
            c == QLatin1Char('\r'))
            continue;
        if (c.isDigit() && c.unicode() < 128) {
            digits += c;
            seenDigit = true;
        } else if (c == QLatin1Char('.') && !seenPoint) {
            digits += c;
            seenPoint = true;
        } else if ((c == QLatin1Char('-') || c == QLatin1Char('+')) && !seenSign && !seenDigit &&
                   !seenPoint) {
            digits += c;
            seenSign = true;
        } else {
            break;
        }
    }
    bool ok = false;
    const double value = digits.toDouble(&ok);
    if (ok)
        return value;
    // "-", "." or "+." alone: no digits at all.
    return 0.0;
}

qint16 findChar(const QString& ch, const QString& text) {
    if (ch.isEmpty())
        return 0;
    const qsizetype at = text.indexOf(ch.at(0));
    return at < 0 || at >= 32767 ? qint16(0) : qint16(at + 1);
}

int numberAfterColon(const QString& text) {
    const int at = findChar(QStringLiteral(":"), text);
    if (at == 0)
        return 0;
    const double value = leadingNumber(text.mid(at));
    if (value < 1 || value > 255 || value != std::floor(value))
        return 0;
    return int(value);
}
