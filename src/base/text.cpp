#include "base/text.h"

#include <QStringDecoder>

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

QString decodeText(QByteArrayView bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    // The code points of 0x80..0x9F in Windows-1252; the five it leaves out stay as they are.
    static constexpr char16_t High[32] = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    text.clear();
    text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto b = uchar(c);
        text += QChar(b >= 0x80 && b < 0xA0 ? High[b - 0x80] : char16_t(b));
    }
    return text;
}
