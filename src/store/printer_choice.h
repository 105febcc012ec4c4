#pragma once

#include "base/app_folder.h"

#include <QSizeF>
#include <QString>
#include <QStringList>

// Where the operator wants printouts to go, kept in the settings file:
//   "PRINTER=PRINTTO", "PDF=PRINTTO"     a printer, or PDF files ("DEFAULT": the system's)
//   "Office Laser=PRINTER"               the printer's name as the print service knows it
//   "/srv/tarvo/Statements=PDFFOLDER"    the folder for PDF files
//   "210x297=PAPER"                      the paper set for the printer, in millimetres
// With nothing chosen, printouts go to the system's default printer.
struct PrinterChoice {
    enum class Kind { SystemDefault, Printer, Pdf };

    Kind kind = Kind::SystemDefault;
    QString printer;   // Kind::Printer: the printer's name
    QString pdfFolder; // empty: "Statements" in the data folder
    QSizeF paperMm;    // empty: the printer's own paper

    // Throws SettingsError when the file cannot be read; unknown values read as unset.
    static PrinterChoice load(const AppFolder& folder);
    // Writes the choice in one replacement of the file; what is not set leaves the file.
    // Throws SettingsError.
    void save(const AppFolder& folder) const;

    // The folder PDF files go to: the chosen one, else "Statements" in the data folder.
    QString pdfFolderIn(const AppFolder& folder) const;
    static QString defaultPdfFolder(const AppFolder& folder);

    bool operator==(const PrinterChoice&) const = default;
};

// Where one printout goes, given the printers the print service knows now and its
// default printer (empty when it has none).
struct PrintTarget {
    enum class Route {
        Printer,   // `printer` names it
        Pdf,       // PDF was chosen
        NoPrinter, // the chosen printer is gone, or nothing is chosen and there is no default
    };
    Route route = Route::NoPrinter;
    QString printer;

    bool operator==(const PrintTarget&) const = default;
};
PrintTarget printTarget(const PrinterChoice& choice, const QStringList& printers,
                        const QString& defaultPrinter);

// What the printer set-up offers: every printer the print service knows, its default
// marked; a chosen printer that is gone, marked so, for it is not to be replaced without
// the operator seeing it; then PDF files. `current` is the chosen offer, or with nothing
// chosen the default printer, else PDF files.
struct PrinterOffer {
    QString caption;
    PrinterChoice::Kind kind = PrinterChoice::Kind::Printer;
    QString printer;

    bool operator==(const PrinterOffer&) const = default;
};
struct PrinterOffers {
    QList<PrinterOffer> offers;
    qsizetype current = 0;
};
PrinterOffers printerOffers(const PrinterChoice& choice, const QStringList& printers,
                            const QString& defaultPrinter);
