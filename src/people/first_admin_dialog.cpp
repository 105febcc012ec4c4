#include "people/first_admin_dialog.h"

#include "console/console.h"
#include "people/log_in.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QLineEdit>
#include <QPushButton>

namespace {
const QString Title = QStringLiteral("First administrator");
} // namespace

FirstAdminDialog::FirstAdminDialog(Console& console, QWidget* parent)
    : QDialog(parent), console_(console) {
    setObjectName(QStringLiteral("frmFirstAdmin"));
    setWindowTitle(QStringLiteral("Tarvo QRB - ") + Title);
    setMinimumWidth(400);

    txtuser_ = new QLineEdit(this);
    txtuser_->setObjectName(QStringLiteral("txtuser"));
    txtuser_->setMaxLength(50);
    txtkey_ = new QLineEdit(this);
    txtkey_->setObjectName(QStringLiteral("txtkey"));
    txtkey_->setEchoMode(QLineEdit::Password);
    txtkey_->setMaxLength(50);
    txtconf_ = new QLineEdit(this);
    txtconf_->setObjectName(QStringLiteral("txtconf"));
    txtconf_->setEchoMode(QLineEdit::Password);
    txtconf_->setMaxLength(50);

    const DialogFrame frame = frameDialog(
        *this, QStringLiteral("No operator account exists yet."),
        QStringLiteral("Create the first administrator. This account logs in to the console "
                       "and adds the other operators. Passwords are checked without regard "
                       "to case."),
        {{QStringLiteral("&Name"), txtuser_},
         {QStringLiteral("&Password"), txtkey_},
         {QStringLiteral("&Again"), txtconf_}},
        {{"cmdsave", QStringLiteral("Create"), QDialogButtonBox::AcceptRole},
         {"cmdclose", QStringLiteral("Cancel"), QDialogButtonBox::RejectRole}},
        EnterKey::FieldsOnly);
    QPushButton* cmdsave = frame.button("cmdsave");
    QPushButton* cmdclose = frame.button("cmdclose");

    // Enter walks down the boxes and saves from the last one.
    connect(txtuser_, &QLineEdit::returnPressed, txtkey_, [this] { txtkey_->setFocus(); });
    connect(txtkey_, &QLineEdit::returnPressed, txtconf_, [this] { txtconf_->setFocus(); });
    connect(txtconf_, &QLineEdit::returnPressed, this, &FirstAdminDialog::save);
    connect(cmdsave, &QPushButton::clicked, this, &FirstAdminDialog::save);
    connect(cmdclose, &QPushButton::clicked, this, &QDialog::reject);
    makeAccessible(this);
    txtuser_->setFocus();
}

void FirstAdminDialog::save() {
    using Problem = FirstAdminOutcome::Problem;
    const FirstAdminOutcome outcome =
        createFirstAdmin(console_.database(), txtuser_->text(), txtkey_->text(), txtconf_->text());
    Prompts& prompts = console_.prompts();
    switch (outcome.problem) {
    case Problem::None:
        prompts.message(outcome.text, Title, Prompts::Icon::Information);
        accept();
        return;
    case Problem::EmptyName:
    case Problem::QuoteInName:
        prompts.message(outcome.text, Title, Prompts::Icon::Exclamation);
        txtuser_->setFocus();
        txtuser_->selectAll();
        return;
    case Problem::EmptyPassword:
    case Problem::SpacesAround:
    case Problem::Mismatch:
        prompts.message(outcome.text, Title, Prompts::Icon::Exclamation);
        txtkey_->clear();
        txtconf_->clear();
        txtkey_->setFocus();
        return;
    case Problem::AccountsExist:
        // Someone made an account meanwhile: nothing is left to create here.
        prompts.message(outcome.text, Title, Prompts::Icon::Information);
        accept();
        return;
    case Problem::StoreFailed:
        prompts.message(outcome.text, Title, Prompts::Icon::Critical);
        return;
    }
}

bool runFirstAdminDialog(Console& console, QWidget* parent) {
    FirstAdminDialog dialog(console, parent);
    return dialog.exec() == QDialog::Accepted;
}
