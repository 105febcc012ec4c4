#pragma once

#include <QChartView>

struct TakingsChart;

// Takings drawn as bars, rentals and services stacked, one bar a day (or a month), for
// the owner who would rather look than read.
class TakingsChartView : public QChartView {
    Q_OBJECT
public:
    explicit TakingsChartView(QWidget* parent = nullptr);

    void showTakings(const TakingsChart& takings);
    // What the bars show, as a sentence; a screen reader reads it as the chart's name.
    QString summary() const { return summary_; }

private:
    QChart* chart_ = nullptr;
    QString summary_;
};
