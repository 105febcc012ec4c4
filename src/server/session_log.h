#pragma once

#include "base/clock.h"
#include "server/terminal_table.h"
#include "store/database.h"

#include <QStringList>

#include <functional>
#include <map>

// The mirror of open sessions in table templog: one row per session opened today, so
// that a console started again on the same day picks every session up where it stood.
// A session row is found by today's date, its PC, its customer id and its start time.
//
// A clock save that cannot be written (a full disk, a read-only or locked file) does not
// stop the session: its values are kept and written at the next write that succeeds,
// and whoever listens is told once that writing fails, with the reason.
class SessionLog {
public:
    SessionLog(const Database& database, const Clock& clock) : db_(database), clock_(clock) {}

    // Called when writing starts to fail (again after a success), with the engine's reason.
    void setWriteFailureHandler(std::function<void(const QString& reason)> handler) {
        onFailure_ = std::move(handler);
    }

    // Adds the row of the session now held in the record. Throws StoreError when it cannot:
    // a session whose row is not written must not start.
    void insertSessionRow(const TerminalRecord& record);
    // Saves the record's banked time, state and time limit into its session row. False
    // when no such row exists, or when it could not be written now (it is kept for later).
    bool updateSessionRow(const TerminalRecord& record);
    // Marks the session's row out (closed and billed). Throws StoreError when it cannot.
    bool markSessionOut(int pc, const QString& cid, const QString& startTime);
    // Clock saves waiting for the database to take writes again.
    int pendingWrites() const { return int(pending_.size()); }

    struct Restored {
        int count = 0;        // rows put back into the table
        QStringList problems; // rows that could not be, said plainly
    };
    // Puts today's open rows back into the table; the later of two rows for one PC
    // wins. A session left open on an earlier day is not restored.
    Restored restoreSessions(TerminalTable& table);

private:
    struct ClockSave {
        int pc;
        QString cid;
        QString startTime;
        qint32 bankedMs;
        QString state;
        QString timeLimit;
    };
    bool write(const ClockSave& save);
    void succeeded();
    void failed(const StoreError& e);

    const Database& db_;
    const Clock& clock_;
    std::function<void(const QString&)> onFailure_;
    std::map<int, ClockSave> pending_; // by PC: only the latest values matter
    bool failing_ = false;
};
