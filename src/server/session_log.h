#pragma once

#include "base/clock.h"
#include "server/terminal_table.h"
#include "store/database.h"

#include <QStringList>

// The mirror of open sessions in table templog: one row per session opened today, so
// that a console started again on the same day picks every session up where it stood.
class SessionLog {
public:
    SessionLog(const Database& database, const Clock& clock) : db_(database), clock_(clock) {}

    // Adds the row of the session now held in the record.
    void insertSessionRow(const TerminalRecord& record);
    // Saves the record's banked time, state and time limit into its session row (found
    // by today's date, cid and start time among open rows). False when there is none.
    bool updateSessionRow(const TerminalRecord& record);
    // Marks the session's row out (closed and billed).
    bool markSessionOut(const QString& cid, const QString& startTime);

    struct Restored {
        int count = 0;        // rows put back into the table
        QStringList problems; // rows that could not be, said plainly
    };
    // Puts today's open rows back into the table; the later of two rows for one PC
    // wins. A session left open on an earlier day is not restored.
    Restored restoreSessions(TerminalTable& table);

private:
    const Database& db_;
    const Clock& clock_;
};
