#pragma once

#include <QDateTime>
#include <QString>

class ReportDocument;

// A report's rows for a spreadsheet: one column per field of its detail band, headed by
// the field's name; dates as dates, amounts as numbers with two decimals, numbers as
// numbers. A file is written under another name and put in place whole when complete, so
// a failure leaves nothing half-written and an earlier file of the name as it was. Each
// returns false with the reason in *error.

// Comma-separated UTF-8 text (with a byte-order mark, which spreadsheets look for), CRLF
// line ends, dates as yyyy-MM-dd.
bool exportCsv(const ReportDocument& report, const QString& path, QString* error);

// An Excel workbook of one sheet named `sheet`.
bool exportXlsx(const ReportDocument& report, const QString& path, const QString& sheet,
                QString* error);

// "<stem>_2026-11-15_0930.<extension>" in `folder`, or, when a file of that name is already
// there, the name followed by "_2", "_3" and so on: nothing is written over.
QString freeFilePath(const QString& folder, const QString& stem, const QDateTime& at,
                     const QString& extension);
