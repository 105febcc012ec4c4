#include "server/message_log.h"

void MessageLog::logMessage(const QString& text) {
    QString entry = text + QLatin1Char('\r');
    size_ += entry.size();
    entries_.push_back(entry);
    while (size_ > Limit && entries_.size() > 1) {
        size_ -= entries_.front().size();
        entries_.pop_front();
    }
    Q_EMIT entryAdded(entry);
}

QString MessageLog::text() const {
    QString all;
    all.reserve(size_);
    for (auto it = entries_.rbegin(); it != entries_.rend(); ++it)
        all += *it;
    return all;
}

bool MessageLog::contains(const QString& text) const {
    for (const QString& e : entries_)
        if (e.contains(text))
            return true;
    return false;
}
