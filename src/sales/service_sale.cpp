#include "sales/service_sale.h"

#include "base/format.h"
#include "base/prompts.h"
#include "base/text.h"
#include "billing/charge.h"
#include "store/database.h"

namespace {

const QString TotalMask = QStringLiteral("###,##0.#0");

} // namespace

ServiceSale::ServiceSale(QList<Service> catalogue) : catalogue_(std::move(catalogue)) {}

void ServiceSale::choose(int index) {
    if (index < 0 || index >= catalogue_.size())
        return;
    const Service& service = catalogue_.at(index);
    fields_.description = service.description;
    fields_.price = formatNumber(service.amount, QStringLiteral("##,##0.#0"));
    // The price as an amount: its thousands separators are dropped before it is read.
    const double price =
        leadingNumber(formatNumber(amountOfText(fields_.price), QStringLiteral("########.##")));
    fields_.total = formatNumber(price * leadingNumber(fields_.quantity), TotalMask);
}

void ServiceSale::priceEdited(const QString& text) {
    fields_.price = text;
    totalFromBoxes();
}

void ServiceSale::quantityEdited(const QString& text) {
    fields_.quantity = text;
    totalFromBoxes();
}

void ServiceSale::totalFromBoxes() {
    // The price box read as typed: "1,250.00" counts as 1 here.
    fields_.total =
        formatNumber(leadingNumber(fields_.price) * leadingNumber(fields_.quantity), TotalMask);
}

ServiceSale::Row ServiceSale::row(const QDate& today) const {
    Row r;
    r.orno = leadingNumber(fields_.receipt);
    r.rdate = today;
    r.amount =
        leadingNumber(formatNumber(amountOfText(fields_.total), QStringLiteral("#######.##")));
    r.rdesc = fields_.description;
    r.subamnt = fields_.price;
    r.qty = leadingNumber(fields_.quantity);
    return r;
}

bool saveServiceSale(const Database& database, Prompts& prompts, const ServiceSale::Row& row,
                     const std::function<void()>& saved) {
    if (row.rdesc.isEmpty()) {
        prompts.message(QStringLiteral("There is no service to sell. Add the services the café "
                                       "sells in Tarvo System Settings first."),
                        QStringLiteral("Service sale"), Prompts::Icon::Exclamation);
        return false;
    }
    try {
        DbSession s(database);
        s.run(QStringLiteral("INSERT INTO TmpRvnD (Orno, Rdate, Amount, rdesc, rtype, subamnt, "
                             "qty) VALUES (?, ?, ?, ?, ?, ?, ?)"),
              {row.orno, row.rdate, row.amount, row.rdesc, QStringLiteral("SERVICE"), row.subamnt,
               row.qty});
    } catch (const StoreError& e) {
        prompts.message(QStringLiteral("The sale was not saved: ") + e.text(),
                        QStringLiteral("Database error"), Prompts::Icon::Critical);
        return false;
    }
    if (saved)
        saved();
    prompts.message(QStringLiteral("Service has been saved"), QStringLiteral("Saved"),
                    Prompts::Icon::Information);
    return true;
}
