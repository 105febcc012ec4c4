#include "server/time_limit_slots.h"

void TimeLimitSlots::setLimit(int slot, const QString& text) {
    QString& held = limits_.at(size_t(slot - 1));
    if (held == text)
        return;
    held = text;
    Q_EMIT limitChanged(slot);
}
