#include "billing/bill_dialog.h"

#include "billing/statement.h"
#include "ui/statement_printer.h"

#include "base/form_host.h"
#include "billing/charge.h"
#include "console/console.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

QFont scaled(QFont font, qreal factor) {
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(true);
    return font;
}

// A field of the bill, shown as it stands; only the receipt number and a "Fix" discount
// take the operator's keys.
QLineEdit* field(QWidget* parent, const char* name, const QString& text, bool amount = false) {
    auto* edit = new QLineEdit(text, parent);
    edit->setObjectName(QString::fromLatin1(name));
    edit->setReadOnly(true);
    edit->setCursorPosition(0);
    if (amount)
        edit->setAlignment(Qt::AlignRight);
    return edit;
}

QGroupBox* group(QWidget* parent, const char* name, const QString& title,
                 const std::vector<std::pair<QString, QWidget*>>& rows) {
    auto* box = new QGroupBox(title, parent);
    box->setObjectName(QString::fromLatin1(name));
    auto* form = new QFormLayout(box);
    for (const auto& [label, widget] : rows)
        form->addRow(label, widget);
    return box;
}

} // namespace

BillDialog::BillDialog(Console& console, BillFields bill, QWidget* parent)
    : QDialog(parent), console_(console), bill_(std::move(bill)) {
    setObjectName(QStringLiteral("frmBill"));
    setWindowTitle(QStringLiteral("Billing of PC ") + QString::number(bill_.pc));
    // What can be typed stands out from what is only shown.
    setStyleSheet(QStringLiteral("QLineEdit[readOnly=\"true\"] { background: palette(window); }"
                                 "QLineEdit#txtAmountDue { background: #f3e5f5; color: #4a148c; "
                                 "border: 2px solid #6a1b9a; border-radius: 4px; }"
                                 "QComboBox#cmbdisc:disabled, QLineEdit#txtdisc:disabled "
                                 "{ color: palette(text); }"));

    const DialogFrame frame = frameDialog(
        *this, QString(), QString(), {{{}, buildFields()}},
        {{"cmdsave", QStringLiteral("&Save"), QDialogButtonBox::AcceptRole},
         {"cmdJprint", QStringLiteral("&Print statement"), QDialogButtonBox::ActionRole},
         {"cmdclose", QStringLiteral("&Close"), QDialogButtonBox::RejectRole}});
    connect(frame.button("cmdsave"), &QPushButton::clicked, this, &BillDialog::save);
    connect(frame.button("cmdJprint"), &QPushButton::clicked, this,
            [this] { printBill(console_, bill_); });
    connect(frame.button("cmdclose"), &QPushButton::clicked, this, &BillDialog::reject);
    makeAccessible(this);
}

QWidget* BillDialog::buildFields() {
    auto* fields = new QWidget(this);
    auto* grid = new QGridLayout(fields);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(12);

    // Which PC, which day, which receipt.
    auto* top = new QHBoxLayout;
    auto* pcCaption = new QLabel(QStringLiteral("Bill of PC"), fields);
    pcCaption->setFont(scaled(font(), 1.4));
    auto* lblpcno = new QLabel(QString::number(bill_.pc), fields);
    lblpcno->setObjectName(QStringLiteral("lblpcno"));
    lblpcno->setAccessibleName(QStringLiteral("PC number"));
    lblpcno->setFont(scaled(font(), 1.8));
    QLineEdit* txtbldate = field(fields, "txtbldate", bill_.date);
    auto* txtor = new QLineEdit(bill_.receipt, fields);
    txtor->setObjectName(QStringLiteral("txtor"));
    txtor->setMaxLength(12);
    auto* dateLabel = new QLabel(QStringLiteral("Date"), fields);
    dateLabel->setBuddy(txtbldate);
    auto* orLabel = new QLabel(QStringLiteral("&Receipt (OR) no."), fields);
    orLabel->setBuddy(txtor);
    top->addWidget(pcCaption);
    top->addSpacing(6);
    top->addWidget(lblpcno);
    top->addStretch(1);
    top->addWidget(dateLabel);
    top->addSpacing(4);
    top->addWidget(txtbldate);
    top->addSpacing(12);
    top->addWidget(orLabel);
    top->addSpacing(4);
    top->addWidget(txtor);
    grid->addLayout(top, 0, 0, 1, 2);

    QGroupBox* customer =
        group(fields, "fraCustomer", QStringLiteral("Customer"),
              {{QStringLiteral("ID"), field(fields, "txtCid", bill_.customerId)},
               {QStringLiteral("Name"), field(fields, "txtCname", bill_.customerName)},
               {QStringLiteral("Address"), field(fields, "txtAddress", bill_.address)}});
    QGroupBox* time =
        group(fields, "fraTime", QStringLiteral("Time"),
              {{QStringLiteral("Time in"), field(fields, "txttstart", bill_.timeIn)},
               {QStringLiteral("Time out"), field(fields, "txttend", bill_.timeOut)},
               {QStringLiteral("Consumed"), field(fields, "txtconsumed", bill_.consumed)},
               {QStringLiteral("Hours"), field(fields, "txthours", bill_.hours, true)},
               {QStringLiteral("Rate per hour"), field(fields, "txtrate", bill_.rate, true)}});

    txtdisc_ = field(fields, "txtdisc", bill_.discount, true);
    txtdisc_->setReadOnly(false);
    txtdisc_->setEnabled(bill_.discountEditable);
    txtdisc_->installEventFilter(this);
    auto* cmbdisc = new QComboBox(fields);
    cmbdisc->setObjectName(QStringLiteral("cmbdisc"));
    cmbdisc->setAccessibleName(QStringLiteral("Discount type"));
    cmbdisc->addItems({QStringLiteral("Per Hour"), QStringLiteral("Fix"), QStringLiteral("None")});
    if (cmbdisc->findText(bill_.discountType) < 0)
        cmbdisc->addItem(bill_.discountType);
    cmbdisc->setCurrentText(bill_.discountType);
    cmbdisc->setEnabled(false); // the promo in force, chosen in the settings
    auto* discountRow = new QHBoxLayout;
    discountRow->addWidget(txtdisc_, 1);
    discountRow->addWidget(cmbdisc);

    txtAmountDue_ = field(fields, "txtAmountDue", bill_.amountDue, true);
    txtAmountDue_->setFont(scaled(font(), 2.0));
    txtAmountDue_->setMinimumWidth(
        txtAmountDue_->fontMetrics().horizontalAdvance(QStringLiteral("999,999.99")) + 24);
    auto* dueLabel = new QLabel(QStringLiteral("Amount &due (Php)"), fields);
    dueLabel->setFont(scaled(font(), 1.2));
    dueLabel->setBuddy(txtAmountDue_);

    auto* charges = new QGroupBox(QStringLiteral("Charges"), fields);
    charges->setObjectName(QStringLiteral("fraCharges"));
    auto* form = new QFormLayout(charges);
    form->addRow(QStringLiteral("Rentals/&Gaming"),
                 field(fields, "txtTotalRentG", bill_.rentals, true));
    form->addRow(QStringLiteral("&Other charges"),
                 field(fields, "txtTotalOC", bill_.otherCharges, true));
    auto* discLabel = new QLabel(QStringLiteral("Dis&count"), charges);
    discLabel->setBuddy(txtdisc_);
    form->addRow(discLabel, discountRow);
    form->addItem(new QSpacerItem(0, 12));
    form->addRow(dueLabel);
    form->addRow(txtAmountDue_);

    auto* chkPrint = new QCheckBox(QStringLiteral("Print the statement on sa&ving"), fields);
    chkPrint->setObjectName(QStringLiteral("chkPrint"));
    chkPrint->setChecked(bill_.print);

    // Room for a whole address.
    customer->setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1Char('x')) * 44);
    grid->addWidget(customer, 1, 0);
    grid->addWidget(time, 2, 0);
    grid->addWidget(charges, 1, 1, 2, 1);
    grid->addWidget(chkPrint, 3, 1);

    txtor->setFocus();
    txtor->selectAll();
    connect(txtor, &QLineEdit::textChanged, this,
            [this](const QString& text) { bill_.receipt = text; });
    connect(txtdisc_, &QLineEdit::textChanged, this, [this](const QString& text) {
        bill_.discount = text;
        discountEdited(bill_);
        txtAmountDue_->setText(bill_.amountDue);
    });
    connect(chkPrint, &QCheckBox::toggled, this, [this](bool on) { bill_.print = on; });
    return fields;
}

bool BillDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched != txtdisc_ || event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Backspace)
        return false;
    // Only typed characters are filtered: moving, deleting and shortcuts work as anywhere.
    const QString typed = key->text();
    if (typed.isEmpty() || !typed.at(0).isPrint() ||
        (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
        return false;
    return !discountKeyAccepted(txtdisc_->text(), typed.at(0), false);
}

void BillDialog::save() {
    if (settled_ || saveBill(console_.billingParts(), bill_) != SaveOutcome::Saved)
        return;
    settled_ = true;
    Console& console = console_;
    const BillFields bill = bill_;
    accept();
    if (bill.print)
        printBill(console, bill);
}

void BillDialog::reject() {
    if (!settled_)
        closeBill(console_.billingParts(), bill_);
    settled_ = true;
    QDialog::reject();
}

void openBill(Console& console, FormHost& host, int pc, int tile) {
    std::optional<BillFields> bill = stopSession(console.billingParts(), pc, tile);
    if (!bill)
        return;
    auto* dialog = new BillDialog(console, std::move(*bill));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(dialog, true);
}

void openBillFromList(Console& console, FormHost& host, int pc) {
    openBill(console, host, pc, TimeLimitSlots::slotOfPc(pc));
}

void printBill(Console& console, const BillFields& bill) {
    const QDateTime now = console.clock().now();
    printStatement(statementLines(bill, now, console.rates().ratePerHour()), bill.pc, now,
                   console.folder(), console.prompts());
}
