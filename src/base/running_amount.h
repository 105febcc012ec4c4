#pragma once

#include "base/money.h"

#include <QString>
#include <QtGlobal>

// What a session has cost so far. The console's board and the meter on the customer's
// PC both show it, so both call these and the customer sees the figure the operator
// bills.

// The rate per hour times the hours consumed, to the millisecond, with no rounding but
// the caption's two decimals.
double runningAmount(qint32 consumedMs, double ratePerHour);

// "P " and the running amount under "##,###.#0", never below the minimum amount (at
// equality the minimum shows, the same number).
QString amountCaption(qint32 consumedMs, double ratePerHour, Money minimumAmount);
