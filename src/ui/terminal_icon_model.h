#pragma once

#include "server/terminal_table.h"

#include <QHash>
#include <QIcon>
#include <QIdentityProxyModel>

// The terminal list with each row's state mark as its icon.
class TerminalIconModel final : public QIdentityProxyModel {
public:
    explicit TerminalIconModel(QObject* parent = nullptr);
    QVariant data(const QModelIndex& index, int role) const override;

private:
    // Every mark, made once: a list repaints its icons far more often than states change.
    QHash<int, QIcon> marks_;
};
