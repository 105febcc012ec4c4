// The printed reports: rows and order read from a real database, the labels and grand total,
// and every row printed once over as many pages as it takes, with heads, footers and totals.
#include "sales/report_data.h"
#include "support/console_fixture.h"
#include "support/files.h"
#include "support/pdf_text.h"
#include "support/revenue_rows.h"

#include <QPdfWriter>
#include <QtTest>

using namespace Qt::StringLiterals;

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

// Rows inserted as they would be taken: rentals and services named by id, members by id.
void addRows(RowWriter& w, ReportKind kind, int i, const QString& id, double amount) {
    if (kind == ReportKind::Members)
        w.add(MemberRow{id, u"Santos"_s, u"Ana"_s, u"Reyes"_s, u"Rizal St"_s, Today});
    else if (kind == ReportKind::Rentals || (kind == ReportKind::Summary && i % 2))
        w.add(RentalRow{Today, amount, id, 7});
    else
        w.add(ServiceRow{Today, amount, id, 1001, amount / 2, 2});
}

// The fixed texts of one printed report.
struct Form {
    QString form, title, version, pageLine;
    QStringList heads;
    QString closing; // the total line, or the members count
};

} // namespace

Q_DECLARE_METATYPE(ReportKind)
Q_DECLARE_METATYPE(ReportRequest)
Q_DECLARE_METATYPE(FieldFormat)
Q_DECLARE_METATYPE(Form)

class ReportsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    const Database& db() { return fx->console->database(); }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->open();
    }
    void cleanup() { fx.reset(); }

    // By date (a day's rows as taken), both ends of a range included; as the table holds
    // them when the window asks for no order, except the summary.
    void rowsAndOrder_data() {
        QTest::addColumn<ReportRequest>("req");
        QTest::addColumn<QStringList>("expected");
        using M = DateSpan::Mode;
        using K = ReportKind;
        const QDate b(2026, 11, 1), e(2026, 11, 30);
        auto row = [](const char* name, const ReportRequest& r, const QStringList& rows) {
            QTest::newRow(name) << r << rows;
        };
        row("rentals today", request(K::Rentals), {"R-15a", "R-15b"});
        row("rentals range", request(K::Rentals, M::Range, b, e),
            {"R-01", "R-15a", "R-15b", "R-30"});
        row("rentals reversed range", request(K::Rentals, M::Range, e, b), {});
        row("rentals all, unsorted", request(K::Rentals, M::All, {}, {}, false),
            {"R-15a", "R-30", "R-01", "R-oct", "R-dec", "R-15b"});
        row("rentals all, by date", request(K::Rentals, M::All),
            {"R-oct", "R-01", "R-15a", "R-15b", "R-30", "R-dec"});
        row("services all, unsorted", request(K::Services, M::All, {}, {}, false),
            {"S-15", "S-01"});
        row("services range", request(K::Services, M::Range, b, e), {"S-01", "S-15"});
        row("summary today", request(K::Summary), {"R-15a", "S-15", "R-15b"});
        row("summary all is by date however asked", request(K::Summary, M::All, {}, {}, false),
            {"R-oct", "R-01", "S-01", "R-15a", "S-15", "R-15b", "R-30", "R-dec"});
        row("members by id, any case", request(K::Members), {"ID-00001", "id-00002", "ID-00003"});
    }
    void rowsAndOrder() {
        QFETCH(ReportRequest, req);
        QFETCH(QStringList, expected);
        RowWriter w(db());
        const std::pair<QDate, const char*> taken[] = {
            {Today, "R-15a"},          {{2026, 11, 30}, "R-30"}, {{2026, 11, 1}, "R-01"},
            {{2026, 10, 31}, "R-oct"}, {{2026, 12, 1}, "R-dec"}, {Today, "S-15"},
            {{2026, 11, 1}, "S-01"},   {Today, "R-15b"}};
        for (const auto& [day, id] : taken) {
            if (id[0] == 'R')
                w.add(RentalRow{day, 20, QString::fromLatin1(id)});
            else
                w.add(ServiceRow{day, 5, QString::fromLatin1(id)});
        }
        for (const char* id : {"ID-00003", "ID-00001", "id-00002"})
            w.add(MemberRow{QString::fromLatin1(id), u"L"_s, u"F"_s, {}, {}, Today});
        w.commit();
        QCOMPARE(markers(prepareReport(db(), req, fx->clock.now()).document.rows()), expected);
    }

    // The grand total of Amount, exact; rows of another day are not in it. (The other labels
    // and the empty total are read back from the printed pages below.)
    void grandTotal_data() {
        QTest::addColumn<ReportKind>("kind");
        QTest::addColumn<QList<double>>("amounts");
        QTest::addColumn<QString>("total");
        QTest::newRow("rentals") << ReportKind::Rentals << QList<double>{20, 35.5} << u"55.50"_s;
        QTest::newRow("tenths add exactly")
            << ReportKind::Services << QList<double>{0.1, 0.1, 0.1, 1234567.3} << u"1,234,567.60"_s;
        QTest::newRow("summary adds both kinds")
            << ReportKind::Summary << QList<double>{999999.99, 0.01} << u"1,000,000.00"_s;
    }
    void grandTotal() {
        QFETCH(ReportKind, kind);
        QFETCH(QList<double>, amounts);
        QFETCH(QString, total);
        RowWriter w(db());
        for (qsizetype i = 0; i < amounts.size(); ++i)
            addRows(w, kind, int(i + 1), u"ID-%1"_s.arg(i), amounts[i]);
        w.add(RentalRow{Today.addDays(-1), 500, u"yesterday"_s});
        w.commit();
        ReportElement label;
        label.name = u"lblGrandTotal"_s;
        QCOMPARE(prepareReport(db(), request(kind), fx->clock.now()).document.labelText(label),
                 total);
    }

    void fieldFormats_data() {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<FieldFormat>("format");
        QTest::addColumn<QString>("shown");
        auto row = [](const char* name, const QVariant& v, FieldFormat f, const QString& shown) {
            QTest::newRow(name) << v << f << shown;
        };
        row("date as stored", u"2026-01-05"_s, FieldFormat::Date, u"01/05/2026"_s);
        row("date typed US style", u"1/5/2026"_s, FieldFormat::Date, u"01/05/2026"_s);
        row("no date", u"soon"_s, FieldFormat::Date, u"soon"_s);
        row("money", 1234.5, FieldFormat::Money, u"1,234.50"_s);
        row("money kept as typed", u"1,250.00"_s, FieldFormat::Money, u"1,250.00"_s);
        row("money rounds", 2.345, FieldFormat::Money, u"2.35"_s);
        row("receipt number", 10024.0, FieldFormat::Number, u"10024"_s);
    }
    void fieldFormats() {
        QFETCH(QVariant, value);
        QFETCH(FieldFormat, format);
        QFETCH(QString, shown);
        QCOMPARE(fieldText(value, format), shown);
    }

    // Bands: report header 20, page header 5, rows 10, report footer 10, page footer 5; on
    // pages 100 tall seven rows fill the first page, nine the others.
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
        const ReportLayout& l = document.layout();
        QStringList laid;
        for (const ReportDocument::Page& page : document.paginate(pageHeight)) {
            QStringList bands;
            for (const ReportDocument::Placed& p : page)
                bands << (p.band == &l.reportHeader   ? u"RH"_s
                          : p.band == &l.pageHeader   ? u"PH"_s
                          : p.band == &l.reportFooter ? u"RF"_s
                          : p.band == &l.pageFooter   ? u"PF"_s
                                                      : QString::number(p.row));
            // the page footer at the foot of the page
            QCOMPARE(page.last().top + page.last().band->height, pageHeight);
            laid << bands.join(u' ');
        }
        QCOMPARE(laid, pages);
    }

    // Printed to PDF and read back: every row once and in order over several pages; on every
    // page the column heads and the footer with the page count; the captions on the first;
    // the total after the last row.
    void printed_data() {
        QTest::addColumn<ReportKind>("kind");
        QTest::addColumn<int>("rowCount");
        QTest::addColumn<Form>("f");
        auto form = [](const QString& form, const QString& title, const QStringList& heads,
                       const QString& closing) {
            return Form{form, title, u"Tarvo QRB  v 1.00"_s, u"Page: %1  of %2"_s, heads, closing};
        };
        const Form rentals =
            form(u"Tarvo QRB  Report Form"_s, u"Rentals / Gaming Report"_s,
                 {"Date", "Mem ID", "PC#", "Trans Type", "TimeIn", "TimeOut", "Total", "Amount"},
                 u"Grand Total for Rentals / Gaming:"_s);
        const Form services = form(u"Tarvo QRB Report Form"_s, u"Services"_s,
                                   {"Date", "O.R. No.#", "Qty", "Description", "Total", "Amount"},
                                   u"Grand Total for Services:"_s);
        const Form all = form(u"Tarvo QRB  Report Form"_s, u"Rentals/Gaming and Services"_s,
                              {"Date", "Mem ID", "PC#", "Trans Type", "TimeIn", "TimeOut",
                               "Consumed", "O.R. No.#", "Description", "Qty", "Total", "Amount"},
                              u"Grand Total for Rentals / Gaming and Services:"_s);
        Form members = form(u"Tarvo Clients List"_s, u"Clients"_s,
                            {"Client ID:", "Name & Address", "Membership Date"}, {});
        members.version = u"Tarvo QRB v 1.00"_s;
        members.pageLine = u"Page : %1 of %2"_s;
        for (int rows : {0, 200}) {
            const QByteArray n = QByteArray::number(rows);
            QTest::newRow("DRSDRG " + n) << ReportKind::Rentals << rows << rentals;
            QTest::newRow("DRSDSRV " + n) << ReportKind::Services << rows << services;
            QTest::newRow("DRSDAll " + n) << ReportKind::Summary << rows << all;
            members.closing = u"A Total of %1 Member/s Currently"_s.arg(rows);
            QTest::newRow("DRMemList " + n) << ReportKind::Members << rows << members;
        }
    }
    void printed() {
        QFETCH(ReportKind, kind);
        QFETCH(int, rowCount);
        QFETCH(Form, f);
        // Row i is named M-000i; the first is worth 1,234.50 and the rest 10.25 each.
        QStringList expectedOrder;
        RowWriter w(db());
        for (int i = 0; i < rowCount; ++i) {
            expectedOrder << u"M-%1"_s.arg(i, 4, 10, QLatin1Char('0'));
            addRows(w, kind, i, expectedOrder.last(), i == 0 ? 1234.5 : 10.25);
        }
        w.commit();
        const PreparedReport report = prepareReport(db(), request(kind), fx->clock.now());
        const QString path = fx->dir.filePath(report.fileStem + u".pdf"_s);
        QPdfWriter pdf(path);
        pdf.setPageLayout(reportPageLayout(report.document.layout()));
        QVERIFY(report.document.print(pdf));
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
            QCOMPARE(spaced(p, f.pageLine.arg(p).arg(count)), f.pageLine.arg(p).arg(count));
            QCOMPARE(spaced(p, f.version), f.version);
            QCOMPARE(text.split(u'\n').contains(f.title), p == 1);
            const qsizetype before = seen.size();
            for (auto it = marker.globalMatch(pages[p - 1]); it.hasNext();)
                seen << it.next().captured();
            if (seen.size() > before || p == 1)
                for (const QString& head : f.heads)
                    QVERIFY2(text.contains(head), qPrintable(u"page %1: "_s.arg(p) + head));
        }
        QCOMPARE(seen, expectedOrder);

        const QString first = simplifiedPage(pages.first());
        QCOMPARE(spaced(1, f.form), f.form);
        QVERIFY(first.contains(u"DATE:"_s));
        QVERIFY(first.contains(u"11/15/2026 09:00:00"_s));
        if (kind == ReportKind::Members) {
            QVERIFY(first.contains(u"DATE: DATE : 11/15/2026 09:00:00"_s));
            QVERIFY(first.contains(f.closing));
            QVERIFY(rowCount == 0 || first.contains(u"M-0000 Santos Ana Reyes 11/15/2026"_s));
            return;
        }
        QVERIFY(first.contains(u"Date Range: ( Today ) 11-15-2026"_s));
        const QString last = simplifiedPage(pages.last());
        const QString total = rowCount == 0 ? u"0.00"_s : u"3,274.25"_s; // 1,234.50 + 199 × 10.25
        QVERIFY2(last.contains(f.closing + u' ' + total), qPrintable(last.right(300)));
        QVERIFY(rowCount == 0 ||
                (first.contains(u"11/15/2026"_s) && first.contains(u"1,234.50"_s)));
    }
};

QTEST_MAIN(ReportsTest)
#include "tst_reports.moc"
