#pragma once

#include "billing/record_table.h"

#include <QDialog>

class Console;
class FormHost;
class QTableView;

// frmlp: the promos, edited in place. The console's promo list is read again only at the
// next start, so nothing typed here changes a bill before then.
class PromoListWindow : public QDialog {
    Q_OBJECT
public:
    explicit PromoListWindow(Console& console, QWidget* parent = nullptr);

private:
    RecordTable promos_;
    QTableView* grid_ = nullptr;
};

void openPromoList(Console& console, FormHost& host);
