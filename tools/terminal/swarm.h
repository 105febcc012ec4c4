#pragma once

#include <QString>

// Many terminals from one machine, to load the console: PC 1..count, the k-th bound to
// 127.0.0.k (the console tells terminals apart by address), each identifying itself as
// soon as the console accepts it.
struct SwarmOptions {
    int count = 1;
    QString host;
    quint16 port = 0;
    int timeoutMs = 5000; // for all of them to be accepted
    int seconds = 0;      // how long they stay connected; 0 until interrupted
    bool obey = false;
    // A working café: each terminal starts a session with "LOG" and then asks for the
    // rates every everyMs, timing each reply. 0 leaves them idle.
    int everyMs = 0;
};

// Prints a summary; the exit status is 2 when the console accepted none of them.
int runSwarm(const SwarmOptions& options);
