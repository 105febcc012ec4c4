#include "people/log_on.h"

#include "base/prompts.h"
#include "base/text.h"
#include "server/session_parts.h"
#include "server/session_start.h"
#include "server/terminal_control.h"
#include "server/terminal_table.h"

#include <cmath>

namespace {
bool isWalkInId(const QString& id) {
    return id.left(3) == QLatin1String("TRM");
}
} // namespace

LogOnCustomer walkInCustomer(const QString& pcText) {
    return {QStringLiteral("TRM-") + pcText, QStringLiteral("WALK-IN ON TRM ") + pcText};
}

LogOnCustomer customerAtOpening(const LogOnCustomer& handedIn, const QString& pcText) {
    return handedIn.id.isEmpty() ? walkInCustomer(pcText) : handedIn;
}

LogOnCustomer customerOnPick(const LogOnCustomer& current, const QString& pcText) {
    return isWalkInId(current.id) ? walkInCustomer(pcText) : current;
}

LogOnCustomer customerOnTyping(const LogOnCustomer& current, const QString& pcText) {
    return current.id.mid(1) == QLatin1String("PC") ? walkInCustomer(pcText) : current;
}

LogOnOutcome logOnFromDialog(const SessionParts& parts, const QString& pcText,
                             const LogOnCustomer& customer) {
    using Icon = Prompts::Icon;
    Prompts& prompts = parts.prompts;
    const double value = leadingNumber(pcText);
    if (value == 0) {
        prompts.message(QStringLiteral("Please choose a pc terminal number"),
                        QStringLiteral("No Terminal"), Icon::Critical);
        return LogOnOutcome::StayOpen;
    }
    if (customer.id.isEmpty() || customer.name.isEmpty()) {
        prompts.message(QStringLiteral("Please choose a client id and name properly "),
                        QStringLiteral("Info Empty"), Icon::Critical);
        return LogOnOutcome::StayOpen;
    }
    // A number typed past the list names no terminal of this console.
    const double rounded = std::nearbyint(value);
    const int pc = rounded >= 1 && rounded <= 255 ? int(rounded) : 0;
    if (!parts.table.contains(pc)) {
        prompts.message(
            QStringLiteral("There is no PC %1 here: the terminals are numbered 1 to %2.")
                .arg(pcText.trimmed())
                .arg(parts.table.count()),
            QStringLiteral("No Terminal"), Icon::Critical);
        return LogOnOutcome::StayOpen;
    }
    if (parts.table.at(pc).state == TerminalState::Free) {
        prompts.message(QStringLiteral("Terminal is in Free mode!(Lock)\rUnlock it first"),
                        QString(), Icon::Critical);
        return LogOnOutcome::StayOpen;
    }
    int socket = -1;
    try {
        socket = parts.control.socketOfPc(pc);
    } catch (const StoreError& e) {
        prompts.message(e.text(), QStringLiteral("Database error"), Icon::Critical);
        return LogOnOutcome::StayOpen;
    }
    if (socket == -1) {
        prompts.message(QStringLiteral("Pc number ") + pcText +
                            QStringLiteral(" is not connected to server"),
                        QString(), Icon::Critical);
        return LogOnOutcome::Close;
    }
    logOnPc(parts, QString::number(pc), customer.id, customer.name, socket);
    return LogOnOutcome::Close;
}
