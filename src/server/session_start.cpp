#include "server/session_start.h"

#include "base/clock.h"
#include "base/format.h"
#include "base/prompts.h"
#include "base/text.h"
#include "server/message_log.h"
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

    auto r = table.edit(p);
    r->startTime = formatTime(parts.clock.now().time(), QStringLiteral("HH:MM:SS"));
    r->startTick = parts.clock.tickCount();
    if (const QString ip = parts.control.peerAddress(socket); !ip.isEmpty())
        r->address = ip;
    parts.control.send(socket, Msg::startMeter(r->startTime));
    r->customerLabel = cid.trimmed() + QLatin1Char(':') + name.trimmed();
    r->logged = true;
    r->auxFlag = false;
    r->cid = cid;
    // The board's limit is read and then dropped on purpose: every session starts open
    // and the board applies its limit afterwards with "TLMT ".
    r->timeLimit = parts.timeLimits.limitOfPc(p);
    r->bankedMs = 0;
    r->state = TerminalState::Running;
    r->pcNumber = quint8(p);
    r->timeLimit = QStringLiteral("U");
    try {
        parts.sessionLog.insertSessionRow(*r);
    } catch (const StoreError& e) {
        // The session runs all the same; the operator must know it is not mirrored.
        parts.messageLog.logMessage(QStringLiteral("DB ERR: the session of %1 on PC %2 could "
                                                   "not be saved: %3")
                                        .arg(cid, QString::number(p), e.text()));
        parts.prompts.notice(QStringLiteral("The session of %1 on PC %2 is running but could "
                                            "not be saved in the database:\n%3")
                                 .arg(cid, QString::number(p), e.text()),
                             QStringLiteral("Database error"), Icon::Critical);
    }
    return true;
}
