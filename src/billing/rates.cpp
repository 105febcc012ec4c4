#include "billing/rates.h"

void Rates::setValues(double ratePerHour, Money minimumAmount, qint32 minimumMinutes) {
    ratePerHour_ = ratePerHour;
    minimumAmount_ = minimumAmount;
    minimumMinutes_ = minimumMinutes;
    Q_EMIT changed();
}

void Rates::resetDefaults() {
    promoInForce_ = 0;
    setValues(20, Money::fromPesos(10), 30);
}

bool Rates::loadRates(const Database& db) {
    DbSession s(db);
    auto q = s.run(QStringLiteral("SELECT RPH, mina, mint FROM rates ORDER BY rowid LIMIT 1"));
    if (!q.next())
        return false;
    setValues(q.value(0).toDouble(), Money::fromDouble(q.value(1).toDouble()),
              qint32(q.value(2).toDouble()));
    return true;
}

void Rates::loadServices(const Database& db) {
    setServices(readServices(db));
}

QList<Service> Rates::readServices(const Database& db) {
    QList<Service> list;
    DbSession s(db);
    // NOCASE in the statement: a file made by another tool sorts its plain TEXT column
    // by character code, and the list must read in the order the operator expects.
    auto q = s.run(QStringLiteral(
        "SELECT Description, Amount FROM services ORDER BY Description COLLATE NOCASE"));
    while (q.next())
        list.append({q.value(0).toString(), q.value(1).toDouble()});
    return list;
}

void Rates::loadPromos(const Database& db) {
    QList<Promo> list;
    DbSession s(db);
    auto q =
        s.run(QStringLiteral("SELECT ddtls, drange, dtype, Amount FROM promos ORDER BY rowid"));
    while (q.next())
        list.append({q.value(0).toString(), q.value(1).toString(), q.value(2).toString(),
                     Money::fromDouble(q.value(3).toDouble())});
    const QString first =
        list.isEmpty() ? QStringLiteral("None Defined") : QStringLiteral("No Discount");
    list.prepend({first, QStringLiteral("None"), QStringLiteral("None"), Money()});
    promos_ = list;
}
