#include "server/terminal_list_model.h"

namespace {
QString stateWords(const TerminalRecord& record) {
    switch (record.state) {
    case TerminalState::NotLogged:
        return QStringLiteral("is not logged");
    case TerminalState::Running:
        return QStringLiteral("is running");
    case TerminalState::Paused:
        return QStringLiteral("is paused");
    case TerminalState::Free:
        return QStringLiteral("is unlocked");
    case TerminalState::Billing:
        return QStringLiteral("is being billed");
    case TerminalState::Other:
        break;
    }
    // A second ":" would make the pop-up menu read the wrong PC number.
    QString shown = record.otherStateCode.trimmed();
    shown.remove(QLatin1Char(':'));
    return shown.isEmpty() ? QStringLiteral("has no state") : QStringLiteral("is ") + shown;
}
} // namespace

TerminalListModel::TerminalListModel(const TerminalTable& table, QObject* parent)
    : QAbstractListModel(parent), table_(table) {
    connect(&table_, &TerminalTable::terminalChanged, this, [this](int pc) {
        const QModelIndex i = index(pc - 1);
        Q_EMIT dataChanged(i, i);
    });
    connect(&table_, &TerminalTable::aboutToReset, this, [this] { beginResetModel(); });
    connect(&table_, &TerminalTable::tableReset, this, [this] { endResetModel(); });
}

int TerminalListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : table_.count();
}

QVariant TerminalListModel::data(const QModelIndex& index, int role) const {
    const int pc = index.row() + 1;
    if (!index.isValid() || !table_.contains(pc))
        return {};
    const TerminalRecord& r = table_.at(pc);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return entryText(r, pc);
    case PcRole:
        return pc;
    case StateRole:
        return int(r.state);
    case OnlineRole:
        return r.online;
    default:
        return {};
    }
}

QHash<int, QByteArray> TerminalListModel::roleNames() const {
    QHash<int, QByteArray> names = QAbstractListModel::roleNames();
    names[PcRole] = "pc";
    names[StateRole] = "state";
    names[OnlineRole] = "online";
    return names;
}

QString TerminalListModel::entryText(const TerminalRecord& record, int pc) {
    // Whose session it is, at a glance; a ":" in it would mislead the PC-number reading.
    QString who;
    if (record.logged && !record.cid.trimmed().isEmpty())
        who = QStringLiteral(" (") + QString(record.cid).remove(QLatin1Char(':')).trimmed() +
              QLatin1Char(')');
    return QStringLiteral("Pc Number %1 %2%3, %4 :%1")
        .arg(QString::number(pc), stateWords(record), who,
             record.online ? QStringLiteral("on line") : QStringLiteral("off line"));
}
