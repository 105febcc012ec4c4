#include "server/session_start.h"

#include "base/format.h"
#include "base/text.h"
#include "server/console.h"
#include "server/protocol.h"
#include "server/terminal_server.h"

#include <cmath>

namespace {
void tell(Console& console, LogOnSource source, const QString& text, const QString& title,
          Prompts::Icon icon) {
    if (source == LogOnSource::Terminal)
        console.prompts().notice(text, title, icon);
    else
        console.prompts().message(text, title, icon);
}
} // namespace

bool LogOnPc(Console& console, const QString& pcText, const QString& cid, const QString& name,
             int socketIndex, LogOnSource source) {
    using Icon = Prompts::Icon;
    if (pcText.trimmed().isEmpty()) {
        tell(console, source, QStringLiteral("Pc Terminal is empty"),
             QStringLiteral("Invalid Trm Number"), Icon::Critical);
        return false;
    }
    TerminalTable& table = console.terminals();
    if (table.IsCidLogged(cid)) {
        tell(console, source, QStringLiteral("Client ID is already logged"),
             QStringLiteral("Duplicate ID"), Icon::Critical);
        return false;
    }
    const double number = Val(pcText);
    const int p = int(std::nearbyint(number));
    if (!table.contains(p))
        return false; // not a PC of this console: nothing to start
    TerminalRecord& r = table.at(p);
    if (r.logged) {
        tell(console, source, QStringLiteral("This PC is already logged"),
             QStringLiteral("Not Allowed"), Icon::Information);
        return false;
    }

    TerminalServer& server = console.server();
    r.starttime = FormatTime(console.clock().now().time(), QStringLiteral("HH:MM:SS"));
    r.TickStart = console.clock().tickCount();
    if (const QString ip = server.peerAddressOf(socketIndex); !ip.isEmpty())
        r.TrmIP = ip;
    server.sendOnSocket(socketIndex, Msg::SMTR(r.starttime));
    r.cdtls = cid.trimmed() + QLatin1Char(':') + name.trimmed();
    r.logged = true;
    r.auxflag = false;
    r.cid = cid;
    // The board's limit is read and then dropped on purpose: every session starts open
    // and the board applies its limit afterwards with "TLMT ".
    r.stopwatch = console.board().timeLimit(ActiveTerminalBoard::SlotOfPc(p));
    r.BkTick = 0;
    r.pcstat = QStringLiteral("LOG");
    r.pcno = quint8(p);
    r.stopwatch = QStringLiteral("U");
    try {
        console.sessionLog().InsertSessionRow(r);
    } catch (const StoreError& e) {
        // The session runs all the same; the operator must know it is not mirrored.
        console.LogMessage(QStringLiteral("DB ERR: the session of %1 on PC %2 could not be "
                                          "saved: %3")
                               .arg(cid, QString::number(p), e.text()));
        console.prompts().notice(QStringLiteral("The session of %1 on PC %2 is running but could "
                                                "not be saved in the database:\n%3")
                                     .arg(cid, QString::number(p), e.text()),
                                 QStringLiteral("Database error"), Icon::Critical);
    }
    return true;
}
