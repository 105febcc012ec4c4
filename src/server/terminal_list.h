#pragma once

#include <QString>

struct TerminalRecord;

// What the main window's terminal list shows for one PC. The operator's pop-up menu
// reads the PC number back from the text (the number after its first ":"), so the
// text carries exactly one ":" and the number comes last.
struct TerminalListEntry {
    enum class State { Locked, Running, Paused, Free, Billing, Unknown };

    int pc = 0;
    State state = State::Locked;
    bool online = false;
    QString text;

    bool operator==(const TerminalListEntry&) const = default;
};

TerminalListEntry::State TerminalListState(const QString& pcstat);

// "Pc Number 3 is not logged, off line :3". A state code the console does not know is
// shown as it stands, without any ":" it may hold.
TerminalListEntry MakeTerminalListEntry(const TerminalRecord& record, int pc);
