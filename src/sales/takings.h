#pragma once

#include "base/money.h"
#include "sales/date_span.h"

#include <QDate>
#include <QList>
#include <QMap>
#include <QString>

class Database;

// The two kinds of revenue row: a terminal's time ("GAMES_RENTALS") and a counter sale
// ("SERVICE").
enum class TakingsKind { Rentals, Services };
QString rtypeOf(TakingsKind kind);

// What a span holds of one kind: how many rows, the last one written (so that a change is
// seen without reading the rows), and their amounts summed exactly.
struct TakingsTotal {
    qint64 rows = 0;
    qint64 lastRowid = 0;
    Money amount;
    bool operator==(const TakingsTotal&) const = default;
};
// Throws StoreError.
TakingsTotal takingsTotal(const Database& database, TakingsKind kind, const DateSpan& span,
                          const QDate& today);

// One day's takings, for the chart.
struct DayTakings {
    QDate day;
    Money rentals;
    Money services;
};
// One kind's takings over a span, read in one pass over the revenue index: the total, and
// each day's amount for the chart. Throws StoreError.
struct KindTakings {
    TakingsTotal total;
    QMap<QDate, Money> days;
};
KindTakings takingsOfKind(const Database& database, TakingsKind kind, const DateSpan& span,
                          const QDate& today);
// The days with takings of either kind, oldest first.
QList<DayTakings> takingsByDay(const KindTakings& rentals, const KindTakings& services);

// The chart's bars: one a day for a month or two, one a month beyond that (a bar a day
// over years would be unreadable).
struct TakingsChart {
    enum class Step { Day, Month };
    struct Bar {
        QDate first; // the day, or the first of the month
        QString label;
        Money rentals;
        Money services;
    };
    Step step = Step::Day;
    QString title;  // "Takings per day"
    QString period; // the days the bars cover, "11/01/2026 to 11/30/2026"
    QList<Bar> bars;
};
inline constexpr int MostDailyBars = 62;
// Days of a range or of today come as they are, takings or not; every date covers the
// first to the last day with takings. A reversed range has no bars.
TakingsChart takingsChart(const QList<DayTakings>& days, const DateSpan& span, const QDate& today);

// A date typed in a date box, month first: "11/01/2026", "11/1/2026", "11-1-26" (a two-digit
// year below 30 is in the 2000s), or "2026-11-01". A null date when it is none.
QDate typedDate(const QString& text);

// The print buttons of today's sales window: today's rows, the range line "( Today ) " and
// the date as "MM-DD-YYYY", or "Today" for the summary.
ReportRequest todaysReportRequest(ReportKind kind, const QDate& today);

// The date report window's print button. `popt` chooses the report (0 rentals, 1 services,
// anything else the summary); `shown` is the span its grids show. The rentals and services
// reports print the two boxes as they stand, " To " between them: with every date chosen,
// "Start To End". Their every-date rows come unsorted.
ReportRequest dateReportRequest(int popt, DateSpan::Mode mode, const DateSpan& shown,
                                const QString& beginText, const QString& endText);
