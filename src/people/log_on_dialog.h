#pragma once

#include <QString>

class Console;
class FormHost;

// What the log-on dialog opens with: a terminal picked already (0: none), and a member
// handed in by the members register or the search (empty id: a walk-in).
struct LogOnRequest {
    int pc = 0;
    QString id;
    QString name;
};

// The log-on dialog (logmem), modal over the frame: puts a member or a walk-in on a
// terminal.
void openLogOnDialog(Console& console, FormHost& host, const LogOnRequest& request = {});

// A terminal's own request for the log-on dialog, for its PC. Call it queued, never
// from the socket's handler: the dialog is modal. One log-on dialog at a time: while
// one is open the request is dropped, and while the operator answers another modal
// window the latest request waits for that window to close.
void openLogOnDialogForTerminal(Console& console, FormHost& host, int pc);
