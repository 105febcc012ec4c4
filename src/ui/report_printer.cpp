#include "ui/report_printer.h"

#include "sales/report_export.h"
#include "store/printer_choice.h"
#include "store/settings_file.h"

#include <QDir>
#include <QPageSize>
#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QSaveFile>

namespace {

using Icon = Prompts::Icon;
using Where = PrintoutOutput::Where;

PrinterChoice loadChoice(const AppFolder& folder, Prompts& prompts, const QString& title) {
    try {
        return PrinterChoice::load(folder);
    } catch (const SettingsError& e) {
        prompts.message(e.text(), title, Icon::Exclamation);
    }
    return {};
}

bool toPrinter(const Printout& printout, const QString& name, const PrinterChoice& choice) {
    QPrinter printer(QPrinterInfo::printerInfo(name), QPrinter::HighResolution);
    printer.setDocName(printout.documentName);
    if (!choice.paperMm.isEmpty())
        printer.setPageSize(QPageSize(choice.paperMm, QPageSize::Millimeter));
    printer.setPageOrientation(printout.pageLayout.orientation());
    printer.setPageMargins(printout.pageLayout.margins(), printout.pageLayout.units());
    return printout.paint(printer);
}

// The PDF is written under another name and put in place only when whole.
PrintoutOutput toPdf(const Printout& printout, const QString& folder, const QDateTime& now,
                     Prompts& prompts, const QString& title) {
    if (folder.isEmpty())
        return {};
    const QString path = freeFilePath(folder, printout.fileStem, now, QStringLiteral("pdf"));
    QSaveFile file(path);
    bool written = file.open(QIODevice::WriteOnly);
    if (written) {
        QPdfWriter pdf(&file);
        pdf.setPageLayout(printout.pageLayout);
        pdf.setTitle(printout.documentName);
        pdf.setCreator(QStringLiteral("Tarvo QRB"));
        written = printout.paint(pdf);
    }
    written = written && file.commit();
    if (!written) {
        file.cancelWriting();
        prompts.message(
            QStringLiteral("The %1 cannot be written to %2: %3")
                .arg(printout.documentName, QDir::toNativeSeparators(path), file.errorString()),
            title, Icon::Exclamation);
        return {};
    }
    return {Where::PdfFile, path};
}

} // namespace

QString printoutFolder(const AppFolder& folder, Prompts& prompts, const QString& title) {
    const QString path = loadChoice(folder, prompts, title).pdfFolderIn(folder);
    if (!QDir().mkpath(path)) {
        prompts.message(
            QStringLiteral("The folder %1 cannot be made.").arg(QDir::toNativeSeparators(path)),
            title, Icon::Exclamation);
        return QString();
    }
    return path;
}

PrintoutOutput sendPrintout(const Printout& printout, const AppFolder& folder, Prompts& prompts,
                            const QDateTime& now, const QString& title) {
    const PrinterChoice choice = loadChoice(folder, prompts, title);
    const PrintTarget target = printTarget(choice, QPrinterInfo::availablePrinterNames(),
                                           QPrinterInfo::defaultPrinterName());
    switch (target.route) {
    case PrintTarget::Route::Pdf:
        return savePrintoutPdf(printout, folder, prompts, now, title);
    case PrintTarget::Route::Printer:
        if (toPrinter(printout, target.printer, choice))
            return {Where::Printer, target.printer};
        prompts.message(QStringLiteral("The printer %1 did not take the %2.")
                            .arg(target.printer, printout.documentName),
                        title, Icon::Exclamation);
        break;
    case PrintTarget::Route::NoPrinter:
        prompts.message(QStringLiteral("No Printer is selected\rPrinting cancelled"), title,
                        Icon::Exclamation);
        break;
    }
    // Kept all the same, to be printed later.
    return savePrintoutPdf(printout, folder, prompts, now, title);
}

PrintoutOutput savePrintoutPdf(const Printout& printout, const AppFolder& folder, Prompts& prompts,
                               const QDateTime& now, const QString& title) {
    const PrintoutOutput kept =
        toPdf(printout, printoutFolder(folder, prompts, title), now, prompts, title);
    if (kept.where == Where::PdfFile)
        prompts.message(QStringLiteral("The %1 is kept as %2.")
                            .arg(printout.documentName, QDir::toNativeSeparators(kept.name)),
                        title, Icon::Information);
    return kept;
}
