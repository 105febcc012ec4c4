#include "people/scramble.h"

#include <bit>
#include <cmath>
#include <limits>

namespace {
// The 24-bit linear congruential step of the runtime: seed = seed * a + c (mod 2^24).
constexpr quint32 Multiplier = 0x43FD43FD;
constexpr quint32 Increment = 0xC39EC3;
constexpr quint32 Mask = 0xFFFFFF;
constexpr float Range = 16777216.0f; // 2^24

// The single byte of a character in the Windows code page the runtime used.
uchar ansiCode(QChar c) {
    const char16_t u = c.unicode();
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return uchar(u);
    static constexpr char16_t High[32] = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    for (int i = 0; i < 32; ++i)
        if (High[i] == u)
            return uchar(0x80 + i);
    return uchar('?');
}

QChar fromAnsi(uchar b) {
    static constexpr char16_t High[32] = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    return QChar(b >= 0x80 && b < 0xA0 ? High[b - 0x80] : char16_t(b));
}

int truncByte(float r) {
    return int(std::trunc(r * 256.0f));
}
} // namespace

float BasicRandom::rnd(float number) {
    if (number < 0) {
        const auto bits = std::bit_cast<quint32>(number);
        seed_ = (bits + (bits >> 24)) & Mask;
    }
    if (number != 0)
        seed_ = (seed_ * Multiplier + Increment) & Mask;
    return float(seed_) / Range;
}

void BasicRandom::randomize(double number) {
    const auto high = quint32(std::bit_cast<quint64>(number) >> 32);
    const quint32 middle = ((high & 0xFFFF) ^ (high >> 16)) & 0xFFFF;
    seed_ = (seed_ & 0xFF0000FF) | (middle << 8);
}

QString scrambleText(const QString& text, const QString& key) {
    BasicRandom random;
    random.rnd(-1);
    random.randomize(double(qint32(key.size())));
    qint32 sum = 0;
    for (int i = 1; i <= key.size(); ++i) {
        const int r = truncByte(random.rnd());
        const int c = ansiCode(key.at(i - 1));
        // A sum past 32 bits is an error in the runtime; a key that long is not a key.
        if (__builtin_add_overflow(sum, c ^ r ^ (i % 256), &sum))
            sum = std::numeric_limits<qint32>::max();
    }
    random.rnd(-1);
    random.randomize(double(sum));
    QString out = text;
    for (int i = 0; i < out.size(); ++i)
        out[i] = fromAnsi(uchar(ansiCode(out.at(i)) ^ truncByte(random.rnd())));
    return out;
}
