#pragma once

#include "sales/service_sale.h"

#include <QDialog>

class Console;
class QComboBox;
class QLineEdit;
class QTreeWidget;

// The service sale (NewSrv): the service chosen from the catalogue, its price, the
// quantity and the total, and the receipt number; Save records the sale. What the boxes
// hold is ServiceSale's.
class ServiceSaleDialog : public QDialog {
    Q_OBJECT
public:
    explicit ServiceSaleDialog(Console& console, QWidget* parent = nullptr);

Q_SIGNALS:
    // The sale is in the database (before the operator is told so).
    void saved();

private:
    void chosen(int index);
    void showFields();
    void save();

    Console& console_;
    ServiceSale sale_;
    QComboBox* cmbSrvc_ = nullptr;
    QTreeWidget* lstsrv_ = nullptr;
    QLineEdit* txtor_ = nullptr;
    QLineEdit* txtamnt_ = nullptr;
    QLineEdit* txtQty_ = nullptr;
    QLineEdit* txttamnt_ = nullptr;
    bool showing_ = false;
};
