#include "server/terminal_list.h"

#include "server/terminal_table.h"

TerminalListEntry::State TerminalListState(const QString& pcstat) {
    using State = TerminalListEntry::State;
    if (pcstat == QLatin1String("NLG"))
        return State::Locked;
    if (pcstat == QLatin1String("LOG"))
        return State::Running;
    if (pcstat == QLatin1String("PAU"))
        return State::Paused;
    if (pcstat == QLatin1String("FRE"))
        return State::Free;
    if (pcstat == QLatin1String("BIL"))
        return State::Billing;
    return State::Unknown;
}

namespace {
QString StateWords(TerminalListEntry::State state, const QString& pcstat) {
    using State = TerminalListEntry::State;
    switch (state) {
    case State::Locked:
        return QStringLiteral("is not logged");
    case State::Running:
        return QStringLiteral("is running");
    case State::Paused:
        return QStringLiteral("is paused");
    case State::Free:
        return QStringLiteral("is unlocked");
    case State::Billing:
        return QStringLiteral("is being billed");
    case State::Unknown:
        break;
    }
    // A second ":" would make the pop-up menu read the wrong PC number.
    QString shown = pcstat.trimmed();
    shown.remove(QLatin1Char(':'));
    return shown.isEmpty() ? QStringLiteral("has no state") : QStringLiteral("is ") + shown;
}
} // namespace

TerminalListEntry MakeTerminalListEntry(const TerminalRecord& record, int pc) {
    TerminalListEntry e;
    e.pc = pc;
    e.state = TerminalListState(record.pcstat);
    e.online = record.online;
    // Whose session it is, at a glance; a ":" in it would mislead the PC-number reading.
    QString who;
    if (record.logged && !record.cid.trimmed().isEmpty())
        who = QStringLiteral(" (") + QString(record.cid).remove(QLatin1Char(':')).trimmed() +
              QLatin1Char(')');
    e.text = QStringLiteral("Pc Number %1 %2%3, %4 :%1")
                 .arg(QString::number(pc), StateWords(e.state, record.pcstat), who,
                      record.online ? QStringLiteral("on line") : QStringLiteral("off line"));
    return e;
}
