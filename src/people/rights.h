#pragma once

class Prompts;
struct CurrentOperator;

// The commands only an "Admin" may run, each with its own refusal: the settings menu
// item refuses without an icon, unlike every other (kept as operators know it).
enum class AdminCommand {
    SettingsMenu,   // mnuRateS
    AccountsMenu,   // mnuuser
    SettingsButton, // toolbar button 4
    AccountsButton, // toolbar button 6
    TerminalUnlock, // mnupulock
    TerminalPeek,   // mnupeek
};

// True when the current operator is of type "Admin" exactly; otherwise tells the
// operator the command's refusal and returns false.
bool adminOrRefuse(const CurrentOperator& current, Prompts& prompts, AdminCommand command);
