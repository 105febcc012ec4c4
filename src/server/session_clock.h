#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

class Clock;
class StatusPanels;
class TerminalServer;
class TerminalTable;
struct SessionParts;
struct TerminalRecord;

// How a session's running time is kept: banked time plus, while it runs, the up-time
// counter since its start or last resume. All sums are signed 32-bit; an overflow throws
// TickOverflow and abandons the operation.

// Pause by the operator or by a time limit: the running stretch is added to the bank.
// Nothing checks that the session runs: a second pause banks the time since the last
// resume again, as operators have always seen it do.
void bankRunningStretch(TerminalRecord& record, qint32 tickNow);

// A lost connection pauses the sessions of its address: when one of them runs, each
// session on that address is paused with its banked time replaced by the time since its
// start or last resume (time banked by earlier pauses is lost; kept as the console has
// always done it), and the loss is logged. The PCs paused; each is paused in memory even
// when its row cannot be written now.
QList<int> pauseOnLostConnection(const SessionParts& parts, const QString& address);

// The main window's timer: the status panels of sessions, sockets, port and date.
void mainTimerTick(const TerminalTable& table, const TerminalServer& server, StatusPanels& panels,
                   const Clock& clock);
