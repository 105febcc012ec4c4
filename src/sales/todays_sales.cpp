#include "sales/todays_sales.h"

#include "base/clock.h"
#include "base/current_operator.h"
#include "base/format.h"
#include "base/prompts.h"
#include "store/database.h"

namespace {

const QString TotalMask = QStringLiteral("###,##0.#0");

} // namespace

TodaysSales::TodaysSales(const Database& database, Clock& clock, Prompts& prompts, QObject* parent)
    : QObject(parent), database_(database), clock_(clock), prompts_(prompts),
      rentals_(database, TakingsModel::Layout::Rentals, this),
      services_(database, TakingsModel::Layout::TodaysServices, this) {}

QString TodaysSales::rentalsTotal() const {
    return formatNumber(rentals_.total().amount, TotalMask);
}

QString TodaysSales::servicesTotal() const {
    return formatNumber(services_.total().amount, TotalMask);
}

bool TodaysSales::refresh() {
    const QDate today = clock_.today();
    const DateSpan span; // today
    TakingsTotal rentals, services;
    try {
        rentals = takingsTotal(database_, TakingsKind::Rentals, span, today);
        services = takingsTotal(database_, TakingsKind::Services, span, today);
    } catch (const StoreError& e) {
        if (!failing_)
            prompts_.notice(QStringLiteral("Today's sales cannot be read: ") + e.text() +
                                QStringLiteral("\nThe window shows them as they were."),
                            QStringLiteral("Active  Sales / Services Viewer"),
                            Prompts::Icon::Critical);
        failing_ = true;
        return false;
    }
    failing_ = false;
    const bool rentalsChanged = rentals_.show(span, today, rentals);
    const bool servicesChanged = services_.show(span, today, services);
    return rentalsChanged || servicesChanged;
}

ReportRequest TodaysSales::printRequest(ReportKind kind) const {
    return todaysReportRequest(kind, clock_.today());
}

bool TodaysSales::deleteServiceSale(const CurrentOperator& current, int row) {
    if (!current.isAdmin()) {
        prompts_.message(QStringLiteral("Access Denied.."), QString(), Prompts::Icon::Critical);
        return false;
    }
    const qint64 rowid = services_.rowidAt(row);
    if (rowid == 0)
        return false;
    auto shown = [this, row](int column) {
        return services_.index(row, column).data().toString();
    };
    if (prompts_.ask(QStringLiteral("Delete the sale of %1 (OR %2, quantity %3, amount %4)?")
                         .arg(shown(1), shown(0), shown(2), shown(3)),
                     QStringLiteral("Remove record?"), Prompts::Buttons::YesNo,
                     Prompts::Icon::Critical) != Prompts::Answer::Yes)
        return false;
    try {
        DbSession s(database_);
        s.run(QStringLiteral("DELETE FROM TmpRvnD WHERE rowid = ? AND rtype = ? COLLATE NOCASE"),
              {rowid, rtypeOf(TakingsKind::Services)});
    } catch (const StoreError& e) {
        prompts_.message(QStringLiteral("The sale was not deleted: ") + e.text(),
                         QStringLiteral("Database error"), Prompts::Icon::Critical);
        return false;
    }
    return true;
}
