#pragma once

class Console;

// One tick of the main window's timer: status panels 2 (sessions), 4 (sockets),
// 5 (listening slot) and 10 (date and time), written through Console::setStatus.
void MainTmrTick(Console& console);
