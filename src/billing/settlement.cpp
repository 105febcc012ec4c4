#include "billing/settlement.h"

#include "base/clock.h"
#include "base/format.h"
#include "base/prompts.h"
#include "base/text.h"
#include "billing/active_board.h"
#include "billing/billing_log.h"
#include "billing/charge.h"
#include "billing/rates.h"
#include "server/message_log.h"
#include "server/session_log.h"
#include "server/session_parts.h"
#include "server/terminal_control.h"
#include "store/database.h"

#include <QTime>

namespace {

// Money as the plain text a box shows: "7.5", "5".
QString plainMoney(Money amount) {
    QString text = amount.toDecimalText();
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text;
}

QString addressOf(const Database& database, const QString& cid) {
    try {
        DbSession s(database);
        auto q = s.run(QStringLiteral("SELECT ADR FROM members WHERE CID = ? COLLATE NOCASE "
                                      "ORDER BY rowid LIMIT 1"),
                       {cid.trimmed()});
        return q.next() ? q.value(0).toString() : QString();
    } catch (const StoreError&) {
        return QString(); // the address is only printed; the bill goes on without it
    }
}

// The time of day `consumed` after `timeIn`, wrapping past midnight like a clock.
QString timeOut(const QString& timeIn, qint32 consumedMs) {
    QTime in = QTime::fromString(timeIn, QStringLiteral("HH:mm:ss"));
    if (!in.isValid())
        in = QTime(0, 0);
    const int seconds = (in.msecsSinceStartOfDay() / 1000 + qMax(0, consumedMs) / 1000) % 86400;
    return formatTime(QTime(0, 0).addSecs(seconds), QStringLiteral("HH:MM:SS"));
}

} // namespace

std::optional<BillFields> stopSession(const BillingParts& parts, int pc, int tile) {
    const SessionParts& session = parts.session;
    if (!session.table.contains(pc))
        return std::nullopt;
    const TerminalRecord& r = session.table.at(pc);
    if (!r.logged || (r.state != TerminalState::Running && r.state != TerminalState::Paused)) {
        session.prompts.message(r.state == TerminalState::Billing
                                    ? QStringLiteral("The bill of PC %1 is open already.").arg(pc)
                                    : QStringLiteral("PC %1 has no session to bill.").arg(pc),
                                QString(), Prompts::Icon::Information);
        return std::nullopt;
    }
    BillFields b;
    b.pc = pc;
    b.tile = tile;
    try {
        b.consumedMs = r.runningTime(session.clock.tickCount());
    } catch (const TickOverflow& e) {
        session.prompts.message(QString::fromUtf8(e.what()), QString(), Prompts::Icon::Critical);
        return std::nullopt;
    }
    // What the tile showed at the last tick is what is billed.
    const QString amountText = parts.board.amountCaption(tile).trimmed().mid(1);
    b.date = formatDate(session.clock.today(), QStringLiteral("MM/DD/YYYY"));
    b.receipt = QStringLiteral("0");
    b.timeIn = r.startTime;
    b.consumed = formatElapsed(b.consumedMs);
    b.hours = formatNumber(double(b.consumedMs) / 1000 / 60 / 60, QStringLiteral("##0.#0"));
    b.timeOut = timeOut(r.startTime, b.consumedMs);
    b.rate = QString::number(parts.rates.ratePerHour(), 'g', 15);
    b.customerId = r.cid;
    b.customerName = customerName(r);
    b.address = addressOf(parts.database, r.cid);
    b.rentals = formatNumber(amountOfText(amountText), QStringLiteral("##,##0.#0"));
    b.otherCharges = QStringLiteral("0.00");
    const Promo& promo = parts.rates.promo();
    b.discountType = promo.type;
    b.discount = QStringLiteral("0");
    const Discount d = promoDiscount(promo.type, promo.amount, b.hours);
    b.discountEditable = d.enabled;
    if (d.shown)
        b.discount = plainMoney(d.amount);
    // Read back as typed numbers: a grouped total ("1,234.50") enters as 1, as it always did.
    const Money due = Money::fromDouble(leadingNumber(b.rentals) + leadingNumber(b.otherCharges)) -
                      (d.shown ? d.amount : Money());
    b.amountDue = formatNumber(due, QStringLiteral("###,##0.#0"));
    b.wasPaused = r.state == TerminalState::Paused;
    session.table.edit(pc)->state = TerminalState::Billing;
    return b;
}

void discountEdited(BillFields& bill) {
    if (bill.discountType == QLatin1String("Fix"))
        bill.amountDue = fixAmountDue(bill.rentals, bill.otherCharges, bill.discount);
}

SaveOutcome saveBill(const BillingParts& parts, const BillFields& bill) {
    const SessionParts& session = parts.session;
    if (session.prompts.ask(QStringLiteral("Save Billing for this PC: ") +
                                QString::number(bill.pc) + QLatin1Char('?'),
                            QString(), Prompts::Buttons::YesNo,
                            Prompts::Icon::Information) != Prompts::Answer::Yes)
        return SaveOutcome::Declined;
    if (!session.table.contains(bill.pc))
        return SaveOutcome::Failed;
    const TerminalRecord r = session.table.at(bill.pc);
    // The revenue is the amount of the PC's tile position on the board, as billed.
    const QString amountText =
        parts.board.amountCaption(TimeLimitSlots::slotOfPc(bill.pc)).trimmed().mid(1);
    const QDateTime now = session.clock.now();
    try {
        DbSession s(parts.database);
        s.begin();
        s.run(QStringLiteral("INSERT INTO TmpRvnD (Rdate, Amount, rtype, StartT, EndT, CID, TID, "
                             "Tcons) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
              {now.date(), leadingNumber(amountText), QStringLiteral("GAMES_RENTALS"), r.startTime,
               formatTime(now.time(), QStringLiteral("HH:MM:SS")), r.cid, QString::number(bill.pc),
               bill.consumed});
        session.sessionLog.markSessionOut(bill.pc, r.cid, r.startTime);
        s.commit();
    } catch (const StoreError& e) {
        session.prompts.message(QStringLiteral("The bill of PC %1 was not saved: %2\nThe session "
                                               "goes on; save the bill again when the database "
                                               "takes writes.")
                                    .arg(bill.pc)
                                    .arg(e.text()),
                                QStringLiteral("Database error"), Prompts::Icon::Critical);
        return SaveOutcome::Failed;
    }
    const int socket = session.control.socketOfPc(bill.pc);
    if (socket != -1) {
        session.control.send(socket, Msg::closeMeter());
        session.control.send(socket, Msg::idle());
    }
    {
        auto e = session.table.edit(bill.pc);
        e->logged = false;
        e->auxFlag = false;
        e->startTime.clear();
        e->cid.clear();
        e->startTick = 0;
        e->timeLimit = QStringLiteral("U");
        e->bankedMs = 0;
        e->state = TerminalState::NotLogged;
    }
    const QStringList line = BillingLog::fields(bill);
    parts.log.append(line, now.date());
    if (parts.log.failed()) {
        // The bill is saved; only its line is missing, so it is handed to the operator whole
        // and kept in the message log, to be added by hand.
        const QString text =
            QStringLiteral("The bill of PC %1 is saved, but its line could not be added to the "
                           "billing log %2: %3\nThe line, to add by hand:\n%4")
                .arg(QString::number(bill.pc), parts.log.path(now.date()), parts.log.error(),
                     line.join(QLatin1Char(' ')));
        session.messageLog.logMessage(QStringLiteral("LOG ERR: ") + text);
        session.prompts.message(text, QStringLiteral("Billing log"), Prompts::Icon::Critical);
    }
    return SaveOutcome::Saved;
}

void closeBill(const BillingParts& parts, const BillFields& bill) {
    const SessionParts& session = parts.session;
    if (!session.table.contains(bill.pc) ||
        session.table.at(bill.pc).state != TerminalState::Billing)
        return;
    // A paused session stays paused: back to running, it would be charged its pause.
    session.table.edit(bill.pc)->state =
        bill.wasPaused ? TerminalState::Paused : TerminalState::Running;
}
