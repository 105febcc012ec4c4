#include "people/users_window.h"

#include "base/form_host.h"
#include "console/console.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProxyStyle>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QWheelEvent>

namespace {

constexpr int TickMs = 100;
constexpr const char* MaskProperty = "maskCharacter";
constexpr const char* ReadOnlyProperty = "readOnly";

// Qt masks a password with its style's character; a box here masks with the character
// its mode gives it.
class MaskStyle final : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override {
        if (hint == SH_LineEdit_PasswordCharacter && widget) {
            const QChar mask = widget->property(MaskProperty).toChar();
            if (!mask.isNull())
                return mask.unicode();
        }
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

// A drop-down that can be read-only: it shows its value and takes the focus, but neither
// keys, wheel nor mouse change it.
class TypeBox final : public QComboBox {
public:
    using QComboBox::QComboBox;
    bool isReadOnly() const { return property(ReadOnlyProperty).toBool(); }
    void showPopup() override {
        if (!isReadOnly())
            QComboBox::showPopup();
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (isReadOnly())
            event->ignore(); // Enter and Esc still reach the window
        else
            QComboBox::keyPressEvent(event);
    }
    void wheelEvent(QWheelEvent* event) override {
        if (isReadOnly())
            event->ignore();
        else
            QComboBox::wheelEvent(event);
    }
};

void setReadOnly(QWidget* w, bool readOnly) {
    if (auto* box = qobject_cast<QLineEdit*>(w))
        box->setReadOnly(readOnly);
    else if (w->property(ReadOnlyProperty).toBool() != readOnly)
        w->setProperty(ReadOnlyProperty, readOnly);
    else
        return;
    // The style sheet tells read-only boxes apart by the property it just changed.
    w->style()->unpolish(w);
    w->style()->polish(w);
}

void setMask(QLineEdit* box, QChar mask) {
    if (box->property(MaskProperty).toChar() == mask)
        return;
    box->setProperty(MaskProperty, mask);
    box->setEchoMode(mask.isNull() ? QLineEdit::Normal : QLineEdit::Password);
    QEvent change(QEvent::StyleChange); // the box reads its mask character again
    QCoreApplication::sendEvent(box, &change);
}

void showState(QWidget* w, const ControlState& state) {
    w->setEnabled(state.enabled);
    w->setVisible(state.visible);
    if (qobject_cast<QLineEdit*>(w) || qobject_cast<QComboBox*>(w)) {
        if (w->property(ReadOnlyProperty).toBool() != state.readOnly)
            setReadOnly(w, state.readOnly);
    }
    if (auto* box = qobject_cast<QLineEdit*>(w))
        setMask(box, state.mask);
    if (auto* button = qobject_cast<QPushButton*>(w); button && !state.caption.isEmpty())
        button->setText(state.caption);
}

QLineEdit* lineBox(QWidget* parent, const char* name) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

} // namespace

UsersWindow::UsersWindow(Console& console, QWidget* parent)
    : QDialog(parent), accounts_(console.database(), console.prompts()) {
    setObjectName(QStringLiteral("frmUsers"));
    setWindowTitle(QStringLiteral("System User Maintenance"));
    setMinimumSize(640, 400);
    // What can be typed stands out from what is only shown.
    setStyleSheet(QStringLiteral("QLineEdit[readOnly=\"true\"] { background: palette(window); }"));

    dbusers_ = new QTableView(this);
    dbusers_->setObjectName(QStringLiteral("dbusers"));
    dbusers_->setAccessibleName(QStringLiteral("Accounts"));
    dbusers_->setModel(&accounts_.list());
    dbusers_->setSelectionBehavior(QAbstractItemView::SelectRows);
    dbusers_->setSelectionMode(QAbstractItemView::SingleSelection);
    dbusers_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    dbusers_->setAlternatingRowColors(true);
    dbusers_->setWordWrap(false);
    dbusers_->verticalHeader()->hide();
    dbusers_->verticalHeader()->setDefaultSectionSize(dbusers_->fontMetrics().height() + 8);
    // Names take the room; the type needs only its own width.
    dbusers_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    dbusers_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    dbusers_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    txtuser_ = lineBox(this, "txtuser");
    txtuser_->setAccessibleName(QStringLiteral("User name"));
    txtnuser_ = lineBox(this, "txtnuser");
    txtnuser_->setAccessibleName(QStringLiteral("New user name"));
    txtnuser_->setPlaceholderText(QStringLiteral("the new user's name, then Enter"));
    txtutype_ = new TypeBox(this);
    txtutype_->setObjectName(QStringLiteral("txtutype"));
    txtkey_ = lineBox(this, "txtkey");
    txtconf_ = lineBox(this, "txtconf");

    // The name box and the new-name box share a row: one of them shows at a time.
    auto* names = new QWidget(this);
    auto* namesLayout = new QHBoxLayout(names);
    namesLayout->setContentsMargins(0, 0, 0, 0);
    namesLayout->addWidget(txtuser_);
    namesLayout->addWidget(txtnuser_);

    auto* fields = new QWidget(this);
    auto* form = new QFormLayout(fields);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(QStringLiteral("User name"), names);
    form->addRow(QStringLiteral("&Type"), txtutype_);
    form->addRow(QStringLiteral("&Password"), txtkey_);
    form->addRow(QStringLiteral("C&onfirmation"), txtconf_);

    auto* body = new QWidget(this);
    body->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    auto* bodyLayout = new QHBoxLayout(body);
    bodyLayout->setContentsMargins(0, 0, 0, 0);
    bodyLayout->addWidget(dbusers_, 3);
    bodyLayout->addSpacing(12);
    bodyLayout->addWidget(fields, 2, Qt::AlignTop);

    const DialogFrame frame = frameDialog(
        *this, QStringLiteral("Operator accounts"),
        QStringLiteral("Add User makes a new account. To change an account's type or password, "
                       "choose it, press Modify and type its current password in the "
                       "confirmation box; the password saved is the one in that box."),
        {{{}, body}},
        {{"cmdnew", QStringLiteral("Add User"), QDialogButtonBox::ActionRole},
         {"cmdmodi", QStringLiteral("&Modify"), QDialogButtonBox::ActionRole},
         {"cmdsave", QStringLiteral("&Save"), QDialogButtonBox::ActionRole},
         {"cmddel", QStringLiteral("&Delete"), QDialogButtonBox::ActionRole},
         {"cmdclose", QStringLiteral("&Close"), QDialogButtonBox::RejectRole}},
        EnterKey::FieldsOnly);
    cmdnew_ = frame.button("cmdnew");
    cmdmodi_ = frame.button("cmdmodi");
    cmdsave_ = frame.button("cmdsave");
    cmddel_ = frame.button("cmddel");
    // Wide enough for each of its captions, so the row does not jump when it changes.
    int widest = 0;
    for (const char* caption : {"Cancel", "Abandon", "Add User"}) {
        cmdnew_->setText(QString::fromLatin1(caption));
        widest = qMax(widest, cmdnew_->sizeHint().width());
    }
    cmdnew_->setMinimumWidth(widest);

    auto* style = new MaskStyle;
    style->setParent(this);
    for (QLineEdit* box : {txtkey_, txtconf_})
        box->setStyle(style);

    connect(dbusers_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &UsersWindow::rowChanged);
    connect(cmdnew_, &QPushButton::clicked, this, &UsersWindow::newClicked);
    connect(cmdmodi_, &QPushButton::clicked, this, &UsersWindow::modifyClicked);
    connect(cmdsave_, &QPushButton::clicked, this, &UsersWindow::saveClicked);
    connect(cmddel_, &QPushButton::clicked, this, &UsersWindow::deleteClicked);
    connect(frame.button("cmdclose"), &QPushButton::clicked, this, &QDialog::close);
    connect(txtnuser_, &QLineEdit::returnPressed, this, &UsersWindow::newNameEntered);
    connect(txtconf_, &QLineEdit::returnPressed, this, &UsersWindow::confirmationEntered);

    showCurrentRow();
    showAccount();
    tick();
    auto* timer = new QTimer(this);
    timer->setObjectName(QStringLiteral("tmrState"));
    timer->setInterval(TickMs);
    connect(timer, &QTimer::timeout, this, &UsersWindow::tick);
    timer->start();
    makeAccessible(this);
    dbusers_->setFocus();
}

void UsersWindow::tick() {
    accounts_.tick();
    showControls();
    if (focusNext_ && focusNext_->isVisibleTo(this) && focusNext_->isEnabled()) {
        focusNext_->setFocus();
        focusNext_ = nullptr;
    }
}

void UsersWindow::done(int result) {
    if (accounts_.closeCancelsNewRow())
        accounts_.cancelNew();
    QDialog::done(result);
}

void UsersWindow::showControls() {
    const AccountControls& c = accounts_.controls();
    showState(dbusers_, c.dbusers);
    showState(txtuser_, c.txtuser);
    showState(txtnuser_, c.txtnuser);
    showState(txtutype_, c.txtutype);
    showState(txtkey_, c.txtkey);
    showState(txtconf_, c.txtconf);
    showState(cmdnew_, c.cmdnew);
    showState(cmdmodi_, c.cmdmodi);
    showState(cmdsave_, c.cmdsave);
    showState(cmddel_, c.cmddel);
}

void UsersWindow::showAccount() {
    txtuser_->setText(accounts_.currentName());
    const QSignalBlocker quiet(txtutype_);
    txtutype_->clear();
    txtutype_->addItems(accounts_.typeChoices());
    txtutype_->setCurrentIndex(txtutype_->findText(accounts_.currentType(), Qt::MatchExactly));
    txtkey_->setText(accounts_.shownPassword());
    txtconf_->clear();
    txtnuser_->clear();
}

void UsersWindow::showCurrentRow() {
    const int row = accounts_.currentRow();
    if (row == dbusers_->currentIndex().row() && row >= 0)
        return;
    if (row >= 0)
        dbusers_->setCurrentIndex(accounts_.list().index(row, 0));
    else
        dbusers_->selectionModel()->clear();
}

void UsersWindow::focusOn(QWidget* box) {
    focusNext_ = box;
    if (box->isVisibleTo(this) && box->isEnabled()) {
        box->setFocus();
        focusNext_ = nullptr;
    }
}

void UsersWindow::rowChanged(const QModelIndex& current) {
    if (current.row() == accounts_.currentRow())
        return;
    accounts_.setCurrentRow(current.isValid() ? current.row() : -1);
    showAccount();
    showControls();
}

void UsersWindow::newClicked() {
    accounts_.toggleNew();
    showCurrentRow();
    showAccount();
    showControls();
    if (accounts_.mode() == AccountsMode::New)
        focusOn(txtnuser_);
}

void UsersWindow::modifyClicked() {
    if (!accounts_.beginModify())
        return;
    txtconf_->clear();
    showControls();
    focusOn(txtconf_);
}

void UsersWindow::confirmationEntered() {
    switch (accounts_.confirmCurrentPassword(txtconf_->text())) {
    case AccountsMaintenance::Confirmation::Confirmed:
        showControls();
        focusOn(txtkey_);
        break;
    case AccountsMaintenance::Confirmation::Mismatch:
        txtconf_->clear();
        showControls();
        break;
    case AccountsMaintenance::Confirmation::NotWaiting:
        break;
    }
}

void UsersWindow::newNameEntered() {
    if (accounts_.checkNewName(txtnuser_->text()))
        return;
    txtnuser_->clear();
    focusOn(txtnuser_);
}

void UsersWindow::saveClicked() {
    const AccountsMode mode = accounts_.mode();
    using Result = AccountsMaintenance::SaveResult;
    switch (accounts_.save(
        {txtnuser_->text(), txtutype_->currentText(), txtkey_->text(), txtconf_->text()})) {
    case Result::Mismatch:
        txtkey_->clear();
        txtconf_->clear();
        focusOn(txtkey_);
        break;
    case Result::NameRefused:
        txtnuser_->clear();
        focusOn(txtnuser_);
        break;
    case Result::PasswordRefused:
        if (mode == AccountsMode::New)
            txtkey_->clear();
        txtconf_->clear();
        focusOn(mode == AccountsMode::New ? txtkey_ : txtconf_);
        break;
    case Result::Saved:
    case Result::NothingToSave:
    case Result::Failed:
        // Back to browsing (a failed write keeps what was typed, to try again).
        if (accounts_.mode() == AccountsMode::None) {
            showCurrentRow();
            showAccount();
        }
        break;
    }
    showControls();
}

void UsersWindow::deleteClicked() {
    if (!accounts_.deleteCurrent())
        return;
    showCurrentRow();
    showAccount();
    showControls();
}

void openSystemUsers(Console& console, FormHost& host) {
    auto* window = new UsersWindow(console);
    window->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(window, true);
}
