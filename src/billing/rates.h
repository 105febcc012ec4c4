#pragma once

#include "base/money.h"
#include "store/database.h"

#include <QList>
#include <QObject>
#include <QString>

// A discount scheme; type is "Per Hour", "Fix" or "None".
struct Promo {
    QString details;
    QString range;
    QString type;
    Money amount;
};

// A priced extra sold at the counter.
struct Service {
    QString description;
    double amount = 0;
};

// The rate values, the services list and the promo list the console charges from.
class Rates : public QObject {
    Q_OBJECT
public:
    double ratePerHour() const { return ratePerHour_; }
    Money minimumAmount() const { return minimumAmount_; }
    // Kept and edited, never charged.
    qint32 minimumMinutes() const { return minimumMinutes_; }
    void setValues(double ratePerHour, Money minimumAmount, qint32 minimumMinutes);

    // Index into promos(); 0 is the built-in entry.
    int promoInForce() const { return promoInForce_; }
    void setPromoInForce(int index) { promoInForce_ = index; }

    // Back to the start-up defaults (the lists stay as loaded).
    void resetDefaults();

    // Reads the rates row; false when the table is empty (the defaults stay).
    bool loadRates(const Database& db);
    void loadServices(const Database& db);
    // The services as "order by description" reads them, for a caller that puts them in
    // force only once everything else it does has succeeded.
    static QList<Service> readServices(const Database& db);
    void setServices(const QList<Service>& services) { services_ = services; }
    // Entry 0 is "No Discount", or "None Defined" when the table is empty.
    void loadPromos(const Database& db);

    const QList<Service>& services() const { return services_; }
    const QList<Promo>& promos() const { return promos_; }
    const Promo& promo() const {
        return promos_.at(qBound(0, promoInForce_, int(promos_.size()) - 1));
    }

Q_SIGNALS:
    // The rate per hour, minimum amount or minimum minutes changed.
    void changed();

private:
    double ratePerHour_ = 20;
    Money minimumAmount_ = Money::fromPesos(10);
    qint32 minimumMinutes_ = 30;
    int promoInForce_ = 0;
    QList<Service> services_;
    QList<Promo> promos_ = {
        {QStringLiteral("None Defined"), QStringLiteral("None"), QStringLiteral("None"), Money()}};
};
