#pragma once

class Clock;
class MessageLog;
class Prompts;
class SessionLog;
class TerminalControl;
class TerminalTable;
class TimeLimitSlots;

// What the rules of a terminal's session work on: the records, their mirror in the
// database, the terminals' connections, the board's time-limit choices, the message log,
// the operator's boxes and the clock.
struct SessionParts {
    TerminalTable& table;
    SessionLog& sessionLog;
    TerminalControl& control;
    TimeLimitSlots& timeLimits;
    MessageLog& messageLog;
    Prompts& prompts;
    Clock& clock;
};
