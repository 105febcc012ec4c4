#pragma once

#include <QString>

struct SessionParts;

// The customer the log-on dialog would put on the terminal.
struct LogOnCustomer {
    QString id;
    QString name;
    bool operator==(const LogOnCustomer&) const = default;
};

// A walk-in on the PC whose number the terminal box shows: "TRM-" and "WALK-IN ON TRM ",
// each followed by that text.
LogOnCustomer walkInCustomer(const QString& pcText);

// At opening: a customer handed in (an id is there already) stays; otherwise a walk-in
// on whatever the terminal box shows, which may be nothing yet.
LogOnCustomer customerAtOpening(const LogOnCustomer& handedIn, const QString& pcText);
// A number picked from the list: a walk-in follows it, a member stays.
LogOnCustomer customerOnPick(const LogOnCustomer& current, const QString& pcText);
// The terminal box typed into: the same change, but only for an id that reads "PC" from
// its second character on. No id this console makes does, so typing changes nothing;
// operators know it that way.
LogOnCustomer customerOnTyping(const LogOnCustomer& current, const QString& pcText);

enum class LogOnOutcome { StayOpen, Close };

// The log-on button. In order: a terminal chosen, an id and a name, the terminal not in
// free use, the terminal connected; each refusal is told with the critical icon. A
// terminal that is not connected closes the dialog. Otherwise the session is started
// (the session start tells its own refusals) and the dialog closes.
LogOnOutcome logOnFromDialog(const SessionParts& parts, const QString& pcText,
                             const LogOnCustomer& customer);
