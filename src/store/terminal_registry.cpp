#include "store/terminal_registry.h"

void TerminalRegistry::registerTerminal(int pc, const QString& address, int socket) {
    DbSession s(db_);
    auto found = s.run(QStringLiteral("SELECT rowid FROM SrvIPTable WHERE TrmIP = ? "
                                      "ORDER BY rowid LIMIT 1"),
                       {address});
    if (found.next()) {
        const qint64 row = found.value(0).toLongLong();
        found.finish();
        s.run(QStringLiteral("UPDATE SrvIPTable SET TrmIP = ?, PCno = ?, SKIndex = ?, Status = ? "
                             "WHERE rowid = ?"),
              {address, pc, socket, yesNo(true), row});
    } else {
        found.finish();
        s.run(QStringLiteral("INSERT INTO SrvIPTable (TrmIP, PCno, SKIndex, Status) "
                             "VALUES (?, ?, ?, ?)"),
              {address, pc, socket, yesNo(true)});
    }
}

int TerminalRegistry::pcOfAddress(const QString& address) const {
    DbSession s(db_);
    auto q = s.run(QStringLiteral("SELECT PCno FROM SrvIPTable WHERE TrmIP = ? AND Status <> 0 "
                                  "ORDER BY rowid LIMIT 1"),
                   {address});
    return q.next() ? q.value(0).toInt() : 0;
}

int TerminalRegistry::socketOfPc(int pc) const {
    DbSession s(db_);
    auto q = s.run(QStringLiteral("SELECT SKIndex FROM SrvIPTable WHERE PCno = ? AND Status <> 0 "
                                  "ORDER BY rowid LIMIT 1"),
                   {pc});
    return q.next() ? q.value(0).toInt() : -1;
}

std::optional<int> TerminalRegistry::markSocketGone(int socket) {
    DbSession s(db_);
    auto q = s.run(QStringLiteral("SELECT rowid, PCno FROM SrvIPTable WHERE SKIndex = ? "
                                  "AND Status <> 0 ORDER BY rowid LIMIT 1"),
                   {socket});
    if (!q.next())
        return std::nullopt;
    const qint64 row = q.value(0).toLongLong();
    const int pc = q.value(1).toInt();
    q.finish();
    s.run(QStringLiteral("UPDATE SrvIPTable SET Status = ? WHERE rowid = ?"), {yesNo(false), row});
    return pc;
}

void TerminalRegistry::markAllOffline() {
    DbSession s(db_);
    s.run(QStringLiteral("UPDATE SrvIPTable SET Status = ?"), {yesNo(false)});
}

std::vector<TerminalRegistry::Row> TerminalRegistry::rows() const {
    DbSession s(db_);
    auto q =
        s.run(QStringLiteral("SELECT TrmIP, PCno, SKIndex, Status FROM SrvIPTable ORDER BY rowid"));
    std::vector<Row> found;
    while (q.next())
        found.push_back(
            {q.value(0).toString(), q.value(1).toInt(), q.value(2).toInt(), isYes(q.value(3))});
    return found;
}
