#include "server/session_log.h"

namespace {
// COLLATE NOCASE in the statement, not only on the column: a file made by another tool
// declares plain TEXT columns, and the ids must still match in any letter case. The PC
// number keeps two spellings of one id on two PCs apart.
const QString openToday =
    QStringLiteral("FROM templog WHERE datelog = ? AND coalesce(isout, 0) = 0 AND aindex = ? AND "
                   "CID = ? COLLATE NOCASE AND StartTime = ? COLLATE NOCASE");
} // namespace

void SessionLog::insertSessionRow(const TerminalRecord& r) {
    try {
        DbSession s(db_);
        s.run(QStringLiteral("INSERT INTO templog (CID, StartTime, aindex, isout, cdtls, datelog, "
                             "TickStart, BkTick, pcstat, stopwatch) VALUES (?, ?, ?, ?, ?, ?, ?, "
                             "?, ?, ?)"),
              {r.cid, r.startTime, int(r.pcNumber), yesNo(false), r.customerLabel, clock_.today(),
               r.startTick, r.bankedMs, r.stateCode(), r.timeLimit});
    } catch (const StoreError& e) {
        failed(e);
        throw;
    }
    succeeded();
}

bool SessionLog::updateSessionRow(const TerminalRecord& r) {
    const ClockSave save{int(r.pcNumber), r.cid,         r.startTime,
                         r.bankedMs,      r.stateCode(), r.timeLimit};
    try {
        const bool found = write(save);
        pending_.erase(save.pc);
        succeeded();
        return found;
    } catch (const StoreError& e) {
        pending_[save.pc] = save;
        failed(e);
        return false;
    }
}

bool SessionLog::write(const ClockSave& c) {
    DbSession s(db_);
    // Only the first matching row, as the record-set edit did.
    auto q = s.run(QStringLiteral("UPDATE templog SET BkTick = ?, pcstat = ?, stopwatch = ? "
                                  "WHERE rowid = (SELECT rowid ") +
                       openToday + QStringLiteral(" ORDER BY rowid LIMIT 1)"),
                   {c.bankedMs, c.state, c.timeLimit, clock_.today(), c.pc, c.cid, c.startTime});
    return q.numRowsAffected() > 0;
}

bool SessionLog::markSessionOut(int pc, const QString& cid, const QString& startTime) {
    bool found = false;
    try {
        DbSession s(db_);
        auto q = s.run(QStringLiteral("UPDATE templog SET isout = ? WHERE rowid = (SELECT rowid ") +
                           openToday + QStringLiteral(" ORDER BY rowid LIMIT 1)"),
                       {yesNo(true), clock_.today(), pc, cid, startTime});
        found = q.numRowsAffected() > 0;
    } catch (const StoreError& e) {
        failed(e);
        throw;
    }
    pending_.erase(pc);
    succeeded();
    return found;
}

void SessionLog::succeeded() {
    failing_ = false;
    // The database takes writes again: what could not be saved before is saved now.
    for (auto it = pending_.begin(); it != pending_.end();) {
        try {
            write(it->second);
            it = pending_.erase(it);
        } catch (const StoreError&) {
            ++it;
        }
    }
}

void SessionLog::failed(const StoreError& e) {
    if (failing_)
        return;
    failing_ = true;
    if (onFailure_)
        onFailure_(e.text());
}

SessionLog::Restored SessionLog::restoreSessions(TerminalTable& table) {
    Restored result;
    DbSession s(db_);
    auto q = s.run(QStringLiteral("SELECT CID, StartTime, aindex, cdtls, TickStart, BkTick, "
                                  "pcstat, stopwatch FROM templog WHERE datelog = ? AND "
                                  "coalesce(isout, 0) = 0 ORDER BY rowid"),
                   {clock_.today()});
    while (q.next()) {
        const QVariant aindex = q.value(2);
        bool ok = false;
        const int p = aindex.toInt(&ok);
        if (!ok || !table.contains(p)) {
            result.problems << QStringLiteral("The session of %1 started at %2 names PC %3, which "
                                              "this console does not have (1 to %4); it was not "
                                              "restored.")
                                   .arg(q.value(0).toString(), q.value(1).toString(),
                                        aindex.toString())
                                   .arg(table.count());
            continue;
        }
        auto r = table.edit(p);
        r->cid = q.value(0).toString();
        r->logged = true;
        r->customerLabel = q.value(3).toString();
        r->startTime = q.value(1).toString();
        r->pcNumber = quint8(p);
        r->auxFlag = false;
        r->timeLimit = q.value(7).isNull() ? QStringLiteral("0") : q.value(7).toString();
        r->startTick = q.value(4).isNull() ? 0 : q.value(4).toInt();
        r->bankedMs = q.value(5).isNull() ? 0 : q.value(5).toInt();
        r->setStateCode(q.value(6).isNull() ? QStringLiteral("LOG") : q.value(6).toString());
        ++result.count;
    }
    return result;
}
