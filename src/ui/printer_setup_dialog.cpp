#include "ui/printer_setup_dialog.h"

#include "base/form_host.h"
#include "base/prompts.h"
#include "console/console.h"
#include "store/settings_file.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPageSize>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>

namespace {

const QString Title = QStringLiteral("Tarvo Printer Setup");

// A field with its button beside it, as one row of the form; the row's label leads to the
// field. The field names itself, for the label is not its buddy.
QWidget* besideIt(QWidget* field, QPushButton* button) {
    auto* row = new QWidget(field->parentWidget());
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field, 1);
    layout->addWidget(button);
    row->setFocusProxy(field);
    return row;
}

} // namespace

PrinterSetupDialog::PrinterSetupDialog(const AppFolder& folder, Prompts& prompts, QWidget* parent)
    : QDialog(parent), folder_(folder), prompts_(prompts) {
    setObjectName(QStringLiteral("frmPrinter"));
    setWindowTitle(Title);
    setMinimumWidth(440);
    try {
        saved_ = PrinterChoice::load(folder_);
    } catch (const SettingsError& e) {
        prompts_.message(e.text(), Title, Prompts::Icon::Exclamation);
    }
    paperMm_ = saved_.paperMm;
    const QStringList printers = QPrinterInfo::availablePrinterNames();
    offers_ = printerOffers(saved_, printers, QPrinterInfo::defaultPrinterName());

    cmbPrinter_ = new QComboBox(this);
    cmbPrinter_->setObjectName(QStringLiteral("cmbPrinter"));
    for (const PrinterOffer& offer : std::as_const(offers_.offers))
        cmbPrinter_->addItem(offer.caption);
    cmbPrinter_->setCurrentIndex(int(offers_.current));
    cmbPrinter_->setAccessibleName(QStringLiteral("Print on"));
    cmdSettings_ = new QPushButton(QStringLiteral("Printer &Settings..."), this);
    cmdSettings_->setObjectName(QStringLiteral("cmdSettings"));

    txtFolder_ = new QLineEdit(QDir::toNativeSeparators(saved_.pdfFolderIn(folder_)), this);
    txtFolder_->setObjectName(QStringLiteral("txtFolder"));
    txtFolder_->setAccessibleName(QStringLiteral("PDF folder"));
    auto* cmdBrowse = new QPushButton(QStringLiteral("&Browse..."), this);
    cmdBrowse->setObjectName(QStringLiteral("cmdBrowse"));

    std::vector<FormRow> rows = {{QStringLiteral("&Print on"), besideIt(cmbPrinter_, cmdSettings_)},
                                 {QStringLiteral("PDF &folder"), besideIt(txtFolder_, cmdBrowse)}};
    if (printers.isEmpty()) {
        auto* none = new QLabel(
            QStringLiteral("This computer knows no printer: statements are kept as PDF files."),
            this);
        none->setObjectName(QStringLiteral("lblNoPrinter"));
        none->setWordWrap(true);
        rows.push_back({{}, none});
    }
    const DialogFrame frame = frameDialog(
        *this, Title,
        QStringLiteral("Where billing statements are printed. A statement that no printer "
                       "takes is kept as a PDF file in the folder below."),
        rows,
        {{"cmdOK", QStringLiteral("OK"), QDialogButtonBox::AcceptRole},
         {"cmdCancel", QStringLiteral("Cancel"), QDialogButtonBox::RejectRole}});

    connect(cmbPrinter_, &QComboBox::currentIndexChanged, this, &PrinterSetupDialog::offerChosen);
    connect(cmdBrowse, &QPushButton::clicked, this, &PrinterSetupDialog::browse);
    connect(cmdSettings_, &QPushButton::clicked, this, &PrinterSetupDialog::printerSettings);
    connect(frame.button("cmdOK"), &QPushButton::clicked, this, &PrinterSetupDialog::accept);
    connect(frame.button("cmdCancel"), &QPushButton::clicked, this, &QDialog::reject);
    offerChosen();
    makeAccessible(this);
}

PrinterChoice PrinterSetupDialog::choice() const {
    PrinterChoice c = saved_;
    const PrinterOffer& offer = offers_.offers.at(cmbPrinter_->currentIndex());
    c.kind = offer.kind;
    // With PDF chosen the printer's name stays, for going back to it.
    if (offer.kind == PrinterChoice::Kind::Printer)
        c.printer = offer.printer;
    c.paperMm = paperMm_;
    // The default folder is not written down, so that it moves with the data folder.
    const QString typed = QDir::cleanPath(QDir::fromNativeSeparators(txtFolder_->text().trimmed()));
    c.pdfFolder = typed.isEmpty() || typed == PrinterChoice::defaultPdfFolder(folder_)
                      ? QString()
                      : QDir(folder_.path()).absoluteFilePath(typed);
    return c;
}

void PrinterSetupDialog::offerChosen() {
    const PrinterOffer& offer = offers_.offers.at(cmbPrinter_->currentIndex());
    const bool printer = offer.kind == PrinterChoice::Kind::Printer;
    // The paper set for one printer means nothing to another; with PDF chosen the saved
    // printer stays, and its paper with it.
    paperMm_ = !printer || offer.printer == saved_.printer ? saved_.paperMm : QSizeF();
    cmdSettings_->setEnabled(printer && !QPrinterInfo::printerInfo(offer.printer).isNull());
}

void PrinterSetupDialog::browse() {
    const QString chosen = QFileDialog::getExistingDirectory(
        this, QStringLiteral("PDF folder"), QDir::fromNativeSeparators(txtFolder_->text()));
    if (!chosen.isEmpty())
        txtFolder_->setText(QDir::toNativeSeparators(chosen));
}

// The system's own settings of the offered printer; the paper chosen there is kept.
void PrinterSetupDialog::printerSettings() {
    const PrinterOffer& offer = offers_.offers.at(cmbPrinter_->currentIndex());
    QPrinter printer(QPrinterInfo::printerInfo(offer.printer), QPrinter::HighResolution);
    if (!paperMm_.isEmpty())
        printer.setPageSize(QPageSize(paperMm_, QPageSize::Millimeter));
    QPrintDialog dialog(&printer, this);
    dialog.setWindowTitle(QStringLiteral("Printer Settings"));
    dialog.setOption(QAbstractPrintDialog::PrintToFile, false);
    dialog.setOption(QAbstractPrintDialog::PrintSelection, false);
    dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
    dialog.setOption(QAbstractPrintDialog::PrintCurrentPage, false);
    if (dialog.exec() != QDialog::Accepted)
        return;
    // The operator may have picked another printer in the system's dialog.
    for (qsizetype i = 0; i < offers_.offers.size(); ++i)
        if (offers_.offers[i].kind == PrinterChoice::Kind::Printer &&
            offers_.offers[i].printer == printer.printerName())
            cmbPrinter_->setCurrentIndex(int(i));
    paperMm_ = printer.pageLayout().pageSize().size(QPageSize::Millimeter);
}

void PrinterSetupDialog::accept() {
    const PrinterChoice c = choice();
    const QString folder = c.pdfFolderIn(folder_);
    if (!QDir().mkpath(folder)) {
        prompts_.message(QStringLiteral("The folder %1 cannot be made: choose another.")
                             .arg(QDir::toNativeSeparators(folder)),
                         Title, Prompts::Icon::Exclamation);
        return;
    }
    try {
        c.save(folder_);
    } catch (const SettingsError& e) {
        prompts_.message(e.text(), Title, Prompts::Icon::Exclamation);
        return;
    }
    QDialog::accept();
}

void openPrinterSetup(Console& console, FormHost& host) {
    auto* dialog = new PrinterSetupDialog(console.folder(), console.prompts());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(dialog, true);
}
