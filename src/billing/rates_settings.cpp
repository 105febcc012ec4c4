#include "billing/rates_settings.h"

#include "base/format.h"
#include "base/prompts.h"
#include "billing/typed_values.h"

#include <cmath>

namespace {

QString numberText(double value) {
    return QString::number(value, 'g', 15);
}

} // namespace

RatesSettings::RatesSettings(Rates& rates, const Database& database, Prompts& prompts)
    : rates_(rates), database_(database), prompts_(prompts) {}

RatesInput RatesSettings::current() const {
    return {numberText(rates_.ratePerHour()), numberText(rates_.minimumAmount().toDouble()),
            QString::number(rates_.minimumMinutes()), rates_.promoInForce()};
}

QStringList RatesSettings::minuteChoices() {
    return {QStringLiteral("15"), QStringLiteral("20"), QStringLiteral("30"), QStringLiteral("45"),
            QStringLiteral("60"), QStringLiteral("90"), QStringLiteral("120")};
}

QStringList RatesSettings::promoNames() const {
    QStringList names;
    for (const Promo& p : rates_.promos())
        names << p.details;
    return names;
}

PromoFields RatesSettings::promoFields(int index) const {
    if (index < 0 || index >= rates_.promos().size())
        return {};
    const Promo& p = rates_.promos().at(index);
    return {formatNumber(p.amount, QStringLiteral("##0.#0")), p.range, p.type};
}

QString RatesSettings::updatedText() {
    return QStringLiteral("Services table & Tarvo QRB  rates has been refreshed") +
           QLatin1Char('\r') +
           QStringLiteral("Restart routine for terminals is needed before changes takes effect!");
}

bool RatesSettings::apply(const RatesInput& input) {
    for (const QString* text : {&input.ratePerHour, &input.minimumAmount, &input.minimumMinutes})
        if (refuseApostrophe(prompts_, *text))
            return false;
    const auto rate = typedNumber(prompts_, input.ratePerHour);
    const auto minimum = rate ? typedNumber(prompts_, input.minimumAmount) : std::nullopt;
    const auto minutes = minimum ? typedNumber(prompts_, input.minimumMinutes) : std::nullopt;
    if (!minutes)
        return false;
    const Money minimumAmount = Money::fromDouble(*minimum);
    // The row keeps the whole minutes the console holds, so the next start reads the same.
    const qint32 minimumMinutes = qint32(std::lround(*minutes));

    QList<Service> services;
    try {
        DbSession s(database_);
        s.begin();
        const QVariantList values = {*rate, minimumAmount.toDouble(), minimumMinutes};
        auto rows = s.run(QStringLiteral("SELECT COUNT(*) FROM rates"));
        const bool empty = rows.next() && rows.value(0).toLongLong() == 0;
        if (empty)
            s.run(QStringLiteral("INSERT INTO rates (RPH, mina, mint) VALUES (?, ?, ?)"), values);
        else // the console reads the first row only; that is the one it keeps
            s.run(QStringLiteral("UPDATE rates SET RPH = ?, mina = ?, mint = ? WHERE rowid = "
                                 "(SELECT rowid FROM rates ORDER BY rowid LIMIT 1)"),
                  values);
        // Read before the commit: if it fails, the new rates are not kept either.
        services = Rates::readServices(database_);
        s.commit();
    } catch (const StoreError& e) {
        tellDatabaseFailure(prompts_, QStringLiteral("The rates could not be saved"), e);
        return false;
    }

    rates_.setValues(*rate, minimumAmount, minimumMinutes);
    rates_.setServices(services);
    if (input.promo >= 0 && input.promo < rates_.promos().size())
        rates_.setPromoInForce(input.promo);
    prompts_.message(updatedText(), QStringLiteral("Updated"), Prompts::Icon::Information);
    return true;
}
