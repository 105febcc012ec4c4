#include "server/operator_commands.h"

#include "base/clock.h"
#include "base/prompts.h"
#include "base/text.h"
#include "server/message_log.h"
#include "server/session_clock.h"
#include "server/session_log.h"
#include "server/session_parts.h"
#include "server/terminal_control.h"
#include "server/terminal_table.h"
#include "server/time_limit_slots.h"

namespace {
using Icon = Prompts::Icon;

const QString TerminalIsDown = QStringLiteral("Terminal is down");

// Runs a command; a failure abandons it and is told to the operator, as the console's
// error handler always has.
template <typename F> void guarded(const SessionParts& parts, F&& command) {
    try {
        command();
    } catch (const StoreError& e) {
        parts.prompts.message(e.text(), QStringLiteral("Database error"), Icon::Critical);
    } catch (const TerminalIndexError&) {
        // Not a PC of this console: nothing to act on.
    } catch (const std::exception& e) {
        parts.prompts.message(QString::fromUtf8(e.what()), QString(), Icon::Critical);
    }
}

// The terminal's socket, or -1 after telling the operator it is down.
int socketOrRefuse(const SessionParts& parts, int pc, const QString& text, const QString& title,
                   Icon icon) {
    const int s = parts.control.socketOfPc(pc);
    if (s == -1)
        parts.prompts.message(text, title, icon);
    return s;
}
} // namespace

void pausePc(const SessionParts& parts, int pc) {
    guarded(parts, [&] {
        auto r = parts.table.edit(pc);
        const int s = socketOrRefuse(
            parts, pc, QStringLiteral("Pausing terminal at this moment is not possible"), QString(),
            Icon::None);
        if (s == -1)
            return;
        bankRunningStretch(*r, parts.clock.tickCount());
        parts.control.send(s, Msg::pause(r->bankedMs));
        r->state = TerminalState::Paused;
        parts.sessionLog.updateSessionRow(*r);
    });
}

void resumePc(const SessionParts& parts, int pc) {
    guarded(parts, [&] {
        auto r = parts.table.edit(pc);
        const int s = socketOrRefuse(
            parts, pc, QStringLiteral("Terminal is not on-line or not connected to server"),
            TerminalIsDown, Icon::None);
        if (s == -1)
            return;
        r->state = TerminalState::Running;
        r->startTick = parts.clock.tickCount();
        parts.sessionLog.updateSessionRow(*r);
        parts.control.send(s, Msg::resume(r->startTime));
        parts.control.send(s, Msg::bankedTime(r->bankedMs));
        parts.control.send(s, Msg::timeLimit(parts.timeLimits.limitOfPc(pc)));
    });
}

void lockPc(const SessionParts& parts, int pc) {
    guarded(parts, [&] {
        auto r = parts.table.edit(pc);
        const int s = socketOrRefuse(
            parts, pc, QStringLiteral("Performing lock on closed terminal is not allowed"),
            TerminalIsDown, Icon::Critical);
        if (s == -1)
            return;
        parts.control.send(s, Msg::lock());
        r->state = TerminalState::NotLogged;
    });
}

void unlockPc(const SessionParts& parts, int pc) {
    guarded(parts, [&] {
        auto r = parts.table.edit(pc);
        const int s = socketOrRefuse(
            parts, pc, QStringLiteral("Performing unlock on closed terminal is not allowed"),
            TerminalIsDown, Icon::Critical);
        if (s == -1)
            return;
        parts.control.send(s, Msg::unlock());
        r->state = TerminalState::Free;
    });
}

void extendPcMinutes(const SessionParts& parts, int pc, const QString& minutes) {
    guarded(parts, [&] {
        auto r = parts.table.edit(pc);
        const int s = socketOrRefuse(
            parts, pc, QStringLiteral("Extending pc minutes on down terminal is not allowed"),
            TerminalIsDown, Icon::Critical);
        if (s == -1)
            return;
        if (r->timeLimit == QLatin1String("U")) {
            parts.prompts.message(QStringLiteral("Terminal is set to open hour"));
            return;
        }
        // Up long enough to read, short enough not to hold the operator up.
        showConsoleBox(parts.prompts, QStringLiteral("Message"), QStringLiteral("Message"),
                       QStringLiteral("Calculating new time limit"),
                       QStringLiteral("Extend time to ") + minutes, 3000, 250);

        const QString limit =
            QString::number(leadingNumber(minutes) + leadingNumber(r->timeLimit), 'g', 15);
        r->timeLimit = limit;
        parts.sessionLog.updateSessionRow(*r);
        parts.timeLimits.setLimitOfPc(pc, limit);
        parts.control.send(s, Msg::timeLimit(limit));
    });
}

QString maintenanceWord(Maintenance kind) {
    switch (kind) {
    case Maintenance::LogOff:
        return QStringLiteral("LogOff");
    case Maintenance::Reboot:
        return QStringLiteral("Reboot");
    case Maintenance::ShutDown:
        break;
    }
    return QStringLiteral("ShutDown");
}

void maintainPc(const SessionParts& parts, int pc, Maintenance kind) {
    guarded(parts, [&] {
        if (parts.table.at(pc).hasPendingTransaction()) {
            parts.messageLog.logMessage(QStringLiteral("Terminal ") + QString::number(pc) +
                                        QStringLiteral(" with pending trans.<denied>.."));
            return;
        }
        const int s = parts.control.socketOfPc(pc);
        if (s == -1)
            return;
        switch (kind) {
        case Maintenance::LogOff:
            parts.control.send(s, Msg::logOff());
            break;
        case Maintenance::Reboot:
            parts.control.send(s, Msg::restart());
            break;
        case Maintenance::ShutDown:
            parts.control.send(s, Msg::shutDown());
            break;
        }
    });
}

void maintainAll(const SessionParts& parts, Maintenance kind, bool ask) {
    const QString word = maintenanceWord(kind);
    if (ask && parts.prompts.ask(QStringLiteral("Do you really wish to perform a ") + word +
                                     QStringLiteral(" routine to all terminals."),
                                 QString(), Prompts::Buttons::YesNo,
                                 Icon::Exclamation) != Prompts::Answer::Yes)
        return;
    parts.messageLog.logMessage(QStringLiteral("Sending Signal '") + word +
                                QStringLiteral("' to all terminal"));
    for (int p = 1; p <= parts.table.count(); ++p)
        maintainPc(parts, p, kind);
}

bool mayAssignPc(const SessionParts& parts, int pc) {
    if (!parts.table.contains(pc))
        return false;
    if (parts.table.at(pc).logged) {
        parts.prompts.message(QStringLiteral("This pc is already logged."),
                              QStringLiteral("Not allowed"), Icon::Information);
        return false;
    }
    return true;
}

int socketForPeek(const SessionParts& parts, int pc) {
    int s = -1;
    guarded(parts, [&] {
        s = socketOrRefuse(parts, pc,
                           QStringLiteral("Performing peek on terminal is currently not available"),
                           TerminalIsDown, Icon::Critical);
    });
    return s;
}
