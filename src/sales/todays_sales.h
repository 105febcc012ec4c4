#pragma once

#include "sales/takings_model.h"

#include <QObject>
#include <QString>

class Clock;
class Database;
class Prompts;
struct CurrentOperator;

// What today's sales window (ASlsSrv) holds: today's rentals and services with their
// totals, kept current by the window's timer. A check that finds nothing new costs two
// sums over today's part of the revenue index; the grids are read again only when rows
// came, went or changed, or the day turned.
class TodaysSales : public QObject {
    Q_OBJECT
public:
    TodaysSales(const Database& database, Clock& clock, Prompts& prompts,
                QObject* parent = nullptr);

    TakingsModel& rentals() { return rentals_; }
    TakingsModel& services() { return services_; }

    // txtRG and txtSrv, "###,##0.#0".
    QString rentalsTotal() const;
    QString servicesTotal() const;

    // ChkTotalAmnt, on opening and every tick. True when a grid has new rows to show. A
    // failing database is told once (without holding up the tick) until it reads again.
    bool refresh();

    // The print buttons cmdPRG, cmdPSRV and cmdPSum.
    ReportRequest printRequest(ReportKind kind) const;

    // Removes the service sale shown in `row` of the services grid, after asking: a sale
    // typed in by mistake. Only an "Admin" may; anyone else is told "Access Denied.." and
    // nothing changes. True when the row was removed (refresh() then shows it gone).
    bool deleteServiceSale(const CurrentOperator& current, int row);

private:
    const Database& database_;
    Clock& clock_;
    Prompts& prompts_;
    TakingsModel rentals_;
    TakingsModel services_;
    bool failing_ = false;
};
