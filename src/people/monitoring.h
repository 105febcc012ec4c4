#pragma once

#include "store/terminal_registry.h"

#include <QList>
#include <QString>
#include <QStringList>

struct SessionParts;
struct TerminalRecord;
class TerminalTable;

// The terminal listing: ten columns, the PC number first.
const QStringList& listingHeadings();
// A PC's row of the listing, from its record.
QStringList listingRow(int pc, const TerminalRecord& record, qint32 tickNow);
// The PCs the listing's timer refreshes: those on line among 1..count (count as the
// listing was told it, kept within the table). Off-line rows keep what they showed.
QList<int> onlinePcs(const TerminalTable& table, int count);

// The IP table view: the headings of its grid, and a registry row as the grid and the
// list show it (address, PC number, socket, "YES" or "NO" for on line).
const QStringList& registryHeadings();
QStringList registryRowTexts(const TerminalRegistry::Row& row);

// The message window's reply: "TEXT " and the text to the PC the box names, logged; a
// PC with no connection is refused. False when nothing was sent.
bool replyToPc(const SessionParts& parts, const QString& pcText, const QString& text);
// The reply box after a reply, sent or not: ready for the next line.
QString replyPrompt();
