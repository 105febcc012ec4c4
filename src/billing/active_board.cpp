#include "billing/active_board.h"

#include "billing/charge.h"
#include "billing/rates.h"

void ActiveBoard::setTerminalCount(int count) {
    terminals_ = qMax(0, count);
    setPage(qMin(page_, pageCount()));
}

void ActiveBoard::setPage(int page) {
    page_ = qBound(1, page, pageCount());
    tiles_.fill(Tile{});
    Q_EMIT pageChanged();
}

QString ActiveBoard::pageText() const {
    return QString::number(page_) + QStringLiteral(" of ") + QString::number(pageCount());
}

void ActiveBoard::setHidesUnused(bool hide) {
    hidesUnused_ = hide;
    Q_EMIT pageChanged();
}

bool ActiveBoard::isUnused(const TerminalRecord& record) {
    return !record.logged && !record.online && record.state == TerminalState::NotLogged;
}

void ActiveBoard::set(int tile, Tile value) {
    Tile& held = tiles_.at(size_t(tile - 1));
    if (held.description == value.description && held.hint == value.hint &&
        held.amount == value.amount)
        return;
    held = std::move(value);
    Q_EMIT tileChanged(tile);
}

QString customerName(const TerminalRecord& record) {
    const QString id = record.cid.trimmed() + QLatin1Char(':');
    const QString& label = record.customerLabel;
    return label.startsWith(id) ? label.mid(id.size())
                                : label.mid(label.indexOf(QLatin1Char(':')) + 1);
}

void ActiveBoard::refresh(const TerminalTable& table, const Rates& rates, qint32 tickNow) {
    for (int tile = 1; tile <= TilesPerPage; ++tile) {
        const int pc = pcOfTile(tile);
        if (!table.contains(pc))
            continue;
        const TerminalRecord& r = table.at(pc);
        switch (r.state) {
        case TerminalState::Running:
            if (!r.logged)
                break;
            set(tile, {QStringLiteral("Pc Number ") + QString::number(pc) + QStringLiteral(" is ") +
                           QLatin1Char(' ') + QStringLiteral(" logged @ ") + r.startTime +
                           QStringLiteral(" by - ") + customerName(r),
                       QStringLiteral("Click Stop to discontinue."),
                       ::amountCaption(r.runningTime(tickNow), rates)});
            break;
        case TerminalState::Paused:
            // The amount a paused session has run up stays what it is; the tile keeps it
            // even when the page was just shown, so a bill never reads 0.00 for it.
            set(tile, {QStringLiteral("Paused"), QStringLiteral("PC has been Paused"),
                       ::amountCaption(r.bankedMs, rates)});
            break;
        case TerminalState::Billing:
            set(tile, {QStringLiteral("Being billed: ") + customerName(r),
                       QStringLiteral("The bill of this PC is open."),
                       tiles_.at(size_t(tile - 1)).amount});
            break;
        case TerminalState::Free:
            set(tile, {QStringLiteral("Unlocked for free use"),
                       QStringLiteral("Lock it before a customer is logged on it."),
                       QStringLiteral("P 0.00")});
            break;
        case TerminalState::NotLogged:
        case TerminalState::Other:
            set(tile, {r.online ? QStringLiteral("Locked, on line") : QStringLiteral("Off line"),
                       QStringLiteral("Click number to log"), QStringLiteral("P 0.00")});
            break;
        }
    }
}
