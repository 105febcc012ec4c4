#pragma once

#include "sales/date_span.h"
#include "sales/report_data.h"

#include <QWidget>

#include <memory>

class Console;
class FormHost;
class QLabel;
class QPrinter;
class QPrintPreviewWidget;

// The print preview of a report, named as the report (DRSDRG, DRSDSRV, DRSDAll,
// DRMemList): its pages as they will be printed, and buttons that print them on the
// chosen printer, keep them as a PDF file, or export the rows to CSV or Excel (files go
// to the folder the printer set-up keeps PDF files in).
class ReportWindow : public QWidget {
    Q_OBJECT
public:
    ReportWindow(Console& console, PreparedReport report, QWidget* parent = nullptr);
    ~ReportWindow() override;

    const PreparedReport& report() const { return report_; }
    int pageCount() const;

    void printReport();
    void savePdf();
    // The path written, or empty when the operator was told why not.
    QString exportCsv();
    QString exportExcel();

private:
    void showPage(int page);
    QString exportTo(const QString& extension);

    Console& console_;
    PreparedReport report_;
    std::unique_ptr<QPrinter> screen_; // the preview's page, never sent to a printer
    QPrintPreviewWidget* preview_ = nullptr;
    QLabel* lblPage_ = nullptr;
};

// Shows a report in its preview window, from which the operator prints it on the chosen
// printer, saves it as PDF or exports its rows.
void openReport(Console& console, FormHost& host, const ReportRequest& request);

// The plain-text members list ("L I S T   O F   M E M B E R S"), members ordered by last
// and first name, sent to the chosen printer (or its PDF); opened from the register.
void printMemberListText(Console& console, FormHost& host);
