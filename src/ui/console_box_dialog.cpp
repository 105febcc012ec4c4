#include "ui/console_box_dialog.h"

#include "base/clock.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QLabel>
#include <QLineEdit>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyle>
#include <QTimer>

#include <cmath>

namespace {

const QString MessageMode = QStringLiteral("Message");

// How often the countdown is redrawn unless the caller says otherwise: often enough that
// the whole seconds shown never lag behind by more than half a second.
constexpr int DefaultCountdownMs = 500;

// Qt masks a password with its style's character; this one masks with the caller's.
class MaskStyle final : public QProxyStyle {
public:
    explicit MaskStyle(QChar mask) : mask_(mask) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override {
        if (hint == SH_LineEdit_PasswordCharacter)
            return mask_.unicode();
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }

private:
    QChar mask_;
};

// Rounds halves to even, as the console's arithmetic always has.
int roundWhole(double value) {
    return int(std::nearbyint(value));
}

} // namespace

ConsoleBoxDialog::ConsoleBoxDialog(Clock& clock, QWidget* parent) : QDialog(parent), clock_(clock) {
    setObjectName(QStringLiteral("MyMsgbox"));
    setWindowTitle(QStringLiteral("Tarvo QRB"));
    setMinimumWidth(320);

    messageLabel_ = new QLabel(this);
    messageLabel_->setObjectName(QStringLiteral("lblMessage"));
    messageLabel_->setWordWrap(true);
    messageLabel_->setTextFormat(Qt::PlainText);
    extraLabel_ = new QLabel(this);
    extraLabel_->setObjectName(QStringLiteral("lblExtra"));
    extraLabel_->setWordWrap(true);
    extraLabel_->setTextFormat(Qt::PlainText);
    extraLabel_->hide();

    input_ = new QLineEdit(this);
    input_->setObjectName(QStringLiteral("txtInput"));
    input_->setMaxLength(255);
    // The message asks for the input, so it is read out as the input's name.
    messageLabel_->setBuddy(input_);

    const DialogFrame frame = frameDialog(
        *this, QString(), QString(), {{{}, messageLabel_}, {{}, extraLabel_}, {{}, input_}},
        {{"Label1", QStringLiteral("OK"), QDialogButtonBox::AcceptRole}});
    okButton_ = frame.button("Label1");
    okButton_->setFlat(true);
    okButton_->setAutoDefault(false);
    okButton_->setMinimumWidth(80);
    QFont bold = okButton_->font();
    bold.setBold(true);
    okButton_->setFont(bold);

    cancelPicture_ = new QPushButton(this);
    cancelPicture_->setObjectName(QStringLiteral("imgcancel"));
    cancelPicture_->setIcon(style()->standardIcon(QStyle::SP_DialogCancelButton));
    cancelPicture_->setIconSize(QSize(16, 16));
    cancelPicture_->setAccessibleName(QStringLiteral("Cancel"));
    cancelButton_ = new QPushButton(QStringLiteral("Cancel"), this);
    cancelButton_->setObjectName(QStringLiteral("lblCancel"));
    for (QPushButton* cancel : {cancelPicture_, cancelButton_}) {
        cancel->setFlat(true);
        cancel->setAutoDefault(false);
        cancel->setFocusPolicy(Qt::NoFocus);
        cancel->setCursor(Qt::PointingHandCursor);
        frame.buttons->addButton(cancel, QDialogButtonBox::RejectRole);
    }

    closeTimer_ = new QTimer(this);
    closeTimer_->setObjectName(QStringLiteral("Timer1"));
    closeTimer_->setSingleShot(true);
    countdownTimer_ = new QTimer(this);
    countdownTimer_->setObjectName(QStringLiteral("Timer2"));
    countdownTimer_->setInterval(DefaultCountdownMs);

    connect(okButton_, &QPushButton::clicked, this, &QDialog::accept);
    connect(input_, &QLineEdit::returnPressed, this, &QDialog::accept);
    connect(cancelButton_, &QPushButton::clicked, this, &QDialog::reject);
    connect(cancelPicture_, &QPushButton::clicked, this, &QDialog::reject);
    connect(closeTimer_, &QTimer::timeout, this, &QDialog::accept);
    connect(countdownTimer_, &QTimer::timeout, this, &ConsoleBoxDialog::refreshCountdown);
    makeAccessible(this);
}

void ConsoleBoxDialog::setBox(const Prompts::ConsoleBox& box) {
    if (!box.title.isEmpty())
        setWindowTitle(box.title);
    if (!box.text.isEmpty())
        messageLabel_->setText(box.text);
    if (!box.extra.isEmpty()) {
        extraLabel_->setText(box.extra);
        extraLabel_->show();
    }
    closeTimer_->setInterval(qMax(0, box.closeAfterMs));
    if (box.countdownMs > 0)
        countdownTimer_->setInterval(box.countdownMs);
    mode_ = box.mode;

    QStyle* oldMask = input_->findChild<QStyle*>(QStringLiteral("mask"));
    input_->setStyle(nullptr);
    delete oldMask;
    if (box.passwordChar.isNull()) {
        input_->setEchoMode(QLineEdit::Normal);
    } else {
        auto* mask = new MaskStyle(box.passwordChar);
        mask->setObjectName(QStringLiteral("mask"));
        mask->setParent(input_);
        input_->setStyle(mask);
        input_->setEchoMode(QLineEdit::Password);
    }
    // A box already on screen is opened again with what it now says.
    if (isVisible())
        opening();
}

int ConsoleBoxDialog::secondsLeft(int timer1IntervalMs, qint32 elapsedMs) {
    const int left = roundWhole(timer1IntervalMs / 1000.0) - roundWhole(elapsedMs / 1000.0);
    return qMax(0, left);
}

void ConsoleBoxDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    opening();
}

void ConsoleBoxDialog::opening() {
    const bool message = mode_ == MessageMode;
    input_->clear();
    input_->setVisible(!message);
    cancelPicture_->setVisible(!message);
    cancelButton_->setVisible(!message);
    adjustSize(); // no room is kept for the parts this mode hides
    result_.clear();
    openedAt_ = clock_.tickCount();
    okButton_->setText(QStringLiteral("OK"));
    // An input whose message says nothing still needs a name to be read out by.
    input_->setAccessibleName(messageLabel_->text().isEmpty() ? QStringLiteral("Answer")
                                                              : QString());
    closeTimer_->stop();
    countdownTimer_->stop();
    if (message) {
        okButton_->setDefault(true);
        okButton_->setFocus();
        if (closeTimer_->interval() > 0) {
            closeTimer_->start();
            countdownTimer_->start();
            refreshCountdown();
        }
    } else {
        // Enter belongs to the input box; the OK label must not answer it a second time.
        okButton_->setDefault(false);
        input_->setFocus();
    }
}

void ConsoleBoxDialog::refreshCountdown() {
    if (mode_ != MessageMode || !closeTimer_->isActive())
        return;
    const qint32 elapsed = qint32(quint32(clock_.tickCount()) - quint32(openedAt_));
    okButton_->setText(QStringLiteral("OK(") +
                       QString::number(secondsLeft(closeTimer_->interval(), elapsed)) +
                       QStringLiteral(")"));
}

void ConsoleBoxDialog::done(int r) {
    closeTimer_->stop();
    countdownTimer_->stop();
    // Cancelling leaves no answer, so a caller treats it like an empty input.
    result_ = (r == Accepted && mode_ != MessageMode) ? input_->text() : QString();
    QDialog::done(r);
}
