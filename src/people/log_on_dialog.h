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
