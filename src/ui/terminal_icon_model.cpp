#include "ui/terminal_icon_model.h"

#include "server/terminal_list_model.h"
#include "ui/pictures.h"

namespace {
int markKey(TerminalState state, bool online) {
    return int(state) * 2 + (online ? 1 : 0);
}
} // namespace

TerminalIconModel::TerminalIconModel(QObject* parent) : QIdentityProxyModel(parent) {
    for (TerminalState state :
         {TerminalState::NotLogged, TerminalState::Running, TerminalState::Paused,
          TerminalState::Free, TerminalState::Billing, TerminalState::Other})
        for (bool online : {false, true})
            marks_.insert(markKey(state, online), Pictures::stateIcon(state, online));
}

QVariant TerminalIconModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DecorationRole)
        return QIdentityProxyModel::data(index, role);
    const auto state =
        TerminalState(QIdentityProxyModel::data(index, TerminalListModel::StateRole).toInt());
    const bool online = QIdentityProxyModel::data(index, TerminalListModel::OnlineRole).toBool();
    return marks_.value(markKey(state, online));
}
