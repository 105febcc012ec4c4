#include "people/log_in.h"

#include "base/current_operator.h"
#include "base/prompts.h"
#include "store/database.h"

namespace {

using Icon = Prompts::Icon;

// The log-in reads columns as the console always did: a null is one space, which
// the password step then treats as missing.
QString columnText(const QVariant& value) {
    return value.isNull() ? QStringLiteral(" ") : value.toString();
}

constexpr auto CaptionTitle = "Vel Ta Simulation Prototype v 1.00";
constexpr int CaptionGap = 70;

} // namespace

LogIn::LogIn(const Database& database, Prompts& prompts, CurrentOperator& current, Mode mode)
    : database_(database), prompts_(prompts), current_(current), mode_(mode) {
    if (mode_ == Mode::Start) {
        current_.type.clear();
        current_.name.clear();
    }
}

LogIn::NameOutcome LogIn::nameStep(const QString& typedName) {
    const QString name = typedName.trimmed();
    // A name with an apostrophe could never be looked up by the console's statements:
    // it meets the same answer as an unknown name, and nothing is run.
    if (hasQuote(name)) {
        prompts_.message(QStringLiteral("User name not found"), QString(), Icon::Critical);
        return NameOutcome::NotFound;
    }

    QVariant user, utype, keys;
    bool found = false;
    try {
        DbSession session(database_);
        auto q = session.run(QStringLiteral("SELECT \"user\", utype, keys FROM sysusers "
                                            "WHERE \"user\" = ? COLLATE NOCASE LIMIT 1"),
                             {name});
        if (q.next()) {
            found = true;
            user = q.value(0);
            utype = q.value(1);
            keys = q.value(2);
        }
    } catch (const StoreError& e) {
        prompts_.message(e.text(), QStringLiteral("Database error"), Icon::Critical);
        return NameOutcome::Failed;
    }

    if (!found) {
        prompts_.message(QStringLiteral("User name not found"), QString(), Icon::Critical);
        return NameOutcome::NotFound;
    }

    current_.type = columnText(utype);
    heldPassword_ = columnText(keys);
    current_.password = heldPassword_;
    current_.name = columnText(user);
    return NameOutcome::Found;
}

LogIn::PasswordOutcome LogIn::passwordStep(const QString& typedPassword) {
    if (current_.type.trimmed().isEmpty() || heldPassword_.trimmed().isEmpty()) {
        prompts_.message(
            QStringLiteral("System user info incomplete, ask for system administrator help"),
            QString(), Icon::Critical);
        return PasswordOutcome::Incomplete;
    }
    // Only the typed side is trimmed: a password stored with spaces around it can never
    // match, as before.
    if (heldPassword_.toUpper() != typedPassword.trimmed().toUpper()) {
        prompts_.message(QStringLiteral("Password not correct"), QString(), Icon::Information);
        return PasswordOutcome::Wrong;
    }
    return PasswordOutcome::Correct;
}

QString switchCaption(const QString& name, const QString& type) {
    return QLatin1String(CaptionTitle) + QString(CaptionGap, QLatin1Char(' ')) +
           QStringLiteral(" [User : ") + name + QStringLiteral(" Type : ") + type +
           QStringLiteral(" ]");
}

bool hasAnyAccount(const Database& database) {
    DbSession session(database);
    auto q = session.run(QStringLiteral("SELECT 1 FROM sysusers LIMIT 1"));
    return q.next();
}

FirstAdminOutcome createFirstAdmin(const Database& database, const QString& name,
                                   const QString& password, const QString& confirmation) {
    using Problem = FirstAdminOutcome::Problem;
    const QString user = name.trimmed();
    if (user.isEmpty())
        return {Problem::EmptyName, QStringLiteral("Type the administrator's name.")};
    if (hasQuote(user))
        return {Problem::QuoteInName,
                QStringLiteral("A name cannot hold an apostrophe ( ' ): the log-in would never "
                               "find it. Type another name.")};
    if (password.isEmpty())
        return {Problem::EmptyPassword, QStringLiteral("Type a password.")};
    // The log-in trims what is typed but not what is stored, so such a password could
    // never be matched.
    if (password.trimmed() != password)
        return {Problem::SpacesAround, QStringLiteral("A password cannot begin or end with a "
                                                      "space. Type it again.")};
    if (password != confirmation)
        return {Problem::Mismatch,
                QStringLiteral("The two passwords differ. Type the same password twice.")};

    try {
        DbSession session(database);
        if (session.run(QStringLiteral("SELECT 1 FROM sysusers LIMIT 1")).next())
            return {Problem::AccountsExist,
                    QStringLiteral("An operator account exists already. Log in, and add "
                                   "accounts in System Users for Tarvo.")};
        session.run(QStringLiteral("INSERT INTO sysusers (\"user\", utype, keys) VALUES (?, ?, ?)"),
                    {user, QStringLiteral("Admin"), password});
    } catch (const StoreError& e) {
        return {Problem::StoreFailed,
                QStringLiteral("The account could not be saved: ") + e.text()};
    }
    return {Problem::None, QStringLiteral("The administrator account ") + user +
                               QStringLiteral(" was created. Log in with it now.")};
}
