#include "message_window.h"

#include "client_widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace ClientWidgets;

OperatorMessagePanel::OperatorMessagePanel(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("pnlOperatorMessage"));
    heading_ = label(QStringLiteral("lblMessageHeading"), tr("Message from the operator"), this);
    text_ = label(QStringLiteral("lblOperatorText"), QString(), this);
    text_->setWordWrap(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text_->setAccessibleName(tr("Message from the operator"));
    reply_ = named(new QLineEdit(this), QStringLiteral("txtReply"), tr("Reply to the operator"));
    reply_->setMaxLength(500);
    reply_->setPlaceholderText(tr("Your reply"));
    send_ = named(new QPushButton(tr("Reply"), this), QStringLiteral("cmdReply"), tr("Reply"));
    state_ = label(QStringLiteral("lblReplyState"), QString(), this);
    state_->setAccessibleName(tr("Reply state"));

    auto* row = new QHBoxLayout;
    row->addWidget(reply_, 1);
    row->addWidget(send_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading_);
    layout->addWidget(text_);
    layout->addLayout(row);
    layout->addWidget(state_);
    connect(send_, &QPushButton::clicked, this, &OperatorMessagePanel::submit);
    connect(reply_, &QLineEdit::returnPressed, this, &OperatorMessagePanel::submit);
    setScale(18);
}

void OperatorMessagePanel::showMessage(const QString& text) {
    heading_->setText(tr("Message from the operator"));
    text_->setText(text);
    state_->clear();
    for (QWidget* w : std::initializer_list<QWidget*>{reply_, send_})
        w->show();
}

void OperatorMessagePanel::showNotice(const QString& text) {
    heading_->setText(tr("Notice"));
    text_->setText(text);
    state_->clear();
    for (QWidget* w : std::initializer_list<QWidget*>{reply_, send_})
        w->hide();
}

void OperatorMessagePanel::showReplyState(const QString& text, bool good) {
    state_->setText(text);
    state_->setStyleSheet(QStringLiteral("color: %1;").arg(good ? Good : AlarmInk));
}

QString OperatorMessagePanel::text() const {
    return text_->text();
}

void OperatorMessagePanel::submit() {
    const QString text = reply_->text().trimmed();
    if (text.isEmpty())
        return;
    reply_->clear();
    Q_EMIT replyRequested(text);
}

void OperatorMessagePanel::setScale(int unit) {
    setPixelSize(heading_, unit, true);
    setPixelSize(text_, unit * 3 / 2, true);
    setPixelSize(reply_, unit);
    setPixelSize(send_, unit);
    setPixelSize(state_, unit);
}

OperatorMessageWindow::OperatorMessageWindow(QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("frmMessage"));
    setWindowTitle(tr("Message from the operator"));
    panel_ = new OperatorMessagePanel(this);
    auto* close =
        named(new QPushButton(tr("Close"), this), QStringLiteral("cmdCloseMessage"), tr("Close"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(panel_);
    layout->addWidget(close, 0, Qt::AlignRight);
    connect(close, &QPushButton::clicked, this, &QWidget::hide);
    resize(520, 240);
}
