#pragma once

#include "sales/date_span.h"

class Console;
class FormHost;

// Shows a report in its preview window, from which the operator prints it on the chosen
// printer, saves it as PDF or exports its rows.
void openReport(Console& console, FormHost& host, const ReportRequest& request);
