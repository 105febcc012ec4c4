// The shared helpers every window and statement leans on: number and date masks, the
// leading-number parse, the running-time clock text, exact money and tick arithmetic.
#include "base/clock.h"
#include "base/format.h"
#include "base/money.h"
#include "base/text.h"

#include <QTest>

#include <limits>

class TstFormat : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void numberMasks_data();
    void numberMasks();
    void moneyMasks_data();
    void moneyMasks();
    void dateMasks_data();
    void dateMasks();
    void leadingNumber_data();
    void leadingNumber();
    void elapsed_data();
    void elapsed();
    void findChar_data();
    void findChar();
    void numberAfterColon_data();
    void numberAfterColon();
    void moneySumsAreExact();
    void tickArithmetic_data();
    void tickArithmetic();
};

void TstFormat::numberMasks_data() {
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("mask");
    QTest::addColumn<QString>("expected");

    // Tile amount: no digit is forced before the point.
    QTest::newRow("tile 15") << 15.0 << "##,###.#0"
                             << "15.00";
    QTest::newRow("tile half") << 0.5 << "##,###.#0"
                               << ".50";
    QTest::newRow("tile zero") << 0.0 << "##,###.#0"
                               << ".00";
    QTest::newRow("tile grouped") << 12345.678 << "##,###.#0"
                                  << "12,345.68";
    QTest::newRow("tile beyond mask") << 1234567.891 << "##,###.#0"
                                      << "1,234,567.89";
    // Hours in the bill: one digit forced, no grouping.
    QTest::newRow("hours zero") << 0.0 << "##0.#0"
                                << "0.00";
    QTest::newRow("hours 1.5") << 1.5 << "##0.#0"
                               << "1.50";
    QTest::newRow("hours no grouping") << 1234.5 << "##0.#0"
                                       << "1234.50";
    QTest::newRow("rentals") << 1234.5 << "##,##0.#0"
                             << "1,234.50";
    QTest::newRow("rentals zero") << 0.0 << "##,##0.#0"
                                  << "0.00";
    QTest::newRow("due") << 1234567.891 << "###,##0.#0"
                         << "1,234,567.89";
    QTest::newRow("due small") << 7.0 << "###,##0.#0"
                               << "7.00";
    QTest::newRow("report") << 1234567.891 << "###,###,##0.#0"
                            << "1,234,567.89";
    QTest::newRow("report billions") << 1234567890.5 << "###,###,##0.#0"
                                     << "1,234,567,890.50";
    QTest::newRow("report hundreds") << 999.999 << "###,###,##0.#0"
                                     << "1,000.00";
    QTest::newRow("millions mask") << 1234567.891 << "##,###,##0.#0"
                                   << "1,234,567.89";
    QTest::newRow("millions mask small") << 0.25 << "##,###,##0.#0"
                                         << "0.25";
    // Receipt numbers and two-digit fields.
    QTest::newRow("six zeros") << 12.0 << "000000"
                               << "000012";
    QTest::newRow("six zeros overflow") << 1234567.0 << "000000"
                                        << "1234567";
    QTest::newRow("six zeros rounds") << 41.5 << "000000"
                                      << "000042";
    QTest::newRow("two zeros") << 5.0 << "00"
                               << "05";
    QTest::newRow("two zeros wide") << 123.0 << "00"
                                    << "123";
    // Optional decimals: the point stays even when nothing follows it.
    QTest::newRow("optional whole") << 2500.0 << "#######.##"
                                    << "2500.";
    QTest::newRow("optional part") << 2500.5 << "#######.##"
                                   << "2500.5";
    QTest::newRow("optional eight") << 1234.567 << "########.##"
                                    << "1234.57";
    QTest::newRow("optional three whole") << 20.0 << "###.##"
                                          << "20.";
    QTest::newRow("optional three part") << 12.5 << "###.##"
                                         << "12.5";
    QTest::newRow("optional three zero") << 0.0 << "###.##"
                                         << ".";
    QTest::newRow("eight places") << 0.00012345 << "#.########"
                                  << ".00012345";
    QTest::newRow("eight places third") << 1.0 / 3.0 << "#.########"
                                        << ".33333333";
    QTest::newRow("eight places whole") << 3.0 << "#.########"
                                        << "3.";
    // A literal prefix stands before the number, the sign before the prefix.
    QTest::newRow("prefix") << 12.5 << "P ##0.#0"
                            << "P 12.50";
    QTest::newRow("prefix zero") << 0.0 << "P ##0.#0"
                                 << "P 0.00";
    QTest::newRow("prefix negative") << -12.5 << "P ##0.#0"
                                     << "-P 12.50";
    // Half away from zero, on the decimal that was typed, not its binary neighbour.
    QTest::newRow("round 2.675") << 2.675 << "##0.#0"
                                 << "2.68";
    QTest::newRow("round 1.005") << 1.005 << "##0.#0"
                                 << "1.01";
    QTest::newRow("round 0.005") << 0.005 << "##0.#0"
                                 << "0.01";
    QTest::newRow("round 0.005 tile") << 0.005 << "##,###.#0"
                                      << ".01";
    QTest::newRow("round 0.004") << 0.004 << "##0.#0"
                                 << "0.00";
    QTest::newRow("round -2.675") << -2.675 << "##0.#0"
                                  << "-2.68";
    QTest::newRow("round -0.005") << -0.005 << "##0.#0"
                                  << "-0.01";
    QTest::newRow("round carries") << 9999.995 << "##,##0.#0"
                                   << "10,000.00";
    QTest::newRow("negative grouped") << -1234.5 << "###,##0.#0"
                                      << "-1,234.50";
}

void TstFormat::numberMasks() {
    QFETCH(double, value);
    QFETCH(QString, mask);
    QFETCH(QString, expected);
    QCOMPARE(FormatNumber(value, mask), expected);
}

void TstFormat::moneyMasks_data() {
    QTest::addColumn<qint64>("units");
    QTest::addColumn<QString>("mask");
    QTest::addColumn<QString>("expected");

    QTest::newRow("amount due") << qint64(12345000) << "###,##0.#0"
                                << "1,234.50";
    QTest::newRow("tile minimum") << qint64(100000) << "##,###.#0"
                                  << "10.00";
    QTest::newRow("half cent up") << qint64(26750) << "##0.#0"
                                  << "2.68";
    QTest::newRow("half cent negative") << qint64(-26750) << "##0.#0"
                                        << "-2.68";
    QTest::newRow("below half") << qint64(26749) << "##0.#0"
                                << "2.67";
    QTest::newRow("tiny") << qint64(50) << "##,###.#0"
                          << ".01";
    // Past what a double holds to the cent: the money path must stay exact.
    QTest::newRow("trillion and a half cent") << qint64(10000000000000050) << "###,###,##0.#0"
                                              << "1,000,000,000,000.01";
    QTest::newRow("large negative") << qint64(-12345678901234565) << "###,###,##0.#0"
                                    << "-1,234,567,890,123.46";
}

void TstFormat::moneyMasks() {
    QFETCH(qint64, units);
    QFETCH(QString, mask);
    QFETCH(QString, expected);
    QCOMPARE(FormatNumber(Money::fromUnits(units), mask), expected);
}

void TstFormat::dateMasks_data() {
    QTest::addColumn<QDateTime>("when");
    QTest::addColumn<QString>("mask");
    QTest::addColumn<QString>("expected");

    const QDateTime sunday(QDate(2026, 11, 15), QTime(9, 5, 7));
    const QDateTime leap(QDate(2024, 2, 29), QTime(23, 59, 58));
    QTest::newRow("time") << sunday << "HH:MM:SS"
                          << "09:05:07";
    QTest::newRow("time late") << leap << "HH:MM:SS"
                               << "23:59:58";
    QTest::newRow("time lower case") << sunday << "hh:mm:ss"
                                     << "09:05:07";
    QTest::newRow("bill date") << sunday << "MM/DD/YYYY"
                               << "11/15/2026";
    QTest::newRow("bill date padded") << leap << "MM/DD/YYYY"
                                      << "02/29/2024";
    QTest::newRow("log file") << sunday << "MM_DD_YYYY"
                              << "11_15_2026";
    QTest::newRow("short year") << leap << "MM/DD/YY"
                                << "02/29/24";
    QTest::newRow("status bar") << sunday << "DDDD, MMMM DD YYYY HH:MM:SS "
                                << "Sunday, November 15 2026 09:05:07 ";
    QTest::newRow("status bar leap") << leap << "DDDD, MMMM DD YYYY HH:MM:SS "
                                     << "Thursday, February 29 2024 23:59:58 ";
}

void TstFormat::dateMasks() {
    QFETCH(QDateTime, when);
    QFETCH(QString, mask);
    QFETCH(QString, expected);
    QCOMPARE(FormatDateTime(when, mask), expected);
    if (mask.startsWith(QLatin1String("HH")) || mask.startsWith(QLatin1String("hh")))
        QCOMPARE(FormatTime(when.time(), mask), expected);
    else if (!mask.contains(QLatin1Char('H')))
        QCOMPARE(FormatDate(when.date(), mask), expected);
}

void TstFormat::leadingNumber_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");

    QTest::newRow("grouped reads first group") << "1,234.50" << 1.0;
    QTest::newRow("leading blank") << " 125.00" << 125.0;
    QTest::newRow("empty") << "" << 0.0;
    QTest::newRow("negative") << "-5" << -5.0;
    QTest::newRow("plus") << "+7" << 7.0;
    QTest::newRow("inner blank skipped") << "1 2" << 12.0;
    QTest::newRow("blank after sign") << "- 5" << -5.0;
    QTest::newRow("letters") << "abc" << 0.0;
    QTest::newRow("currency letter") << "P 125.00" << 0.0;
    QTest::newRow("second point stops") << "5.5.5" << 5.5;
    QTest::newRow("trailing text") << "12abc" << 12.0;
    QTest::newRow("signed fraction") << "  -3.25xyz" << -3.25;
    QTest::newRow("point first") << ".5" << 0.5;
    QTest::newRow("point alone") << "." << 0.0;
    QTest::newRow("sign alone") << "-" << 0.0;
    QTest::newRow("sign later stops") << "5-3" << 5.0;
    QTest::newRow("no exponent") << "1e3" << 1.0;
    QTest::newRow("blanks only") << "   " << 0.0;
}

void TstFormat::leadingNumber() {
    QFETCH(QString, text);
    QFETCH(double, expected);
    QCOMPARE(Val(text), expected);
}

void TstFormat::elapsed_data() {
    QTest::addColumn<qint32>("ms");
    QTest::addColumn<QString>("expected");

    QTest::newRow("under a second") << 999 << "00:00:00";
    QTest::newRow("zero") << 0 << "00:00:00";
    QTest::newRow("negative") << -5000 << "00:00:00";
    QTest::newRow("most negative") << std::numeric_limits<qint32>::min() << "00:00:00";
    QTest::newRow("59.999 s") << 59999 << "00:00:59";
    QTest::newRow("a minute") << 60000 << "00:01:00";
    QTest::newRow("an hour") << 3600000 << "01:00:00";
    QTest::newRow("h m s") << 3723000 << "01:02:03";
    QTest::newRow("a day less") << 86399999 << "23:59:59";
    QTest::newRow("no day field") << 86400000 << "24:00:00";
    QTest::newRow("100 hours") << 360000000 << "100:00:00";
    QTest::newRow("largest") << std::numeric_limits<qint32>::max() << "596:31:23";
}

void TstFormat::elapsed() {
    QFETCH(qint32, ms);
    QFETCH(QString, expected);
    QCOMPARE(FormatElapsed(ms), expected);
}

void TstFormat::findChar_data() {
    QTest::addColumn<QString>("ch");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("list entry") << ":"
                                << "Pc Number 3 is not logged :3" << 27;
    QTest::newRow("first of several") << ";"
                                      << "a;b;c" << 2;
    QTest::newRow("at start") << ":"
                              << ":abc" << 1;
    QTest::newRow("at end") << ":"
                            << "abc:" << 4;
    QTest::newRow("absent") << "x"
                            << "abc" << 0;
    QTest::newRow("empty text") << ":"
                                << "" << 0;
    QTest::newRow("empty char") << ""
                                << "abc" << 0;
    QTest::newRow("case counts") << "A"
                                 << "abcA" << 4;
}

void TstFormat::findChar() {
    QFETCH(QString, ch);
    QFETCH(QString, text);
    QFETCH(int, expected);
    QCOMPARE(int(FindChar(ch, text)), expected);
}

void TstFormat::numberAfterColon_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("list entry") << "Pc Number 3 is not logged :3" << 3;
    QTest::newRow("blank after colon") << "PC: 12" << 12;
    QTest::newRow("largest") << "PC:255" << 255;
    QTest::newRow("too large") << "PC:256" << 0;
    QTest::newRow("zero") << "PC:0" << 0;
    QTest::newRow("negative") << "PC:-3" << 0;
    QTest::newRow("fraction") << "PC:3.5" << 0;
    QTest::newRow("letters") << "PC:abc" << 0;
    QTest::newRow("no colon") << "PC 7" << 0;
    QTest::newRow("only the first colon") << "a:b:7" << 0;
    QTest::newRow("empty") << "" << 0;
}

void TstFormat::numberAfterColon() {
    QFETCH(QString, text);
    QFETCH(int, expected);
    QCOMPARE(NumberAfterColon(text), expected);
}

void TstFormat::moneySumsAreExact() {
    Money sum;
    for (int i = 0; i < 10; ++i)
        sum += Money::fromDouble(0.1);
    QCOMPARE(sum, Money::fromPesos(1));
    QCOMPARE(sum.toDecimalText(), QStringLiteral("1.0000"));

    // A day of small sales and refunds nets to the cent.
    Money day;
    for (int i = 0; i < 1000; ++i)
        day += Money::fromDouble(0.35) - Money::fromDouble(0.15);
    QCOMPARE(day.toDecimalText(), QStringLiteral("200.0000"));
    QCOMPARE((-Money::fromDouble(12.5)).toDecimalText(), QStringLiteral("-12.5000"));
    QCOMPARE(Money::fromDouble(2.675).units(), qint64(26750));
    QCOMPARE(Money::fromDouble(-0.00005).units(), qint64(-1));
    // Half of the fourth decimal rounds away from zero however the double lies about it.
    for (const auto& [value, units] : {std::pair{0.00015, 2},
                                       {0.00845, 85},
                                       {-0.00845, -85},
                                       {0.00495, 50},
                                       {123456.78905, 1234567891}})
        QCOMPARE(Money::fromDouble(value).units(), qint64(units));
}

void TstFormat::tickArithmetic_data() {
    QTest::addColumn<bool>("add");
    QTest::addColumn<qint32>("a");
    QTest::addColumn<qint32>("b");
    QTest::addColumn<bool>("overflows");
    QTest::addColumn<qint32>("expected");

    constexpr qint32 max = std::numeric_limits<qint32>::max();
    constexpr qint32 min = std::numeric_limits<qint32>::min();
    QTest::newRow("add") << true << 5000 << 60000 << false << 65000;
    QTest::newRow("add to max") << true << max - 1 << 1 << false << max;
    QTest::newRow("add past max") << true << max << 1 << true << 0;
    QTest::newRow("add past min") << true << min << -1 << true << 0;
    QTest::newRow("sub negative result") << false << 5 << 10 << false << -5;
    QTest::newRow("sub across zero") << false << 1000 << -2000 << false << 3000;
    QTest::newRow("sub past min") << false << min << 1 << true << 0;
    QTest::newRow("sub of min") << false << 0 << min << true << 0;
    // The up-time counter wrapped between start and now.
    QTest::newRow("sub across the wrap") << false << min + 10 << max - 10 << true << 0;
}

void TstFormat::tickArithmetic() {
    QFETCH(bool, add);
    QFETCH(qint32, a);
    QFETCH(qint32, b);
    QFETCH(bool, overflows);
    QFETCH(qint32, expected);
    if (overflows) {
        QVERIFY_THROWS_EXCEPTION(TickOverflow, add ? TickAdd(a, b) : TickSub(a, b));
        return;
    }
    QCOMPARE(add ? TickAdd(a, b) : TickSub(a, b), expected);
}

QTEST_APPLESS_MAIN(TstFormat)
#include "tst_format.moc"
