#pragma once

#include <QDate>
#include <QString>
#include <QVariantList>

// Which days a takings grid, sum or report covers: today, a range typed by the operator
// (both ends included; a reversed range covers nothing), or every date.
struct DateSpan {
    enum class Mode { Today, Range, All };
    Mode mode = Mode::Today;
    QDate begin; // Range only
    QDate end;   // Range only
};

// The condition on TmpRvnD's Rdate for the span, to follow a WHERE ... clause with
// " AND" already in `condition` (empty for every date), and the values it binds.
struct DateCondition {
    QString condition;
    QVariantList values;
};
DateCondition dateCondition(const DateSpan& span, const QDate& today);

// The four printed reports.
enum class ReportKind {
    Rentals,  // DRSDRG
    Services, // DRSDSRV
    Summary,  // DRSDAll
    Members,  // DRMemList
};

// What a window asks of a report: which one, for which days, and the range line
// (lbldrange) as that window words it. Members ignore span and rangeText.
struct ReportRequest {
    ReportKind kind = ReportKind::Summary;
    DateSpan span;
    QString rangeText;
    // Unsorted where the window stores no order (every-date rentals and services).
    bool ordered = true;
};
