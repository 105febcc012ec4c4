// Report rows exported to CSV and Excel, read back as a spreadsheet would; a failed export
// leaves no file. The plain-text members list pages.
#include "sales/member_list_text.h"
#include "sales/report_data.h"
#include "sales/report_export.h"
#include "support/console_fixture.h"
#include "support/files.h"
#include "support/revenue_rows.h"
#include "support/scratch_disk.h"

#include <QXmlStreamReader>
#include <QtTest>

using namespace Qt::StringLiterals;
Q_DECLARE_METATYPE(ReportKind)

namespace {

const QDate Today(2026, 11, 15);
const QString Formula = u"=cmd|' /C calc'!A0"_s; // a spreadsheet would run it
const QString Address = u"Blk 5 \"A\", Makati"_s;

QByteArray unzipped(const QString& archive, const QString& member) {
    QProcess p;
    p.start(u"unzip"_s, {u"-p"_s, archive, member});
    return p.waitForFinished() && p.exitCode() == 0 ? p.readAllStandardOutput() : QByteArray();
}

// One cell of a sheet as a spreadsheet sees it.
struct SheetCell {
    bool isNumber = false;
    QString text;      // a text cell's text
    double number = 0; // a number cell's value (dates are day numbers)
    QString numFormat; // the cell's number format, "" for General
};

// The first sheet of a workbook, by cell reference ("A1").
QHash<QString, SheetCell> readSheet(const QString& path) {
    QStringList shared;
    QXmlStreamReader strings(unzipped(path, u"xl/sharedStrings.xml"_s));
    while (!strings.atEnd())
        if (strings.readNext() == QXmlStreamReader::StartElement && strings.name() == u"t"_s)
            shared << strings.readElementText();

    QHash<int, QString> formats = {{0, QString()}, {14, u"m/d/yyyy"_s}};
    QList<int> styleFormat;
    QXmlStreamReader styles(unzipped(path, u"xl/styles.xml"_s));
    bool inCellXfs = false;
    while (!styles.atEnd()) {
        const auto token = styles.readNext();
        if (token == QXmlStreamReader::StartElement && styles.name() == u"numFmt"_s)
            formats.insert(styles.attributes().value(u"numFmtId"_s).toInt(),
                           styles.attributes().value(u"formatCode"_s).toString());
        if (styles.name() == u"cellXfs"_s)
            inCellXfs = token == QXmlStreamReader::StartElement;
        if (token == QXmlStreamReader::StartElement && inCellXfs && styles.name() == u"xf"_s)
            styleFormat << styles.attributes().value(u"numFmtId"_s).toInt();
    }

    QHash<QString, SheetCell> cells;
    QXmlStreamReader sheet(unzipped(path, u"xl/worksheets/sheet1.xml"_s));
    while (!sheet.atEnd()) {
        if (sheet.readNext() != QXmlStreamReader::StartElement || sheet.name() != u"c"_s)
            continue;
        const QString ref = sheet.attributes().value(u"r"_s).toString();
        const QString type = sheet.attributes().value(u"t"_s).toString();
        const int style = sheet.attributes().value(u"s"_s).toInt();
        QString value;
        while (sheet.readNextStartElement())
            value = sheet.readElementText();
        cells.insert(ref, {type.isEmpty() || type == u"n"_s,
                           type == u"s"_s ? shared.value(value.toInt()) : value, value.toDouble(),
                           formats.value(styleFormat.value(style))});
    }
    return cells;
}

} // namespace

class ReportExportTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;

    PreparedReport report(ReportKind kind) {
        ReportRequest r;
        r.kind = kind;
        return prepareReport(fx->console->database(), r, fx->clock.now());
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->open();
        RowWriter w(fx->console->database());
        w.add(RentalRow{Today, 1234.5, u"ID-00007"_s, 12});
        w.add(ServiceRow{Today, 2500, u"Printing, colour"_s, 10024, u"1,250.00"_s, 2});
        w.add(MemberRow{u"ID-00001"_s, u"Peña"_s, Formula, u"Reyes"_s, Address, QDate(2025, 3, 9)});
        w.commit();
    }
    void cleanup() { fx.reset(); }

    // One line of heads (the report's fields) and one a row: dates as yyyy-MM-dd, amounts
    // with two decimals and no grouping, texts quoted where they hold a comma or a quote,
    // and a text that a spreadsheet would run as a formula made plain text.
    void csv_data() {
        QTest::addColumn<ReportKind>("kind");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("DRSDRG") << ReportKind::Rentals
                                << QStringList{u"Rdate,CID,TID,rType,StartT,EndT,Tcons,Amount"_s,
                                               u"2026-11-15,ID-00007,12,GAMES_RENTALS,08:00:00,"
                                               u"09:30:00,01:30:00,1234.50"_s};
        QTest::newRow("DRSDSRV") << ReportKind::Services
                                 << QStringList{u"Rdate,ORno,qty,Rdesc,subAmnt,Amount"_s,
                                                u"2026-11-15,10024,2,\"Printing, colour\","
                                                u"1250.00,2500.00"_s};
        QTest::newRow("DRMemList")
            << ReportKind::Members
            << QStringList{u"CID,LN,FN,MN,ADR,MDATE"_s,
                           u"ID-00001,Peña,'=cmd|' /C calc'!A0,Reyes,\"Blk 5 \"\"A\"\", "
                           u"Makati\",2025-03-09"_s};
    }
    void csv() {
        QFETCH(ReportKind, kind);
        QFETCH(QStringList, lines);
        const QString path = fx->dir.filePath(u"rows.csv"_s);
        QString error;
        QVERIFY2(exportCsv(report(kind).document, path, &error), qPrintable(error));
        const QByteArray bytes = readFile(path);
        QVERIFY(bytes.startsWith("\xEF\xBB\xBF"));
        QCOMPARE(QString::fromUtf8(bytes.mid(3)), lines.join(u"\r\n"_s) + u"\r\n"_s);
    }

    // The workbook's cells: heads as text, dates as day numbers shown "mm/dd/yyyy",
    // amounts as numbers shown "#,##0.00", texts as text.
    void xlsx_data() {
        QTest::addColumn<ReportKind>("kind");
        QTest::addColumn<QStringList>("heads");
        QTest::addColumn<QVariantList>("row"); // QDate, double (a money cell), QString
        QTest::newRow("DRSDAll")
            << ReportKind::Summary
            << QStringList{"Rdate", "CID",  "TID",   "rType", "StartT",  "EndT",
                           "Tcons", "ORno", "Rdesc", "qty",   "subAmnt", "Amount"}
            << QVariantList{Today,      QVariant(), QVariant(), u"SERVICE"_s,          QVariant(),
                            QVariant(), QVariant(), 10024,      u"Printing, colour"_s, 2,
                            1250.0,     2500.0};
        QTest::newRow("DRMemList")
            << ReportKind::Members << QStringList{"CID", "LN", "FN", "MN", "ADR", "MDATE"}
            << QVariantList{u"ID-00001"_s, u"Peña"_s, Formula,
                            u"Reyes"_s,    Address,   QDate(2025, 3, 9)};
    }
    void xlsx() {
        QFETCH(ReportKind, kind);
        QFETCH(QStringList, heads);
        QFETCH(QVariantList, row);
        const QString path = fx->dir.filePath(u"rows.xlsx"_s);
        QString error;
        QVERIFY2(exportXlsx(report(kind).document, path, u"Rows"_s, &error), qPrintable(error));
        const auto cells = readSheet(path);
        QVERIFY(!cells.isEmpty());
        for (int c = 0; c < heads.size(); ++c)
            QCOMPARE(cells.value(QChar(u'A' + c) + u"1"_s).text, heads[c]);
        // The summary lists the rental first; its service is the second row.
        const QString r = kind == ReportKind::Summary ? u"3"_s : u"2"_s;
        for (int c = 0; c < row.size(); ++c) {
            const QString ref = QChar(u'A' + c) + r;
            const QVariant want = row[c];
            const SheetCell got = cells.value(ref);
            const int type = want.typeId();
            if (!want.isValid()) {
                QVERIFY2(!cells.contains(ref), qPrintable(ref));
                continue;
            }
            const bool text = type == QMetaType::QString;
            QVERIFY2(got.isNumber != text, qPrintable(ref));
            if (text)
                QCOMPARE(got.text, want.toString());
            else if (type == QMetaType::QDate)
                QCOMPARE(got.number, double(QDate(1899, 12, 30).daysTo(want.toDate())));
            else
                QCOMPARE(got.number, want.toDouble());
            const QString format = type == QMetaType::QDate    ? u"mm/dd/yyyy"_s
                                   : type == QMetaType::Double ? u"#,##0.00"_s
                                                               : got.numFormat;
            QCOMPARE(got.numFormat, format);
        }
    }

    // An export that cannot be finished leaves no file, and an earlier file of the name
    // as it was.
    void failedExportLeavesNothing_data() {
        QTest::addColumn<QString>("format");
        QTest::newRow("csv") << u"csv"_s;
        QTest::newRow("xlsx") << u"xlsx"_s;
    }
    void failedExportLeavesNothing() {
        QFETCH(QString, format);
        auto exportTo = [&](const QString& path, QString* error) {
            const PreparedReport r = report(ReportKind::Members);
            return format == u"csv"_s ? exportCsv(r.document, path, error)
                                      : exportXlsx(r.document, path, u"Rows"_s, error);
        };
        QString error;
        const QString nowhere = fx->dir.filePath(u"no such folder/rows."_s + format);
        QVERIFY(!exportTo(nowhere, &error));
        QVERIFY(!error.isEmpty());
        QVERIFY(!QFileInfo::exists(nowhere));

        ScratchDisk disk(1);
        if (!disk.mounted())
            QSKIP(qPrintable(u"no scratch disk: "_s + disk.why()));
        const QString path = disk.path() + u"/rows."_s + format;
        QVERIFY(writeFile(path, "earlier"));
        // Many members make a file larger than the disk's last free bytes.
        RowWriter w(fx->console->database());
        for (int i = 0; i < 3000; ++i)
            w.add(MemberRow{u"ID-%1"_s.arg(i), u"Lastname %1"_s.arg(i), u"First"_s, u"Middle"_s,
                            u"Street %1, Barangay, City"_s.arg(i), Today});
        w.commit();
        QVERIFY(disk.fill());
        error.clear();
        QVERIFY(!exportTo(path, &error));
        QVERIFY(!error.isEmpty());
        disk.free();
        QCOMPARE(readFile(path), QByteArray("earlier"));
        QCOMPARE(QDir(disk.path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{u"rows."_s + format});
    }

    // The members by last and first name joined without regard to case ("CruzA" + "Ann"
    // before "Cruz" + "Zed"), 52 lines a page under the spaced-out title, a long address
    // going on under its member, each page numbered, the count on the last.
    void memberListText_data() {
        QTest::addColumn<int>("extra"); // one-line members besides the three named
        QTest::addColumn<int>("pages");
        QTest::newRow("one page") << 0 << 1;
        QTest::newRow("full first page") << 48 << 1;
        QTest::newRow("one over") << 49 << 2;
        QTest::newRow("three pages") << 120 << 3;
    }
    void memberListText() {
        QFETCH(int, extra);
        QFETCH(int, pages);
        RowWriter w(fx->console->database());
        const QString address = u"Blk 5 Lot 2, Phase 1, Bagong Silang, Caloocan"_s;
        w.add(MemberRow{u"ID-00002"_s, u"Cruz"_s, u"Zed"_s, {}, address, Today});
        w.add(MemberRow{u"ID-00003"_s, u"cruza"_s, u"Ann"_s, u"B"_s, {}, QDate()});
        for (int i = 100; i < 100 + extra; ++i)
            w.add(MemberRow{u"ID-%1"_s.arg(i), u"Zz%1"_s.arg(i), u"X"_s, {}, {}, Today});
        w.commit();
        const auto text = memberListPages(membersByName(fx->console->database()),
                                          QDateTime(Today, QTime(9, 0, 5)));
        QCOMPARE(text.size(), pages);
        QStringList members;
        for (int p = 0; p < pages; ++p) {
            const QStringList& page = text[p];
            QCOMPARE(page.size(), MemberListText::LinesPerPage);
            QCOMPARE(page.first().trimmed(), u"L I S T   O F   M E M B E R S"_s);
            QVERIFY(page[2].endsWith(u"Printed: 11/15/2026 09:00:05"_s));
            QVERIFY(page.last().endsWith(u"Page %1 of %2"_s.arg(p + 1).arg(pages)));
            QCOMPARE(page.last().startsWith(u"A Total of %1 Member/s"_s.arg(3 + extra)),
                     p == pages - 1);
            for (qsizetype i = 0; i < page.size(); ++i) {
                QVERIFY(page[i].size() <= MemberListText::Columns);
                if (page[i].startsWith(u"ID-"_s))
                    members << page[i];
                if (page[i].startsWith(u"ID-00002"_s))
                    members << page[i + 1];
            }
        }
        QCOMPARE(members.size(), 3 + extra + 1);
        // Columns: id at 0, name at 11, address at 42, the date ending at the last column.
        auto columns = [](const QString& line) {
            return QStringList{line.left(10).trimmed(), line.mid(11, 30).trimmed(),
                               line.mid(42, 25).trimmed(), line.mid(68).trimmed()};
        };
        QCOMPARE(columns(members[0]), (QStringList{"ID-00003", "cruza, Ann B", "", ""}));
        QCOMPARE(columns(members[1]),
                 (QStringList{"ID-00002", "Cruz, Zed", "Blk 5 Lot 2, Phase 1,", "11/15/2026"}));
        QCOMPARE(members[1].size(), MemberListText::Columns);
        QCOMPARE(columns(members[2]), (QStringList{"", "", "Bagong Silang, Caloocan", ""}));
        QCOMPARE(columns(members[3]).mid(0, 2),
                 (QStringList{"ID-00001", "Peña, =cmd|' /C calc'!A0 Reyes"}));
    }
};

QTEST_MAIN(ReportExportTest)
#include "tst_report_export.moc"
