#pragma once

#include "people/rights.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

class MainWindow;

// One command of the main frame: a menu item, toolbar button or pop-up menu item. The
// frame makes one QAction of each and puts the same action wherever it appears.
struct FrameCommand {
    const char* name;                  // the action's object name
    QString caption;                   // "&" marks the access key
    QString icon;                      // a command icon's name, or empty
    std::optional<AdminCommand> right; // checked before the command runs; none: anyone
    std::function<void()> run;
};

// Every command of the frame, bound to it.
std::vector<FrameCommand> frameCommands(MainWindow& frame);

// Where the commands appear: menus of the menu bar, the pop-up menu and the toolbar, by
// action name; "-" is a separator and ">name" a submenu listed in frameSubmenus().
struct FrameMenu {
    const char* name;
    QString title;
    std::vector<const char*> items;
};
const std::vector<FrameMenu>& frameMenus();    // menu bar, in order
const FrameMenu& framePopup();                 // the terminal pop-up menu
const std::vector<FrameMenu>& frameSubmenus(); // pop-up submenus
// Toolbar buttons 1 to 10, by action name; "-" is a separator between buttons.
const std::vector<const char*>& frameToolbar();
