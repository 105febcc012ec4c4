#pragma once

#include "base/money.h"
#include "base/running_amount.h"

#include <QChar>
#include <QString>
#include <QtGlobal>

class Rates;

// How the console turns the time a terminal has been in use into money.

// The tile's amount caption at the console's rates (the rule itself is shared with the
// terminal's meter).
QString amountCaption(qint32 consumedMs, const Rates& rates);

// A text read as an amount the way a formatted number reads: "1,234.50" is 1234.5.
// (Reading a typed field with leadingNumber() stops at the ",": that is a different rule.)
double amountOfText(const QString& text);

// The discount a promo gives a bill of so many consumed hours (the text of the bill's
// hours field), and whether the operator types it ("Fix"). None when the promo changes
// nothing in the discount box.
struct Discount {
    Money amount;
    bool typed = false;   // "Fix": the operator types the discount
    bool shown = false;   // the amount goes into the discount box
    bool enabled = false; // the discount box takes keys
};
Discount promoDiscount(const QString& type, Money promoAmount, const QString& hoursText);

// The amount due when the operator edits the discount of a "Fix" bill: the plain decimal
// text of rentals + other charges - discount, a positive number led by a blank (" 14.5").
QString fixAmountDue(const QString& rentals, const QString& otherCharges, const QString& discount);
// A number as the plain decimal text the console has always written: up to 15 significant
// digits, a leading blank when it is not negative.
QString plainNumber(double value);

// The keys the discount box takes: digits, "." once, and backspace.
bool discountKeyAccepted(const QString& text, QChar key, bool backspace);
