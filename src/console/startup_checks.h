#pragma once

#include <QString>

// What the console checks of its surroundings before anything is written.

// Why the console cannot keep its files in the folder (read-only, full, missing),
// naming the folder; empty when it can.
QString dataFolderProblem(const QString& folder);

// Raises the limit of open files to what the system allows this process: every
// connection is a file, and the window needs a few of its own to draw.
void raiseOpenFilesLimit();
