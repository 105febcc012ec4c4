#pragma once

#include <QString>

class ActiveBoard;
class Prompts;
class Rates;
class TerminalTable;
struct CurrentOperator;
struct SessionParts;

// One tick of the board's timer: the shown page's tiles brought up to date and the time
// limits applied to its running terminals. At its limit a session is paused once ("PAUS "
// and the banked time, the operator told in the console's own box); in the fifth minute
// before it the terminal is warned ("WARN Just Warn") on every tick of that minute.
// Limits are kept only while the board ticks, that is while its window is open.
void boardTick(ActiveBoard& board, const SessionParts& parts, const Rates& rates);

// A tile's time-limit choice: stored as the slot's and the terminal's limit; a running
// terminal with a connection is told ("TLMT ").
void chooseTimeLimit(ActiveBoard& board, const SessionParts& parts, int tile, const QString& limit);

// A tile's unlock button: the operator's own password asked again in the console's box;
// a match unlocks the terminal, a mismatch is refused, an empty answer does nothing.
void unlockFromBoard(const ActiveBoard& board, const SessionParts& parts,
                     const CurrentOperator& current, int tile);

// The board's window may close only while no terminal holds a session.
bool boardMayClose(const TerminalTable& table, Prompts& prompts);
