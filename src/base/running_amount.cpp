#include "base/running_amount.h"

#include "base/format.h"

double runningAmount(qint32 consumedMs, double ratePerHour) {
    const double seconds = double(consumedMs) / 1000.0;
    return ratePerHour * (seconds / 3600.0);
}

QString amountCaption(qint32 consumedMs, double ratePerHour, Money minimumAmount) {
    const double amount = runningAmount(consumedMs, ratePerHour);
    const QString mask = QStringLiteral("##,###.#0");
    if (amount <= minimumAmount.toDouble())
        return QStringLiteral("P ") + formatNumber(minimumAmount, mask);
    return QStringLiteral("P ") + formatNumber(amount, mask);
}
