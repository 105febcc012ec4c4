#pragma once

#include <QString>

#include <optional>

class Database;

// A member's log-in at a terminal: the id must be a member's (letter case ignored) and
// the name, upper-cased, must be the register's last name, ", " and trimmed first name,
// upper-cased. The member's id as the register spells it, or none.
std::optional<QString> checkMemberLogIn(const Database& database, const QString& id,
                                        const QString& name);
