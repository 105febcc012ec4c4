#pragma once

#include "base/money.h"
#include "sales/date_span.h"
#include "sales/report_engine.h"

#include <QDateTime>
#include <QString>

class Database;

// A report ready to be shown: its rows read, its labels filled, its grand total summed.
struct PreparedReport {
    ReportDocument document;
    QString caption;  // the preview window's title
    QString fileStem; // what its PDF and export files are named after: "Rentals", ...
    Money total;      // the sum of Amount over its rows (takings reports)
};

// Reads the rows of the request's report and fills its labels as of `now`: lbldate the
// date and time, lbldrange the window's range line, lblGrandTotal the sum of the rows'
// Amount formatted "###,###,##0.#0", and for the members list lblCountMem and the
// caption with today's date. Throws StoreError when the database fails.
PreparedReport prepareReport(const Database& database, const ReportRequest& request,
                             const QDateTime& now);

// How many rows the request's report holds, counted without reading them. Throws
// StoreError.
qint64 countReportRows(const Database& database, const ReportRequest& request, const QDate& today);

// Every member, by last name and first name joined (the order of the printed list).
// Throws StoreError.
ReportTable membersByName(const Database& database);
