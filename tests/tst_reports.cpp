// The printed reports read the right rows in the right order from a real database, fill
// their labels and grand total, and print every row once over as many pages as they take,
// with their captions, heads, page footers and totals as written.
#include "sales/report_data.h"
#include "support/console_fixture.h"
#include "support/files.h"
#include "support/pdf_text.h"
#include "support/revenue_rows.h"

#include <QPdfWriter>
#include <QtTest>

using namespace Qt::StringLiterals;
Q_DECLARE_METATYPE(ReportKind)
Q_DECLARE_METATYPE(ReportRequest)
Q_DECLARE_METATYPE(FieldFormat)

namespace {

const QDate Today(2026, 11, 15); // the fixture's clock

// What names a row in the checks: the member or customer id, else the description.
QStringList markers(const ReportTable& rows) {
    QStringList out;
    for (qsizetype r = 0; r < rows.rowCount(); ++r) {
        const QVariant cid = rows.value(r, u"CID"_s);
        out << (cid.isNull() ? rows.value(r, u"rdesc"_s) : cid).toString();
    }
    return out;
}

ReportRequest request(ReportKind kind, DateSpan::Mode mode = DateSpan::Mode::Today,
                      QDate begin = {}, QDate end = {}, bool ordered = true) {
    ReportRequest r;
    r.kind = kind;
    r.span = {mode, begin, end};
    r.ordered = ordered;
    r.rangeText = u"( Today ) 11-15-2026"_s;
    return r;
}

} // namespace

class ReportsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    const Database& db() { return fx->console->database(); }

    QString printToPdf(const PreparedReport& report) {
        const QString path = fx->dir.filePath(report.fileStem + u".pdf"_s);
        QPdfWriter pdf(path);
        pdf.setPageLayout(reportPageLayout(report.document.layout()));
        return report.document.print(pdf) ? path : QString();
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->open();
    }
    void cleanup() { fx.reset(); }

    // Which rows each report reads, and in which order: by date (a day's rows in the
    // order they were taken), both ends of a range included; the rentals and services of
    // every date as the table holds them when the window asks for no order.
    void rowsAndOrder_data() {
        QTest::addColumn<ReportRequest>("req");
        QTest::addColumn<QStringList>("expected");
        using M = DateSpan::Mode;
        using K = ReportKind;
        const QDate b(2026, 11, 1), e(2026, 11, 30);
        QTest::newRow("rentals today") << request(K::Rentals) << QStringList{"R-15a", "R-15b"};
        QTest::newRow("rentals range")
            << request(K::Rentals, M::Range, b, e) << QStringList{"R-01", "R-15a", "R-15b", "R-30"};
        QTest::newRow("rentals reversed range")
            << request(K::Rentals, M::Range, e, b) << QStringList{};
        QTest::newRow("rentals all, unsorted")
            << request(K::Rentals, M::All, {}, {}, false)
            << QStringList{"R-15a", "R-30", "R-01", "R-oct", "R-dec", "R-15b"};
        QTest::newRow("rentals all, by date")
            << request(K::Rentals, M::All)
            << QStringList{"R-oct", "R-01", "R-15a", "R-15b", "R-30", "R-dec"};
        QTest::newRow("services all, unsorted")
            << request(K::Services, M::All, {}, {}, false) << QStringList{"S-15", "S-01"};
        QTest::newRow("services range")
            << request(K::Services, M::Range, b, e) << QStringList{"S-01", "S-15"};
        QTest::newRow("summary today")
            << request(K::Summary) << QStringList{"R-15a", "S-15", "R-15b"};
        QTest::newRow("summary all is by date however asked")
            << request(K::Summary, M::All, {}, {}, false)
            << QStringList{"R-oct", "R-01", "S-01", "R-15a", "S-15", "R-15b", "R-30", "R-dec"};
        QTest::newRow("members by id, any case")
            << request(K::Members) << QStringList{"ID-00001", "id-00002", "ID-00003"};
    }
    void rowsAndOrder() {
        QFETCH(ReportRequest, req);
        QFETCH(QStringList, expected);
        RowWriter w(db());
        w.add(RentalRow{Today, 20, u"R-15a"_s});
        w.add(RentalRow{QDate(2026, 11, 30), 20, u"R-30"_s});
        w.add(RentalRow{QDate(2026, 11, 1), 20, u"R-01"_s});
        w.add(RentalRow{QDate(2026, 10, 31), 20, u"R-oct"_s});
        w.add(RentalRow{QDate(2026, 12, 1), 20, u"R-dec"_s});
        w.add(ServiceRow{Today, 5, u"S-15"_s});
        w.add(ServiceRow{QDate(2026, 11, 1), 5, u"S-01"_s});
        w.add(RentalRow{Today, 20, u"R-15b"_s});
        for (const char* id : {"ID-00003", "ID-00001", "id-00002"})
            w.add(MemberRow{QString::fromLatin1(id), u"L"_s, u"F"_s, {}, {}, Today});
        w.commit();
        const PreparedReport report = prepareReport(db(), req, fx->clock.now());
        QCOMPARE(markers(report.document.rows()), expected);
    }

    // The labels the code fills: the grand total of Amount (exact, "0.00" with no rows),
    // the time of printing, the window's range line; for the members list its count and
    // caption.
    void labels_data() {
        QTest::addColumn<ReportKind>("kind");
        QTest::addColumn<QList<double>>("amounts");
        QTest::addColumn<QStringList>("expected"); // name=text, and "caption=..."
        const QStringList takings = {u"lbldate=11/15/2026 09:00:00"_s,
                                     u"lbldrange=( Today ) 11-15-2026"_s};
        QTest::newRow("no rentals") << ReportKind::Rentals << QList<double>{}
                                    << (takings + QStringList{u"lblGrandTotal=0.00"_s});
        QTest::newRow("rentals") << ReportKind::Rentals << QList<double>{20, 35.5}
                                 << (takings + QStringList{u"lblGrandTotal=55.50"_s});
        QTest::newRow("tenths add exactly")
            << ReportKind::Services << QList<double>{0.1, 0.1, 0.1, 1234567.3}
            << (takings + QStringList{u"lblGrandTotal=1,234,567.60"_s});
        QTest::newRow("summary adds both kinds")
            << ReportKind::Summary << QList<double>{999999.99, 0.01}
            << (takings + QStringList{u"lblGrandTotal=1,000,000.00"_s});
        QTest::newRow("members") << ReportKind::Members << QList<double>{1, 2, 3}
                                 << QStringList{u"lbldate=DATE : 11/15/2026 09:00:00"_s,
                                                u"lblCountMem=A Total of 3 Member/s Currently"_s,
                                                u"caption=Tarvo QRB  Members as of [11/15/2026]"_s};
        QTest::newRow("no members")
            << ReportKind::Members << QList<double>{}
            << QStringList{u"lblCountMem=A Total of 0 Member/s Currently"_s};
    }
    void labels() {
        QFETCH(ReportKind, kind);
        QFETCH(QList<double>, amounts);
        QFETCH(QStringList, expected);
        RowWriter w(db());
        for (qsizetype i = 0; i < amounts.size(); ++i) {
            const QString id = u"ID-%1"_s.arg(i);
            if (kind == ReportKind::Members)
                w.add(MemberRow{id, u"L"_s, u"F"_s, {}, {}, Today});
            else if (kind == ReportKind::Rentals || (kind == ReportKind::Summary && i % 2 == 0))
                w.add(RentalRow{Today, amounts[i], id});
            else
                w.add(ServiceRow{Today, amounts[i], id});
        }
        // Rows of another day or kind are not in the total.
        w.add(RentalRow{Today.addDays(-1), 500, u"yesterday"_s});
        w.commit();
        const PreparedReport report = prepareReport(db(), request(kind), fx->clock.now());
        for (const QString& pair : expected) {
            const QString name = pair.section(u'=', 0, 0);
            const QString text = pair.section(u'=', 1);
            if (name == u"caption"_s) {
                QCOMPARE(report.caption, text);
                continue;
            }
            ReportElement label;
            label.name = name;
            QCOMPARE(report.document.labelText(label), text);
        }
    }

    // How fields show their values, whatever the column holds.
    void fieldFormats_data() {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<FieldFormat>("format");
        QTest::addColumn<QString>("shown");
        QTest::newRow("date as stored")
            << QVariant(u"2026-01-05"_s) << FieldFormat::Date << u"01/05/2026"_s;
        QTest::newRow("date typed US style")
            << QVariant(u"1/5/2026"_s) << FieldFormat::Date << u"01/05/2026"_s;
        QTest::newRow("no date") << QVariant(u"soon"_s) << FieldFormat::Date << u"soon"_s;
        QTest::newRow("money") << QVariant(1234.5) << FieldFormat::Money << u"1,234.50"_s;
        QTest::newRow("money kept as typed")
            << QVariant(u"1,250.00"_s) << FieldFormat::Money << u"1,250.00"_s;
        QTest::newRow("money rounds") << QVariant(2.345) << FieldFormat::Money << u"2.35"_s;
        QTest::newRow("receipt number") << QVariant(10024.0) << FieldFormat::Number << u"10024"_s;
    }
    void fieldFormats() {
        QFETCH(QVariant, value);
        QFETCH(FieldFormat, format);
        QFETCH(QString, shown);
        QCOMPARE(fieldText(value, format), shown);
    }

    // The bands on pages 100 mm tall: report header 20, page header 5, rows 10, report
    // footer 10, page footer 5; seven rows fill the first page, nine the others.
    void pagination_data() {
        QTest::addColumn<int>("rowCount");
        QTest::addColumn<double>("pageHeight");
        QTest::addColumn<QStringList>("pages");
        QTest::newRow("no rows") << 0 << 100.0 << QStringList{"RH PH RF PF"};
        QTest::newRow("room for the total") << 6 << 100.0 << QStringList{"RH PH 0 1 2 3 4 5 RF PF"};
        QTest::newRow("total alone on the next page, without heads")
            << 7 << 100.0 << QStringList{"RH PH 0 1 2 3 4 5 6 PF", "RF PF"};
        QTest::newRow("rows go on") << 17 << 100.0
                                    << QStringList{"RH PH 0 1 2 3 4 5 6 PF",
                                                   "PH 7 8 9 10 11 12 13 14 15 PF", "PH 16 RF PF"};
        QTest::newRow("a page too short still takes a row")
            << 2 << 12.0 << QStringList{"RH PH 0 PF", "PH 1 PF", "RF PF"};
    }
    void pagination() {
        QFETCH(int, rowCount);
        QFETCH(double, pageHeight);
        QFETCH(QStringList, pages);
        ReportLayout layout;
        layout.reportHeader.height = 20;
        layout.pageHeader.height = 5;
        layout.detail.height = 10;
        layout.reportFooter.height = 10;
        layout.pageFooter.height = 5;
        ReportTable rows({u"CID"_s}, {});
        for (int i = 0; i < rowCount; ++i)
            rows.append({i});
        const ReportDocument document(layout, rows);
        QStringList laid;
        double bottom = 0;
        for (const ReportDocument::Page& page : document.paginate(pageHeight)) {
            QStringList bands;
            for (const ReportDocument::Placed& p : page) {
                const ReportBand* b = p.band;
                bands << (b == &document.layout().reportHeader   ? u"RH"_s
                          : b == &document.layout().pageHeader   ? u"PH"_s
                          : b == &document.layout().reportFooter ? u"RF"_s
                          : b == &document.layout().pageFooter   ? u"PF"_s
                                                                 : QString::number(p.row));
                bottom = p.top + b->height;
            }
            QCOMPARE(bottom, pageHeight); // the page footer at the foot of the page
            laid << bands.join(u' ');
        }
        QCOMPARE(laid, pages);
    }

    // Printed to PDF and read back: every row once and in order, over several pages when
    // there are many; on every page the column heads and its footer with the page count;
    // the header's captions on the first; the total after the last row.
    void printed_data() {
        QTest::addColumn<ReportKind>("kind");
        QTest::addColumn<int>("rowCount");
        QTest::addColumn<QString>("form"); // as printed, blanks and all
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("version"); // the page footer's
        QTest::addColumn<QString>("pageLine");
        QTest::addColumn<QStringList>("heads");
        QTest::addColumn<QString>("closing"); // the total line, or the members count
        const QString page = u"Page: %1  of %2"_s;
        const QString version = u"Tarvo QRB  v 1.00"_s;
        const QStringList rentalHeads = {"Date",   "Mem ID",  "PC#",   "Trans Type",
                                         "TimeIn", "TimeOut", "Total", "Amount"};
        const QStringList serviceHeads = {"Date",        "O.R. No.#", "Qty",
                                          "Description", "Total",     "Amount"};
        const QStringList allHeads = {"Date",        "Mem ID",  "PC#",      "Trans Type",
                                      "TimeIn",      "TimeOut", "Consumed", "O.R. No.#",
                                      "Description", "Qty",     "Total",    "Amount"};
        for (int rows : {0, 200}) {
            const QByteArray n = QByteArray::number(rows);
            QTest::newRow("DRSDRG " + n)
                << ReportKind::Rentals << rows << u"Tarvo QRB  Report Form"_s
                << u"Rentals / Gaming Report"_s << version << page << rentalHeads
                << u"Grand Total for Rentals / Gaming:"_s;
            QTest::newRow("DRSDSRV " + n)
                << ReportKind::Services << rows << u"Tarvo QRB Report Form"_s << u"Services"_s
                << version << page << serviceHeads << u"Grand Total for Services:"_s;
            QTest::newRow("DRSDAll " + n)
                << ReportKind::Summary << rows << u"Tarvo QRB  Report Form"_s
                << u"Rentals/Gaming and Services"_s << version << page << allHeads
                << u"Grand Total for Rentals / Gaming and Services:"_s;
            QTest::newRow("DRMemList " + n)
                << ReportKind::Members << rows << u"Tarvo Clients List"_s << u"Clients"_s
                << u"Tarvo QRB v 1.00"_s << u"Page : %1 of %2"_s
                << QStringList{"Client ID:", "Name & Address", "Membership Date"}
                << u"A Total of %1 Member/s Currently"_s.arg(rows);
        }
    }
    void printed() {
        QFETCH(ReportKind, kind);
        QFETCH(int, rowCount);
        QFETCH(QString, form);
        QFETCH(QString, title);
        QFETCH(QString, version);
        QFETCH(QString, pageLine);
        QFETCH(QStringList, heads);
        QFETCH(QString, closing);

        // Row i is named M-000i; the first is worth 1,234.50 and the rest 10.25 each.
        QStringList expectedOrder;
        {
            RowWriter w(db());
            for (int i = 0; i < rowCount; ++i) {
                const QString id = u"M-%1"_s.arg(i, 4, 10, QLatin1Char('0'));
                const double amount = i == 0 ? 1234.5 : 10.25;
                expectedOrder << id;
                if (kind == ReportKind::Members)
                    w.add(MemberRow{id, u"Santos"_s, u"Ana"_s, u"Reyes"_s, u"Rizal St"_s, Today});
                else if (kind == ReportKind::Rentals || (kind == ReportKind::Summary && i % 2))
                    w.add(RentalRow{Today, amount, id, 7});
                else
                    w.add(ServiceRow{Today, amount, id, 1001, amount / 2, 2});
            }
            w.commit();
        }
        const PreparedReport report = prepareReport(db(), request(kind), fx->clock.now());
        const QString path = printToPdf(report);
        QVERIFY(!path.isEmpty());
        const QStringList pages = pdfPageTexts(path);
        const QList<PdfWord> words = pdfWords(path);
        const int count = int(pages.size());
        QVERIFY2(rowCount == 0 ? count == 1 : count >= 4, qPrintable(QString::number(count)));

        auto spaced = [&](int page, const QString& phrase) {
            return spacedPhrase(words, page, phrase.split(u' ', Qt::SkipEmptyParts));
        };
        QStringList seen;
        static const QRegularExpression marker(u"M-\\d{4}"_s);
        for (int p = 1; p <= count; ++p) {
            const QString text = simplifiedPage(pages[p - 1]);
            QCOMPARE(spaced(p, pageLine.arg(p).arg(count)), pageLine.arg(p).arg(count));
            QCOMPARE(spaced(p, version), version);
            QCOMPARE(text.split(u'\n').contains(title), p == 1);
            const qsizetype before = seen.size();
            for (auto it = marker.globalMatch(pages[p - 1]); it.hasNext();)
                seen << it.next().captured();
            if (seen.size() > before || p == 1)
                for (const QString& head : heads)
                    QVERIFY2(text.contains(head),
                             qPrintable(u"page %1 has no head "_s.arg(p) + head));
        }
        QCOMPARE(seen, expectedOrder);

        const QString first = simplifiedPage(pages.first());
        QCOMPARE(spaced(1, form), form);
        QVERIFY(first.contains(u"DATE:"_s));
        QVERIFY(first.contains(u"11/15/2026 09:00:00"_s));
        const QString last = simplifiedPage(pages.last());
        if (kind == ReportKind::Members) {
            QVERIFY(first.contains(u"DATE: DATE : 11/15/2026 09:00:00"_s));
            QVERIFY(first.contains(closing));
            if (rowCount > 0)
                QVERIFY(first.contains(u"M-0000 Santos Ana Reyes 11/15/2026"_s));
            return;
        }
        QVERIFY(first.contains(u"Date Range: ( Today ) 11-15-2026"_s));
        const QString total = rowCount == 0 ? u"0.00"_s : u"3,274.25"_s; // 1,234.50 + 199 × 10.25
        QVERIFY2(last.contains(closing + u' ' + total), qPrintable(last.right(300)));
        if (rowCount > 0) {
            QVERIFY(first.contains(u"11/15/2026"_s));
            QVERIFY(first.contains(u"1,234.50"_s));
        }
    }
};

QTEST_MAIN(ReportsTest)
#include "tst_reports.moc"
