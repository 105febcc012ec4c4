#include "support/terminal_probe.h"

#include "console/console.h"
#include "server/session_start.h"

std::unique_ptr<TerminalClient> TerminalProbe::connect(const QString& address) {
    auto t = std::make_unique<TerminalClient>();
    if (!t->connectToConsole(QStringLiteral("127.0.0.1"), console_.server().port(),
                             QHostAddress(address)) ||
        t->waitFor("ACPT").isEmpty())
        return nullptr;
    return t;
}

bool TerminalProbe::identify(TerminalClient& terminal, int pc) {
    terminal.setPcNumber(pc);
    terminal.identify();
    // Answered only after "AIP" was handled; what "AIP" itself brought stays in the inbox.
    if (openOtherLine())
        drain(*other_);
    terminal.requestRates();
    if (terminal.waitFor("SRPH").isEmpty())
        return false;
    return console_.terminals().contains(pc) && console_.terminals().at(pc).online;
}

std::unique_ptr<TerminalClient> TerminalProbe::online(int pc, const QString& address) {
    auto t = connect(address.isEmpty() ? QStringLiteral("127.0.0.%1").arg(pc) : address);
    if (!t || !identify(*t, pc))
        return nullptr;
    return t;
}

std::unique_ptr<QTcpSocket> TerminalProbe::silent(const QString& address) {
    auto s = std::make_unique<QTcpSocket>();
    s->bind(QHostAddress(address));
    s->connectToHost(QHostAddress::LocalHost, console_.server().port());
    return s->waitForConnected(5000) ? std::move(s) : nullptr;
}

bool TerminalProbe::logIn(TerminalClient& terminal, int pc, const QString& who) {
    terminal.logIn(who + u';' + QString::number(pc));
    const bool started = !terminal.waitFor("Log Successful").isEmpty();
    drain(terminal);
    return started;
}

bool TerminalProbe::assign(TerminalClient& terminal, int pc, const QString& cid) {
    const bool started = logOnPc(console_.sessionParts(), QString::number(pc), cid,
                                 QStringLiteral("CRUZ, JUAN"), console_.control().socketOfPc(pc));
    drain(terminal);
    return started;
}

QByteArrayList TerminalProbe::drain(TerminalClient& terminal) {
    terminal.requestRates();
    if (terminal.waitFor("SRPH").isEmpty())
        return {"(no answer to RTS)"};
    const QByteArrayList before = terminal.inbox();
    terminal.clearInbox();
    return before;
}

QByteArrayList TerminalProbe::exchange(TerminalClient& terminal, const QByteArray& message) {
    terminal.clearInbox();
    terminal.sendRaw(message);
    if (openOtherLine())
        drain(*other_);
    return drain(terminal);
}

bool TerminalProbe::openOtherLine() {
    if (!other_)
        other_ = connect(QStringLiteral("127.0.0.250"));
    return other_ != nullptr;
}
