#pragma once

#include "sales/date_report.h"

#include <QWidget>

class Console;
class FormHost;
class QLabel;
class QLineEdit;
class QRadioButton;
class QTableView;
class TakingsChartView;

// The date report (frmSDates): today's takings, a range of days or every date, in a
// rentals grid and a services grid with their totals, a chart of the days beside them, and
// the print button for the report chosen. What it shows is DateReport's.
class DateReportWindow : public QWidget {
    Q_OBJECT
public:
    DateReportWindow(Console& console, FormHost& host, QWidget* parent = nullptr);

    Console& console() { return console_; }
    DateReport& report() { return report_; }
    QSize sizeHint() const override;

private:
    QWidget* buildChoices();
    QWidget* buildGridBox(TakingsModel& model, const char* name, const QString& title,
                          const QStringList& samples, QLineEdit* subtotal);
    QWidget* buildSummary();
    // `samples`: a typical value of each column, for its width.
    QTableView* buildGrid(TakingsModel& model, const char* name, const QString& spoken,
                          const QStringList& samples);
    void showBoxes();
    void showTotals();
    void boxEdited();
    void printClicked();
    void closeWindow();

    Console& console_;
    FormHost& host_;
    DateReport report_;
    QRadioButton* optdy_ = nullptr;
    QRadioButton* optsd_ = nullptr;
    QRadioButton* optad_ = nullptr;
    QList<QRadioButton*> popt_;
    QLineEdit* txtbdate_ = nullptr;
    QLineEdit* txtedate_ = nullptr;
    QLineEdit* txtSRG_ = nullptr;
    QLineEdit* txtSrv_ = nullptr;
    QLineEdit* txtGtotal_ = nullptr;
    QLineEdit* txtSRentals_ = nullptr;
    QLineEdit* txtSService_ = nullptr;
    QLabel* lblmess_ = nullptr;
    TakingsChartView* chart_ = nullptr;
    bool settingBoxes_ = false;
};

// "&Retro Reports": the date report over the frame, or the open one brought forward.
void openDateReport(Console& console, FormHost& host);
