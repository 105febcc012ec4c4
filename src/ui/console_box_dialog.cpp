#include "ui/console_box_dialog.h"

#include "base/clock.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

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

    message_ = new QLabel(this);
    message_->setObjectName(QStringLiteral("lblMessage"));
    message_->setWordWrap(true);
    message_->setTextFormat(Qt::PlainText);
    extra_ = new QLabel(this);
    extra_->setObjectName(QStringLiteral("lblExtra"));
    extra_->setWordWrap(true);
    extra_->setTextFormat(Qt::PlainText);
    extra_->hide();

    txtInput_ = new QLineEdit(this);
    txtInput_->setObjectName(QStringLiteral("txtInput"));
    txtInput_->setMaxLength(255);

    Label1_ = new QPushButton(QStringLiteral("OK"), this);
    Label1_->setObjectName(QStringLiteral("Label1"));
    Label1_->setFlat(true);
    Label1_->setAutoDefault(false);
    Label1_->setMinimumWidth(80);
    QFont bold = Label1_->font();
    bold.setBold(true);
    Label1_->setFont(bold);

    imgcancel_ = new QLabel(this);
    imgcancel_->setObjectName(QStringLiteral("imgcancel"));
    imgcancel_->setPixmap(style()->standardIcon(QStyle::SP_DialogCancelButton).pixmap(16, 16));
    imgcancel_->setCursor(Qt::PointingHandCursor);
    imgcancel_->installEventFilter(this);
    lblCancel_ = new QPushButton(QStringLiteral("Cancel"), this);
    lblCancel_->setObjectName(QStringLiteral("lblCancel"));
    lblCancel_->setFlat(true);
    lblCancel_->setAutoDefault(false);
    lblCancel_->setFocusPolicy(Qt::NoFocus);

    Timer1_ = new QTimer(this);
    Timer1_->setObjectName(QStringLiteral("Timer1"));
    Timer1_->setSingleShot(true);
    Timer2_ = new QTimer(this);
    Timer2_->setObjectName(QStringLiteral("Timer2"));
    Timer2_->setInterval(DefaultCountdownMs);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(imgcancel_);
    buttons->addWidget(lblCancel_);
    buttons->addStretch();
    buttons->addWidget(Label1_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(message_);
    layout->addWidget(extra_);
    layout->addWidget(txtInput_);
    layout->addLayout(buttons);

    connect(Label1_, &QPushButton::clicked, this, &QDialog::accept);
    connect(txtInput_, &QLineEdit::returnPressed, this, &QDialog::accept);
    connect(lblCancel_, &QPushButton::clicked, this, &QDialog::reject);
    connect(Timer1_, &QTimer::timeout, this, &QDialog::accept);
    connect(Timer2_, &QTimer::timeout, this, &ConsoleBoxDialog::refreshCountdown);
}

void ConsoleBoxDialog::setBox(const Prompts::ConsoleBox& box) {
    if (!box.title.isEmpty())
        setWindowTitle(box.title);
    if (!box.text.isEmpty())
        message_->setText(box.text);
    if (!box.extra.isEmpty()) {
        extra_->setText(box.extra);
        extra_->show();
    }
    Timer1_->setInterval(qMax(0, box.closeAfterMs));
    if (box.countdownMs > 0)
        Timer2_->setInterval(box.countdownMs);
    mode_ = box.mode;

    QStyle* oldMask = txtInput_->findChild<QStyle*>(QStringLiteral("mask"));
    txtInput_->setStyle(nullptr);
    delete oldMask;
    if (box.passwordChar.isNull()) {
        txtInput_->setEchoMode(QLineEdit::Normal);
    } else {
        auto* mask = new MaskStyle(box.passwordChar);
        mask->setObjectName(QStringLiteral("mask"));
        mask->setParent(txtInput_);
        txtInput_->setStyle(mask);
        txtInput_->setEchoMode(QLineEdit::Password);
    }
    // A box already on screen is opened again with what it now says.
    if (isVisible())
        opening();
}

int ConsoleBoxDialog::SecondsLeft(int timer1IntervalMs, qint32 elapsedMs) {
    const int left = roundWhole(timer1IntervalMs / 1000.0) - roundWhole(elapsedMs / 1000.0);
    return qMax(0, left);
}

void ConsoleBoxDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    opening();
}

void ConsoleBoxDialog::opening() {
    const bool message = mode_ == MessageMode;
    txtInput_->clear();
    txtInput_->setVisible(!message);
    imgcancel_->setVisible(!message);
    lblCancel_->setVisible(!message);
    result_.clear();
    openedAt_ = clock_.tickCount();
    Label1_->setText(QStringLiteral("OK"));
    Timer1_->stop();
    Timer2_->stop();
    if (message) {
        Label1_->setDefault(true);
        Label1_->setFocus();
        if (Timer1_->interval() > 0) {
            Timer1_->start();
            Timer2_->start();
            refreshCountdown();
        }
    } else {
        // Enter belongs to the input box; the OK label must not answer it a second time.
        Label1_->setDefault(false);
        txtInput_->setFocus();
    }
}

void ConsoleBoxDialog::refreshCountdown() {
    if (mode_ != MessageMode || !Timer1_->isActive())
        return;
    const qint32 elapsed = qint32(quint32(clock_.tickCount()) - quint32(openedAt_));
    Label1_->setText(QStringLiteral("OK(") +
                     QString::number(SecondsLeft(Timer1_->interval(), elapsed)) +
                     QStringLiteral(")"));
}

bool ConsoleBoxDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == imgcancel_ && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        reject();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void ConsoleBoxDialog::done(int r) {
    Timer1_->stop();
    Timer2_->stop();
    // Cancelling leaves no answer, so a caller treats it like an empty input.
    result_ = (r == Accepted && mode_ != MessageMode) ? txtInput_->text() : QString();
    QDialog::done(r);
}
