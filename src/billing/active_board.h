#pragma once

#include "server/time_limit_slots.h"

#include <QObject>
#include <QString>

#include <array>

// The active-terminal board as logic: the page shown and, per tile, the time-limit
// choice and the amount caption. Billing reads the amount of a tile from here; the
// window only draws it.
class ActiveBoard : public QObject {
    Q_OBJECT
public:
    static constexpr int TilesPerPage = TimeLimitSlots::SlotCount;

    explicit ActiveBoard(TimeLimitSlots& limits) : limits_(limits) {}

    int page() const { return page_; }
    void setPage(int page) { page_ = page < 1 ? 1 : page; }
    int pcOfTile(int tile) const { return tile + (page_ - 1) * TilesPerPage; }

    QString timeLimit(int tile) const { return limits_.limit(tile); }
    void setTimeLimit(int tile, const QString& text) { limits_.setLimit(tile, text); }
    QString amountCaption(int tile) const { return amounts_.at(size_t(tile - 1)); }
    void setAmountCaption(int tile, const QString& text) { amounts_.at(size_t(tile - 1)) = text; }

private:
    TimeLimitSlots& limits_;
    int page_ = 1;
    std::array<QString, TilesPerPage> amounts_ = [] {
        std::array<QString, TilesPerPage> a;
        a.fill(QStringLiteral("P 0.00"));
        return a;
    }();
};
