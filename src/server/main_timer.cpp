#include "server/main_timer.h"

#include "base/format.h"
#include "server/console.h"
#include "server/terminal_server.h"

void MainTmrTick(Console& console) {
    const TerminalServer& server = console.server();
    console.setStatus(2,
                      QString::number(console.terminals().loggedCount()) + QStringLiteral(" PC"));
    console.setStatus(4, QString::number(server.socketCount()));
    console.setStatus(5,
                      QStringLiteral("(on)Port: ") + QString::number(server.socketCounter() + 1));
    console.setStatus(
        10, FormatDateTime(console.clock().now(), QStringLiteral("DDDD, MMMM DD YYYY HH:MM:SS ")));
}
