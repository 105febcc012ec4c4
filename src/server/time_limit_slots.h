#pragma once

#include <QObject>
#include <QString>

#include <array>

// The time-limit choice of each of the 24 tiles of the active-terminal board. A PC uses
// the slot of its tile on whatever page: 48 uses slot 24, 25 uses slot 1. Session start,
// resume and extension read and write them here; the board shows them.
class TimeLimitSlots : public QObject {
    Q_OBJECT
public:
    static constexpr int SlotCount = 24;

    static int slotOfPc(int pc) {
        const int slot = pc % SlotCount;
        return slot == 0 ? SlotCount : slot;
    }

    QString limit(int slot) const { return limits_.at(size_t(slot - 1)); }
    void setLimit(int slot, const QString& text);
    QString limitOfPc(int pc) const { return limit(slotOfPc(pc)); }
    void setLimitOfPc(int pc, const QString& text) { setLimit(slotOfPc(pc), text); }

Q_SIGNALS:
    void limitChanged(int slot);

private:
    std::array<QString, SlotCount> limits_ = [] {
        std::array<QString, SlotCount> a;
        a.fill(QStringLiteral("U"));
        return a;
    }();
};
