#pragma once

#include "billing/bill.h"

#include <optional>

class ActiveBoard;
class BillingLog;
class Database;
class Rates;
struct SessionParts;

// What stopping and settling a session work on.
struct BillingParts {
    const SessionParts& session;
    const Database& database;
    ActiveBoard& board;
    const Rates& rates;
    BillingLog& log;
};

// Stops the PC's session and fills a fresh bill; the terminal goes to "BIL". The amount
// billed is the caption of the board's tile `tile` as the last tick left it (from the
// board, the PC's own tile; from the main list, the PC's tile position on whatever page
// the board shows, deliberately). None, told to the operator, when the PC has no session.
std::optional<BillFields> stopSession(const BillingParts& parts, int pc, int tile);

// The amount due of a "Fix" bill after the operator edited the discount.
void discountEdited(BillFields& bill);

enum class SaveOutcome { Saved, Declined, Failed };
// Saves the bill, after asking: the revenue row and the session's close as one
// transaction, then "CMTR" and "OFPS" to the terminal when it is connected, the record
// freed, and the day's log line. On a database failure nothing changes and the operator
// is told why; the bill stays open. A log line that cannot be written leaves the bill
// saved; the operator is given the line.
SaveOutcome saveBill(const BillingParts& parts, const BillFields& bill);

// The bill closed without saving: the session goes on as it was (running, or paused).
void closeBill(const BillingParts& parts, const BillFields& bill);
