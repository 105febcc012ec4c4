#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Every message the console sends to a terminal, built in one place. A message is one
// send of plain text: no terminator, no length.
namespace Msg {
QByteArray ACPT();
QByteArray SMTR(const QString& starttime);
QByteArray PAUS(qint32 bkTick); // "PAUS " + banked ms
QByteArray PAUSBare();          // "PAUS": a paused PC identified itself
QByteArray PAUX(const QString& starttime);
QByteArray SBTK(qint32 bkTick);
QByteArray TLMT(const QString& limit);
QByteArray WARN(const QString& text);
QByteArray FREE();
QByteArray XFRE();
QByteArray CMTR();
QByteArray OFPS();
QByteArray LGOF();
QByteArray RSTR();
QByteArray PTAY();
QByteArray TEXT(const QString& text);
QByteArray RQPR();
QByteArray KLPR(const QString& process);
QByteArray SNPS();
QByteArray SRPH(double rph, qint32 mint, double mina);
QByteArray MSGR();
QByteArray INVD();
QByteArray LogSuccessful();
QByteArray FailedLog();
QByteArray FormLoggerLoaded();
QByteArray RAVP(const QString& list); // "RAVP " + list

// The words that begin console-to-terminal messages, longest first; the terminal side
// uses them to tell two messages apart when the network joins them.
const QStringList& ConsoleWords();
// The commands a terminal sends, in the order the console tries them.
const QStringList& TerminalCommands();
} // namespace Msg

// The log-in payload of "LOG" and "CHK": id ":" name ";" PC number.
struct LogInPayload {
    QString id;
    QString name;
    QString pcText;
    // False when the text lacks the ":" or the ";" (or they stand the wrong way round).
    static bool parse(const QString& payload, LogInPayload* out);
};
