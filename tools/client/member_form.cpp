#include "member_form.h"

#include "client_widgets.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace ClientWidgets;

MemberForm::MemberForm(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmMemberLogIn"));
    title_ = label(QStringLiteral("lblMemberTitle"), tr("Member log-in"), this);
    id_ = named(new QLineEdit(this), QStringLiteral("txtMemberId"), tr("Member ID"));
    lastName_ = named(new QLineEdit(this), QStringLiteral("txtLastName"), tr("Last name"));
    firstName_ = named(new QLineEdit(this), QStringLiteral("txtFirstName"), tr("First name"));
    for (QLineEdit* field : {id_, lastName_, firstName_})
        field->setMaxLength(60);
    logIn_ = named(new QPushButton(tr("Log in"), this), QStringLiteral("cmdLogIn"), tr("Log in"));
    logIn_->setAutoDefault(true);
    result_ = label(QStringLiteral("lblLogInResult"), QString(), this);
    result_->setWordWrap(true);
    result_->setAccessibleName(tr("Log-in result"));

    auto* form = new QFormLayout;
    form->addRow(tr("Member ID"), id_);
    form->addRow(tr("Last name"), lastName_);
    form->addRow(tr("First name"), firstName_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0); // the panel around it has its own
    layout->addWidget(title_);
    layout->addLayout(form);
    layout->addWidget(logIn_);
    layout->addWidget(result_);
    layout->addStretch();

    connect(logIn_, &QPushButton::clicked, this, &MemberForm::submit);
    for (QLineEdit* field : {id_, lastName_, firstName_})
        connect(field, &QLineEdit::returnPressed, this, &MemberForm::submit);
}

MemberForm::Check MemberForm::payloadFor(const QString& id, const QString& lastName,
                                         const QString& firstName, int pc) {
    const QString i = id.trimmed(), last = lastName.trimmed(), first = firstName.trimmed();
    if (i.isEmpty() || last.isEmpty() || first.isEmpty())
        return {std::nullopt, tr("Please fill in your member ID, last name and first name.")};
    // The console cuts the payload at the first ":" and the first ";".
    for (const QString& field : {i, last, first})
        if (field.contains(QLatin1Char(':')) || field.contains(QLatin1Char(';')))
            return {std::nullopt, tr("A member ID or name cannot contain \":\" or \";\".")};
    // The register holds "LAST, FIRST"; the console compares in capitals.
    return {i + QLatin1Char(':') + last.toUpper() + QStringLiteral(", ") + first.toUpper() +
                QLatin1Char(';') + QString::number(pc),
            QString()};
}

void MemberForm::submit() {
    const Check check = payloadFor(id_->text(), lastName_->text(), firstName_->text(), pc_);
    if (!check.payload) {
        showResult(check.refusal);
        return;
    }
    showResult(tr("Checking…"), true);
    Q_EMIT logInRequested(*check.payload);
}

void MemberForm::showResult(const QString& text, bool good) {
    result_->setText(text);
    result_->setStyleSheet(QStringLiteral("color: %1;").arg(good ? Good : AlarmInk));
}

void MemberForm::clear() {
    for (QLineEdit* field : {id_, lastName_, firstName_})
        field->clear();
    result_->clear();
}

void MemberForm::setScale(int unit) {
    setPixelSize(title_, unit * 3 / 2, true);
    for (QWidget* w : std::initializer_list<QWidget*>{id_, lastName_, firstName_, logIn_})
        setPixelSize(w, unit);
    for (QLabel* l : findChildren<QLabel*>())
        if (l != title_ && l != result_)
            setPixelSize(l, unit);
    setPixelSize(result_, unit, true);
    for (QLineEdit* field : {id_, lastName_, firstName_})
        field->setMinimumWidth(unit * 8);
}
