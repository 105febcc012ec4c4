#pragma once

#include "store/database.h"

#include <QString>

#include <optional>
#include <vector>

// SrvIPTable: one row per terminal address ever seen, with the PC number it reported,
// the socket now serving it and whether it is connected.
class TerminalRegistry {
public:
    struct Row {
        QString address; // TrmIP
        int pc = 0;      // PCno
        int socket = 0;  // SKIndex
        bool online = false;
    };

    explicit TerminalRegistry(const Database& database) : db_(database) {}

    // The row of the address is edited, or added when there is none; it goes on line.
    void registerTerminal(int pc, const QString& address, int socket);
    // The PC number of the address's on-line row; 0 when there is none.
    int pcOfAddress(const QString& address) const;
    // The socket of the PC's first on-line row; -1 when it has no identified connection.
    int socketOfPc(int pc) const;
    // The on-line row served by the socket goes off line; its PC number, if there was one.
    std::optional<int> markSocketGone(int socket);
    // Every row off line, as at every start.
    void markAllOffline();
    // Every row, in the order they were added.
    std::vector<Row> rows() const;

private:
    const Database& db_;
};
