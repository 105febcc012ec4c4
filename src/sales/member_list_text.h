#pragma once

#include "sales/report_table.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

class QPagedPaintDevice;

// The members list as plain text pages of fixed-pitch lines, for any printer: a title
// spaced out as "L I S T   O F   M E M B E R S", the members in the order given (a long
// name or address goes on under the member's first line), and on every page its number
// and the count of pages.
namespace MemberListText {
inline constexpr int Columns = 80;
inline constexpr int LinesPerPage = 60;
} // namespace MemberListText

QList<QStringList> memberListPages(const ReportTable& members, const QDateTime& printedAt);

// Each page of lines on a page of the device, in a fixed-pitch font sized so that
// MemberListText::Columns by LinesPerPage fill its printable area. False when the device
// cannot be painted on or refuses a page.
bool paintTextPages(const QList<QStringList>& pages, QPagedPaintDevice& device);
