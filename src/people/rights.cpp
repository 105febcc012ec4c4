#include "people/rights.h"

#include "base/current_operator.h"
#include "base/prompts.h"

bool adminOrRefuse(const CurrentOperator& current, Prompts& prompts, AdminCommand command) {
    if (current.isAdmin())
        return true;
    using Icon = Prompts::Icon;
    switch (command) {
    case AdminCommand::SettingsMenu:
        prompts.message(QStringLiteral("Access Denied.."), QString(), Icon::None);
        break;
    case AdminCommand::AccountsMenu:
    case AdminCommand::SettingsButton:
    case AdminCommand::AccountsButton:
        prompts.message(QStringLiteral("Access Denied.."), QString(), Icon::Critical);
        break;
    case AdminCommand::TerminalUnlock:
    case AdminCommand::TerminalPeek:
        prompts.message(QStringLiteral("Access denied, for Administrator accounts only"), QString(),
                        Icon::Critical);
        break;
    }
    return false;
}
