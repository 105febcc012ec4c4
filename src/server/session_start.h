#pragma once

#include <QString>

struct SessionParts;

// Where a log-on request came from: a terminal's own message, or the operator at the
// console. Refusals for a terminal are notices that do not hold up the socket event.
enum class LogOnSource { Operator, Terminal };

// Starts a session for the customer on the PC; false when refused (the reason is told
// to the operator). `socket` is the terminal's element of SkServer, -1 when it has none.
// Every session starts with no time limit ("U").
bool logOnPc(const SessionParts& parts, const QString& pcText, const QString& cid,
             const QString& name, int socket, LogOnSource source = LogOnSource::Operator);
