#pragma once

#include "billing/bill.h"

#include <QDateTime>
#include <QPageLayout>
#include <QString>
#include <QStringList>

class QPagedPaintDevice;

// The billing statement handed to the customer: 22 lines of fixed-pitch text, the same
// on paper and in a PDF file.
namespace Statement {
inline constexpr int LineCount = 22;
// Where the second item of the two-item lines (date and time, time in and out, rate and
// consumed time) starts.
inline constexpr int SecondColumn = 30;
// Blanks before the amounts.
inline constexpr int AmountIndent = 45;
// A PDF statement is a slip: an A6 sheet on its side (148 x 105 mm), half an A5 sheet.
QPageLayout pdfPageLayout();
} // namespace Statement

// The statement's lines, in order, for a bill printed at `printedAt` at `ratePerHour`.
QStringList statementLines(const BillFields& bill, const QDateTime& printedAt, double ratePerHour);

// Lays the lines on one page of `device` (a printer or a PDF writer), in a fixed-pitch
// font sized so that they fit the page's printable area, and ends the page. False when
// the device cannot be painted on (a printer that refuses the job, a file that cannot be
// written).
bool paintStatement(const QStringList& lines, QPagedPaintDevice& device);

// The PDF file of a statement, named for the day, the time and the PC:
// "Statement_2026-11-15_0930_PC05.pdf".
QString statementPdfName(const QDateTime& printedAt, int pc);
// That file in `folder`, or, when a statement of the same minute and PC is already there,
// the name followed by "_2", "_3" and so on: a statement is never written over.
QString freeStatementPath(const QString& folder, const QDateTime& printedAt, int pc);
