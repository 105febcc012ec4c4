#pragma once

#include <QString>

#include <array>

// The active-terminal board as logic: the page shown and, per tile, the time-limit
// choice and the amount caption. Session start, resume, extension and billing read
// it; the window only draws it.
class ActiveTerminalBoard {
public:
    static constexpr int TilesPerPage = 24;

    // The tile of a PC on whatever page: 48 uses tile 24, 25 uses tile 1.
    static int SlotOfPc(int pc) {
        const int slot = pc % TilesPerPage;
        return slot == 0 ? TilesPerPage : slot;
    }

    int page() const { return page_; }
    void setPage(int page) { page_ = page < 1 ? 1 : page; }
    int pcOfTile(int tile) const { return tile + (page_ - 1) * TilesPerPage; }

    QString timeLimit(int tile) const { return tiles_.at(index(tile)).timeLimit; }
    void setTimeLimit(int tile, const QString& text) { tiles_.at(index(tile)).timeLimit = text; }
    QString amountCaption(int tile) const { return tiles_.at(index(tile)).amount; }
    void setAmountCaption(int tile, const QString& text) { tiles_.at(index(tile)).amount = text; }

private:
    struct Tile {
        QString timeLimit = QStringLiteral("U");
        QString amount = QStringLiteral("P 0.00");
    };
    static size_t index(int tile) { return size_t(tile - 1); }

    int page_ = 1;
    std::array<Tile, TilesPerPage> tiles_{};
};
