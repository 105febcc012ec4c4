#include "people/log_in_dialog.h"

#include "base/form_host.h"
#include "console/console.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QFocusEvent>
#include <QLineEdit>
#include <QPushButton>

namespace {

LogIn::Mode logicMode(LogInDialog::Mode mode) {
    return mode == LogInDialog::Mode::Start ? LogIn::Mode::Start : LogIn::Mode::Switch;
}

// Leaving the box means the operator moved on inside this window; a message box or
// another window taking the focus is not leaving it.
bool leftWithinWindow(Qt::FocusReason reason) {
    switch (reason) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::MouseFocusReason:
    case Qt::ShortcutFocusReason:
    case Qt::OtherFocusReason:
        return true;
    default:
        return false;
    }
}

} // namespace

LogInDialog::LogInDialog(Console& console, Mode mode, QWidget* parent)
    : QDialog(parent), console_(console), mode_(mode),
      logIn_(console.database(), console.prompts(), console.currentOperator(), logicMode(mode)) {
    const bool start = mode_ == Mode::Start;
    setObjectName(start ? QStringLiteral("frmLog") : QStringLiteral("frmLog2"));
    setWindowTitle(start ? QStringLiteral("Tarvo QRB - Operator Log-In")
                         : QStringLiteral("Switch Log"));
    setMinimumWidth(360);

    txtuser_ = new QLineEdit(this);
    txtuser_->setObjectName(QStringLiteral("txtuser"));
    txtuser_->installEventFilter(this);
    txtpass_ = new QLineEdit(this);
    txtpass_->setObjectName(QStringLiteral("txtpass"));
    txtpass_->setEchoMode(QLineEdit::Password);

    const DialogFrame frame = frameDialog(
        *this, QStringLiteral("Tarvo QRB"),
        start ? QStringLiteral("Log in to work the console.")
              : QStringLiteral("Log in as the operator who takes over the console."),
        {{QStringLiteral("&User name"), txtuser_}, {QStringLiteral("&Password"), txtpass_}},
        {{"cmdok", QStringLiteral("OK"), QDialogButtonBox::AcceptRole},
         {"cmdcancel", QStringLiteral("Cancel"), QDialogButtonBox::RejectRole}},
        EnterKey::FieldsOnly);
    // The buttons never take the focus, so clicking them does not count as leaving the
    // name box.
    QPushButton* cmdok = frame.button("cmdok");
    QPushButton* cmdcancel = frame.button("cmdcancel");
    for (QPushButton* b : {cmdok, cmdcancel})
        b->setFocusPolicy(Qt::NoFocus);

    connect(txtuser_, &QLineEdit::returnPressed, this, &LogInDialog::nameEntered);
    connect(txtpass_, &QLineEdit::returnPressed, this, &LogInDialog::passwordEntered);
    connect(cmdok, &QPushButton::clicked, this, &LogInDialog::okClicked);
    connect(cmdcancel, &QPushButton::clicked, this, &QDialog::reject);
    makeAccessible(this);
    txtuser_->setFocus();
}

bool LogInDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == txtuser_ && event->type() == QEvent::FocusOut && !movingFocus_ && !finished_ &&
        leftWithinWindow(static_cast<QFocusEvent*>(event)->reason()))
        nameLeft();
    return QDialog::eventFilter(watched, event);
}

void LogInDialog::nameEntered() {
    switch (logIn_.nameStep(txtuser_->text())) {
    case LogIn::NameOutcome::Found:
        txtuser_->setText(txtuser_->text().toUpper());
        movingFocus_ = true;
        txtpass_->setFocus(Qt::OtherFocusReason);
        movingFocus_ = false;
        break;
    case LogIn::NameOutcome::NotFound:
        txtuser_->clear();
        break;
    case LogIn::NameOutcome::Failed:
        break;
    }
}

void LogInDialog::nameLeft() {
    txtuser_->setText(txtuser_->text().toUpper());
    // Only the start-up log-in looks the name up on leaving; the switch waits for Enter.
    if (mode_ == Mode::Start)
        nameEntered();
}

void LogInDialog::passwordEntered() {
    switch (logIn_.passwordStep(txtpass_->text())) {
    case LogIn::PasswordOutcome::Correct:
        break;
    case LogIn::PasswordOutcome::Incomplete:
        return;
    case LogIn::PasswordOutcome::Wrong:
        if (mode_ == Mode::Start)
            txtpass_->clear();
        return;
    }

    finished_ = true;
    accept();
    if (mode_ == Mode::Start)
        return;
    const CurrentOperator& op = console_.currentOperator();
    Q_EMIT switched(switchCaption(op.name, op.type));
    showConsoleBox(console_.prompts(), QStringLiteral("Message"), QStringLiteral("Switch Log"),
                   QStringLiteral("Change Log ") + op.name + QStringLiteral(" Done"));
}

void LogInDialog::okClicked() {
    // The buttons never hold the focus: the box last in focus is the one to act on.
    if (focusWidget() == txtpass_)
        passwordEntered();
    else
        nameEntered();
}

void openSwitchLog(Console& console, FormHost& host, QWidget* frame) {
    auto* dialog = new LogInDialog(console, LogInDialog::Mode::Switch, frame);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &LogInDialog::switched, frame,
                     [frame](const QString& caption) { frame->setWindowTitle(caption); });
    host.showForm(dialog, true);
}
