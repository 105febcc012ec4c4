#include "billing/rates_window.h"

#include "base/form_host.h"
#include "billing/promo_list_window.h"
#include "console/console.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"
#include "ui/record_grid.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

namespace {

// The description column as wide as the operators have always had it: 3000 twips.
constexpr int DescriptionTwips = 3000;
constexpr int TwipsPerInch = 1440;

QLineEdit* shownOnly(QWidget* parent, const char* name) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setReadOnly(true);
    return box;
}

} // namespace

RatesWindow::RatesWindow(Console& console, FormHost& host, QWidget* parent)
    : QDialog(parent), console_(console), host_(host),
      settings_(console.rates(), console.database(), console.prompts()),
      services_(RecordTable::Kind::Services, console.database(), console.prompts()) {
    setObjectName(QStringLiteral("RatesSrv"));
    setWindowTitle(QStringLiteral("Tarvo System Settings"));
    setMinimumSize(520, 560);

    const RatesInput now = settings_.current();
    txtrph_ = new QLineEdit(now.ratePerHour, this);
    txtrph_->setObjectName(QStringLiteral("txtrph"));
    txtmina_ = new QLineEdit(now.minimumAmount, this);
    txtmina_->setObjectName(QStringLiteral("txtmina"));
    cmbMtime_ = new QComboBox(this);
    cmbMtime_->setObjectName(QStringLiteral("cmbMtime"));
    cmbMtime_->setEditable(true);
    cmbMtime_->addItems(RatesSettings::minuteChoices());
    cmbMtime_->setCurrentText(now.minimumMinutes);
    cmdpromos_ = new QComboBox(this);
    cmdpromos_->setObjectName(QStringLiteral("cmdpromos"));
    cmdpromos_->addItems(settings_.promoNames());
    txtprange_ = shownOnly(this, "txtprange");
    txtptype_ = shownOnly(this, "txtptype");
    txtpamnt_ = shownOnly(this, "txtpamnt");

    services_.load();
    servicesGrid_ = makeRecordGrid(services_, this);
    servicesGrid_->setObjectName(QStringLiteral("grdServices"));
    servicesGrid_->setAccessibleName(QStringLiteral("Services"));
    servicesGrid_->horizontalHeader()->resizeSection(0, DescriptionTwips * logicalDpiX() /
                                                            TwipsPerInch);

    const DialogFrame frame = frameDialog(
        *this, QStringLiteral("Rates, services and promos"),
        QStringLiteral("Save / Apply puts the rate, the minimum and the chosen promo in force "
                       "and reads the services again. A new service is typed in the row "
                       "marked *."),
        {{QStringLiteral("Rate per &hour"), txtrph_},
         {QStringLiteral("&Minimum amount"), txtmina_},
         {QStringLiteral("Minimum mi&nutes"), cmbMtime_},
         {QStringLiteral("P&romo"), cmdpromos_},
         {QStringLiteral("Promo range"), txtprange_},
         {QStringLiteral("Promo type"), txtptype_},
         {QStringLiteral("Promo amount"), txtpamnt_},
         {QStringLiteral("&Services"), servicesGrid_}},
        {{"cmdApply", QStringLiteral("Save / Apply new Settings"), QDialogButtonBox::ApplyRole},
         {"cmddel", QStringLiteral("&Delete Service"), QDialogButtonBox::ActionRole},
         {"cmdplist", QStringLiteral("&Promo List"), QDialogButtonBox::ActionRole},
         {"cmdclose", QStringLiteral("&Close"), QDialogButtonBox::RejectRole}},
        EnterKey::FieldsOnly);

    connect(cmdpromos_, &QComboBox::currentIndexChanged, this, &RatesWindow::showPromo);
    cmdpromos_->setCurrentIndex(now.promo);
    showPromo(cmdpromos_->currentIndex());
    connect(frame.button("cmdApply"), &QPushButton::clicked, this, &RatesWindow::applyClicked);
    connect(frame.button("cmddel"), &QPushButton::clicked, this, &RatesWindow::deleteClicked);
    connect(frame.button("cmdplist"), &QPushButton::clicked, this,
            [this] { openPromoList(console_, host_); });
    connect(frame.button("cmdclose"), &QPushButton::clicked, this, &QDialog::reject);
    makeAccessible(this);
}

void RatesWindow::showPromo(int index) {
    const PromoFields fields = settings_.promoFields(index);
    txtpamnt_->setText(fields.amount);
    txtprange_->setText(fields.range);
    txtptype_->setText(fields.type);
}

void RatesWindow::applyClicked() {
    if (settings_.apply({txtrph_->text(), txtmina_->text(), cmbMtime_->currentText(),
                         cmdpromos_->currentIndex()}))
        services_.load(); // in the order the services list now has
}

void RatesWindow::deleteClicked() {
    services_.deleteRecord(servicesGrid_->currentIndex().row());
}

void openRatesSettings(Console& console, FormHost& host) {
    auto* window = new RatesWindow(console, host);
    window->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(window, true);
}
