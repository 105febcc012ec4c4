#pragma once

#include "sales/takings_model.h"

#include <QObject>
#include <QString>

class Clock;
class Database;
class Prompts;

// What the date report window (frmSDates) holds: the chosen days, the two date boxes, the
// rentals and services grids with their totals, and the progress line. The window shows
// it and hands it the operator's choices.
class DateReport : public QObject {
    Q_OBJECT
public:
    DateReport(const Database& database, Clock& clock, Prompts& prompts, QObject* parent = nullptr);

    TakingsModel& rentals() { return rentals_; }
    TakingsModel& services() { return services_; }

    DateSpan::Mode mode() const { return mode_; }
    // The days the grids show: today, the last range both boxes held as dates, or every date.
    const DateSpan& shown() const { return shown_; }
    QString beginText() const { return begin_; }
    QString endText() const { return end_; }
    // The boxes take typing only when a range is chosen.
    bool boxesEnabled() const { return mode_ == DateSpan::Mode::Range; }

    // txtSRG and txtSrv ("##,###,##0.#0"), txtGtotal and the summary tab's txtSRentals and
    // txtSService ("###,###,##0.#0").
    QString rentalsTotal() const;
    QString servicesTotal() const;
    QString grandTotal() const;
    QString summaryRentals() const;
    QString summaryServices() const;
    QString message() const { return message_; } // lblmess
    // The shown days' takings, day by day (or month by month), for the chart.
    const TakingsChart& chart() const { return chart_; }

    // The window opening: both boxes today, today's rows, their sums.
    void load();
    void chooseToday(); // optdy
    void chooseRange(); // optsd: both boxes today, then checksdate
    void chooseAll();   // optad: the boxes read "Start" and "End"
    // A box was typed in (txtbdate, txtedate): checksdate.
    void boxesEdited(const QString& beginText, const QString& endText);

    // The print button's request, by the report chosen (popt).
    ReportRequest printRequest(int popt) const;

Q_SIGNALS:
    void boxesChanged();
    // lblmess has a new text; the window paints it at once.
    void messageChanged(const QString& text);
    // New rows or days: the totals and the chart follow.
    void shownChanged();

private:
    // Both grids from the span; the grids keep what they show when the database fails.
    bool search(const DateSpan& span);
    void makeSum();
    void say(const QString& text);
    void setBoxes(const QString& begin, const QString& end);

    const Database& database_;
    Clock& clock_;
    Prompts& prompts_;
    TakingsModel rentals_;
    TakingsModel services_;
    DateSpan::Mode mode_ = DateSpan::Mode::Today;
    DateSpan shown_;
    QString begin_;
    QString end_;
    Money rentalsSum_;
    Money servicesSum_;
    TakingsChart chart_;
    QString message_;
};
