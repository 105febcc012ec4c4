// Shared helpers: number and date masks, number parsing, clock text, money and ticks.
#include "base/clock.h"
#include "base/format.h"
#include "base/money.h"
#include "base/text.h"
#include "support/files.h"

#include <QTest>

#include <limits>

// Declares one table column per type, named in order.
template <typename... T> void columns(std::initializer_list<const char*> names) {
    auto name = names.begin();
    (QTest::addColumn<T>(*name++), ...);
}

class FormatTest : public QObject {
    Q_OBJECT
    static constexpr qint32 Max = std::numeric_limits<qint32>::max();
    static constexpr qint32 Min = std::numeric_limits<qint32>::min();

private Q_SLOTS:
    // A qint64 value is Money in ten-thousandths.
    void numberMasks_data() {
        columns<QVariant, QString, QString>({"value", "mask", "expected"});
        // Tile amount: no digit is forced before the point.
        row("tile 15", QVariant(15.0), "##,###.#0", "15.00");
        row("tile half", QVariant(0.5), "##,###.#0", ".50");
        row("tile zero", QVariant(0.0), "##,###.#0", ".00");
        row("tile beyond mask", QVariant(1234567.891), "##,###.#0", "1,234,567.89");
        row("hours zero", QVariant(0.0), "##0.#0", "0.00");
        row("hours no grouping", QVariant(1234.5), "##0.#0", "1234.50");
        row("rentals", QVariant(1234.5), "##,##0.#0", "1,234.50");
        row("report rounds into a group", QVariant(999.999), "###,###,##0.#0", "1,000.00");
        row("six zeros overflow", QVariant(1234567.0), "000000", "1234567");
        row("six zeros rounds", QVariant(41.5), "000000", "000042");
        // Optional decimals: the point stays even when nothing follows it.
        row("optional whole", QVariant(2500.0), "#######.##", "2500.");
        row("optional part", QVariant(2500.5), "#######.##", "2500.5");
        row("optional three zero", QVariant(0.0), "###.##", ".");
        row("eight places", QVariant(0.00012345), "#.########", ".00012345");
        // A literal prefix stands before the number, the sign before the prefix.
        row("prefix", QVariant(12.5), "P ##0.#0", "P 12.50");
        row("prefix negative", QVariant(-12.5), "P ##0.#0", "-P 12.50");
        // Half away from zero, on the decimal that was typed, not its binary neighbour.
        row("round 2.675", QVariant(2.675), "##0.#0", "2.68");
        row("round 0.005 tile", QVariant(0.005), "##,###.#0", ".01");
        row("round 0.004", QVariant(0.004), "##0.#0", "0.00");
        row("round -2.675", QVariant(-2.675), "##0.#0", "-2.68");
        row("round carries", QVariant(9999.995), "##,##0.#0", "10,000.00");
        row("money half up", QVariant(qint64(26750)), "##0.#0", "2.68");
        row("money half negative", QVariant(qint64(-26750)), "##0.#0", "-2.68");
        row("money below half", QVariant(qint64(26749)), "##0.#0", "2.67");
        row("money trillion", QVariant(qint64(10000000000000050)), "###,###,##0.#0",
            "1,000,000,000,000.01");
        row("money large negative", QVariant(qint64(-12345678901234565)), "###,###,##0.#0",
            "-1,234,567,890,123.46");
    }
    void numberMasks() {
        QFETCH(QVariant, value);
        QFETCH(QString, mask);
        QFETCH(QString, expected);
        if (value.typeId() == QMetaType::LongLong)
            QCOMPARE(formatNumber(Money::fromUnits(value.toLongLong()), mask), expected);
        else
            QCOMPARE(formatNumber(value.toDouble(), mask), expected);
    }

    void dateMasks_data() {
        columns<QDateTime, QString, QString>({"when", "mask", "expected"});
        const QDateTime sunday(QDate(2026, 11, 15), QTime(9, 5, 7));
        const QDateTime leap(QDate(2024, 2, 29), QTime(23, 59, 58));
        row("time", sunday, "HH:MM:SS", "09:05:07");
        row("bill date", leap, "MM/DD/YYYY", "02/29/2024");
        row("log file", sunday, "MM_DD_YYYY", "11_15_2026");
        row("short year", leap, "MM/DD/YY", "02/29/24");
        row("status bar", sunday, "DDDD, MMMM DD YYYY HH:MM:SS ",
            "Sunday, November 15 2026 09:05:07 ");
        row("status bar leap", leap, "DDDD, MMMM DD YYYY HH:MM:SS ",
            "Thursday, February 29 2024 23:59:58 ");
    }
    void dateMasks() {
        QFETCH(QDateTime, when);
        QFETCH(QString, mask);
        QFETCH(QString, expected);
        QCOMPARE(formatDateTime(when, mask), expected);
        if (mask.startsWith(QLatin1String("HH")) || mask.startsWith(QLatin1String("hh")))
            QCOMPARE(formatTime(when.time(), mask), expected);
        else if (!mask.contains(QLatin1Char('H')))
            QCOMPARE(formatDate(when.date(), mask), expected);
    }

    // Each row names the helper and gives its input as text.
    void conversions_data() {
        columns<QString, QString, QString>({"helper", "input", "expected"});
        // Blanks anywhere are skipped, then a sign, digits and one point; nothing else.
        row("grouped reads first group", "leadingNumber", "1,234.50", "1");
        row("inner blank skipped", "leadingNumber", "1 2", "12");
        row("blank after sign", "leadingNumber", "- 5", "-5");
        row("currency letter", "leadingNumber", "P 125.00", "0");
        row("second point stops", "leadingNumber", "5.5.5", "5.5");
        row("signed fraction", "leadingNumber", "  -3.25xyz", "-3.25");
        row("sign later stops", "leadingNumber", "5-3", "5");
        row("no exponent", "leadingNumber", "1e3", "1");
        // A PC number after the first colon: 1 to 255, a whole number, else 0.
        row("list entry", "numberAfterColon", "Pc Number 3 is not logged :3", "3");
        row("blank after colon", "numberAfterColon", "PC: 12", "12");
        row("largest", "numberAfterColon", "PC:255", "255");
        row("too large", "numberAfterColon", "PC:256", "0");
        row("zero", "numberAfterColon", "PC:0", "0");
        row("fraction", "numberAfterColon", "PC:3.5", "0");
        row("no colon", "numberAfterColon", "PC 7", "0");
        row("only the first colon", "numberAfterColon", "a:b:7", "0");
        // Running time: hours are not wrapped into days; nothing below zero.
        row("under a second", "formatElapsed", "999", "00:00:00");
        row("most negative", "formatElapsed", QString::number(Min), "00:00:00");
        row("h m s", "formatElapsed", "3723000", "01:02:03");
        row("no day field", "formatElapsed", "86400000", "24:00:00");
        row("100 hours", "formatElapsed", "360000000", "100:00:00");
        row("largest time", "formatElapsed", QString::number(Max), "596:31:23");
        row("0.1", "Money::fromDouble", "0.1", "0.1000");
        row("2.675", "Money::fromDouble", "2.675", "2.6750");
        // The scaled product is 84.4999..., yet half of the fourth decimal rounds up.
        row("0.00845", "Money::fromDouble", "0.00845", "0.0085");
        row("-0.00845", "Money::fromDouble", "-0.00845", "-0.0085");
        row("0.00495", "Money::fromDouble", "0.00495", "0.0050");
        row("-0.00005", "Money::fromDouble", "-0.00005", "-0.0001");
        row("large", "Money::fromDouble", "123456.78905", "123456.7891");
    }
    void conversions() {
        QFETCH(QString, helper);
        QFETCH(QString, input);
        QFETCH(QString, expected);
        if (helper == "leadingNumber") {
            QCOMPARE(QString::number(leadingNumber(input)), expected);
        } else if (helper == "numberAfterColon") {
            QCOMPARE(QString::number(numberAfterColon(input)), expected);
            // findChar counts from 1, 0 when absent.
            QCOMPARE(int(findChar(":", input)), int(input.indexOf(QLatin1Char(':')) + 1));
        } else if (helper == "formatElapsed") {
            QCOMPARE(formatElapsed(input.toInt()), expected);
        } else {
            QCOMPARE(Money::fromDouble(input.toDouble()).toDecimalText(), expected);
        }
    }

    void tickArithmetic_data() {
        columns<bool, qint32, qint32, QVariant>({"add", "a", "b", "expected"}); // null: overflow
        row("add to max", true, Max - 1, 1, QVariant(Max));
        row("add past max", true, Max, 1, QVariant());
        row("add past min", true, Min, -1, QVariant());
        row("sub across zero", false, 1000, -2000, QVariant(3000));
        row("sub past min", false, Min, 1, QVariant());
        row("sub across the up-time wrap", false, Min + 10, Max - 10, QVariant());
    }
    void tickArithmetic() {
        QFETCH(bool, add);
        QFETCH(qint32, a);
        QFETCH(qint32, b);
        QFETCH(QVariant, expected);
        if (expected.isNull())
            QVERIFY_THROWS_EXCEPTION(TickOverflow, add ? tickAdd(a, b) : tickSub(a, b));
        else
            QCOMPARE(add ? tickAdd(a, b) : tickSub(a, b), expected.toInt());
    }
};

QTEST_APPLESS_MAIN(FormatTest)
#include "tst_format.moc"
