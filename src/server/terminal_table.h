#pragma once

#include <QObject>
#include <QString>
#include <QtGlobal>

#include <stdexcept>
#include <utility>
#include <vector>

// A terminal's state. The three-letter codes are what is stored and shown.
enum class TerminalState {
    NotLogged, // "NLG": no session, the terminal locked
    Running,   // "LOG"
    Paused,    // "PAU"
    Free,      // "FRE": unlocked for free use, nothing timed
    Billing,   // "BIL": stopped, waiting in the billing dialog
    Other,     // a code the console does not know, read from a stored session
};
QString stateCode(TerminalState state); // "" for Other
TerminalState stateOfCode(const QString& code);

// One terminal (PC) and the session it is serving.
struct TerminalRecord {
    QString cid;       // member id, or "TRM-" + PC number for a walk-in
    QString startTime; // "HH:MM:SS"
    quint8 pcNumber = 0;
    bool logged = false;                     // a session is open
    QString customerLabel;                   // trimmed cid + ":" + trimmed name
    qint32 startTick = 0;                    // up-time counter at start or last resume
    QString timeLimit = QStringLiteral("U"); // minutes, or "U" for open hour
    bool auxFlag = false;
    TerminalState state = TerminalState::NotLogged;
    QString otherStateCode; // the stored code, when the state is Other
    qint32 bankedMs = 0;    // running time banked up to the last pause
    QString address;        // dotted IPv4 of the terminal
    bool online = false;    // it has an identified, open connection

    QString stateCode() const;
    void setStateCode(const QString& code);
    // A session is running, paused or being billed.
    bool hasPendingTransaction() const;
    // Running time in milliseconds at the given up-time counter (throws TickOverflow).
    qint32 runningTime(qint32 tickNow) const;
};

// A PC number outside the table.
struct TerminalIndexError : std::out_of_range {
    explicit TerminalIndexError(int pc);
    int pc;
};

// The records of PC 1..NOFPC; created once at start-up and never resized. Records are
// changed only through edit(), so every change is announced.
class TerminalTable : public QObject {
    Q_OBJECT
public:
    // A record open for change; terminalChanged() goes out when it is let go.
    class Edit {
    public:
        Edit(TerminalTable& table, int pc) : table_(&table), pc_(pc) {}
        Edit(Edit&& other) noexcept
            : table_(std::exchange(other.table_, nullptr)), pc_(other.pc_) {}
        Edit(const Edit&) = delete;
        Edit& operator=(const Edit&) = delete;
        Edit& operator=(Edit&&) = delete;
        ~Edit();
        TerminalRecord* operator->() const { return &record(); }
        TerminalRecord& operator*() const { return record(); }

    private:
        TerminalRecord& record() const;
        TerminalTable* table_;
        int pc_;
    };

    // Creates records 1..nofpc in their initial state.
    void init(int nofpc);

    int count() const { return int(records_.size()); }
    bool contains(int pc) const { return pc >= 1 && pc <= count(); }
    const TerminalRecord& at(int pc) const;
    Edit edit(int pc);

    // Some record's cid equals the given one, both trimmed; letter case counts.
    bool isCidLogged(const QString& cid) const;
    int loggedCount() const;

Q_SIGNALS:
    void terminalChanged(int pc);
    // init() is about to make every record anew, and has done so.
    void aboutToReset();
    void tableReset();

private:
    std::vector<TerminalRecord> records_;
};
