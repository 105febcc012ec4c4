#include "people/message_log_model.h"

#include "server/message_log.h"

MessageLogModel::MessageLogModel(const MessageLog& log, QObject* parent)
    : QAbstractListModel(parent), log_(log), rows_(int(log.entries().size())) {
    connect(&log_, &MessageLog::entryAdded, this, &MessageLogModel::entryAdded);
}

int MessageLogModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

QVariant MessageLogModel::data(const QModelIndex& index, int role) const {
    const auto& entries = log_.entries();
    if (!index.isValid() || index.row() >= rows_ || size_t(rows_) != entries.size())
        return {};
    QString entry = entries[entries.size() - 1 - size_t(index.row())];
    if (entry.endsWith(QLatin1Char('\r')))
        entry.chop(1);
    switch (role) {
    case Qt::DisplayRole:
        return oneLine(entry);
    case FullTextRole:
        return entry;
    default:
        return {};
    }
}

QString MessageLogModel::oneLine(const QString& text, int length) {
    QString line = text.size() > length ? text.left(length - 1) + QChar(0x2026) : text;
    return line.replace(QLatin1Char('\r'), QLatin1Char(' '))
        .replace(QLatin1Char('\n'), QLatin1Char(' '));
}

void MessageLogModel::entryAdded() {
    // The log has already let its oldest entries go, if it had to.
    const int now = int(log_.entries().size());
    const int dropped = rows_ + 1 - now;
    if (dropped > 0) {
        beginRemoveRows({}, rows_ - dropped, rows_ - 1);
        rows_ -= dropped;
        endRemoveRows();
    }
    beginInsertRows({}, 0, 0);
    ++rows_;
    endInsertRows();
}
