#pragma once

#include <QString>

class Database;
class Prompts;
struct CurrentOperator;

// The two steps of the operator log-in, shared by the start-up log-in and the operator
// switch: first the account name, then its password. The windows only pass on what was
// typed and show the outcome; every message of the log-in is shown from here.
class LogIn {
public:
    enum class Mode { Start, Switch };
    enum class NameOutcome { Found, NotFound, Failed };
    enum class PasswordOutcome { Correct, Incomplete, Wrong };

    // Start clears the operator's name and type: nobody is logged in until a password
    // matches. Switch leaves the operator in place until a name is accepted.
    LogIn(const Database& database, Prompts& prompts, CurrentOperator& current, Mode mode);

    // Looks the account up (letter case ignored). A found account becomes the current
    // operator at once, before any password: in a switch, an abandoned attempt leaves
    // the named account's rights in force, as the console always did.
    NameOutcome nameStep(const QString& typedName);
    // Compares the typed password, trimmed, with the accepted account's, ignoring case.
    PasswordOutcome passwordStep(const QString& typedPassword);

    Mode mode() const { return mode_; }

private:
    const Database& database_;
    Prompts& prompts_;
    CurrentOperator& current_;
    Mode mode_;
    QString heldPassword_;
};

// The main window's caption after a switch to this operator.
QString switchCaption(const QString& name, const QString& type);

// False on a fresh database: nobody could log in, so the first administrator must be made.
// Throws StoreError when the file cannot be read.
bool hasAnyAccount(const Database& database);

// The first administrator, made once, before the first log-in.
struct FirstAdminOutcome {
    enum class Problem {
        None,
        EmptyName,
        QuoteInName,
        EmptyPassword,
        SpacesAround,
        Mismatch,
        AccountsExist,
        StoreFailed
    };
    Problem problem = Problem::None;
    QString text; // what to tell the operator
    bool created() const { return problem == Problem::None; }
};
// Stores the account as every account is stored: name trimmed, type "Admin", password as
// typed. Refused when any account exists already, so it can never add a second one.
FirstAdminOutcome createFirstAdmin(const Database& database, const QString& name,
                                   const QString& password, const QString& confirmation);
