#include "server/terminal_table.h"

#include "base/clock.h"

qint32 TerminalRecord::runningTime(qint32 tickNow) const {
    if (pcstat == QLatin1String("LOG"))
        return TickAdd(BkTick, TickSub(tickNow, TickStart));
    return BkTick;
}

TerminalIndexError::TerminalIndexError(int pc)
    : std::out_of_range("Subscript out of range: PC " + std::to_string(pc)), pc(pc) {}

void TerminalTable::InitTerminalTable(int nofpc) {
    records_.assign(size_t(qMax(0, nofpc)), TerminalRecord{});
    for (int p = 1; p <= nofpc; ++p)
        records_[size_t(p - 1)].pcno = quint8(p);
}

TerminalRecord& TerminalTable::at(int pc) {
    if (!contains(pc))
        throw TerminalIndexError(pc);
    return records_[size_t(pc - 1)];
}

const TerminalRecord& TerminalTable::at(int pc) const {
    if (!contains(pc))
        throw TerminalIndexError(pc);
    return records_[size_t(pc - 1)];
}

bool TerminalTable::IsCidLogged(const QString& cid) const {
    const QString wanted = cid.trimmed();
    for (const auto& r : records_)
        if (r.cid.trimmed() == wanted)
            return true;
    return false;
}

int TerminalTable::loggedCount() const {
    int n = 0;
    for (const auto& r : records_)
        n += r.logged;
    return n;
}
