#pragma once

#include "sales/todays_sales.h"

#include <QWidget>

class Console;
class FormHost;
class QLabel;
class QLineEdit;
class QTableView;
class QTimer;

// Today's sales (ASlsSrv): today's rentals and service sales in two grids with their
// totals, kept current by its timer; a service is sold from here (Addsrv) and today's
// reports printed. What it shows is TodaysSales'.
class TodaysSalesWindow : public QWidget {
    Q_OBJECT
public:
    static constexpr int TickMs = 1000;

    TodaysSalesWindow(Console& console, FormHost& host, QWidget* parent = nullptr);

    Console& console() { return console_; }
    TodaysSales& sales() { return sales_; }
    // One tick of Timer1: totals, and the grids when rows came or went.
    void tick();
    QSize sizeHint() const override;

private:
    QTableView* buildGrid(TakingsModel& model, const char* name, const QString& spoken);
    void setColumnWidths();
    void showLastRows();
    void addServiceClicked();
    void deleteSaleChosen();
    void closeWindow();

    Console& console_;
    FormHost& host_;
    TodaysSales sales_;
    QTableView* dbGrid1_ = nullptr;
    QTableView* dbGrid2_ = nullptr;
    QLineEdit* txtRG_ = nullptr;
    QLineEdit* txtSrv_ = nullptr;
    QLabel* lblToday_ = nullptr;
    QTimer* timer1_ = nullptr;
};

// "&What we gather today": today's sales over the frame, or the open window brought forward.
void openTodaysSales(Console& console, FormHost& host);
