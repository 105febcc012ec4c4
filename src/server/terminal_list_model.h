#pragma once

#include "server/terminal_table.h"

#include <QAbstractListModel>

// The terminals as a list, one row per PC, kept current by the table's signals. The
// operator's pop-up menu reads the PC number back from a row's text (the number after
// its first ":"), so the text carries exactly one ":" and the number comes last:
// "Pc Number 3 is running (ID-00001), on line :3".
class TerminalListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role {
        PcRole = Qt::UserRole + 1, // int
        StateRole,                 // TerminalState as int
        OnlineRole,                // bool
    };

    explicit TerminalListModel(const TerminalTable& table, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    // The row's text for a record.
    static QString entryText(const TerminalRecord& record, int pc);

private:
    const TerminalTable& table_;
};
