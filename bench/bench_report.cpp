// How long a printed report takes, and how that grows with its pages: a real database
// holds a range of rental rows (and services for the combined report) that fill 10, 25
// and 50 pages; each report's rows are read and summed, then laid out and painted into a
// PDF file. Prints the median of a few runs, wall time and the process's CPU time (the
// steadier figure on a busy machine), and the time a page.
#include "base/app_folder.h"
#include "sales/report_data.h"
#include "store/database.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPdfWriter>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

namespace {

constexpr int Runs = 5;
const QDate Today(2026, 11, 15);

double cpuMs() {
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6;
}

struct Timing {
    double wallMs = 0;
    double cpuMs = 0;
};

// The median wall and CPU times of a few runs.
Timing median(const std::function<void()>& work) {
    std::vector<double> wall, cpu;
    QElapsedTimer t;
    for (int i = 0; i < Runs; ++i) {
        const double c = cpuMs();
        t.start();
        work();
        wall.push_back(double(t.nsecsElapsed()) / 1e6);
        cpu.push_back(cpuMs() - c);
    }
    std::sort(wall.begin(), wall.end());
    std::sort(cpu.begin(), cpu.end());
    return {wall[wall.size() / 2], cpu[cpu.size() / 2]};
}

// Rows of the kind the report lists, spread over the days before today; the other
// kind's rows (a fifth as many) are there too, as in a real table.
void fill(const Database& db, int rows) {
    DbSession s(db);
    s.begin();
    s.run(QStringLiteral("DELETE FROM TmpRvnD"));
    for (int i = 0; i < rows; ++i) {
        const QDate day = Today.addDays(-(i % 60));
        s.run(QStringLiteral("INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID, TID, StartT, "
                             "EndT, Tcons) VALUES (?, 'GAMES_RENTALS', ?, ?, ?, '08:00:00', "
                             "'09:30:00', '01:30:00')"),
              {day, 10 + i % 97 * 0.25, QStringLiteral("ID-%1").arg(i % 900, 5, 10, QChar(u'0')),
               QString::number(1 + i % 24)});
        if (i % 5 == 0)
            s.run(QStringLiteral("INSERT INTO TmpRvnD (Rdate, rtype, Amount, Orno, rdesc, subamnt, "
                                 "qty) VALUES (?, 'SERVICE', 6, ?, 'Printing (B/W)', '3.00', 2)"),
                  {day, 10000 + i});
    }
    s.commit();
}

// The rows that make `pages` pages of the report, found by laying it out.
int rowsFor(const Database& db, ReportKind kind, int pages, const QString& scratch) {
    int low = 1, high = 60 * pages;
    ReportRequest r;
    r.kind = kind;
    r.span.mode = DateSpan::Mode::All;
    while (low < high) {
        const int mid = (low + high + 1) / 2;
        fill(db, mid);
        const PreparedReport report = prepareReport(db, r, QDateTime(Today, QTime(9, 0)));
        QPdfWriter pdf(scratch);
        pdf.setPageLayout(reportPageLayout(report.document.layout()));
        if (report.document.pageCount(pdf) <= pages)
            low = mid;
        else
            high = mid - 1;
    }
    return low;
}

} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTemporaryDir dir;
    const AppFolder folder(dir.path());
    const Database db(folder);
    db.prepare();
    const QString pdfPath = dir.filePath(QStringLiteral("report.pdf"));

    std::printf("%-8s %5s %5s %16s %16s %16s %9s\n", "report", "pages", "rows", "read ms wall/cpu",
                "print wall/cpu", "cpu ms a page", "PDF KiB");
    for (ReportKind kind : {ReportKind::Rentals, ReportKind::Summary}) {
        for (int pages : {10, 25, 50}) {
            const int rows = rowsFor(db, kind, pages, pdfPath);
            fill(db, rows);
            ReportRequest r;
            r.kind = kind;
            r.span.mode = DateSpan::Mode::All;
            const QDateTime now(Today, QTime(9, 0));
            const Timing read = median([&] { prepareReport(db, r, now); });
            const PreparedReport report = prepareReport(db, r, now);
            int printed = 0;
            const Timing print = median([&] {
                QPdfWriter pdf(pdfPath);
                pdf.setPageLayout(reportPageLayout(report.document.layout()));
                printed = report.document.pageCount(pdf);
                if (!report.document.print(pdf))
                    std::printf("the PDF could not be written\n");
            });
            std::printf("%-8s %5d %5lld %7.1f / %6.1f %7.1f / %6.1f %16.2f %9lld\n",
                        qPrintable(report.document.layout().name), printed,
                        static_cast<long long>(report.document.rows().rowCount()), read.wallMs,
                        read.cpuMs, print.wallMs, print.cpuMs, (read.cpuMs + print.cpuMs) / printed,
                        static_cast<long long>(QFileInfo(pdfPath).size() / 1024));
        }
    }
    return 0;
}
