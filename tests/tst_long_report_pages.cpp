// Pictures of every printed report for people to look at: a week of a café's takings and its
// members, as PDF and PNG pages, and the preview window. In $TARVO_BUILD_DIR/screenshots/reports.
#include "base/form_host.h"
#include "sales/member_list_text.h"
#include "sales/report_window.h"
#include "support/console_fixture.h"
#include "support/pdf_text.h"
#include "support/revenue_rows.h"

#include <QPdfWriter>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

namespace {

const QDate Today(2026, 11, 15);

const char* const LastNames[] = {"DELA CRUZ", "SANTOS",     "REYES",  "BAUTISTA", "GARCIA",
                                 "MENDOZA",   "VILLANUEVA", "RAMOS",  "AQUINO",   "CASTILLO",
                                 "FERNANDEZ", "PEÑA",       "TORRES", "NAVARRO",  "SALAZAR"};
const char* const FirstNames[] = {"JUAN", "MARIA", "ANA",   "PEDRO", "LEA",   "MARK ANTHONY",
                                  "ROSE", "JOSE",  "CARLO", "JOY",   "PAOLO", "KRISTINE"};
const char* const Streets[] = {"12 Mabini St., Malate, Manila", "45 Rizal Ave., Sta. Cruz",
                               "Blk 5 Lot 2, Phase 1, Bagong Silang, Caloocan",
                               "88 Kalayaan Ave., Diliman, Quezon City", "7 Luna St., Pasig"};
const char* const Services[] = {"Printing (B/W)", "Printing (Colour)", "Scanning",   "CD Burning",
                                "Photocopy",      "Lamination",        "Soft Drinks"};
const double Prices[] = {3, 10, 5, 25, 2, 20, 15};

} // namespace

class ReportPages : public QObject {
    Q_OBJECT

    ConsoleFixture fx;
    QDir out;

    // The PDF's pages as PNG files beside it; their count.
    int pictures(const QString& pdf) {
        const QString stem = pdf.chopped(4);
        runTool(u"pdftoppm"_s, {u"-r"_s, u"70"_s, u"-png"_s, pdf, stem});
        const QStringList pngs =
            out.entryList({QFileInfo(stem).fileName() + u"-*.png"_s}, QDir::Files);
        for (const QString& png : pngs)
            qInfo("page: %s", qPrintable(out.filePath(png)));
        return int(pngs.size());
    }

private Q_SLOTS:
    void initTestCase() {
        const QString build = qEnvironmentVariable("TARVO_BUILD_DIR", u"."_s);
        out = QDir(build + u"/screenshots/reports"_s);
        QVERIFY(out.removeRecursively());
        QVERIFY(out.mkpath(u"."_s));
        fx.open();
        RowWriter w(fx.console->database());
        int serial = 0;
        for (int m = 0; m < 75; ++m)
            w.add(MemberRow{
                u"ID-%1"_s.arg(m + 1, 5, 10, QLatin1Char('0')),
                QString::fromUtf8(LastNames[m % 15]), QString::fromUtf8(FirstNames[(m * 7) % 12]),
                QString::fromUtf8(LastNames[(m + 4) % 15]).left(1) + u'.',
                QString::fromUtf8(Streets[m % 5]), QDate(2025, 1 + m % 12, 1 + m % 28)});
        // A week: 30 rentals and a dozen sales a day.
        for (int d = 6; d >= 0; --d) {
            const QDate day = Today.addDays(-d);
            auto time = [](int m) {
                return QTime(m / 60 % 24, m % 60).toString(u"HH:mm:ss"_s);
            };
            for (int r = 0; r < 30; ++r) {
                const int start = 8 * 60 + r * 25, minutes = 30 + (r * 37) % 150;
                w.add(RentalRow{
                    day, std::max(10.0, minutes * 20.0 / 60),
                    r % 4 == 0 ? u"TRM-%1"_s.arg(1 + r % 24) // a walk-in
                               : u"ID-%1"_s.arg(1 + (r * 11 + d) % 75, 5, 10, QLatin1Char('0')),
                    1 + r % 24, time(start), time(start + minutes), time(minutes)});
            }
            for (int s = 0; s < 12; ++s) {
                const int item = (s + d) % 7;
                const double qty = 1 + (s * 3) % 5;
                w.add(ServiceRow{day, Prices[item] * qty, QString::fromLatin1(Services[item]),
                                 double(10400 + ++serial), QString::number(Prices[item], 'f', 2),
                                 qty});
            }
        }
        w.commit();
    }

    void reports() {
        const QString week = u"11/09/2026 To 11/15/2026"_s;
        for (const auto& [kind, range] : {std::pair{ReportKind::Rentals, week},
                                          {ReportKind::Services, week},
                                          {ReportKind::Summary, u"11/13/2026 To 11/15/2026"_s},
                                          {ReportKind::Members, QString()}}) {
            ReportRequest r;
            r.kind = kind;
            r.rangeText = range;
            r.span = {DateSpan::Mode::Range, QDate::fromString(range.left(10), u"MM/dd/yyyy"_s),
                      Today};
            const PreparedReport report = prepareReport(fx.console->database(), r, fx.clock.now());
            const QString path = out.filePath(report.document.layout().name + u".pdf"_s);
            QPdfWriter pdf(path);
            pdf.setPageLayout(reportPageLayout(report.document.layout()));
            QVERIFY(report.document.print(pdf));
            const int pages = int(pdfPageTexts(path).size());
            QVERIFY(pages >= 2);
            QCOMPARE(pictures(path), pages);
        }
    }

    void plainTextMembersList() {
        const QString path = out.filePath(u"MembersText.pdf"_s);
        QPdfWriter pdf(path);
        pdf.setPageLayout(QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait,
                                      QMarginsF(15, 12.7, 12.7, 12.7), QPageLayout::Millimeter));
        const auto pages = memberListPages(membersByName(fx.console->database()), fx.clock.now());
        QVERIFY(paintTextPages(pages, pdf));
        QCOMPARE(pictures(path), int(pages.size()));
    }

    void previewWindow() {
        struct Host : FormHost {
            QWidget* shown = nullptr;
            void showForm(QWidget* form, bool) override {
                shown = form;
                form->show();
            }
        } host;
        ReportRequest r;
        r.kind = ReportKind::Summary;
        r.span.mode = DateSpan::Mode::All;
        r.rangeText = u"ALL Dates"_s;
        openReport(*fx.console, host, r);
        QVERIFY(host.shown);
        host.shown->resize(1000, 720);
        QVERIFY(QTest::qWaitForWindowExposed(host.shown));
        const QString file = out.filePath(u"preview-window.png"_s);
        QVERIFY(host.shown->grab().save(file));
        qInfo("screenshot: %s", qPrintable(file));
        delete host.shown;
    }
};

QTEST_MAIN(ReportPages)
#include "tst_long_report_pages.moc"
