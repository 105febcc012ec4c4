#include "sales/todays_sales_window.h"

#include "base/form_host.h"
#include "base/format.h"
#include "console/console.h"
#include "sales/report_window.h"
#include "sales/service_sale_dialog.h"
#include "ui/accessibility.h"

#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// The grids' first columns as wide as the operators have always had them, in twips.
constexpr int TwipsPerPixel = 15;
constexpr int RentalsTwips[] = {1200, 1000, 1000};
constexpr int ServicesTwips[] = {1000, 3700, 500};

QLineEdit* totalBox(QWidget* parent, const char* name) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setReadOnly(true);
    box->setAlignment(Qt::AlignRight);
    QFont font = box->font();
    font.setPointSizeF(font.pointSizeF() * 1.2);
    font.setBold(true);
    box->setFont(font);
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("999,999.99")) + 16);
    return box;
}

QPushButton* button(QWidget* parent, const char* name, const QString& caption) {
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(QString::fromLatin1(name));
    return b;
}

} // namespace

TodaysSalesWindow::TodaysSalesWindow(Console& console, FormHost& host, QWidget* parent)
    : QWidget(parent), console_(console), host_(host),
      sales_(console.database(), console.clock(), console.prompts()) {
    setObjectName(QStringLiteral("ASlsSrv"));
    setWindowTitle(QStringLiteral("Active  Sales / Services Viewer"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* layout = new QVBoxLayout(this);
    lblToday_ = new QLabel(this);
    lblToday_->setObjectName(QStringLiteral("lblToday"));
    QFont heading = lblToday_->font();
    heading.setPointSizeF(heading.pointSizeF() * 1.3);
    heading.setBold(true);
    lblToday_->setFont(heading);
    layout->addWidget(lblToday_);

    auto* rentals = new QGroupBox(QStringLiteral("Rentals / Gaming"), this);
    rentals->setObjectName(QStringLiteral("fraRentals"));
    auto* rentalsLayout = new QVBoxLayout(rentals);
    dbGrid1_ = buildGrid(sales_.rentals(), "DBGrid1", QStringLiteral("Today's rentals"));
    rentalsLayout->addWidget(dbGrid1_);
    txtRG_ = totalBox(rentals, "txtRG");
    auto* rentalsTotal = new QHBoxLayout;
    auto* rgLabel = new QLabel(QStringLiteral("Total (Php)"), rentals);
    rgLabel->setBuddy(txtRG_);
    rentalsTotal->addStretch(1);
    rentalsTotal->addWidget(rgLabel);
    rentalsTotal->addWidget(txtRG_);
    rentalsLayout->addLayout(rentalsTotal);

    auto* services = new QGroupBox(QStringLiteral("Services"), this);
    services->setObjectName(QStringLiteral("fraServices"));
    auto* servicesLayout = new QVBoxLayout(services);
    dbGrid2_ = buildGrid(sales_.services(), "DBGrid2", QStringLiteral("Today's service sales"));
    servicesLayout->addWidget(dbGrid2_);
    txtSrv_ = totalBox(services, "txtSrv");
    auto* servicesTotal = new QHBoxLayout;
    auto* addsrv = button(services, "Addsrv", QStringLiteral("&Sell a Service..."));
    auto* srvLabel = new QLabel(QStringLiteral("Total (Php)"), services);
    srvLabel->setBuddy(txtSrv_);
    servicesTotal->addWidget(addsrv);
    servicesTotal->addStretch(1);
    servicesTotal->addWidget(srvLabel);
    servicesTotal->addWidget(txtSrv_);
    servicesLayout->addLayout(servicesTotal);

    auto* grids = new QHBoxLayout;
    grids->addWidget(rentals, 1);
    grids->addWidget(services, 1);
    layout->addLayout(grids, 1);

    auto* buttons = new QHBoxLayout;
    auto* cmdPRG = button(this, "cmdPRG", QStringLiteral("Print &Rentals / Gaming"));
    auto* cmdPSRV = button(this, "cmdPSRV", QStringLiteral("Print Ser&vices"));
    auto* cmdPSum = button(this, "cmdPSum", QStringLiteral("Print Overall Summary"));
    auto* cmdclose = button(this, "cmdclose", QStringLiteral("&Close"));
    for (QPushButton* b : {cmdPRG, cmdPSRV, cmdPSum})
        buttons->addWidget(b);
    buttons->addStretch(1);
    buttons->addWidget(cmdclose);
    layout->addLayout(buttons);

    // A sale typed in by mistake is taken back here, by an administrator only.
    auto* deleteSale = new QAction(QStringLiteral("&Delete this sale"), dbGrid2_);
    deleteSale->setObjectName(QStringLiteral("mnuDelSale"));
    deleteSale->setShortcut(QKeySequence::Delete);
    deleteSale->setShortcutContext(Qt::WidgetShortcut);
    dbGrid2_->addAction(deleteSale);
    dbGrid2_->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(deleteSale, &QAction::triggered, this, &TodaysSalesWindow::deleteSaleChosen);

    connect(addsrv, &QPushButton::clicked, this, &TodaysSalesWindow::addServiceClicked);
    const std::pair<QPushButton*, ReportKind> prints[] = {{cmdPRG, ReportKind::Rentals},
                                                          {cmdPSRV, ReportKind::Services},
                                                          {cmdPSum, ReportKind::Summary}};
    for (const auto& print : prints)
        connect(print.first, &QPushButton::clicked, this, [this, kind = print.second] {
            openReport(console_, host_, sales_.printRequest(kind));
        });
    connect(cmdclose, &QPushButton::clicked, this, &TodaysSalesWindow::closeWindow);
    for (TakingsModel* model : {&sales_.rentals(), &sales_.services()})
        connect(
            model, &TakingsModel::readFailed, this,
            [this](const QString& why) {
                console_.prompts().notice(QStringLiteral("Some of today's rows could not be "
                                                         "read: ") +
                                              why,
                                          windowTitle(), Prompts::Icon::Critical);
            },
            Qt::QueuedConnection); // raised while the grid paints

    timer1_ = new QTimer(this);
    timer1_->setObjectName(QStringLiteral("Timer1"));
    timer1_->setInterval(TickMs);
    connect(timer1_, &QTimer::timeout, this, &TodaysSalesWindow::tick);

    tick();
    timer1_->start();
    makeAccessible(this);
}

QSize TodaysSalesWindow::sizeHint() const {
    return {1100, 540};
}

QTableView* TodaysSalesWindow::buildGrid(TakingsModel& model, const char* name,
                                         const QString& spoken) {
    auto* grid = new QTableView(this);
    grid->setObjectName(QString::fromLatin1(name));
    grid->setAccessibleName(spoken);
    grid->setModel(&model);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setAlternatingRowColors(true);
    grid->setWordWrap(false);
    grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 6);
    grid->verticalHeader()->hide();
    // The columns past the first three: as wide as an amount, so both grids fit side by side.
    grid->horizontalHeader()->setDefaultSectionSize(
        grid->fontMetrics().horizontalAdvance(QStringLiteral("00,000.00")) + 14);
    grid->horizontalHeader()->setStretchLastSection(true);
    // A heading wider than its column (ORNumber at 1000 twips) is cut at its end, not both.
    grid->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    return grid;
}

void TodaysSalesWindow::setColumnWidths() {
    for (int i = 0; i < 3; ++i) {
        dbGrid1_->setColumnWidth(i, qRound(double(RentalsTwips[i]) / TwipsPerPixel));
        dbGrid2_->setColumnWidth(i, qRound(double(ServicesTwips[i]) / TwipsPerPixel));
    }
}

void TodaysSalesWindow::showLastRows() {
    for (QTableView* grid : {dbGrid1_, dbGrid2_}) {
        const int rows = grid->model()->rowCount();
        if (rows > 0) {
            grid->setCurrentIndex(grid->model()->index(rows - 1, 0));
            grid->scrollToBottom();
        }
    }
}

void TodaysSalesWindow::tick() {
    const bool changed = sales_.refresh();
    lblToday_->setText(QStringLiteral("Today, ") +
                       formatDate(console_.clock().today(), QStringLiteral("DDDD, MMMM DD YYYY")));
    txtRG_->setText(sales_.rentalsTotal());
    txtSrv_->setText(sales_.servicesTotal());
    if (changed) {
        // A grid read afresh forgets its columns.
        setColumnWidths();
        showLastRows();
    }
}

void TodaysSalesWindow::addServiceClicked() {
    auto* dialog = new ServiceSaleDialog(console_);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &ServiceSaleDialog::saved, this, &TodaysSalesWindow::tick);
    host_.showForm(dialog, true);
}

void TodaysSalesWindow::deleteSaleChosen() {
    if (sales_.deleteServiceSale(console_.currentOperator(), dbGrid2_->currentIndex().row()))
        tick();
}

void TodaysSalesWindow::closeWindow() {
    if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
        sub->close();
    else
        close();
}

void openTodaysSales(Console& console, FormHost& host) {
    for (QWidget* w : QApplication::allWidgets())
        if (auto* open = qobject_cast<TodaysSalesWindow*>(w);
            open && &open->console() == &console) {
            host.showForm(open, false);
            return;
        }
    host.showForm(new TodaysSalesWindow(console, host), false);
}
