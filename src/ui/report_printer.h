#pragma once

#include "base/app_folder.h"
#include "base/prompts.h"

#include <QDateTime>
#include <QPageLayout>
#include <QString>

#include <functional>

class QPagedPaintDevice;

// A report or list ready to go to paper.
struct Printout {
    QString documentName; // the print job's and the PDF's title
    QString fileStem;     // its PDF is "<stem>_2026-11-15_0930.pdf"
    QPageLayout pageLayout;
    // Paints every page on the device; false when the device refuses.
    std::function<bool(QPagedPaintDevice&)> paint;
};

struct PrintoutOutput {
    enum class Where { Printer, PdfFile, Nowhere };
    Where where = Where::Nowhere;
    QString name; // the printer's name, or the PDF file's path

    bool operator==(const PrintoutOutput&) const = default;
};

// Prints where the printer set-up in `folder`'s settings file says: the chosen printer,
// with none chosen the system's default, or a PDF file in the chosen folder. When the
// chosen printer is gone, there is no printer, or the printer refuses the job, the
// operator is told and the printout is kept as a PDF file all the same. Nowhere only when
// even that cannot be written; the operator is told why. Boxes carry `title`.
PrintoutOutput sendPrintout(const Printout& printout, const AppFolder& folder, Prompts& prompts,
                            const QDateTime& now, const QString& title);

// Keeps the printout as a PDF file in the chosen PDF folder and tells the operator where.
PrintoutOutput savePrintoutPdf(const Printout& printout, const AppFolder& folder, Prompts& prompts,
                               const QDateTime& now, const QString& title);

// The folder the set-up keeps PDF files in (made when missing), or empty after telling
// the operator why it cannot be made.
QString printoutFolder(const AppFolder& folder, Prompts& prompts, const QString& title);
