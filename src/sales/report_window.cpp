#include "sales/report_window.h"

#include "base/form_host.h"
#include "console/console.h"
#include "sales/member_list_text.h"
#include "sales/report_export.h"
#include "store/database.h"
#include "ui/accessibility.h"
#include "ui/report_printer.h"

#include <QBoxLayout>
#include <QDir>
#include <QLabel>
#include <QPageSize>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPushButton>

namespace {

using Icon = Prompts::Icon;

const QString PrintTitle = QStringLiteral("Printing Report");
// Past this many rows (a thousand pages or so) the operator is asked first: every page of
// the preview is made before the window shows.
constexpr qint64 LargeReportRows = 40000;
constexpr qint64 RowsPerPage = 45;
const QString ExportTitle = QStringLiteral("Export Report");

QString documentName(ReportKind kind) {
    switch (kind) {
    case ReportKind::Rentals:
        return QStringLiteral("Rentals / Gaming Report");
    case ReportKind::Services:
        return QStringLiteral("Services Report");
    case ReportKind::Summary:
        return QStringLiteral("Rentals/Gaming and Services Report");
    case ReportKind::Members:
        break;
    }
    return QStringLiteral("Members List");
}

ReportKind kindOf(const ReportLayout& layout) {
    for (ReportKind k : {ReportKind::Rentals, ReportKind::Services, ReportKind::Summary})
        if (reportLayout(k).name == layout.name)
            return k;
    return ReportKind::Members;
}

Printout printoutOf(const PreparedReport& report) {
    const ReportDocument* document = &report.document;
    return {documentName(kindOf(document->layout())), report.fileStem,
            reportPageLayout(document->layout()), [document](QPagedPaintDevice& device) {
                return document->print(device);
            }};
}

QPushButton* button(QWidget* parent, const char* name, const QString& caption) {
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(QString::fromLatin1(name));
    return b;
}

} // namespace

ReportWindow::ReportWindow(Console& console, PreparedReport report, QWidget* parent)
    : QWidget(parent), console_(console), report_(std::move(report)),
      screen_(std::make_unique<QPrinter>(QPrinter::HighResolution)) {
    setObjectName(report_.document.layout().name);
    setWindowTitle(report_.caption);
    setAttribute(Qt::WA_DeleteOnClose);

    screen_->setOutputFormat(QPrinter::PdfFormat);
    screen_->setPageLayout(reportPageLayout(report_.document.layout()));
    preview_ = new QPrintPreviewWidget(screen_.get(), this);
    preview_->setObjectName(QStringLiteral("preview"));
    preview_->setAccessibleName(QStringLiteral("Report pages"));
    connect(preview_, &QPrintPreviewWidget::paintRequested, this,
            [this](QPrinter* printer) { report_.document.print(*printer); });

    auto* cmdPrev = button(this, "cmdPrev", QStringLiteral("&< Previous"));
    auto* cmdNext = button(this, "cmdNext", QStringLiteral("Next &>"));
    lblPage_ = new QLabel(this);
    lblPage_->setObjectName(QStringLiteral("lblPage"));
    auto* cmdZoomIn = button(this, "cmdZoomIn", QStringLiteral("Zoom &In"));
    auto* cmdZoomOut = button(this, "cmdZoomOut", QStringLiteral("Zoom &Out"));
    auto* cmdPrint = button(this, "cmdPrint", QStringLiteral("&Print"));
    auto* cmdPdf = button(this, "cmdPdf", QStringLiteral("Save as P&DF"));
    auto* cmdCsv = button(this, "cmdCsv", QStringLiteral("Export &CSV"));
    auto* cmdXlsx = button(this, "cmdXlsx", QStringLiteral("Export to &Excel"));
    auto* cmdclose = button(this, "cmdclose", QStringLiteral("&Close"));

    auto* bar = new QHBoxLayout;
    for (QWidget* w :
         std::initializer_list<QWidget*>{cmdPrev, lblPage_, cmdNext, cmdZoomOut, cmdZoomIn})
        bar->addWidget(w);
    bar->addStretch();
    for (QWidget* w : std::initializer_list<QWidget*>{cmdPrint, cmdPdf, cmdCsv, cmdXlsx, cmdclose})
        bar->addWidget(w);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(preview_, 1);

    connect(cmdPrev, &QPushButton::clicked, this,
            [this] { showPage(preview_->currentPage() - 1); });
    connect(cmdNext, &QPushButton::clicked, this,
            [this] { showPage(preview_->currentPage() + 1); });
    connect(cmdZoomIn, &QPushButton::clicked, preview_, [this] { preview_->zoomIn(); });
    connect(cmdZoomOut, &QPushButton::clicked, preview_, [this] { preview_->zoomOut(); });
    connect(preview_, &QPrintPreviewWidget::previewChanged, this,
            [this] { showPage(preview_->currentPage()); });
    connect(cmdPrint, &QPushButton::clicked, this, &ReportWindow::printReport);
    connect(cmdPdf, &QPushButton::clicked, this, &ReportWindow::savePdf);
    connect(cmdCsv, &QPushButton::clicked, this, &ReportWindow::exportCsv);
    connect(cmdXlsx, &QPushButton::clicked, this, &ReportWindow::exportExcel);
    connect(cmdclose, &QPushButton::clicked, this, &QWidget::close);

    preview_->setZoomMode(QPrintPreviewWidget::FitToWidth);
    preview_->updatePreview();
    resize(900, 680);
    makeAccessible(this);
}

ReportWindow::~ReportWindow() = default;

int ReportWindow::pageCount() const {
    return preview_->pageCount();
}

void ReportWindow::showPage(int page) {
    const int count = preview_->pageCount();
    page = qBound(1, page, qMax(1, count));
    if (page != preview_->currentPage())
        preview_->setCurrentPage(page);
    lblPage_->setText(QStringLiteral("Page %1 of %2").arg(page).arg(count));
}

void ReportWindow::printReport() {
    sendPrintout(printoutOf(report_), console_.folder(), console_.prompts(), console_.clock().now(),
                 PrintTitle);
}

void ReportWindow::savePdf() {
    savePrintoutPdf(printoutOf(report_), console_.folder(), console_.prompts(),
                    console_.clock().now(), PrintTitle);
}

QString ReportWindow::exportCsv() {
    return exportTo(QStringLiteral("csv"));
}

QString ReportWindow::exportExcel() {
    return exportTo(QStringLiteral("xlsx"));
}

QString ReportWindow::exportTo(const QString& extension) {
    Prompts& prompts = console_.prompts();
    const QString folder = printoutFolder(console_.folder(), prompts, ExportTitle);
    if (folder.isEmpty())
        return QString();
    const QString path = freeFilePath(folder, report_.fileStem, console_.clock().now(), extension);
    QString why;
    const bool written = extension == QLatin1String("csv")
                             ? ::exportCsv(report_.document, path, &why)
                             : exportXlsx(report_.document, path, report_.fileStem, &why);
    if (!written) {
        prompts.message(QStringLiteral("The rows could not be exported to %1: %2")
                            .arg(QDir::toNativeSeparators(path), why),
                        ExportTitle, Icon::Exclamation);
        return QString();
    }
    prompts.message(
        QStringLiteral("The rows are exported to %1.").arg(QDir::toNativeSeparators(path)),
        ExportTitle, Icon::Information);
    return path;
}

void openReport(Console& console, FormHost& host, const ReportRequest& request) {
    try {
        const qint64 rows = countReportRows(console.database(), request, console.clock().today());
        if (rows > LargeReportRows &&
            console.prompts().ask(
                QStringLiteral("The report holds %1 rows, some %2 pages, and takes a while to "
                               "make. Make it all the same?")
                    .arg(rows)
                    .arg(rows / RowsPerPage + 1),
                QStringLiteral("Large report"), Prompts::Buttons::YesNo,
                Icon::Exclamation) != Prompts::Answer::Yes)
            return;
        host.showForm(new ReportWindow(console, prepareReport(console.database(), request,
                                                              console.clock().now())),
                      false);
    } catch (const StoreError& e) {
        console.prompts().message(QStringLiteral("The report cannot be made: ") + e.text(),
                                  QStringLiteral("Database error"), Icon::Critical);
    }
}

void printMemberListText(Console& console, FormHost&) {
    Prompts& prompts = console.prompts();
    const QString title = QStringLiteral("Printing Members List");
    const QDateTime now = console.clock().now();
    QList<QStringList> pages;
    try {
        pages = memberListPages(membersByName(console.database()), now);
    } catch (const StoreError& e) {
        prompts.message(QStringLiteral("The members list cannot be read: ") + e.text(), title,
                        Icon::Critical);
        return;
    }
    prompts.notice(QStringLiteral("Sending Members List to Printer ..Please Wait.."), title,
                   Icon::Information);
    const Printout printout{QStringLiteral("List of Members"), QStringLiteral("MembersList"),
                            QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait,
                                        QMarginsF(15, 12.7, 12.7, 12.7), QPageLayout::Millimeter),
                            [&pages](QPagedPaintDevice& device) {
                                return paintTextPages(pages, device);
                            }};
    sendPrintout(printout, console.folder(), prompts, now, title);
}
