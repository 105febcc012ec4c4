#pragma once

#include <QString>

// The operator now working the console. Only the exact type "Admin" grants the
// administrator's commands; "admin" or any other text is an ordinary operator.
struct CurrentOperator {
    QString CurrentUserName;
    QString CurrentUserType;
    QString CurrentUserKey;

    bool isAdmin() const { return CurrentUserType == QLatin1String("Admin"); }
};
