#include "billing/board_rules.h"

#include "base/clock.h"
#include "base/current_operator.h"
#include "base/prompts.h"
#include "base/text.h"
#include "billing/active_board.h"
#include "server/operator_commands.h"
#include "server/session_clock.h"
#include "server/session_log.h"
#include "server/session_parts.h"
#include "server/terminal_control.h"

#include <cmath>

namespace {

// The limit rule for one running terminal, at the tick's up-time counter.
void applyLimit(const SessionParts& parts, int pc, qint32 tickNow) {
    const TerminalRecord& r = parts.table.at(pc);
    const double limitMinutes = leadingNumber(r.timeLimit);
    const qint32 consumedMs = r.runningTime(tickNow);
    const double consumedSeconds = double(consumedMs) / 1000.0;
    if (double(consumedMs) >= limitMinutes * 60.0 * 1000.0) {
        auto e = parts.table.edit(pc);
        e->state = TerminalState::Paused;
        bankRunningStretch(*e, tickNow);
        parts.control.sendToPc(pc, Msg::pause(e->bankedMs));
        parts.sessionLog.updateSessionRow(*e);
        Prompts::ConsoleBox box;
        box.title = QStringLiteral("Notice..");
        box.text = QStringLiteral("Client has reached desired time limit, it has been paused!");
        box.closeAfterMs = 10000;
        box.modal = false; // a tick never waits for the operator
        parts.prompts.consoleBox(box);
    }
    // Deliberately every tick of that minute, not once.
    if (std::floor(limitMinutes - consumedSeconds / 60.0) == 5.0)
        parts.control.sendToPc(pc, Msg::warn(QStringLiteral("Just Warn")));
}

} // namespace

void boardTick(ActiveBoard& board, const SessionParts& parts, const Rates& rates) {
    // One reading of the counter for every tile of the tick.
    const qint32 now = parts.clock.tickCount();
    try {
        for (int tile = 1; tile <= ActiveBoard::TilesPerPage; ++tile) {
            const int pc = board.pcOfTile(tile);
            if (!parts.table.contains(pc))
                continue;
            const TerminalRecord& r = parts.table.at(pc);
            if (r.state == TerminalState::Running && r.logged && r.timeLimit != QLatin1String("U"))
                applyLimit(parts, pc, now);
        }
        // After the limits, so that a tile paused at its limit says so in the same tick.
        board.refresh(parts.table, rates, now);
    } catch (const TickOverflow&) {
        // An overflow abandons the tick; the next one tries again.
    }
}

void chooseTimeLimit(ActiveBoard& board, const SessionParts& parts, int tile,
                     const QString& limit) {
    board.setTimeLimit(tile, limit);
    const int pc = board.pcOfTile(tile);
    if (!parts.table.contains(pc))
        return;
    auto r = parts.table.edit(pc);
    r->timeLimit = limit;
    if (r->logged)
        parts.sessionLog.updateSessionRow(*r);
    if (r->state == TerminalState::Running)
        parts.control.sendToPc(pc, Msg::timeLimit(limit)); // not sent when it is down
}

void unlockFromBoard(const ActiveBoard& board, const SessionParts& parts,
                     const CurrentOperator& current, int tile) {
    const int pc = board.pcOfTile(tile);
    Prompts::ConsoleBox box;
    box.mode = QStringLiteral("Input");
    box.title = QStringLiteral("Input");
    box.text =
        QStringLiteral("Administrative previlege required to unlock PC:") + QString::number(pc);
    box.extra = QStringLiteral("Please enter administrator password");
    box.passwordChar = QLatin1Char('@');
    const QString typed = parts.prompts.consoleBox(box);
    if (typed.isEmpty())
        return;
    // The operator's own password, not some administrator's, without regard to case.
    if (typed.compare(current.password, Qt::CaseInsensitive) != 0) {
        parts.prompts.message(QStringLiteral("Access Denied.."));
        return;
    }
    unlockPc(parts, pc);
}

bool boardMayClose(const TerminalTable& table, Prompts& prompts) {
    for (int pc = 1; pc <= table.count(); ++pc)
        if (table.at(pc).logged) {
            prompts.message(
                QStringLiteral("Application can't exit if there is an active terminal"));
            return false;
        }
    return true;
}
