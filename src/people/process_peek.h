#pragma once

#include <QString>
#include <QStringList>

struct SessionParts;

// The terminal the process viewer looks into, as it shows it on opening.
struct PeekTerminal {
    int pc = 0;
    int socket = -1;
    QString address;  // from the terminal's record
    QString hostName; // the connection's remote host, "Not Known" when it reports none
    QString os;       // "Unknown": terminals do not say
};
PeekTerminal peekTerminal(const SessionParts& parts, int pc, int socket);

// The name the terminal ends a process by: what follows the first ":" of its entry in
// the list (the whole entry when it has none).
QString processNameOf(const QString& entry);

// Asks the terminal on `socket` for its processes ("RQPR").
void requestProcesses(const SessionParts& parts, int socket);

// Ends the chosen processes after the operator's OK to the warning: one "KLPR " a
// process, in the list's order. Tells the operator whether anything was sent (which is
// all "done" means: terminals confirm nothing). Returns how many were sent.
int killProcesses(const SessionParts& parts, int socket, const QStringList& chosen);
