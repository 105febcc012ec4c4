#include "people/process_peek.h"

#include "base/prompts.h"
#include "server/session_parts.h"
#include "server/terminal_control.h"
#include "server/terminal_table.h"

PeekTerminal peekTerminal(const SessionParts& parts, int pc, int socket) {
    PeekTerminal t;
    t.pc = pc;
    t.socket = socket;
    if (parts.table.contains(pc))
        t.address = parts.table.at(pc).address;
    t.hostName = parts.control.peerName(socket);
    if (t.hostName.isEmpty())
        t.hostName = QStringLiteral("Not Known");
    t.os = QStringLiteral("Unknown");
    return t;
}

QString processNameOf(const QString& entry) {
    const qsizetype colon = entry.indexOf(QLatin1Char(':'));
    return colon < 0 ? entry : entry.mid(colon + 1);
}

void requestProcesses(const SessionParts& parts, int socket) {
    parts.control.send(socket, Msg::requestProcesses());
}

int killProcesses(const SessionParts& parts, int socket, const QStringList& chosen) {
    using Icon = Prompts::Icon;
    const QString title = QStringLiteral("Kill Process");
    if (parts.prompts.ask(QStringLiteral("Killing a Process from the terminal PC may hang or "
                                         "force \r the terminal to restart!"),
                          title, Prompts::Buttons::OkCancel,
                          Icon::Exclamation) != Prompts::Answer::Ok)
        return 0;
    for (const QString& entry : chosen)
        parts.control.send(socket, Msg::killProcess(processNameOf(entry)));
    parts.prompts.message(chosen.isEmpty() ? QStringLiteral("NO process to kill")
                                           : QStringLiteral("Kill process done"),
                          title);
    return int(chosen.size());
}
