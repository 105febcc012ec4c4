// The billing statement's lines, and the names of its PDF files.
#include "billing/statement.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(BillFields)

namespace {

// The statement blank for blank (line 2 is one blank); %5 is the rate padded to its column.
const QString Layout = uR"(>>>>>>>Tarvo QRB  Billing Statement<<<<<<<
 
Date: %1                Time: %2
----------------------------------------------------------
Customer Info
->%3
->%4
----------------------------------------------------------

[Rentals/Gaming]

Time IN : %6            Time Out: %7
Rate: P %5Consumed: %8

                                             Amount:  %9

[Other Charges]
                                             Amount: %10
[Discounts]
                                             Discount: %11
Amount Due: Php %12
----------------------------------------------------------)"_s;

} // namespace

class StatementTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lines_data() {
        QTest::addColumn<BillFields>("fields");
        QTest::addColumn<QDateTime>("printedAt");
        QTest::addColumn<double>("ratePerHour");
        QTest::addColumn<QString>("expected");
        // pc, receipt and the rate text are not shown.
        const auto row = [](const char* tag, const QStringList& f, const QDateTime& at, double rate,
                            const QString& dateTime, const QString& rateShown) {
            BillFields b{.pc = 5, .receipt = u"000123"_s, .rate = u"99"_s};
            const QList<QString BillFields::*> shown{
                &BillFields::customerName, &BillFields::address,  &BillFields::timeIn,
                &BillFields::timeOut,      &BillFields::consumed, &BillFields::rentals,
                &BillFields::otherCharges, &BillFields::discount, &BillFields::amountDue};
            for (int i = 0; i < shown.size(); ++i)
                b.*shown[i] = f[i];
            QTest::newRow(tag) << b << at << rate
                               << Layout
                                      .arg(dateTime.left(8), dateTime.mid(9), f[0], f[1], rateShown,
                                           f[2], f[3], f[4], f[5])
                                      .arg(f[6], f[7], f[8]);
        };
        row("walk-in, no address",
            {u"WALK-IN ON TRM 5"_s, QString(), u"09:00:00"_s, u"10:30:00"_s, u"01:30:00"_s,
             u"30.00"_s, u"0.00"_s, u"0.00"_s, u"30.00"_s},
            QDateTime(QDate(2026, 11, 15), QTime(10, 30, 5)), 20.0, u"11/15/26 10:30:05"_s,
            u"20.00                 "_s);
        row("member, discount and other charges, rate without grouping",
            {u"CRUZ, JUAN"_s, u"12 Rizal St., Makati"_s, u"22:10:00"_s, u"23:59:58"_s,
             u"01:49:58"_s, u"1,234.50"_s, u"25.00"_s, u"123.45"_s, u"1,136.05"_s},
            QDateTime(QDate(2026, 1, 2), QTime(23, 59, 59)), 1234.5, u"01/02/26 23:59:59"_s,
            u"1234.50               "_s);
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
        const QString first = u"Statement_2026-11-15_0930_PC05"_s;
        QTest::newRow("first") << morning << 5 << QStringList() << first + u".pdf"_s;
        QTest::newRow("three-digit PC")
            << QDateTime(QDate(2027, 1, 3), QTime(23, 5)) << 120 << QStringList()
            << u"Statement_2027-01-03_2305_PC120.pdf"_s;
        QTest::newRow("same minute, other PC") << morning << 6 << QStringList{first + u".pdf"_s}
                                               << u"Statement_2026-11-15_0930_PC06.pdf"_s;
        QTest::newRow("same minute, same PC: never written over")
            << morning << 5 << QStringList{first + u".pdf"_s, first + u"_2.pdf"_s}
            << first + u"_3.pdf"_s;
    }
    void pdfNames() {
        QFETCH(QDateTime, printedAt);
        QFETCH(int, pc);
        QFETCH(QStringList, present);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        for (const QString& name : present)
            QVERIFY(QFile(dir.filePath(name)).open(QIODevice::WriteOnly));
        QCOMPARE(freeStatementPath(dir.path(), printedAt, pc), dir.filePath(expected));
    }
};

QTEST_GUILESS_MAIN(StatementTest)
#include "tst_statement.moc"
