#include "sales/date_report_window.h"

#include "base/form_host.h"
#include "console/console.h"
#include "sales/report_window.h"
#include "ui/accessibility.h"
#include "ui/takings_chart.h"

#include <QApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QLineEdit* amountBox(QWidget* parent, const char* name, bool large = false) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setReadOnly(true);
    box->setAlignment(Qt::AlignRight);
    if (large) {
        QFont font = box->font();
        font.setPointSizeF(font.pointSizeF() * 1.3);
        font.setBold(true);
        box->setFont(font);
    }
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("999,999,999.99")) +
                         16);
    return box;
}

QLineEdit* dateBox(QWidget* parent, const char* name, const QString& spoken) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setAccessibleName(spoken);
    box->setPlaceholderText(QStringLiteral("MM/DD/YYYY"));
    box->setMaxLength(10);
    box->setFixedWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("00/00/00000")) + 16);
    return box;
}

} // namespace

DateReportWindow::DateReportWindow(Console& console, FormHost& host, QWidget* parent)
    : QWidget(parent), console_(console), host_(host),
      report_(console.database(), console.clock(), console.prompts()) {
    setObjectName(QStringLiteral("frmSDates"));
    setWindowTitle(QStringLiteral("Selective Date Report"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buildChoices());

    txtSRG_ = amountBox(this, "txtSRG");
    txtSrv_ = amountBox(this, "txtSrv");
    auto* grids = new QSplitter(Qt::Vertical, this);
    grids->setObjectName(QStringLiteral("splGrids"));
    grids->addWidget(buildGridBox(report_.rentals(), "DBGrid1", QStringLiteral("Rentals / Gaming"),
                                  {u"00/00/0000"_s, u"00:00:00"_s, u"00:00:00"_s, u"00,000.00"_s,
                                   u"Terminal"_s, u"ID-00000"_s},
                                  txtSRG_));
    grids->addWidget(buildGridBox(
        report_.services(), "DBGrid2", QStringLiteral("Services"),
        {u"ORNumber"_s, u"00/00/0000"_s, u"Typing, per page"_s, u"Qty"_s, u"00,000.00"_s},
        txtSrv_));
    grids->setChildrenCollapsible(false);

    auto* split = new QSplitter(Qt::Horizontal, this);
    split->setObjectName(QStringLiteral("splTakings"));
    split->addWidget(grids);
    split->addWidget(buildSummary());
    split->setStretchFactor(0, 5);
    split->setStretchFactor(1, 4);
    split->setChildrenCollapsible(false);
    layout->addWidget(split, 1);

    auto* bottom = new QHBoxLayout;
    lblmess_ = new QLabel(this);
    lblmess_->setObjectName(QStringLiteral("lblmess"));
    lblmess_->setAccessibleName(QStringLiteral("Progress"));
    auto* cmdclose = new QPushButton(QStringLiteral("&Close"), this);
    cmdclose->setObjectName(QStringLiteral("cmdclose"));
    bottom->addWidget(lblmess_, 1);
    bottom->addWidget(cmdclose);
    layout->addLayout(bottom);
    connect(cmdclose, &QPushButton::clicked, this, &DateReportWindow::closeWindow);

    connect(&report_, &DateReport::boxesChanged, this, &DateReportWindow::showBoxes);
    connect(&report_, &DateReport::shownChanged, this, &DateReportWindow::showTotals);
    connect(&report_, &DateReport::messageChanged, this, [this](const QString& text) {
        lblmess_->setText(text);
        lblmess_->repaint(); // each step shows while the next one runs
    });
    for (TakingsModel* model : {&report_.rentals(), &report_.services()})
        connect(
            model, &TakingsModel::readFailed, this,
            [this](const QString& why) {
                console_.prompts().notice(QStringLiteral("Some rows could not be read: ") + why,
                                          windowTitle(), Prompts::Icon::Critical);
            },
            Qt::QueuedConnection); // raised while the grid paints
    connect(optdy_, &QRadioButton::clicked, &report_, &DateReport::chooseToday);
    connect(optsd_, &QRadioButton::clicked, &report_, &DateReport::chooseRange);
    connect(optad_, &QRadioButton::clicked, &report_, &DateReport::chooseAll);
    connect(txtbdate_, &QLineEdit::textChanged, this, &DateReportWindow::boxEdited);
    connect(txtedate_, &QLineEdit::textChanged, this, &DateReportWindow::boxEdited);

    optdy_->setChecked(true);
    report_.load();
    makeAccessible(this);
}

QSize DateReportWindow::sizeHint() const {
    return {1080, 620};
}

QWidget* DateReportWindow::buildChoices() {
    auto* row = new QWidget(this);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);

    auto* dates = new QGroupBox(QStringLiteral("Dates"), row);
    dates->setObjectName(QStringLiteral("fraDates"));
    auto* datesLine = new QHBoxLayout(dates);
    optdy_ = new QRadioButton(QStringLiteral("&Today"), dates);
    optdy_->setObjectName(QStringLiteral("optdy"));
    optsd_ = new QRadioButton(QStringLiteral("Date &range"), dates);
    optsd_->setObjectName(QStringLiteral("optsd"));
    optad_ = new QRadioButton(QStringLiteral("&ALL Dates"), dates);
    optad_->setObjectName(QStringLiteral("optad"));
    txtbdate_ = dateBox(dates, "txtbdate", QStringLiteral("From"));
    txtedate_ = dateBox(dates, "txtedate", QStringLiteral("To"));
    auto* fromLabel = new QLabel(QStringLiteral("&From"), dates);
    fromLabel->setBuddy(txtbdate_);
    auto* toLabel = new QLabel(QStringLiteral("T&o"), dates);
    toLabel->setBuddy(txtedate_);
    for (QWidget* w : std::initializer_list<QWidget*>{optdy_, optsd_, optad_})
        datesLine->addWidget(w);
    datesLine->addSpacing(12);
    datesLine->addWidget(fromLabel);
    datesLine->addWidget(txtbdate_);
    datesLine->addWidget(toLabel);
    datesLine->addWidget(txtedate_);
    line->addWidget(dates);

    auto* print = new QGroupBox(QStringLiteral("Print"), row);
    print->setObjectName(QStringLiteral("fraPrint"));
    auto* printLine = new QHBoxLayout(print);
    const QStringList reports = {QStringLiteral("Rentals / Gaming"), QStringLiteral("Services"),
                                 QStringLiteral("Summary")};
    for (int i = 0; i < reports.size(); ++i) {
        auto* option = new QRadioButton(reports[i], print);
        option->setObjectName(QStringLiteral("popt"));
        option->setProperty("index", i);
        option->setAccessibleName(reports[i] + QStringLiteral(" report"));
        printLine->addWidget(option);
        popt_ << option;
    }
    popt_.last()->setChecked(true);
    auto* cmdPrint = new QPushButton(QStringLiteral("&Print..."), print);
    cmdPrint->setObjectName(QStringLiteral("cmdPrint"));
    printLine->addWidget(cmdPrint);
    connect(cmdPrint, &QPushButton::clicked, this, &DateReportWindow::printClicked);
    line->addWidget(print);
    line->addStretch(1);
    return row;
}

QWidget* DateReportWindow::buildGridBox(TakingsModel& model, const char* name, const QString& title,
                                        const QStringList& samples, QLineEdit* subtotal) {
    auto* box = new QGroupBox(title, this);
    box->setObjectName(QStringLiteral("fra") + QString::fromLatin1(name));
    auto* lines = new QVBoxLayout(box);
    lines->addWidget(buildGrid(model, name, title, samples), 1);
    auto* total = new QHBoxLayout;
    auto* label = new QLabel(QStringLiteral("Subtotal (Php)"), box);
    label->setBuddy(subtotal);
    subtotal->setAccessibleName(title + QStringLiteral(" subtotal"));
    total->addStretch(1);
    total->addWidget(label);
    total->addWidget(subtotal);
    lines->addLayout(total);
    return box;
}

QWidget* DateReportWindow::buildSummary() {
    auto* summary = new QGroupBox(QStringLiteral("Summary"), this);
    summary->setObjectName(QStringLiteral("fraSummary"));
    auto* lines = new QVBoxLayout(summary);
    auto* form = new QFormLayout;
    txtSRentals_ = amountBox(summary, "txtSRentals");
    txtSService_ = amountBox(summary, "txtSService");
    txtGtotal_ = amountBox(summary, "txtGtotal", true);
    form->addRow(QStringLiteral("Rentals / Gaming (Php)"), txtSRentals_);
    form->addRow(QStringLiteral("Services (Php)"), txtSService_);
    form->addRow(QStringLiteral("Grand total (Php)"), txtGtotal_);
    lines->addLayout(form);
    chart_ = new TakingsChartView(summary);
    chart_->setObjectName(QStringLiteral("chtTakings"));
    lines->addWidget(chart_, 1);
    return summary;
}

QTableView* DateReportWindow::buildGrid(TakingsModel& model, const char* name,
                                        const QString& spoken, const QStringList& samples) {
    auto* grid = new QTableView(this);
    grid->setObjectName(QString::fromLatin1(name));
    grid->setAccessibleName(spoken);
    grid->setModel(&model);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setAlternatingRowColors(true);
    grid->setWordWrap(false);
    // Every row the same height: the grid never measures rows it does not show.
    grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 6);
    grid->verticalHeader()->hide();
    grid->horizontalHeader()->setStretchLastSection(true);
    // Each column as wide as its heading or a typical value, whichever is wider.
    QList<int> widths;
    for (int i = 0; i < samples.size(); ++i) {
        const QString heading = model.headerData(i, Qt::Horizontal).toString();
        widths << qMax(grid->horizontalHeader()->fontMetrics().horizontalAdvance(heading),
                       grid->fontMetrics().horizontalAdvance(samples[i])) +
                      14;
    }
    auto widen = [grid, widths] {
        for (int i = 0; i < widths.size(); ++i)
            grid->setColumnWidth(i, widths[i]);
    };
    widen();
    connect(&model, &QAbstractItemModel::modelReset, grid, widen);
    return grid;
}

void DateReportWindow::showBoxes() {
    settingBoxes_ = true;
    txtbdate_->setText(report_.beginText());
    txtedate_->setText(report_.endText());
    settingBoxes_ = false;
    txtbdate_->setEnabled(report_.boxesEnabled());
    txtedate_->setEnabled(report_.boxesEnabled());
}

void DateReportWindow::showTotals() {
    txtSRG_->setText(report_.rentalsTotal());
    txtSrv_->setText(report_.servicesTotal());
    txtGtotal_->setText(report_.grandTotal());
    txtSRentals_->setText(report_.summaryRentals());
    txtSService_->setText(report_.summaryServices());
    chart_->showTakings(report_.chart());
}

void DateReportWindow::boxEdited() {
    if (!settingBoxes_)
        report_.boxesEdited(txtbdate_->text(), txtedate_->text());
}

void DateReportWindow::printClicked() {
    int popt = 2;
    for (QRadioButton* option : std::as_const(popt_))
        if (option->isChecked())
            popt = option->property("index").toInt();
    openReport(console_, host_, report_.printRequest(popt));
}

void DateReportWindow::closeWindow() {
    if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
        sub->close();
    else
        close();
}

void openDateReport(Console& console, FormHost& host) {
    for (QWidget* w : QApplication::allWidgets())
        if (auto* open = qobject_cast<DateReportWindow*>(w); open && &open->console() == &console) {
            host.showForm(open, false);
            return;
        }
    host.showForm(new DateReportWindow(console, host), false);
}
