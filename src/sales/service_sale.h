#pragma once

#include "billing/rates.h"

#include <QDate>
#include <QList>
#include <QString>

#include <functional>

class Database;
class Prompts;

// One counter sale as the sale dialog (NewSrv) holds it: the texts of its boxes, and how
// the total follows them.
//
// The total is worked out two ways on purpose. Choosing a service reads its price as a
// formatted amount ("1,250.00" is 1250); editing the price or the quantity reads the price
// box as a typed number, which stops at the first comma ("1,250.00" is 1). So after an edit
// a grouped price counts as its first digits until the service is chosen again.
class ServiceSale {
public:
    struct Fields {
        QString receipt;                        // txtor
        QString description;                    // cmbSrvc
        QString price;                          // txtamnt
        QString quantity = QStringLiteral("1"); // txtQty
        QString total;                          // txttamnt
    };

    explicit ServiceSale(QList<Service> catalogue);

    const QList<Service>& catalogue() const { return catalogue_; }
    const Fields& fields() const { return fields_; }

    // cmbSrvc: the price of the chosen service, then the total from it.
    void choose(int index);
    // txtamnt and txtQty, on every change: the total from the two boxes as typed.
    void priceEdited(const QString& text);
    void quantityEdited(const QString& text);
    void receiptEdited(const QString& text) { fields_.receipt = text; }

    // The "SERVICE" revenue row the sale writes.
    struct Row {
        double orno = 0;   // the receipt number's leading number; empty is 0
        QDate rdate;       // the day of the sale
        double amount = 0; // the total as an amount, thousands separators dropped
        QString rdesc;     // the service
        QString subamnt;   // the price box as it stands ("1,250.00")
        double qty = 0;    // the quantity's leading number
    };
    Row row(const QDate& today) const;

private:
    void totalFromBoxes();

    QList<Service> catalogue_;
    Fields fields_;
};

// Writes the sale's row; `saved` runs once it is written (the window of today's sales
// shows it), then the operator is told "Service has been saved". With no service chosen,
// or when the database fails, the operator is told why and nothing is written.
bool saveServiceSale(const Database& database, Prompts& prompts, const ServiceSale::Row& row,
                     const std::function<void()>& saved);
