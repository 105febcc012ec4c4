#include "ui/takings_chart.h"

#include "base/format.h"
#include "sales/takings.h"

#include <QBarSet>
#include <QCategoryAxis>
#include <QLegend>
#include <QStackedBarSeries>
#include <QValueAxis>

namespace {

// The colours the board gives a terminal in use, and a free one: the two kinds of takings.
const QColor RentalsColour(0x2e, 0x7d, 0x32);
const QColor ServicesColour(0x15, 0x65, 0xc0);
// Beyond this many labels along the bottom they would run into each other.
constexpr int MostLabels = 16;

// Every how many bars a label goes: every bar while they fit, else every other one, or a
// week (a quarter, a year) apart.
int labelStep(const TakingsChart& takings) {
    const int bars = int(takings.bars.size());
    const QList<int> steps = takings.step == TakingsChart::Step::Day ? QList<int>{1, 2, 7, 14}
                                                                     : QList<int>{1, 2, 3, 6, 12};
    for (int step : steps)
        if ((bars + step - 1) / step <= MostLabels)
            return step;
    return (bars + MostLabels - 1) / MostLabels;
}

QString pesos(Money amount) {
    return QStringLiteral("P ") + formatNumber(amount, QStringLiteral("###,###,##0.#0"));
}

} // namespace

TakingsChartView::TakingsChartView(QWidget* parent) : QChartView(parent) {
    chart_ = new QChart;
    chart_->setAnimationOptions(QChart::NoAnimation);
    chart_->legend()->setAlignment(Qt::AlignBottom);
    chart_->setMargins(QMargins(4, 4, 4, 4));
    QFont title = chart_->titleFont();
    title.setPointSizeF(title.pointSizeF() * 1.15);
    title.setBold(true);
    chart_->setTitleFont(title);
    setChart(chart_);
    setRenderHint(QPainter::Antialiasing);
    setMinimumSize(320, 240);
    setAccessibleName(QStringLiteral("Takings chart"));
}

void TakingsChartView::showTakings(const TakingsChart& takings) {
    chart_->removeAllSeries();
    for (QAbstractAxis* axis : chart_->axes()) {
        chart_->removeAxis(axis);
        delete axis;
    }
    chart_->setTitle(takings.title + QStringLiteral(", ") + takings.period);

    Money rentals, services;
    const TakingsChart::Bar* best = nullptr;
    if (takings.bars.isEmpty()) {
        chart_->legend()->hide();
        summary_ = takings.title + QStringLiteral(", ") + takings.period;
        setAccessibleName(summary_);
        return;
    }

    auto* rentalsSet = new QBarSet(QStringLiteral("Rentals / Gaming"));
    rentalsSet->setColor(RentalsColour);
    rentalsSet->setBorderColor(RentalsColour.darker(120));
    auto* servicesSet = new QBarSet(QStringLiteral("Services"));
    servicesSet->setColor(ServicesColour);
    servicesSet->setBorderColor(ServicesColour.darker(120));
    QStringList labels;
    double highest = 0;
    for (const TakingsChart::Bar& bar : takings.bars) {
        rentalsSet->append(bar.rentals.toDouble());
        servicesSet->append(bar.services.toDouble());
        labels << bar.label;
        rentals += bar.rentals;
        services += bar.services;
        const double height = (bar.rentals + bar.services).toDouble();
        if (!best || height > highest) {
            best = &bar;
            highest = height;
        }
    }
    auto* series = new QStackedBarSeries;
    series->append(rentalsSet);
    series->append(servicesSet);
    series->setBarWidth(0.7);
    chart_->addSeries(series);

    // The bars stand at 0, 1, 2...; a label under every step-th one.
    auto* days = new QCategoryAxis;
    days->setRange(-0.5, double(labels.size()) - 0.5);
    days->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    days->setGridLineVisible(false);
    const int step = labelStep(takings);
    for (int i = 0; i < labels.size(); i += step)
        days->append(labels[i], i);
    chart_->addAxis(days, Qt::AlignBottom);
    series->attachAxis(days);

    auto* amounts = new QValueAxis;
    amounts->setRange(0, highest > 0 ? highest : 100);
    amounts->setLabelFormat(QStringLiteral("%.0f"));
    amounts->setTitleText(QStringLiteral("Pesos"));
    amounts->applyNiceNumbers();
    chart_->addAxis(amounts, Qt::AlignLeft);
    series->attachAxis(amounts);
    chart_->legend()->show();

    summary_ = QStringLiteral("%1, %2: rentals / gaming %3, services %4")
                   .arg(takings.title, takings.period, pesos(rentals), pesos(services));
    if (best && highest > 0)
        summary_ += QStringLiteral("; highest %1 with %2")
                        .arg(best->label, pesos(best->rentals + best->services));
    setAccessibleName(summary_);
}
