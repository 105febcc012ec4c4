#include "meter_window.h"

#include "client_widgets.h"
#include "customer_session.h"

#include "base/format.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QScreen>

using namespace ClientWidgets;

MeterWindow::MeterWindow(const CustomerSession& session, int pc, QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                          Qt::WindowDoesNotAcceptFocus),
      session_(session) {
    setObjectName(QStringLiteral("frmMeter"));
    setWindowTitle(tr("Meter"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("QLabel { color: %1; }"
                                 "MeterWindow { background: %2; border: 3px solid %3; }")
                      .arg(QLatin1String(Ink), QLatin1String(Night), QLatin1String(Accent)));

    pc_ = label(QStringLiteral("lblPc"), tr("PC %1").arg(pc), this);
    start_ = label(QStringLiteral("lblStartTime"), QString(), this);
    elapsedTitle_ = label(QStringLiteral("lblElapsedTitle"), tr("Time used"), this);
    elapsed_ = label(QStringLiteral("lblElapsed"), QString(), this);
    leftTitle_ = label(QStringLiteral("lblTimeLeftTitle"), tr("Time left"), this);
    left_ = label(QStringLiteral("lblTimeLeft"), QString(), this);
    amountTitle_ = label(QStringLiteral("lblAmountTitle"), tr("Amount"), this);
    amount_ = label(QStringLiteral("lblAmount"), QString(), this);
    warning_ = label(QStringLiteral("lblWarning"), tr("Your time is almost up!"), this);
    link_ = label(QStringLiteral("lblLink"), tr("Console away: your time is still counted"), this);
    elapsed_->setAccessibleName(tr("Time used"));
    left_->setAccessibleName(tr("Time left"));
    amount_->setAccessibleName(tr("Amount"));

    // Sizes for a glance from the chair: the amount largest, then the time used.
    setPixelSize(pc_, 16, true);
    setPixelSize(start_, 16);
    for (QLabel* title : {elapsedTitle_, leftTitle_, amountTitle_})
        setPixelSize(title, 16);
    setPixelSize(elapsed_, 40, true);
    setPixelSize(left_, 28, true);
    setPixelSize(amount_, 48, true);
    setPixelSize(warning_, 18, true);
    setPixelSize(link_, 13);
    for (QLabel* title : {pc_, start_, elapsedTitle_, leftTitle_, amountTitle_, link_})
        title->setStyleSheet(QStringLiteral("color: %1;").arg(QLatin1String(Soft)));
    amount_->setStyleSheet(QStringLiteral("color: %1;").arg(QLatin1String(Accent)));
    warning_->setStyleSheet(
        QStringLiteral("background: %1; color: white; padding: 4px;").arg(QLatin1String(Alarm)));
    warning_->setAlignment(Qt::AlignCenter);
    link_->setWordWrap(true);

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(16, 10, 16, 12);
    layout->setVerticalSpacing(2);
    layout->addWidget(pc_, 0, 0);
    layout->addWidget(start_, 0, 1, Qt::AlignRight);
    layout->addWidget(elapsedTitle_, 1, 0, 1, 2);
    layout->addWidget(elapsed_, 2, 0, 1, 2);
    layout->addWidget(leftTitle_, 3, 0, 1, 2);
    layout->addWidget(left_, 4, 0, 1, 2);
    layout->addWidget(amountTitle_, 5, 0, 1, 2);
    layout->addWidget(amount_, 6, 0, 1, 2);
    layout->addWidget(warning_, 7, 0, 1, 2);
    layout->addWidget(link_, 8, 0, 1, 2);
    link_->hide();
    setMinimumWidth(300);
    refresh();
}

void MeterWindow::showOn(QScreen* screen) {
    refresh();
    adjustSize();
    if (!placed_ && screen) {
        const QRect area = screen->availableGeometry();
        move(area.right() - width() - 16, area.top() + 16);
        placed_ = true;
    }
    show();
    raise();
}

void MeterWindow::refresh() {
    start_->setText(tr("Started %1").arg(session_.startTime()));
    elapsed_->setText(formatElapsed(session_.elapsedMs()));
    const auto left = session_.leftMs();
    leftTitle_->setVisible(left.has_value());
    left_->setVisible(left.has_value());
    if (left)
        left_->setText(formatElapsed(*left));
    amount_->setText(session_.hasRates() ? session_.amountCaption() : tr("P …"));
    warning_->setVisible(session_.isWarned());
}

void MeterWindow::setOnline(bool online) {
    link_->setVisible(!online);
    adjustSize();
}

void MeterWindow::closeEvent(QCloseEvent* event) {
    // The meter goes when the session does.
    event->ignore();
}

void MeterWindow::mousePressEvent(QMouseEvent* event) {
    dragFrom_ = event->globalPosition().toPoint() - frameGeometry().topLeft();
}

void MeterWindow::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton)
        move(event->globalPosition().toPoint() - dragFrom_);
}
