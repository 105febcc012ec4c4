#pragma once

#include <QAbstractListModel>

class MessageLog;

// The terminal message log as a list, newest first, one line an entry. A new entry is
// one row inserted at the top and entries the log lets go are rows removed at the
// bottom: nothing is copied or read again, so a terminal that floods the log costs the
// same per entry however long the log is.
class MessageLogModel : public QAbstractListModel {
    Q_OBJECT
public:
    // The whole entry, when its line is cut short or joined from several.
    static constexpr int FullTextRole = Qt::UserRole + 1;
    // A line shows at most this much of its entry.
    static constexpr int LineLength = 300;

    explicit MessageLogModel(const MessageLog& log, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    // A text as one line of at most `length` characters.
    static QString oneLine(const QString& text, int length = LineLength);

private:
    void entryAdded();

    const MessageLog& log_;
    int rows_ = 0;
};
