#include "people/log_on_dialog.h"

#include "base/form_host.h"
#include "base/format.h"
#include "console/console.h"
#include "people/log_on.h"
#include "people/member_search_dialog.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"
#include "ui/pictures.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

namespace {

// The property a modal window carries while a terminal's request waits for it to close.
constexpr auto WaitingPc = "tarvoLogOnWaiting";

class LogOnDialog final : public QDialog {
public:
    LogOnDialog(Console& console, FormHost& host, const LogOnRequest& request)
        : console_(console), host_(host) {
        setObjectName(QStringLiteral("logmem"));
        setWindowTitle(QStringLiteral("Terminal Log-On"));

        cmbNum_ = new QComboBox(this);
        cmbNum_->setObjectName(QStringLiteral("cmbNum"));
        cmbNum_->setEditable(true);
        cmbNum_->setInsertPolicy(QComboBox::NoInsert);
        for (int pc = 1; pc <= console.terminals().count(); ++pc)
            cmbNum_->addItem(QString::number(pc));
        cmbNum_->setCurrentIndex(-1);
        cmbNum_->setEditText(QString());
        if (console.terminals().contains(request.pc))
            cmbNum_->setCurrentIndex(request.pc - 1);
        cmbNum_->setMinimumContentsLength(4);
        cmbNum_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed); // a number, not a line

        txtid_ = new QLineEdit(this);
        txtid_->setObjectName(QStringLiteral("txtid"));
        txtName_ = new QLineEdit(this);
        txtName_->setObjectName(QStringLiteral("txtName"));
        txtName_->setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1Char('x')) * 36);

        auto* lbldate = new QLabel(this);
        lbldate->setObjectName(QStringLiteral("lbldate"));
        lbldate->setText(QStringLiteral("Log Date Checked : ") +
                         formatDate(console.clock().today(), QStringLiteral("MM/DD/YYYY")));

        const DialogFrame frame = frameDialog(
            *this, QStringLiteral("Put a customer on a terminal"),
            QStringLiteral("Pick the terminal, then find the member, or leave the walk-in "
                           "customer as it is."),
            {{QStringLiteral("&Terminal"), cmbNum_},
             {QStringLiteral("Customer &ID"), withSearch(txtid_, "imgID", "Find the member by ID")},
             {QStringLiteral("Customer &name"),
              withSearch(txtName_, "imgName", "Find the member by name")},
             {{}, lbldate}},
            {{"cmdLogM", QStringLiteral("&Log On"), QDialogButtonBox::AcceptRole},
             {"cmdCancel", QStringLiteral("Cancel"), QDialogButtonBox::RejectRole}});
        // The search buttons sit beside the fields, so the label's access key goes to the
        // field, and the field is named after the label: a reader looks for a field's
        // label beside it, and finds the search button there instead.
        for (QLineEdit* field : {txtid_, txtName_})
            if (auto* label =
                    qobject_cast<QLabel*>(frame.form->labelForField(field->parentWidget()))) {
                label->setBuddy(field);
                field->setAccessibleName(spokenCaption(label->text()));
            }

        const LogOnCustomer customer =
            customerAtOpening({request.id, request.name}, cmbNum_->currentText());
        fill(customer);

        connect(cmbNum_, &QComboBox::textActivated, this,
                [this](const QString& number) { fill(customerOnPick(shown(), number)); });
        connect(cmbNum_->lineEdit(), &QLineEdit::textEdited, this,
                [this](const QString& text) { fill(customerOnTyping(shown(), text)); });
        connect(frame.button("cmdLogM"), &QPushButton::clicked, this, &LogOnDialog::logOn);
        connect(frame.button("cmdCancel"), &QPushButton::clicked, this, &QDialog::reject);
        makeAccessible(this);
        cmbNum_->setFocus();
    }

    const Console& console() const { return console_; }

private:
    QWidget* withSearch(QLineEdit* field, const char* name, const char* what) {
        auto* row = new QWidget(this);
        auto* layout = new QHBoxLayout(row);
        layout->setContentsMargins(0, 0, 0, 0);
        auto* search = new QToolButton(row);
        search->setObjectName(QString::fromLatin1(name));
        search->setIcon(Pictures::commandIcon(QStringLiteral("members")));
        search->setToolTip(QString::fromLatin1(what));
        search->setAccessibleName(QString::fromLatin1(what));
        search->setAutoRaise(true);
        layout->addWidget(field, 1);
        layout->addWidget(search);
        connect(search, &QToolButton::clicked, this, &LogOnDialog::findMember);
        return row;
    }

    LogOnCustomer shown() const { return {txtid_->text(), txtName_->text()}; }
    void fill(const LogOnCustomer& customer) {
        txtid_->setText(customer.id);
        txtName_->setText(customer.name);
    }

    void findMember() {
        QPointer<LogOnDialog> self = this;
        openMemberSearch(console_, host_, [self](const QString& id, const QString& name) {
            if (self)
                self->fill({id, name});
        });
    }

    void logOn() {
        if (logOnFromDialog(console_.sessionParts(), cmbNum_->currentText(), shown()) ==
            LogOnOutcome::Close)
            accept();
    }

    Console& console_;
    FormHost& host_;
    QComboBox* cmbNum_ = nullptr;
    QLineEdit* txtid_ = nullptr;
    QLineEdit* txtName_ = nullptr;
};

LogOnDialog* openDialog(const Console& console) {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* d = dynamic_cast<LogOnDialog*>(w);
            d && d->isVisible() && &d->console() == &console)
            return d;
    return nullptr;
}

} // namespace

void openLogOnDialog(Console& console, FormHost& host, const LogOnRequest& request) {
    if (LogOnDialog* open = openDialog(console)) {
        open->raise();
        open->activateWindow();
        return;
    }
    auto* dialog = new LogOnDialog(console, host, request);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(dialog, true);
}

void openLogOnDialogForTerminal(Console& console, FormHost& host, int pc) {
    // A connection that never said which PC it is has no terminal here to log on.
    if (!console.terminals().contains(pc) || openDialog(console))
        return;
    auto* busy = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (!busy) {
        openLogOnDialog(console, host, {pc, {}, {}});
        return;
    }
    // Taking the keyboard from a window the operator is answering would send their
    // keys to the wrong place: the request waits, and only the latest one is kept.
    const bool waiting = busy->property(WaitingPc).isValid();
    busy->setProperty(WaitingPc, pc);
    if (waiting)
        return;
    QObject::connect(
        busy, &QDialog::finished, &console,
        [&console, &host, busy] {
            const int latest = busy->property(WaitingPc).toInt();
            busy->setProperty(WaitingPc, QVariant());
            QTimer::singleShot(0, &console, [&console, &host, latest] {
                openLogOnDialogForTerminal(console, host, latest);
            });
        },
        Qt::SingleShotConnection);
}
