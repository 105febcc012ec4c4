#pragma once

#include <QString>

class Console;

// The operator's commands to one terminal or to all of them. Each checks the
// terminal's connection first and refuses, with its own message, when it is down.
void PausePc(Console& console, int pc);
void ResumePc(Console& console, int pc);
void LockPc(Console& console, int pc);
void UnlockPc(Console& console, int pc); // "Admin" only
// Raises the time limit by the minutes given as text ("5" ... "60").
void ExtendPCmin(Console& console, int pc, const QString& minutes);
// kind: "LogOff", "Reboot" or "ShutDown". A PC with a pending transaction is skipped.
void MaintainPc(Console& console, int pc, const QString& kind);
void MaintainAll(Console& console, const QString& kind, bool ask);
// "Assign this PC to client": true when the log-on dialog may open for the PC.
bool MayAssignPc(Console& console, int pc);
// "Show Client PC Processes": the terminal's socket, or -1 after telling the operator
// why the viewer cannot open ("Admin" only, terminal down).
int PeekSocketOfPc(Console& console, int pc);
