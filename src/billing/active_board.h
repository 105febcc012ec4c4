#pragma once

#include "server/terminal_table.h"
#include "server/time_limit_slots.h"

#include <QObject>
#include <QString>

#include <array>

class Rates;

// The customer's name of a session: its details after the id and ":".
QString customerName(const TerminalRecord& record);

// The active-terminal board as logic: a page of 24 tiles, each with its terminal, what the
// tile says, its hint, its amount caption and the time-limit choice (held in the slots
// that session start, resume and extension read). Billing reads a tile's amount from here;
// the window only draws it.
class ActiveBoard : public QObject {
    Q_OBJECT
public:
    static constexpr int TilesPerPage = TimeLimitSlots::SlotCount;

    struct Tile {
        QString description;
        QString hint = QStringLiteral("Click number to log");
        QString amount = QStringLiteral("P 0.00");
    };

    explicit ActiveBoard(TimeLimitSlots& limits) : limits_(limits) {}

    // Pages of 24 terminals: as many as the terminals need, at least one.
    void setTerminalCount(int count);
    int terminalCount() const { return terminals_; }
    int pageCount() const { return qMax(1, (terminals_ + TilesPerPage - 1) / TilesPerPage); }
    int page() const { return page_; }
    // Shows another page; its tiles start over ("Click number to log", "P 0.00").
    void setPage(int page);
    // "1 of 2"
    QString pageText() const;
    int pcOfTile(int tile) const { return tile + (page_ - 1) * TilesPerPage; }
    bool hasTerminal(int tile) const { return pcOfTile(tile) <= terminals_; }

    const Tile& tile(int tile) const { return tiles_.at(size_t(tile - 1)); }
    QString amountCaption(int tile) const { return this->tile(tile).amount; }
    QString timeLimit(int tile) const { return limits_.limit(tile); }
    void setTimeLimit(int tile, const QString& text) { limits_.setLimit(tile, text); }

    // Brings the tiles of running and paused terminals of the shown page up to date from
    // the records, all at the same up-time counter. A running tile shows who and since
    // when, and its amount; a paused one says so and keeps the amount it had run up.
    void refresh(const TerminalTable& table, const Rates& rates, qint32 tickNow);

    // Hiding the terminals nobody uses (no session, not on line).
    bool hidesUnused() const { return hidesUnused_; }
    void setHidesUnused(bool hide);
    // What a tile's terminal shows when unused ones are hidden.
    static bool isUnused(const TerminalRecord& record);

Q_SIGNALS:
    void pageChanged();
    void tileChanged(int tile);

private:
    void set(int tile, Tile value);

    TimeLimitSlots& limits_;
    int terminals_ = 24;
    int page_ = 1;
    bool hidesUnused_ = false;
    std::array<Tile, TilesPerPage> tiles_{};
};
