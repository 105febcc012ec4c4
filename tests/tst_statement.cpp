// The billing statement's lines, and the names of its PDF files.
#include "billing/statement.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(BillFields)

namespace {

BillFields bill(const QString& name, const QString& address, const QString& in, const QString& out,
                const QString& consumed, const QString& rentals, const QString& other,
                const QString& discount, const QString& due) {
    BillFields b;
    b.customerName = name;
    b.address = address;
    b.timeIn = in;
    b.timeOut = out;
    b.consumed = consumed;
    b.rentals = rentals;
    b.otherCharges = other;
    b.discount = discount;
    b.amountDue = due;
    // What the statement does not show.
    b.pc = 5;
    b.receipt = u"000123"_s;
    b.rate = u"99"_s;
    return b;
}

} // namespace

class StatementTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The statement as the customer reads it, blank for blank (line 2 is one blank).
    void lines_data() {
        QTest::addColumn<BillFields>("fields");
        QTest::addColumn<QDateTime>("printedAt");
        QTest::addColumn<double>("ratePerHour");
        QTest::addColumn<QString>("expected");
        QTest::newRow("walk-in, no address")
            << bill(u"WALK-IN ON TRM 5"_s, {}, u"09:00:00"_s, u"10:30:00"_s, u"01:30:00"_s,
                    u"30.00"_s, u"0.00"_s, u"0.00"_s, u"30.00"_s)
            << QDateTime(QDate(2026, 11, 15), QTime(10, 30, 5)) << 20.0
            << uR"(>>>>>>>Tarvo QRB  Billing Statement<<<<<<<
 
Date: 11/15/26                Time: 10:30:05
----------------------------------------------------------
Customer Info
->WALK-IN ON TRM 5
->
----------------------------------------------------------

[Rentals/Gaming]

Time IN : 09:00:00            Time Out: 10:30:00
Rate: P 20.00                 Consumed: 01:30:00

                                             Amount:  30.00

[Other Charges]
                                             Amount: 0.00
[Discounts]
                                             Discount: 0.00
Amount Due: Php 30.00
----------------------------------------------------------)"_s;
        QTest::newRow("member, discount and other charges, rate without grouping")
            << bill(u"CRUZ, JUAN"_s, u"12 Rizal St., Makati"_s, u"22:10:00"_s, u"23:59:58"_s,
                    u"01:49:58"_s, u"1,234.50"_s, u"25.00"_s, u"123.45"_s, u"1,136.05"_s)
            << QDateTime(QDate(2026, 1, 2), QTime(23, 59, 59)) << 1234.5
            << uR"(>>>>>>>Tarvo QRB  Billing Statement<<<<<<<
 
Date: 01/02/26                Time: 23:59:59
----------------------------------------------------------
Customer Info
->CRUZ, JUAN
->12 Rizal St., Makati
----------------------------------------------------------

[Rentals/Gaming]

Time IN : 22:10:00            Time Out: 23:59:58
Rate: P 1234.50               Consumed: 01:49:58

                                             Amount:  1,234.50

[Other Charges]
                                             Amount: 25.00
[Discounts]
                                             Discount: 123.45
Amount Due: Php 1,136.05
----------------------------------------------------------)"_s;
    }
    void lines() {
        QFETCH(BillFields, fields);
        QFETCH(QDateTime, printedAt);
        QFETCH(double, ratePerHour);
        QFETCH(QString, expected);
        const QStringList lines = statementLines(fields, printedAt, ratePerHour);
        const QStringList want = expected.split(u'\n');
        QCOMPARE(lines.size(), Statement::LineCount);
        for (int i = 0; i < want.size(); ++i)
            QVERIFY2(
                lines[i] == want[i],
                qPrintable(u"line %1: \"%2\", not \"%3\""_s.arg(i + 1).arg(lines[i], want[i])));
    }

    void pdfNames_data() {
        QTest::addColumn<QDateTime>("printedAt");
        QTest::addColumn<int>("pc");
        QTest::addColumn<QStringList>("present"); // files already in the folder
        QTest::addColumn<QString>("expected");
        const QDateTime morning(QDate(2026, 11, 15), QTime(9, 30, 59));
        QTest::newRow("first") << morning << 5 << QStringList()
                               << u"Statement_2026-11-15_0930_PC05.pdf"_s;
        QTest::newRow("three-digit PC")
            << QDateTime(QDate(2027, 1, 3), QTime(23, 5)) << 120 << QStringList()
            << u"Statement_2027-01-03_2305_PC120.pdf"_s;
        QTest::newRow("same minute, other PC")
            << morning << 6 << QStringList{u"Statement_2026-11-15_0930_PC05.pdf"_s}
            << u"Statement_2026-11-15_0930_PC06.pdf"_s;
        QTest::newRow("same minute, same PC: never written over")
            << morning << 5
            << QStringList{u"Statement_2026-11-15_0930_PC05.pdf"_s,
                           u"Statement_2026-11-15_0930_PC05_2.pdf"_s}
            << u"Statement_2026-11-15_0930_PC05_3.pdf"_s;
    }
    void pdfNames() {
        QFETCH(QDateTime, printedAt);
        QFETCH(int, pc);
        QFETCH(QStringList, present);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        for (const QString& name : present) {
            QFile f(dir.filePath(name));
            QVERIFY(f.open(QIODevice::WriteOnly));
        }
        QCOMPARE(freeStatementPath(dir.path(), printedAt, pc), dir.filePath(expected));
    }
};

QTEST_GUILESS_MAIN(StatementTest)
#include "tst_statement.moc"
