#pragma once

#include "server/terminal_table.h"

#include <QIcon>
#include <QPixmap>
#include <QString>

// The console's pictures, looked up by name: command icons, terminal state marks and the
// frame's background pictures.
namespace Pictures {
constexpr int BackgroundCount = 4;

// "listing", "logon", "board", "rates", "members", "accounts", "sales", "printer",
// "registry", "close"; an empty icon for any other name.
QIcon commandIcon(const QString& name);
// A terminal's state in the terminal list: filled when on line, a ring when off line.
QIcon stateIcon(TerminalState state, bool online);
// Background picture `index` (0 .. BackgroundCount - 1) at the given size.
QPixmap background(int index, QSize size);
} // namespace Pictures
