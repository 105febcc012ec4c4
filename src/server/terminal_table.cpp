#include "server/terminal_table.h"

#include "base/clock.h"

namespace {
struct Code {
    TerminalState state;
    const char* code;
};
constexpr Code Codes[] = {
    {TerminalState::NotLogged, "NLG"}, {TerminalState::Running, "LOG"},
    {TerminalState::Paused, "PAU"},    {TerminalState::Free, "FRE"},
    {TerminalState::Billing, "BIL"},
};
} // namespace

QString stateCode(TerminalState state) {
    for (const Code& c : Codes)
        if (c.state == state)
            return QString::fromLatin1(c.code);
    return QString();
}

TerminalState stateOfCode(const QString& code) {
    for (const Code& c : Codes)
        if (code == QLatin1String(c.code))
            return c.state;
    return TerminalState::Other;
}

QString TerminalRecord::stateCode() const {
    return state == TerminalState::Other ? otherStateCode : ::stateCode(state);
}

void TerminalRecord::setStateCode(const QString& code) {
    state = stateOfCode(code);
    otherStateCode = state == TerminalState::Other ? code : QString();
}

bool TerminalRecord::hasPendingTransaction() const {
    return state == TerminalState::Running || state == TerminalState::Paused ||
           state == TerminalState::Billing;
}

qint32 TerminalRecord::runningTime(qint32 tickNow) const {
    if (state == TerminalState::Running)
        return tickAdd(bankedMs, tickSub(tickNow, startTick));
    return bankedMs;
}

TerminalIndexError::TerminalIndexError(int pc)
    : std::out_of_range("Subscript out of range: PC " + std::to_string(pc)), pc(pc) {}

TerminalTable::Edit::~Edit() {
    if (table_)
        Q_EMIT table_->terminalChanged(pc_);
}

TerminalRecord& TerminalTable::Edit::record() const {
    return table_->records_[size_t(pc_ - 1)];
}

void TerminalTable::init(int nofpc) {
    Q_EMIT aboutToReset();
    records_.assign(size_t(qMax(0, nofpc)), TerminalRecord{});
    for (int p = 1; p <= nofpc; ++p)
        records_[size_t(p - 1)].pcNumber = quint8(p);
    Q_EMIT tableReset();
}

const TerminalRecord& TerminalTable::at(int pc) const {
    if (!contains(pc))
        throw TerminalIndexError(pc);
    return records_[size_t(pc - 1)];
}

TerminalTable::Edit TerminalTable::edit(int pc) {
    if (!contains(pc))
        throw TerminalIndexError(pc);
    return Edit(*this, pc);
}

bool TerminalTable::isCidLogged(const QString& cid) const {
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
