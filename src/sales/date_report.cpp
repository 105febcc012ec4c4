#include "sales/date_report.h"

#include "base/clock.h"
#include "base/format.h"
#include "base/prompts.h"
#include "store/database.h"

namespace {

const QString SubtotalMask = QStringLiteral("##,###,##0.#0");
const QString TotalMask = QStringLiteral("###,###,##0.#0");

} // namespace

DateReport::DateReport(const Database& database, Clock& clock, Prompts& prompts, QObject* parent)
    : QObject(parent), database_(database), clock_(clock), prompts_(prompts),
      rentals_(database, TakingsModel::Layout::Rentals, this),
      services_(database, TakingsModel::Layout::Services, this) {}

QString DateReport::rentalsTotal() const {
    return formatNumber(rentalsSum_, SubtotalMask);
}

QString DateReport::servicesTotal() const {
    return formatNumber(servicesSum_, SubtotalMask);
}

QString DateReport::grandTotal() const {
    return formatNumber(rentalsSum_ + servicesSum_, TotalMask);
}

QString DateReport::summaryRentals() const {
    return formatNumber(rentalsSum_, TotalMask);
}

QString DateReport::summaryServices() const {
    return formatNumber(servicesSum_, TotalMask);
}

void DateReport::load() {
    chooseToday();
}

void DateReport::chooseToday() {
    mode_ = DateSpan::Mode::Today;
    const QString today = formatDate(clock_.today(), QStringLiteral("MM/DD/YYYY"));
    setBoxes(today, today);
    if (search(DateSpan{}))
        makeSum();
}

void DateReport::chooseRange() {
    mode_ = DateSpan::Mode::Range;
    const QString today = formatDate(clock_.today(), QStringLiteral("MM/DD/YYYY"));
    setBoxes(today, today);
    boxesEdited(begin_, end_);
}

void DateReport::chooseAll() {
    mode_ = DateSpan::Mode::All;
    // The words stand in the boxes, and are printed as they stand.
    setBoxes(QStringLiteral("Start"), QStringLiteral("End"));
    if (search(DateSpan{DateSpan::Mode::All, {}, {}}))
        makeSum();
}

void DateReport::boxesEdited(const QString& beginText, const QString& endText) {
    begin_ = beginText;
    end_ = endText;
    // Half-typed dates are not an error: the grids wait for two whole dates. A range that
    // ends before it begins simply holds no rows.
    const QDate begin = typedDate(begin_);
    const QDate end = typedDate(end_);
    if (!begin.isValid() || !end.isValid())
        return;
    if (search(DateSpan{DateSpan::Mode::Range, begin, end}))
        makeSum();
}

bool DateReport::search(const DateSpan& span) {
    const QDate today = clock_.today();
    KindTakings rentals, services;
    try {
        say(QStringLiteral("Searching Rents/Games.."));
        rentals = takingsOfKind(database_, TakingsKind::Rentals, span, today);
        say(QStringLiteral("Searching Services.."));
        services = takingsOfKind(database_, TakingsKind::Services, span, today);
    } catch (const StoreError& e) {
        say(QStringLiteral("The search did not finish; the grids show the days before."));
        prompts_.message(QStringLiteral("The takings could not be read: ") + e.text(),
                         QStringLiteral("Selective Date Report"), Prompts::Icon::Critical);
        return false;
    }
    rentals_.show(span, today, rentals.total);
    services_.show(span, today, services.total);
    chart_ = takingsChart(takingsByDay(rentals, services), span, today);
    shown_ = span;
    return true;
}

void DateReport::makeSum() {
    say(QStringLiteral("Summing Rentals & Games.."));
    rentalsSum_ = rentals_.total().amount;
    say(QStringLiteral("Summing Services.."));
    servicesSum_ = services_.total().amount;
    say(QStringLiteral("Process complete.."));
    Q_EMIT shownChanged();
}

void DateReport::say(const QString& text) {
    message_ = text;
    Q_EMIT messageChanged(text);
}

void DateReport::setBoxes(const QString& begin, const QString& end) {
    begin_ = begin;
    end_ = end;
    Q_EMIT boxesChanged();
}

ReportRequest DateReport::printRequest(int popt) const {
    return dateReportRequest(popt, mode_, shown_, begin_, end_);
}
