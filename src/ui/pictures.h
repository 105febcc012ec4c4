#pragma once

#include "server/terminal_table.h"

#include <QIcon>
#include <QPixmap>
#include <QString>

// The console's pictures, looked up by name in its resources (SVG files under
// :/pictures/): command icons, terminal state marks and the frame's background pictures.
namespace Pictures {
constexpr int BackgroundCount = 4;

// "listing", "logon", "board", "rates", "members", "accounts", "sales", "printer",
// "registry", "close"; an empty icon for any other name.
QIcon commandIcon(const QString& name);
// A terminal's state in the terminal list: filled when on line, a ring when off line.
QIcon stateIcon(TerminalState state, bool online);
// Background picture `index` (0 .. BackgroundCount - 1) filling the given size: scaled
// to cover it without distortion and cut at the sides, with the program's mark at
// its natural size in the bottom right corner.
QPixmap background(int index, QSize size);
} // namespace Pictures
