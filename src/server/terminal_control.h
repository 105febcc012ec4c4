#pragma once

#include "server/terminal_server.h"
#include "store/terminal_registry.h"

// Sending to one terminal: its socket is found in the registry by PC number, and every
// command that talks to a terminal refuses when it has none (-1).
class TerminalControl {
public:
    TerminalControl(TerminalServer& server, const TerminalRegistry& registry)
        : server_(server), registry_(registry) {}

    int socketOfPc(int pc) const { return registry_.socketOfPc(pc); }
    bool send(int socket, const QByteArray& message) { return server_.send(socket, message); }
    bool sendToPc(int pc, const QByteArray& message) { return send(socketOfPc(pc), message); }
    QString peerAddress(int socket) const { return server_.peerAddress(socket); }
    QString peerName(int socket) const { return server_.peerName(socket); }

private:
    TerminalServer& server_;
    const TerminalRegistry& registry_;
};
