#include "people/member_check.h"

#include "store/database.h"

std::optional<QString> checkMemberLogIn(const Database& database, const QString& id,
                                        const QString& name) {
    DbSession s(database);
    auto q = s.run(QStringLiteral("SELECT CID, LN, FN FROM members WHERE CID = ? COLLATE NOCASE "
                                  "ORDER BY rowid LIMIT 1"),
                   {id});
    if (!q.next())
        return std::nullopt;
    const QString registered = q.value(1).toString().toUpper() + QStringLiteral(", ") +
                               q.value(2).toString().trimmed().toUpper();
    if (name.toUpper() != registered)
        return std::nullopt;
    return q.value(0).toString();
}
