// The report preview over the frame: each report's window, printed, kept as PDF, exported,
// and the plain-text members list.
#include "sales/report_window.h"
#include "store/printer_choice.h"
#include "support/files.h"
#include "support/frame_fixture.h"
#include "support/pdf_text.h"
#include "support/revenue_rows.h"

#include <QPrinterInfo>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Kind = PrinterChoice::Kind;
Q_DECLARE_METATYPE(ReportKind)

namespace {
const QDate Today(2026, 11, 15);
} // namespace

class ReportWindowTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;

    // What the operator was told, without the data folder's path.
    QStringList told() const {
        QStringList t;
        for (const auto& s : fx->prompts.shown)
            t << QString(s.title + u": "_s + s.text).replace(fx->dir.path() + u'/', QString());
        return t;
    }

    ReportWindow* open(ReportKind kind, const char* name) {
        ReportRequest r;
        r.kind = kind;
        r.rangeText = u"Start To End"_s;
        r.span.mode = DateSpan::Mode::All;
        openReport(*fx->console, *fx->frame, r);
        return fx->frame->findChild<ReportWindow*>(QString::fromLatin1(name));
    }

    void choosePdf(const QString& folder) {
        PrinterChoice{Kind::Pdf, {}, folder, {}}.save(*fx->folder);
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Admin"_s));
        RowWriter w(fx->console->database());
        for (int i = 0; i < 120; ++i) {
            w.add(RentalRow{Today, 20, u"ID-%1"_s.arg(i, 5, 10, QLatin1Char('0')), 1 + i % 24});
            w.add(ServiceRow{Today.addDays(-1), 5, u"Print %1"_s.arg(i)});
            w.add(MemberRow{u"ID-%1"_s.arg(i, 5, 10, QLatin1Char('0')), u"Santos %1"_s.arg(i),
                            u"Ana"_s, u"R"_s, u"Rizal St"_s, Today});
        }
        w.commit();
        fx->prompts.clear();
    }
    void cleanup() { fx.reset(); }

    // Each report in its own window, named as the report, with its pages; its PDF has as
    // many pages as the preview shows, and the operator is told where it is.
    void eachReport_data() {
        QTest::addColumn<ReportKind>("kind");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("document");
        auto row = [](ReportKind kind, const char* name, const QString& caption,
                      const QString& document) {
            QTest::newRow(name) << kind << QString::fromLatin1(name) << caption << document;
        };
        row(ReportKind::Rentals, "DRSDRG", u"Tarvo QRB  Rentals / Gaming Report"_s,
            u"Rentals / Gaming Report"_s);
        row(ReportKind::Services, "DRSDSRV", u"Tarvo QRB  Services Report"_s, u"Services Report"_s);
        row(ReportKind::Summary, "DRSDAll", u"Tarvo QRB  Rentals/Gaming and Services Report"_s,
            u"Rentals/Gaming and Services Report"_s);
        row(ReportKind::Members, "DRMemList", u"Tarvo QRB  Members as of [11/15/2026]"_s,
            u"Members List"_s);
    }
    void eachReport() {
        QFETCH(ReportKind, kind);
        QFETCH(QString, name);
        QFETCH(QString, caption);
        QFETCH(QString, document);
        choosePdf(u"Reports"_s);
        ReportWindow* w = open(kind, qPrintable(name));
        QVERIFY(w);
        QCOMPARE(w->windowTitle(), caption);
        const int pages = w->pageCount();
        QVERIFY2(pages >= 3, qPrintable(QString::number(pages)));
        auto* lblPage = w->findChild<QLabel*>(u"lblPage"_s);
        QCOMPARE(lblPage->text(), u"Page 1 of %1"_s.arg(pages));
        w->findChild<QPushButton*>(u"cmdNext"_s)->click();
        QCOMPARE(lblPage->text(), u"Page 2 of %1"_s.arg(pages));

        w->findChild<QPushButton*>(u"cmdPdf"_s)->click();
        const QString file = u"Reports/"_s + w->report().fileStem + u"_2026-11-15_0900.pdf"_s;
        QCOMPARE(told(), QStringList{u"Printing Report: The "_s + document + u" is kept as "_s +
                                     file + u'.'});
        QCOMPARE(pdfPageTexts(fx->dir.filePath(file)).size(), pages);
    }

    // The exports go where the PDF files go, named after the report and never over an
    // earlier one; a folder that cannot be made is told and nothing is written.
    void exports_data() {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("folder");
        QTest::newRow("csv") << u"Csv"_s << u"Out"_s;
        QTest::newRow("xlsx") << u"Xlsx"_s << u"Out"_s;
        QTest::newRow("no folder") << u"Xlsx"_s << u"TarvoQRB.INI/Out"_s;
    }
    void exports() {
        QFETCH(QString, format);
        QFETCH(QString, folder);
        fx->writeFile(u"TarvoQRB.INI"_s, "24=NOFPC\n");
        choosePdf(folder);
        ReportWindow* w = open(ReportKind::Rentals, "DRSDRG");
        QVERIFY(w);
        QStringList files, expected;
        for (const char* suffix : {"", "_2"}) {
            w->findChild<QPushButton*>(u"cmd"_s + format)->click();
            files << u"Rentals_2026-11-15_0900%1.%2"_s.arg(suffix, format.toLower());
            expected << (folder == u"Out"_s
                             ? u"Export Report: The rows are exported to Out/"_s + files.last() +
                                   u'.'
                             : u"Export Report: The folder TarvoQRB.INI/Out cannot be made."_s);
        }
        QCOMPARE(told(), expected);
        const QDir out(fx->dir.filePath(folder));
        if (folder != u"Out"_s)
            files.clear();
        QCOMPARE(out.entryList(QDir::Files, QDir::Name), files);
        for (const QString& f : files)
            QVERIFY(readFile(out.filePath(f)).size() > 1000);
    }

    // With no printer the operator is told and the report is kept as a PDF all the same.
    void printWithoutPrinter() {
        if (!QPrinterInfo::defaultPrinterName().isEmpty())
            QSKIP("this computer has a default printer");
        ReportWindow* w = open(ReportKind::Services, "DRSDSRV");
        QVERIFY(w);
        w->findChild<QPushButton*>(u"cmdPrint"_s)->click();
        QCOMPARE(told(),
                 (QStringList{u"Printing Report: No Printer is selected\rPrinting cancelled"_s,
                              u"Printing Report: The Services Report is kept as "
                              u"Statements/Services_2026-11-15_0900.pdf."_s}));
    }

    // A report of very many rows is made only when the operator wants to wait for it.
    void largeReportAsksFirst() {
        RowWriter w(fx->console->database());
        for (int i = 0; i < 40000; ++i)
            w.add(ServiceRow{Today, 1, u"Photocopy"_s});
        w.commit();
        fx->prompts.answers = {Prompts::Answer::No};
        QVERIFY(!open(ReportKind::Services, "DRSDSRV"));
        QCOMPARE(told(), QStringList{u"Large report: The report holds 40120 rows, some 892 "
                                     u"pages, and takes a while to make. Make it all the same?"_s});
        fx->prompts.clear();
        QVERIFY(open(ReportKind::Rentals, "DRSDRG")); // 120 rows: nothing asked
        QCOMPARE(told(), QStringList());
    }

    // A database that fails is told; no window opens.
    void databaseFailure() {
        fx->exec(u"DROP TABLE TmpRvnD"_s);
        QVERIFY(!open(ReportKind::Summary, "DRSDAll"));
        QCOMPARE(fx->prompts.shown.size(), 1);
        QCOMPARE(fx->prompts.shown.first().title, u"Database error"_s);
        QVERIFY(fx->prompts.shown.first().text.startsWith(u"The report cannot be made: "_s));
    }

    // The plain-text list goes to the chosen PDF folder, its title spaced out as written,
    // the members by name.
    void plainTextMembersList() {
        choosePdf(u"Lists"_s);
        printMemberListText(*fx->console, *fx->frame);
        const QString file = u"Lists/MembersList_2026-11-15_0900.pdf"_s;
        QCOMPARE(told(), (QStringList{u"Printing Members List: Sending Members List to Printer "
                                      u"..Please Wait.."_s,
                                      u"Printing Members List: The List of Members is kept as "_s +
                                          file + u'.'}));
        const QString path = fx->dir.filePath(file);
        const QStringList pages = pdfPageTexts(path);
        QCOMPARE(pages.size(), 3);
        const QString title = u"L I S T   O F   M E M B E R S"_s;
        QCOMPARE(spacedPhrase(pdfWords(path), 3, title.split(u' ', Qt::SkipEmptyParts)), title);
        // By last and first name joined: "Santos 10" + "Ana" comes before "Santos 1" + "Ana".
        const QString all = simplifiedPage(pages.join(u'\n'));
        const qsizetype ten = all.indexOf(u"Santos 10, Ana R"_s);
        QVERIFY(ten >= 0 && ten < all.indexOf(u"Santos 1, Ana R"_s));
        QVERIFY(simplifiedPage(pages.last()).contains(u"A Total of 120 Member/s Page 3 of 3"_s));
    }
};

QTEST_MAIN(ReportWindowTest)
#include "tst_report_window.moc"
