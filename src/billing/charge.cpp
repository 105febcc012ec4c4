#include "billing/charge.h"

#include "base/text.h"
#include "billing/rates.h"

QString amountCaption(qint32 consumedMs, const Rates& rates) {
    return amountCaption(consumedMs, rates.ratePerHour(), rates.minimumAmount());
}

double amountOfText(const QString& text) {
    QString digits = text.trimmed();
    digits.remove(QLatin1Char(','));
    bool ok = false;
    const double value = digits.toDouble(&ok);
    return ok ? value : leadingNumber(digits);
}

Discount promoDiscount(const QString& type, Money promoAmount, const QString& hoursText) {
    Discount d;
    if (type == QLatin1String("Per Hour")) {
        const double hours = leadingNumber(hoursText);
        if (hours >= 1.0) {
            // Fractional hours count: 1.5 hours earn one and a half times the amount.
            d.amount = Money::fromDouble(promoAmount.toDouble() * hours);
            d.shown = true;
        }
    } else if (type == QLatin1String("Fix")) {
        d.typed = true;
        d.enabled = true;
    }
    return d;
}

QString plainNumber(double value) {
    QString text = QString::number(value, 'g', 15);
    if (text.contains(QLatin1Char('e'))) // never in a bill's range; kept readable anyway
        text = QString::number(value, 'f', 4);
    return value >= 0 ? QLatin1Char(' ') + text : text;
}

QString fixAmountDue(const QString& rentals, const QString& otherCharges, const QString& discount) {
    return plainNumber(leadingNumber(rentals) + leadingNumber(otherCharges) -
                       leadingNumber(discount));
}

bool discountKeyAccepted(const QString& text, QChar key, bool backspace) {
    if (backspace)
        return true;
    if (key.isDigit() && key.unicode() < 128)
        return true;
    return key == QLatin1Char('.') && !text.contains(QLatin1Char('.'));
}
