#include "server/session_start.h"

#include "base/clock.h"
#include "base/format.h"
#include "base/prompts.h"
#include "base/text.h"
#include "server/session_log.h"
#include "server/session_parts.h"
#include "server/terminal_control.h"
#include "server/terminal_table.h"
#include "server/time_limit_slots.h"

#include <cmath>

namespace {
void tell(const SessionParts& parts, LogOnSource source, const QString& text, const QString& title,
          Prompts::Icon icon) {
    if (source == LogOnSource::Terminal)
        parts.prompts.notice(text, title, icon);
    else
        parts.prompts.message(text, title, icon);
}
} // namespace

bool logOnPc(const SessionParts& parts, const QString& pcText, const QString& cid,
             const QString& name, int socket, LogOnSource source) {
    using Icon = Prompts::Icon;
    if (pcText.trimmed().isEmpty()) {
        tell(parts, source, QStringLiteral("Pc Terminal is empty"),
             QStringLiteral("Invalid Trm Number"), Icon::Critical);
        return false;
    }
    TerminalTable& table = parts.table;
    if (table.isCidLogged(cid)) {
        tell(parts, source, QStringLiteral("Client ID is already logged"),
             QStringLiteral("Duplicate ID"), Icon::Critical);
        return false;
    }
    const int p = int(std::nearbyint(leadingNumber(pcText)));
    if (!table.contains(p))
        return false; // not a PC of this console: nothing to start
    if (table.at(p).logged) {
        tell(parts, source, QStringLiteral("This PC is already logged"),
             QStringLiteral("Not Allowed"), Icon::Information);
        return false;
    }

    TerminalRecord r = table.at(p);
    r.startTime = formatTime(parts.clock.now().time(), QStringLiteral("HH:MM:SS"));
    r.startTick = parts.clock.tickCount();
    if (const QString ip = parts.control.peerAddress(socket); !ip.isEmpty())
        r.address = ip;
    r.customerLabel = cid.trimmed() + QLatin1Char(':') + name.trimmed();
    r.logged = true;
    r.auxFlag = false;
    r.cid = cid;
    // The board's limit is read and then dropped on purpose: every session starts open
    // and the board applies its limit afterwards with "TLMT ".
    r.timeLimit = parts.timeLimits.limitOfPc(p);
    r.bankedMs = 0;
    r.state = TerminalState::Running;
    r.pcNumber = quint8(p);
    r.timeLimit = QStringLiteral("U");
    // The row first: a session the database does not hold would be forgotten by a restart,
    // so it does not start at all.
    try {
        parts.sessionLog.insertSessionRow(r);
    } catch (const StoreError& e) {
        tell(parts, source,
             QStringLiteral("The session of %1 on PC %2 was not started: the database cannot be "
                            "written.\n%3")
                 .arg(cid.trimmed(), QString::number(p), e.text()),
             QStringLiteral("Database error"), Icon::Critical);
        return false;
    }
    *table.edit(p) = r;
    parts.control.send(socket, Msg::startMeter(r.startTime));
    return true;
}
