#include "server/session_clock.h"

#include "base/clock.h"
#include "base/format.h"
#include "server/message_log.h"
#include "server/session_log.h"
#include "server/session_parts.h"
#include "server/status_panels.h"
#include "server/terminal_server.h"
#include "server/terminal_table.h"

void bankRunningStretch(TerminalRecord& record, qint32 tickNow) {
    record.bankedMs = tickAdd(record.bankedMs, tickSub(tickNow, record.startTick));
}

QList<int> pauseOnLostConnection(const SessionParts& parts, const QString& address) {
    TerminalTable& table = parts.table;
    bool running = false;
    for (int p = 1; p <= table.count(); ++p) {
        const TerminalRecord& r = table.at(p);
        running |= r.address == address && r.state == TerminalState::Running && r.logged;
    }
    if (!running)
        return {};
    parts.messageLog.logMessage(QStringLiteral("CONN ERR: ") + address +
                                QStringLiteral(" Socket Force closed"));
    const qint32 now = parts.clock.tickCount();
    QList<int> paused;
    for (int p = 1; p <= table.count(); ++p) {
        if (!table.at(p).logged || table.at(p).address != address)
            continue;
        auto r = table.edit(p);
        r->bankedMs = tickSub(now, r->startTick);
        r->state = TerminalState::Paused;
        parts.sessionLog.updateSessionRow(*r);
        paused << p;
    }
    return paused;
}

void mainTimerTick(const TerminalTable& table, const TerminalServer& server, StatusPanels& panels,
                   const Clock& clock) {
    panels.set(StatusPanel::Sessions, QString::number(table.loggedCount()) + QStringLiteral(" PC"));
    panels.set(StatusPanel::Sockets, QString::number(server.socketCount()));
    panels.set(StatusPanel::Port,
               server.isListening()
                   ? QStringLiteral("(on)Port: ") + QString::number(server.socketCounter() + 1)
                   : QStringLiteral("Not listening: terminals cannot connect"));
    panels.set(StatusPanel::DateTime,
               formatDateTime(clock.now(), QStringLiteral("DDDD, MMMM DD YYYY HH:MM:SS ")));
}
