#include "sales/service_sale_dialog.h"

#include "base/format.h"
#include "console/console.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

namespace {

QLineEdit* box(QWidget* parent, const char* name, const QString& text, int maxLength) {
    auto* edit = new QLineEdit(text, parent);
    edit->setObjectName(QString::fromLatin1(name));
    edit->setMaxLength(maxLength);
    return edit;
}

} // namespace

ServiceSaleDialog::ServiceSaleDialog(Console& console, QWidget* parent)
    : QDialog(parent), console_(console), sale_(console.rates().services()) {
    setObjectName(QStringLiteral("NewSrv"));
    setWindowTitle(QStringLiteral("Service Sale"));
    setMinimumWidth(440);

    auto* lbldate = new QLabel(QStringLiteral("DATE: ") + formatDate(console.clock().today(),
                                                                     QStringLiteral("MM/DD/YYYY")),
                               this);
    lbldate->setObjectName(QStringLiteral("lbldate"));

    cmbSrvc_ = new QComboBox(this);
    cmbSrvc_->setObjectName(QStringLiteral("cmbSrvc"));
    lstsrv_ = new QTreeWidget(this);
    lstsrv_->setObjectName(QStringLiteral("lstsrv"));
    lstsrv_->setAccessibleName(QStringLiteral("Services and prices"));
    lstsrv_->setColumnCount(2);
    lstsrv_->setHeaderLabels({QStringLiteral("Description"), QStringLiteral("Price")});
    lstsrv_->setRootIsDecorated(false);
    lstsrv_->setUniformRowHeights(true);
    lstsrv_->header()->setStretchLastSection(false);
    lstsrv_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    lstsrv_->setMinimumHeight(140);
    for (const Service& service : sale_.catalogue()) {
        cmbSrvc_->addItem(service.description);
        auto* item = new QTreeWidgetItem(
            lstsrv_,
            {service.description, formatNumber(service.amount, QStringLiteral("##,##0.#0"))});
        item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    }

    txtor_ = box(this, "txtor", QString(), 12);
    txtamnt_ = box(this, "txtamnt", QString(), 16);
    txtamnt_->setAlignment(Qt::AlignRight);
    txtQty_ = box(this, "txtQty", sale_.fields().quantity, 9);
    txtQty_->setAlignment(Qt::AlignRight);
    txttamnt_ = box(this, "txttamnt", QString(), 32);
    txttamnt_->setReadOnly(true);
    txttamnt_->setAlignment(Qt::AlignRight);
    QFont total = txttamnt_->font();
    total.setPointSizeF(total.pointSizeF() * 1.6);
    total.setBold(true);
    txttamnt_->setFont(total);

    const DialogFrame frame =
        frameDialog(*this, QStringLiteral("Sell a service"),
                    QStringLiteral("Choose the service, type the receipt number and the "
                                   "quantity, then save."),
                    {{{}, lbldate},
                     {QStringLiteral("S&ervice"), cmbSrvc_},
                     {QStringLiteral("Catalogue"), lstsrv_},
                     {QStringLiteral("&Receipt (OR) no."), txtor_},
                     {QStringLiteral("&Price (Php)"), txtamnt_},
                     {QStringLiteral("&Quantity"), txtQty_},
                     {QStringLiteral("Total (Php)"), txttamnt_}},
                    {{"cmdsave", QStringLiteral("&Save"), QDialogButtonBox::AcceptRole},
                     {"cmdclose", QStringLiteral("&Close"), QDialogButtonBox::RejectRole}});

    // Choosing again, even the same service, works the total out from its price afresh.
    connect(cmbSrvc_, &QComboBox::activated, this, &ServiceSaleDialog::chosen);
    connect(cmbSrvc_, &QComboBox::currentIndexChanged, this, &ServiceSaleDialog::chosen);
    connect(lstsrv_, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        const int index = lstsrv_->indexOfTopLevelItem(item);
        cmbSrvc_->setCurrentIndex(index);
        chosen(index);
    });
    connect(txtor_, &QLineEdit::textChanged, this,
            [this](const QString& text) { sale_.receiptEdited(text); });
    connect(txtamnt_, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (showing_)
            return;
        sale_.priceEdited(text);
        showFields();
    });
    connect(txtQty_, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (showing_)
            return;
        sale_.quantityEdited(text);
        showFields();
    });
    connect(frame.button("cmdsave"), &QPushButton::clicked, this, &ServiceSaleDialog::save);
    connect(frame.button("cmdclose"), &QPushButton::clicked, this, &QDialog::reject);

    cmbSrvc_->setCurrentIndex(0);
    chosen(0);
    txtor_->setFocus();
    makeAccessible(this);
}

void ServiceSaleDialog::chosen(int index) {
    sale_.choose(index);
    if (index >= 0 && index < lstsrv_->topLevelItemCount())
        lstsrv_->setCurrentItem(lstsrv_->topLevelItem(index));
    showFields();
}

void ServiceSaleDialog::showFields() {
    showing_ = true;
    const ServiceSale::Fields& f = sale_.fields();
    if (txtamnt_->text() != f.price)
        txtamnt_->setText(f.price);
    if (txtQty_->text() != f.quantity)
        txtQty_->setText(f.quantity);
    txttamnt_->setText(f.total);
    showing_ = false;
}

void ServiceSaleDialog::save() {
    if (saveServiceSale(console_.database(), console_.prompts(),
                        sale_.row(console_.clock().today()), [this] { Q_EMIT saved(); }))
        accept();
}
