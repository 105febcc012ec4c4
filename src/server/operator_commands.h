#pragma once

#include <QString>

struct SessionParts;

// The operator's commands to one terminal or to all of them. Each checks the terminal's
// connection first and refuses, with its own message, when it is down. The rights a
// command needs are checked by whoever offers it, before it runs.
void pausePc(const SessionParts& parts, int pc);
void resumePc(const SessionParts& parts, int pc);
void lockPc(const SessionParts& parts, int pc);
void unlockPc(const SessionParts& parts, int pc);
// Raises the time limit by the minutes given as text ("5" ... "60").
void extendPcMinutes(const SessionParts& parts, int pc, const QString& minutes);

enum class Maintenance { LogOff, Reboot, ShutDown };
QString maintenanceWord(Maintenance kind); // "LogOff", "Reboot", "ShutDown"
// A PC with a session running, paused or being billed is skipped, with a log line.
void maintainPc(const SessionParts& parts, int pc, Maintenance kind);
void maintainAll(const SessionParts& parts, Maintenance kind, bool ask);

// "Assign this PC to client": true when the log-on dialog may open for the PC.
bool mayAssignPc(const SessionParts& parts, int pc);
// "Show Client PC Processes": the terminal's socket, or -1 after telling the operator
// that it is down.
int socketForPeek(const SessionParts& parts, int pc);
