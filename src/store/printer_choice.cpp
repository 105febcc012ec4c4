#include "store/printer_choice.h"

#include "store/settings_file.h"

#include <QDir>
#include <QRegularExpression>

namespace {

const QString KindKey = QStringLiteral("PRINTTO");
const QString PrinterKey = QStringLiteral("PRINTER");
const QString FolderKey = QStringLiteral("PDFFOLDER");
const QString PaperKey = QStringLiteral("PAPER");

QString paperText(QSizeF mm) {
    return QString::number(mm.width()) + QLatin1Char('x') + QString::number(mm.height());
}

QSizeF paperOfText(const QString& text) {
    static const QRegularExpression form(QStringLiteral("^(\\d+(?:\\.\\d+)?)x(\\d+(?:\\.\\d+)?)$"));
    const auto m = form.match(text);
    if (!m.hasMatch())
        return {};
    const QSizeF mm(m.captured(1).toDouble(), m.captured(2).toDouble());
    return mm.width() > 0 && mm.height() > 0 ? mm : QSizeF();
}

} // namespace

PrinterChoice PrinterChoice::load(const AppFolder& folder) {
    PrinterChoice c;
    const QString kind = SettingsFile::readValue(folder, KindKey).value_or(QString());
    c.printer = SettingsFile::readValue(folder, PrinterKey).value_or(QString());
    if (kind == QLatin1String("PDF"))
        c.kind = Kind::Pdf;
    else if (kind == QLatin1String("PRINTER") && !c.printer.isEmpty())
        c.kind = Kind::Printer;
    c.pdfFolder = SettingsFile::readValue(folder, FolderKey).value_or(QString());
    c.paperMm = paperOfText(SettingsFile::readValue(folder, PaperKey).value_or(QString()));
    return c;
}

void PrinterChoice::save(const AppFolder& folder) const {
    const QString kindText = kind == Kind::Pdf       ? QStringLiteral("PDF")
                             : kind == Kind::Printer ? QStringLiteral("PRINTER")
                                                     : QStringLiteral("DEFAULT");
    // An empty value takes its line out of the file.
    SettingsFile::writeValues(folder,
                              {{KindKey, kindText},
                               {PrinterKey, printer},
                               {FolderKey, pdfFolder},
                               {PaperKey, paperMm.isEmpty() ? QString() : paperText(paperMm)}});
}

QString PrinterChoice::defaultPdfFolder(const AppFolder& folder) {
    return folder.file(QStringLiteral("Statements"));
}

QString PrinterChoice::pdfFolderIn(const AppFolder& folder) const {
    // A folder typed as a relative path lies in the data folder, wherever the program runs.
    return pdfFolder.isEmpty() ? defaultPdfFolder(folder)
                               : QDir::cleanPath(QDir(folder.path()).absoluteFilePath(pdfFolder));
}

PrintTarget printTarget(const PrinterChoice& choice, const QStringList& printers,
                        const QString& defaultPrinter) {
    using Route = PrintTarget::Route;
    switch (choice.kind) {
    case PrinterChoice::Kind::Pdf:
        return {Route::Pdf, {}};
    case PrinterChoice::Kind::Printer:
        // Another printer would put the customer's statement in the wrong room.
        if (printers.contains(choice.printer))
            return {Route::Printer, choice.printer};
        return {Route::NoPrinter, {}};
    case PrinterChoice::Kind::SystemDefault:
        break;
    }
    if (!defaultPrinter.isEmpty())
        return {Route::Printer, defaultPrinter};
    return {Route::NoPrinter, {}};
}

PrinterOffers printerOffers(const PrinterChoice& choice, const QStringList& printers,
                            const QString& defaultPrinter) {
    using Kind = PrinterChoice::Kind;
    PrinterOffers o;
    for (const QString& name : printers)
        o.offers.append(
            {name == defaultPrinter ? name + QStringLiteral(" (the system's default)") : name,
             Kind::Printer, name});
    if (choice.kind == Kind::Printer && !printers.contains(choice.printer))
        o.offers.append(
            {choice.printer + QStringLiteral(" (not found)"), Kind::Printer, choice.printer});
    o.offers.append({QStringLiteral("PDF file"), Kind::Pdf, {}});

    const QString wanted = choice.kind == Kind::Printer         ? choice.printer
                           : choice.kind == Kind::SystemDefault ? defaultPrinter
                                                                : QString();
    o.current = o.offers.size() - 1;
    for (qsizetype i = 0; i < o.offers.size() - 1; ++i)
        if (!wanted.isEmpty() && o.offers[i].printer == wanted)
            o.current = i;
    return o;
}
