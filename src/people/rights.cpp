#include "people/rights.h"

#include "server/console.h"

bool AdminOrRefuse(Console& console, AdminCommand command) {
    if (console.currentOperator().isAdmin())
        return true;
    using Icon = Prompts::Icon;
    switch (command) {
    case AdminCommand::SettingsMenu:
        console.prompts().message(QStringLiteral("Access Denied.."), QString(), Icon::None);
        break;
    case AdminCommand::AccountsMenu:
    case AdminCommand::SettingsButton:
    case AdminCommand::AccountsButton:
        console.prompts().message(QStringLiteral("Access Denied.."), QString(), Icon::Critical);
        break;
    case AdminCommand::TerminalUnlock:
    case AdminCommand::TerminalPeek:
        console.prompts().message(QStringLiteral("Access denied, for Administrator accounts only"),
                                  QString(), Icon::Critical);
        break;
    }
    return false;
}
