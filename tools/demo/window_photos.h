#pragma once

#include <QStringList>

class Console;
class MainWindow;

// Pictures of the console's windows at the end of the day, for people to look at: each
// window is opened as the operator opens it (the frame's actions, the windows' buttons),
// photographed into `folder`, and closed again without saving anything, so the day's
// figures stay as they were. The report pages go to `folder`/reports as PDF and PNG.
// The pictures are counted; what could not be photographed is returned, one line each.
QStringList photographWindows(Console& console, MainWindow& frame, const QString& folder);
