#pragma once

#include <QString>

class QWidget;

// Screen readers and automation tools (over AT-SPI on Linux) reach a control by its
// accessible name and tell controls apart by its accessible description.
//
// makeAccessible() gives every widget of `window` its object name as accessible
// description, and names the controls Qt finds no name for from what shows them (a
// menu's title, a tool button's command). Qt itself names a control from its caption or
// its buddy label; a control with no visible text at all is named by its window, with
// setAccessibleName(), before the call. Menu items read their name from their caption
// and their description from their action's object name (or their submenu's).
//
// Call it on a window once its controls are built; calling it again covers controls
// added since.
void makeAccessible(QWidget* window);

// A caption as it is read out: without the "&" that marks its access key.
QString spokenCaption(const QString& caption);
