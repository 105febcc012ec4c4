#pragma once

#include "billing/bill.h"

#include <QDialog>

class Console;
class FormHost;
class QLineEdit;

// The billing dialog (frmBill) of one stopped session: who, when, how long, the rental,
// other charges, the discount and the amount due. The operator types the receipt number
// and, under a "Fix" promo, the discount; then saves the bill or closes the dialog, and
// the session goes on. A fresh dialog for every bill.
class BillDialog : public QDialog {
    Q_OBJECT
public:
    BillDialog(Console& console, BillFields bill, QWidget* parent = nullptr);

    const BillFields& bill() const { return bill_; }

    // Closing without saving, however the dialog is closed: the session goes on.
    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* buildFields();
    void save();

    Console& console_;
    BillFields bill_;
    bool settled_ = false;
    QLineEdit* txtdisc_ = nullptr;
    QLineEdit* txtAmountDue_ = nullptr;
};

// Stops the PC's session and shows its bill, modal; the amount billed is that of the
// board's tile `tile`. Nothing opens when the PC has no session (the operator is told).
void openBill(Console& console, FormHost& host, int pc, int tile);
// The terminal pop-up menu's "Log-Out Client PC": the PC selected in the terminal list,
// billed the amount of its tile position on whatever page the board shows.
void openBillFromList(Console& console, FormHost& host, int pc);

// Prints the billing statement of a bill.
void printBill(Console& console, const BillFields& bill);
