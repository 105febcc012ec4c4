#include "server/operator_commands.h"

#include "base/text.h"
#include "people/rights.h"
#include "server/console.h"
#include "server/protocol.h"
#include "server/terminal_server.h"

namespace {
using Icon = Prompts::Icon;

const QString TerminalIsDown = QStringLiteral("Terminal is down");

// Runs a command; a failure abandons it and is told to the operator, as the console's
// error handler always has.
template <typename F> void guarded(Console& console, F&& command) {
    try {
        command();
    } catch (const StoreError& e) {
        console.prompts().message(e.text(), QStringLiteral("Database error"), Icon::Critical);
    } catch (const TerminalIndexError&) {
        // Not a PC of this console: nothing to act on.
    } catch (const std::exception& e) {
        console.prompts().message(QString::fromUtf8(e.what()), QString(), Icon::Critical);
    }
}

// The terminal's socket, or -1 after telling the operator it is down.
int socketOrRefuse(Console& console, int pc, const QString& text, const QString& title, Icon icon) {
    const int s = console.server().SocketOfPc(pc);
    if (s == -1)
        console.prompts().message(text, title, icon);
    return s;
}
} // namespace

void PausePc(Console& console, int pc) {
    guarded(console, [&] {
        TerminalRecord& r = console.terminals().at(pc);
        const int s = socketOrRefuse(
            console, pc, QStringLiteral("Pausing terminal at this moment is not possible"),
            QString(), Icon::None);
        if (s == -1)
            return;
        // No check that the session runs: a second pause banks the time since the last
        // resume again, as operators have always seen it do.
        r.BkTick = TickAdd(r.BkTick, TickSub(console.clock().tickCount(), r.TickStart));
        console.server().sendOnSocket(s, Msg::PAUS(r.BkTick));
        r.pcstat = QStringLiteral("PAU");
        console.sessionLog().UpdateSessionRow(r);
    });
}

void ResumePc(Console& console, int pc) {
    guarded(console, [&] {
        TerminalRecord& r = console.terminals().at(pc);
        const int s = socketOrRefuse(
            console, pc, QStringLiteral("Terminal is not on-line or not connected to server"),
            TerminalIsDown, Icon::None);
        if (s == -1)
            return;
        r.pcstat = QStringLiteral("LOG");
        r.TickStart = console.clock().tickCount();
        console.sessionLog().UpdateSessionRow(r);
        TerminalServer& server = console.server();
        server.sendOnSocket(s, Msg::PAUX(r.starttime));
        server.sendOnSocket(s, Msg::SBTK(r.BkTick));
        server.sendOnSocket(
            s, Msg::TLMT(console.board().timeLimit(ActiveTerminalBoard::SlotOfPc(pc))));
    });
}

void LockPc(Console& console, int pc) {
    guarded(console, [&] {
        TerminalRecord& r = console.terminals().at(pc);
        const int s = socketOrRefuse(
            console, pc, QStringLiteral("Performing lock on closed terminal is not allowed"),
            TerminalIsDown, Icon::Critical);
        if (s == -1)
            return;
        console.server().sendOnSocket(s, Msg::XFRE());
        r.pcstat = QStringLiteral("NLG");
    });
}

void UnlockPc(Console& console, int pc) {
    guarded(console, [&] {
        if (!AdminOrRefuse(console, AdminCommand::TerminalUnlock))
            return;
        TerminalRecord& r = console.terminals().at(pc);
        const int s = socketOrRefuse(
            console, pc, QStringLiteral("Performing unlock on closed terminal is not allowed"),
            TerminalIsDown, Icon::Critical);
        if (s == -1)
            return;
        console.server().sendOnSocket(s, Msg::FREE());
        r.pcstat = QStringLiteral("FRE");
    });
}

void ExtendPCmin(Console& console, int pc, const QString& minutes) {
    guarded(console, [&] {
        TerminalRecord& r = console.terminals().at(pc);
        const int s = socketOrRefuse(
            console, pc, QStringLiteral("Extending pc minutes on down terminal is not allowed"),
            TerminalIsDown, Icon::Critical);
        if (s == -1)
            return;
        if (r.stopwatch == QLatin1String("U")) {
            console.prompts().message(QStringLiteral("Terminal is set to open hour"));
            return;
        }
        // Up long enough to read, short enough not to hold the operator up.
        ShowConsoleBox(console.prompts(), QStringLiteral("Message"), QStringLiteral("Message"),
                       QStringLiteral("Calculating new time limit"),
                       QStringLiteral("Extend time to ") + minutes, 3000, 250);

        const QString limit = QString::number(Val(minutes) + Val(r.stopwatch), 'g', 15);
        r.stopwatch = limit;
        console.sessionLog().UpdateSessionRow(r);
        console.board().setTimeLimit(ActiveTerminalBoard::SlotOfPc(pc), limit);
        console.server().sendOnSocket(s, Msg::TLMT(limit));
    });
}

void MaintainPc(Console& console, int pc, const QString& kind) {
    guarded(console, [&] {
        const TerminalRecord& r = console.terminals().at(pc);
        if (QStringLiteral("LOG;PAU;BIL").contains(r.pcstat)) {
            console.LogMessage(QStringLiteral("Terminal ") + QString::number(pc) +
                               QStringLiteral(" with pending trans.<denied>.."));
            return;
        }
        const int s = console.server().SocketOfPc(pc);
        if (s == -1)
            return;
        if (kind == QLatin1String("LogOff"))
            console.server().sendOnSocket(s, Msg::LGOF());
        else if (kind == QLatin1String("Reboot"))
            console.server().sendOnSocket(s, Msg::RSTR());
        else if (kind == QLatin1String("ShutDown"))
            console.server().sendOnSocket(s, Msg::PTAY());
    });
}

void MaintainAll(Console& console, const QString& kind, bool ask) {
    if (ask && console.prompts().ask(QStringLiteral("Do you really wish to perform a ") + kind +
                                         QStringLiteral(" routine to all terminals."),
                                     QString(), Prompts::Buttons::YesNo,
                                     Icon::Exclamation) != Prompts::Answer::Yes)
        return;
    console.LogMessage(QStringLiteral("Sending Signal '") + kind +
                       QStringLiteral("' to all terminal"));
    for (int p = 1; p <= console.terminals().count(); ++p)
        MaintainPc(console, p, kind);
}

bool MayAssignPc(Console& console, int pc) {
    if (!console.terminals().contains(pc))
        return false;
    if (console.terminals().at(pc).logged) {
        console.prompts().message(QStringLiteral("This pc is already logged."),
                                  QStringLiteral("Not allowed"), Icon::Information);
        return false;
    }
    return true;
}

int PeekSocketOfPc(Console& console, int pc) {
    if (!AdminOrRefuse(console, AdminCommand::TerminalPeek))
        return -1;
    int s = -1;
    guarded(console, [&] {
        s = socketOrRefuse(console, pc,
                           QStringLiteral("Performing peek on terminal is currently not available"),
                           TerminalIsDown, Icon::Critical);
    });
    return s;
}
