#pragma once

#include <QByteArray>
#include <QString>
#include <QTextStream>

class TerminalClient;

// What the program prints: one time-stamped line per event, on standard output.
QTextStream& out();
void say(const QString& line);
// A message as a readable line: control bytes escaped, long ones cut.
QString printable(const QByteArray& message);
// Prints, each line led by `who`, what the terminal receives, answers by itself and is
// asked to do to this machine, and the end of its connection.
void reportTraffic(TerminalClient& client, const QString& who);
