#pragma once

#include "billing/rates_settings.h"
#include "billing/record_table.h"

#include <QDialog>

class Console;
class FormHost;
class QComboBox;
class QLineEdit;
class QTableView;

// RatesSrv: the rate per hour, the minimum amount and minutes, the promo in force and the
// services grid. What it does is RatesSettings' and RecordTable's; it only shows them.
class RatesWindow : public QDialog {
    Q_OBJECT
public:
    RatesWindow(Console& console, FormHost& host, QWidget* parent = nullptr);

private:
    void showPromo(int index);
    void applyClicked();
    void deleteClicked();

    Console& console_;
    FormHost& host_;
    RatesSettings settings_;
    RecordTable services_;
    QLineEdit* txtrph_ = nullptr;
    QLineEdit* txtmina_ = nullptr;
    QComboBox* cmbMtime_ = nullptr;
    QComboBox* cmdpromos_ = nullptr;
    QLineEdit* txtprange_ = nullptr;
    QLineEdit* txtptype_ = nullptr;
    QLineEdit* txtpamnt_ = nullptr;
    QTableView* servicesGrid_ = nullptr;
};

// "Tarvo System Settings": the rates window over the frame.
void openRatesSettings(Console& console, FormHost& host);
