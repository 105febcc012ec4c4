#pragma once

#include <QString>

// The operator now working the console, read by every rights check. Only the exact type
// "Admin" grants the administrator's commands; "admin" or any other text is an ordinary
// operator.
struct CurrentOperator {
    QString name;
    QString type;
    QString password; // the account's password as stored, for the checks that ask it again

    bool isAdmin() const { return type == QLatin1String("Admin"); }
};
