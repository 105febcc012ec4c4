#include "people/monitoring.h"

#include "base/clock.h"
#include "base/format.h"
#include "base/prompts.h"
#include "base/text.h"
#include "server/message_log.h"
#include "server/session_parts.h"
#include "server/terminal_control.h"
#include "server/terminal_table.h"

#include <QtGlobal>

#include <cmath>

const QStringList& listingHeadings() {
    static const QStringList headings = {
        QStringLiteral("TRM"),     QStringLiteral("Client#"),    QStringLiteral("Time In"),
        QStringLiteral("Lapse"),   QStringLiteral("PauseCtr"),   QStringLiteral("Time Ceiling"),
        QStringLiteral("Is Open"), QStringLiteral("TRM Status"), QStringLiteral("Is Connected"),
        QStringLiteral("I.P.")};
    return headings;
}

QStringList listingRow(int pc, const TerminalRecord& r, qint32 tickNow) {
    QString lapse;
    if (r.logged) {
        try {
            lapse = formatElapsed(r.runningTime(tickNow));
        } catch (const TickOverflow&) {
            // A time past the counter's range shows nothing rather than a wrong figure.
        }
    }
    return {
        QString::number(pc), r.cid, r.startTime, lapse, QString::number(r.bankedMs), r.timeLimit,
        // Speaks of free use, not of an open session, as operators know it.
        r.state == TerminalState::Free ? QStringLiteral("YES") : QStringLiteral("NO"),
        r.stateCode(), r.online ? QStringLiteral("<Connected>") : QStringLiteral("<0>"), r.address};
}

QList<int> onlinePcs(const TerminalTable& table, int count) {
    QList<int> pcs;
    for (int pc = 1; pc <= qMin(count, table.count()); ++pc)
        if (table.at(pc).online)
            pcs << pc;
    return pcs;
}

const QStringList& registryHeadings() {
    static const QStringList headings = {QStringLiteral("TmIP"), QStringLiteral("PC"),
                                         QStringLiteral("XCON"), QStringLiteral("ON LINE")};
    return headings;
}

QStringList registryRowTexts(const TerminalRegistry::Row& row) {
    return {row.address, QString::number(row.pc), QString::number(row.socket),
            row.online ? QStringLiteral("YES") : QStringLiteral("NO")};
}

bool replyToPc(const SessionParts& parts, const QString& pcText, const QString& text) {
    const double value = std::nearbyint(leadingNumber(pcText));
    const int pc = value >= 0 && value <= 255 ? int(value) : -1;
    int socket = -1;
    try {
        socket = pc < 0 ? -1 : parts.control.socketOfPc(pc);
    } catch (const StoreError& e) {
        parts.prompts.message(e.text(), QStringLiteral("Database error"), Prompts::Icon::Critical);
        return false;
    }
    const QString number = pc < 0 ? pcText.trimmed() : QString::number(pc);
    if (socket == -1) {
        parts.prompts.message(QStringLiteral("Terminal ") + number +
                              QStringLiteral(" is not logged for chatting"));
        return false;
    }
    parts.control.send(socket, Msg::text(text));
    parts.messageLog.logMessage(QStringLiteral("REPLY TO PC ") + number + QStringLiteral(": ") +
                                text);
    return true;
}

QString replyPrompt() {
    return QStringLiteral(">>");
}
