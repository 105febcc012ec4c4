#pragma once

#include "base/money.h"
#include "store/database.h"

#include <QList>
#include <QString>

// A discount scheme; dtype is "Per Hour", "Fix" or "None".
struct Promo {
    QString ddtls;
    QString drange;
    QString dtype;
    Money Amount;
};

// A priced extra sold at the counter.
struct Service {
    QString Description;
    double Amount = 0;
};

// The rate values, the services list and the promo list the console charges from.
class Rates {
public:
    double RPH = 20;                   // pesos per hour
    Money mina = Money::fromPesos(10); // minimum amount of any session
    qint32 mint = 30;                  // minimum minutes: kept and edited, never charged
    int promoInForce = 0;              // index into promos(); 0 is the built-in entry

    // Back to the start-up defaults (the lists stay as loaded).
    void resetDefaults() {
        RPH = 20;
        mina = Money::fromPesos(10);
        mint = 30;
        promoInForce = 0;
    }

    // Reads the rates row; false when the table is empty (the defaults stay).
    bool LoadRates(const Database& db);
    void LoadServices(const Database& db);
    // Entry 0 is "No Discount", or "None Defined" when the table is empty.
    void LoadPromos(const Database& db);

    const QList<Service>& services() const { return services_; }
    const QList<Promo>& promos() const { return promos_; }
    const Promo& promo() const {
        return promos_.at(qBound(0, promoInForce, int(promos_.size()) - 1));
    }

private:
    QList<Service> services_;
    QList<Promo> promos_ = {
        {QStringLiteral("None Defined"), QStringLiteral("None"), QStringLiteral("None"), Money()}};
};
