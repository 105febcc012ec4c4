#include "sales/takings.h"

#include "base/format.h"
#include "store/database.h"

#include <QRegularExpression>

namespace {

// Each amount as the currency it is (four decimals), summed as whole ten-thousandths: exact
// however many rows, and read from the revenue index alone.
const QString SumOfAmounts = QStringLiteral("sum(CAST(round(Amount * 10000) AS INTEGER))");

QString dayText(const QDate& day) {
    return formatDate(day, QStringLiteral("MM/DD/YYYY"));
}

// Rdate as SQLite keeps a bound date ("2026-11-15"), or a date-time written by another tool.
QDate dateOf(const QVariant& value) {
    const QString text = value.toString().trimmed();
    return QDate::fromString(text.left(10), Qt::ISODate);
}

QDate firstOfMonth(const QDate& day) {
    return QDate(day.year(), day.month(), 1);
}

} // namespace

QString rtypeOf(TakingsKind kind) {
    return kind == TakingsKind::Rentals ? QStringLiteral("GAMES_RENTALS")
                                        : QStringLiteral("SERVICE");
}

TakingsTotal takingsTotal(const Database& database, TakingsKind kind, const DateSpan& span,
                          const QDate& today) {
    const DateCondition when = dateCondition(span, today);
    DbSession s(database);
    auto q =
        s.run(QStringLiteral("SELECT count(*), max(rowid), ") + SumOfAmounts +
                  QStringLiteral(" FROM TmpRvnD WHERE rtype = ? COLLATE NOCASE") + when.condition,
              QVariantList{rtypeOf(kind)} + when.values);
    TakingsTotal total;
    if (q.next()) {
        total.rows = q.value(0).toLongLong();
        total.lastRowid = q.value(1).toLongLong();
        total.amount = Money::fromUnits(q.value(2).toLongLong());
    }
    return total;
}

KindTakings takingsOfKind(const Database& database, TakingsKind kind, const DateSpan& span,
                          const QDate& today) {
    const DateCondition when = dateCondition(span, today);
    KindTakings found;
    DbSession s(database);
    auto q = s.run(QStringLiteral("SELECT Rdate, count(*), max(rowid), ") + SumOfAmounts +
                       QStringLiteral(" FROM TmpRvnD WHERE rtype = ? COLLATE NOCASE") +
                       when.condition + QStringLiteral(" GROUP BY Rdate"),
                   QVariantList{rtypeOf(kind)} + when.values);
    while (q.next()) {
        const Money amount = Money::fromUnits(q.value(3).toLongLong());
        found.total.rows += q.value(1).toLongLong();
        found.total.lastRowid = qMax(found.total.lastRowid, q.value(2).toLongLong());
        found.total.amount += amount;
        // A row whose date another tool wrote some other way counts, but has no bar.
        if (const QDate day = dateOf(q.value(0)); day.isValid())
            found.days[day] += amount;
    }
    return found;
}

QList<DayTakings> takingsByDay(const KindTakings& rentals, const KindTakings& services) {
    QMap<QDate, DayTakings> days;
    for (auto it = rentals.days.cbegin(); it != rentals.days.cend(); ++it)
        days[it.key()] = {it.key(), it.value(), {}};
    for (auto it = services.days.cbegin(); it != services.days.cend(); ++it) {
        DayTakings& d = days[it.key()];
        d.day = it.key();
        d.services = it.value();
    }
    return days.values();
}

TakingsChart takingsChart(const QList<DayTakings>& days, const DateSpan& span, const QDate& today) {
    TakingsChart chart;
    chart.title = QStringLiteral("Takings per day");
    QDate from, to;
    switch (span.mode) {
    case DateSpan::Mode::Today:
        from = to = today;
        break;
    case DateSpan::Mode::Range:
        from = span.begin;
        to = span.end;
        break;
    case DateSpan::Mode::All:
        if (!days.isEmpty()) {
            from = days.first().day;
            to = days.last().day;
        }
        break;
    }
    if (!from.isValid() || !to.isValid() || from > to) {
        chart.period = span.mode == DateSpan::Mode::All ? QStringLiteral("No takings recorded")
                                                        : QStringLiteral("No days chosen");
        return chart;
    }
    // A long range is drawn over the days that have takings.
    if (from.daysTo(to) >= MostDailyBars) {
        if (!days.isEmpty()) {
            from = qMax(from, days.first().day);
            to = qMin(to, days.last().day);
        }
        if (days.isEmpty() || from > to) {
            chart.period = QStringLiteral("No takings from ") + dayText(span.begin) +
                           QStringLiteral(" to ") + dayText(span.end);
            return chart;
        }
    }

    QMap<QDate, DayTakings> byDay;
    for (const DayTakings& d : days)
        byDay.insert(d.day, d);
    if (from.daysTo(to) < MostDailyBars) {
        const bool oneMonth = from.year() == to.year() && from.month() == to.month();
        for (QDate day = from; day <= to; day = day.addDays(1)) {
            const DayTakings d = byDay.value(day);
            chart.bars.append(
                {day,
                 oneMonth ? QString::number(day.day()) : formatDate(day, QStringLiteral("MM/DD")),
                 d.rentals, d.services});
        }
    } else {
        chart.step = TakingsChart::Step::Month;
        chart.title = QStringLiteral("Takings per month");
        for (QDate month = firstOfMonth(from); month <= to; month = month.addMonths(1))
            chart.bars.append({month, formatDate(month, QStringLiteral("MMM YYYY")), {}, {}});
        for (const DayTakings& d : days) {
            if (d.day < from || d.day > to)
                continue;
            auto& bar =
                chart.bars[(d.day.year() - from.year()) * 12 + d.day.month() - from.month()];
            bar.rentals += d.rentals;
            bar.services += d.services;
        }
    }
    chart.period = span.mode == DateSpan::Mode::Today
                       ? QStringLiteral("Today, ") + dayText(today)
                       : dayText(from) + QStringLiteral(" to ") + dayText(to);
    return chart;
}

QDate typedDate(const QString& text) {
    static const QRegularExpression monthFirst(
        QStringLiteral(R"(^\s*(\d{1,2})([/-])(\d{1,2})\2(\d{4}|\d{2})\s*$)"));
    static const QRegularExpression yearFirst(
        QStringLiteral(R"(^\s*(\d{4})-(\d{1,2})-(\d{1,2})\s*$)"));
    if (const auto m = monthFirst.match(text); m.hasMatch()) {
        int year = m.captured(4).toInt();
        if (m.captured(4).size() == 2)
            year += year < 30 ? 2000 : 1900;
        return QDate(year, m.captured(1).toInt(), m.captured(3).toInt());
    }
    if (const auto m = yearFirst.match(text); m.hasMatch())
        return QDate(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
    return {};
}

ReportRequest todaysReportRequest(ReportKind kind, const QDate& today) {
    ReportRequest r;
    r.kind = kind;
    r.span.mode = DateSpan::Mode::Today;
    r.rangeText = kind == ReportKind::Summary ? QStringLiteral("Today")
                                              : QStringLiteral("( Today ) ") +
                                                    formatDate(today, QStringLiteral("MM-DD-YYYY"));
    return r;
}

ReportRequest dateReportRequest(int popt, DateSpan::Mode mode, const DateSpan& shown,
                                const QString& beginText, const QString& endText) {
    ReportRequest r;
    r.kind = popt == 0   ? ReportKind::Rentals
             : popt == 1 ? ReportKind::Services
                         : ReportKind::Summary;
    r.span = shown;
    const QString typed = beginText + QStringLiteral(" To ") + endText;
    if (r.kind != ReportKind::Summary) {
        r.rangeText = typed;
        r.ordered = mode != DateSpan::Mode::All;
    } else {
        r.rangeText = mode == DateSpan::Mode::Today ? QStringLiteral("Today")
                      : mode == DateSpan::Mode::All ? QStringLiteral("ALL Dates")
                                                    : typed;
    }
    return r;
}
