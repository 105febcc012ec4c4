#pragma once

#include <QString>
#include <QtGlobal>

// The billing dialog's fields, as text, as the operator sees them; filled when a session
// is stopped and read back when the bill is saved, logged and printed.
struct BillFields {
    int pc = 0;                    // lblpcno: the terminal billed
    int tile = 0;                  // the board's tile whose amount was billed
    QString date;                  // txtbldate, "MM/DD/YYYY"
    QString receipt;               // txtor: the official receipt number the operator types
    QString customerId;            // txtCid
    QString customerName;          // txtCname
    QString address;               // txtAddress
    QString timeIn;                // txttstart, "HH:MM:SS"
    QString timeOut;               // txttend, "HH:MM:SS"
    QString consumed;              // txtconsumed, "hh:mm:ss"
    qint32 consumedMs = 0;         // kept with the consumed time
    QString hours;                 // txthours: consumed hours, "##0.#0"
    QString rate;                  // txtrate: the rate per hour as text
    QString rentals;               // txtTotalRentG: the rental amount, "##,##0.#0"
    QString otherCharges;          // txtTotalOC
    QString discount;              // txtdisc
    bool discountEditable = false; // txtdisc takes the operator's discount ("Fix")
    QString discountType;          // cmbdisc: "Per Hour", "Fix" or "None"
    QString amountDue;             // txtAmountDue, "###,##0.#0"
    bool print = true;             // chkPrint
    bool wasPaused = false;        // the session was paused when it was stopped
};
