#pragma once

#include "base/app_folder.h"
#include "store/printer_choice.h"

#include <QDialog>

class Console;
class FormHost;
class Prompts;
class QComboBox;
class QLineEdit;
class QPushButton;

// "Tarvo Printer Setup": the printer billing statements go to, or PDF files, and the
// folder PDF files are kept in. OK writes the choice into the settings file.
class PrinterSetupDialog : public QDialog {
    Q_OBJECT
public:
    PrinterSetupDialog(const AppFolder& folder, Prompts& prompts, QWidget* parent = nullptr);

    // The choice as the dialog shows it now.
    PrinterChoice choice() const;

    void accept() override;

private:
    void offerChosen();
    void browse();
    void printerSettings();

    AppFolder folder_;
    Prompts& prompts_;
    PrinterChoice saved_;
    PrinterOffers offers_;
    QSizeF paperMm_; // the paper set for the offered printer
    QComboBox* cmbPrinter_ = nullptr;
    QLineEdit* txtFolder_ = nullptr;
    QPushButton* cmdSettings_ = nullptr;
};

// Opens the printer set-up over the frame (mnuPrinter and toolbar button 8).
void openPrinterSetup(Console& console, FormHost& host);
