#include "ui/statement_printer.h"

#include "billing/statement.h"
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
using Where = StatementOutput::Where;

const QString Title = QStringLiteral("Printing Billing");

QString documentName(int pc) {
    return QStringLiteral("Billing Statement PC %1").arg(pc);
}

bool toPrinter(const QStringList& lines, int pc, const QString& name, const PrinterChoice& choice) {
    QPrinter printer(QPrinterInfo::printerInfo(name), QPrinter::HighResolution);
    printer.setDocName(documentName(pc));
    if (!choice.paperMm.isEmpty())
        printer.setPageSize(QPageSize(choice.paperMm, QPageSize::Millimeter));
    return paintStatement(lines, printer);
}

StatementOutput toPdf(const QStringList& lines, int pc, const QDateTime& printedAt,
                      const QString& folder, Prompts& prompts) {
    if (!QDir().mkpath(folder)) {
        prompts.message(
            QStringLiteral("The folder %1 cannot be made, so the billing statement is not kept.")
                .arg(QDir::toNativeSeparators(folder)),
            Title, Icon::Exclamation);
        return {};
    }
    const QString path = freeStatementPath(folder, printedAt, pc);
    // The PDF writer does not notice a full disk; the file is written under another name
    // and put in place only when whole, for a PDF cut short is no statement.
    QSaveFile file(path);
    bool written = file.open(QIODevice::WriteOnly);
    if (written) {
        QPdfWriter pdf(&file);
        pdf.setPageLayout(Statement::pdfPageLayout());
        pdf.setTitle(documentName(pc));
        pdf.setCreator(QStringLiteral("Tarvo QRB"));
        written = paintStatement(lines, pdf);
    }
    if (!written || !file.commit()) {
        const QString why = file.errorString();
        file.cancelWriting();
        prompts.message(QStringLiteral("The billing statement cannot be written to %1: %2")
                            .arg(QDir::toNativeSeparators(path), why),
                        Title, Icon::Exclamation);
        return {};
    }
    return {Where::PdfFile, path};
}

} // namespace

StatementOutput printStatement(const QStringList& lines, int pc, const QDateTime& printedAt,
                               const AppFolder& folder, Prompts& prompts) {
    prompts.notice(QStringLiteral("Sending Billing Statement to Printer ..Please Wait.."), Title,
                   Icon::Information);
    PrinterChoice choice;
    try {
        choice = PrinterChoice::load(folder);
    } catch (const SettingsError& e) {
        prompts.message(e.text(), Title, Icon::Exclamation);
    }
    const PrintTarget target = printTarget(choice, QPrinterInfo::availablePrinterNames(),
                                           QPrinterInfo::defaultPrinterName());
    const QString pdfFolder = choice.pdfFolderIn(folder);
    switch (target.route) {
    case PrintTarget::Route::Pdf:
        return toPdf(lines, pc, printedAt, pdfFolder, prompts);
    case PrintTarget::Route::Printer:
        if (toPrinter(lines, pc, target.printer, choice))
            return {Where::Printer, target.printer};
        prompts.message(QStringLiteral("The printer %1 did not take the billing statement.")
                            .arg(target.printer),
                        Title, Icon::Exclamation);
        break;
    case PrintTarget::Route::NoPrinter:
        prompts.message(QStringLiteral("No Printer is selected\rPrinting cancelled"), Title,
                        Icon::Exclamation);
        break;
    }
    // The customer's statement is kept all the same, to be printed later.
    const StatementOutput kept = toPdf(lines, pc, printedAt, pdfFolder, prompts);
    if (kept.where == Where::PdfFile)
        prompts.notice(QStringLiteral("The billing statement is kept as %1.")
                           .arg(QDir::toNativeSeparators(kept.name)),
                       Title, Icon::Information);
    return kept;
}
