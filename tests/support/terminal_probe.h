#pragma once

#include "terminal_client.h"

#include <QByteArrayList>
#include <QString>
#include <QTcpSocket>

#include <memory>

class Console;

// Real terminals on loopback addresses, talking to a real console over TCP.
class TerminalProbe {
public:
    explicit TerminalProbe(Console& console) : console_(console) {}

    // A terminal connected from `address`, its "ACPT" taken; null when that failed.
    std::unique_ptr<TerminalClient> connect(const QString& address = QStringLiteral("127.0.0.1"));
    // Sends "AIP" and, once a round trip proves it was handled, tells whether the console
    // has the PC on line. What "AIP" brought ("PAUS") stays in the inbox.
    bool identify(TerminalClient& terminal, int pc);
    // Opens now the other connection the probe keeps messages apart with, so that it
    // takes its socket before the terminals under test.
    bool openOtherLine();
    // Connected and identified, from `address` or else 127.0.0.<pc>; null when that failed.
    std::unique_ptr<TerminalClient> online(int pc, const QString& address = {});
    // A bare connection from `address` that never says a word; null when it failed.
    std::unique_ptr<QTcpSocket> silent(const QString& address);

    // A session started by the terminal's "LOG" for `who` ("id:name"); what the terminal
    // got is drained.
    bool logIn(TerminalClient& terminal, int pc, const QString& who = QStringLiteral("W-1:JUAN"));
    // A session started by the operator for the member; what the terminal got is drained.
    bool assign(TerminalClient& terminal, int pc, const QString& cid);

    // Everything the console sent the terminal so far: a rates request goes last, and
    // its answer comes only after every earlier answer.
    static QByteArrayList drain(TerminalClient& terminal);
    // What the console answers the terminal to `message`. Another connection's round
    // trip first keeps `message` and the closing rates request apart.
    QByteArrayList exchange(TerminalClient& terminal, const QByteArray& message);

private:
    Console& console_;
    std::unique_ptr<TerminalClient> other_;
};
