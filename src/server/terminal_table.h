#pragma once

#include <QString>
#include <QtGlobal>

#include <stdexcept>
#include <vector>

// One terminal (PC) and the session it is serving.
struct TerminalRecord {
    QString cid;       // member id, or "TRM-" + PC number for a walk-in
    QString starttime; // "HH:MM:SS"
    quint8 pcno = 0;
    bool logged = false; // a session is open
    QString cdtls;       // trimmed cid + ":" + trimmed name
    qint32 TickStart = 0;
    QString stopwatch = QStringLiteral("U"); // limit in minutes, "U" for open hour
    bool auxflag = false;
    QString pcstat = QStringLiteral("NLG");
    qint32 BkTick = 0; // banked milliseconds
    QString TrmIP;
    bool online = false;

    // A session is running, paused or being billed.
    bool hasPendingTransaction() const {
        return pcstat == QLatin1String("LOG") || pcstat == QLatin1String("PAU") ||
               pcstat == QLatin1String("BIL");
    }
    // Running time in milliseconds at the given up-time counter (throws TickOverflow).
    qint32 runningTime(qint32 tickNow) const;
};

// A PC number outside the table.
struct TerminalIndexError : std::out_of_range {
    explicit TerminalIndexError(int pc);
    int pc;
};

// The records of PC 1..NOFPC; created once at start-up and never resized.
class TerminalTable {
public:
    // Creates records 1..nofpc in their initial state.
    void InitTerminalTable(int nofpc);

    int count() const { return int(records_.size()); }
    bool contains(int pc) const { return pc >= 1 && pc <= count(); }
    TerminalRecord& at(int pc);
    const TerminalRecord& at(int pc) const;

    // Some record's cid equals the given one, both trimmed; letter case counts.
    bool IsCidLogged(const QString& cid) const;
    int loggedCount() const;

private:
    std::vector<TerminalRecord> records_;
};
