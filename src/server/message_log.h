#pragma once

#include <QObject>
#include <QString>

#include <deque>

// The terminal message log: what terminals said and what happened to their connections.
// Entries are appended; the text reads newest first. The oldest entries drop off once
// the log holds about a megabyte, so a terminal sending text without end cannot grow it.
class MessageLog : public QObject {
    Q_OBJECT
public:
    static constexpr qsizetype Limit = 1 << 20;

    // Adds the text, ended by a carriage return.
    void logMessage(const QString& text);
    // Every entry, newest first.
    QString text() const;
    // Entries oldest first.
    const std::deque<QString>& entries() const { return entries_; }
    bool contains(const QString& text) const;

Q_SIGNALS:
    void entryAdded(const QString& entry);

private:
    std::deque<QString> entries_;
    qsizetype size_ = 0;
};
