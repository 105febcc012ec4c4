#pragma once

#include "sales/date_span.h"

class Console;
class FormHost;

// Shows a report in its preview window, from which the operator prints it on the chosen
// printer, saves it as PDF or exports its rows.
void openReport(Console& console, FormHost& host, const ReportRequest& request);

// The plain-text members list ("L I S T   O F   M E M B E R S"), members ordered by last
// and first name, sent to the chosen printer (or its PDF); opened from the register.
void printMemberListText(Console& console, FormHost& host);
