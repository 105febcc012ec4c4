#pragma once

#include <QByteArray>
#include <QList>

namespace Protocol {

// Cuts complete console messages off the front of `pending`; an incomplete tail that
// more data may still finish stays in `pending`. Text that begins with no word comes
// out as one message of its own, up to the next word.
//
// The console adds no terminator or length, so two messages written back to back may
// arrive in one read ("CMTR" and "OFPS" as "CMTROFPS"); they are told apart by the
// words and the shape of each message.
QList<QByteArray> splitConsoleMessages(QByteArray& pending);

} // namespace Protocol
