#include "lock_window.h"

#include "client_widgets.h"
#include "customer_session.h"
#include "input_grab.h"
#include "member_form.h"
#include "message_window.h"

#include "base/format.h"

#include <QCloseEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

using namespace ClientWidgets;

namespace {

QString pesos(double value) {
    return QStringLiteral("P ") + formatNumber(value, QStringLiteral("##,##0.00"));
}

QString lockStyle() {
    return QStringLiteral(
               "QLabel { color: %2; }"
               "QFrame#pnlRates, QFrame#pnlMember, QFrame#pnlProducts, QFrame#pnlHelp,"
               "QFrame#pnlMessage { background: %3; border-radius: 12px; }"
               "QLineEdit { background: white; color: black; border-radius: 4px; padding: 4px; }"
               "QPushButton { background: %4; color: %1; border-radius: 6px; padding: 6px 18px;"
               " font-weight: bold; }"
               "QPushButton:focus { border: 3px solid white; }")
        .arg(QLatin1String(Night), QLatin1String(Ink), QLatin1String(Panel), QLatin1String(Accent));
}

void paintNight(QWidget* window) {
    QPalette palette = window->palette();
    palette.setColor(QPalette::Window, QColor(QLatin1String(Night)));
    window->setPalette(palette);
    window->setAutoFillBackground(true);
}

} // namespace

LockWindow::LockWindow(const CustomerSession& session, const QString& cafeName, int pc,
                       QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      session_(session), pc_(pc) {
    setObjectName(QStringLiteral("frmLock"));
    setWindowTitle(cafeName);
    setStyleSheet(lockStyle());
    paintNight(this);
    grab_ = new InputGrab(this, this);

    cafe_ = label(QStringLiteral("lblCafe"), cafeName, this);
    headline_ = label(QStringLiteral("lblState"), QString(), this);
    detail_ = label(QStringLiteral("lblDetail"), QString(), this);
    figures_ = label(QStringLiteral("lblBanked"), QString(), this);
    for (QLabel* l : {cafe_, headline_, detail_, figures_}) {
        l->setAlignment(Qt::AlignCenter);
        l->setWordWrap(true);
    }
    figures_->setStyleSheet(QStringLiteral("color: %1;").arg(QLatin1String(Accent)));

    QFrame* ratesPanel = panel(QStringLiteral("pnlRates"));
    ratesTitle_ = label(QStringLiteral("lblRatesTitle"), tr("Rates"), ratesPanel);
    rates_ = label(QStringLiteral("lblRates"), tr("Asking the console…"), ratesPanel);
    rates_->setWordWrap(true);
    auto* ratesLayout = new QVBoxLayout(ratesPanel);
    ratesLayout->addWidget(ratesTitle_);
    ratesLayout->addWidget(rates_);
    ratesLayout->addStretch();

    QFrame* memberPanel = panel(QStringLiteral("pnlMember"));
    memberForm_ = new MemberForm(memberPanel);
    memberForm_->setPc(pc);
    (new QVBoxLayout(memberPanel))->addWidget(memberForm_);

    productsPanel_ = panel(QStringLiteral("pnlProducts"));
    productsTitle_ =
        label(QStringLiteral("lblProductsTitle"), tr("At the counter"), productsPanel_);
    products_ = label(QStringLiteral("lblProducts"), QString(), productsPanel_);
    products_->setTextFormat(Qt::RichText);
    auto* productsLayout = new QVBoxLayout(productsPanel_);
    productsLayout->addWidget(productsTitle_);
    productsLayout->addWidget(products_);
    productsLayout->addStretch();

    QFrame* help = panel(QStringLiteral("pnlHelp"));
    callOperator_ = named(new QPushButton(tr("Call the operator"), help),
                          QStringLiteral("cmdCallOperator"), tr("Call the operator"));
    callState_ = label(QStringLiteral("lblCallState"), QString(), help);
    note_ = named(new QLineEdit(help), QStringLiteral("txtNote"), tr("Note to the operator"));
    note_->setPlaceholderText(tr("A note for the operator"));
    note_->setMaxLength(500);
    sendNote_ = named(new QPushButton(tr("Send"), help), QStringLiteral("cmdSendNote"),
                      tr("Send the note"));
    noteState_ = label(QStringLiteral("lblNoteState"), QString(), help);
    auto* helpLayout = new QGridLayout(help);
    helpLayout->addWidget(callOperator_, 0, 0);
    helpLayout->addWidget(callState_, 1, 0);
    helpLayout->addWidget(note_, 0, 1);
    helpLayout->addWidget(sendNote_, 0, 2);
    helpLayout->addWidget(noteState_, 1, 1, 1, 2);
    helpLayout->setColumnStretch(1, 1);

    messageFrame_ = panel(QStringLiteral("pnlMessage"));
    messagePanel_ = new OperatorMessagePanel(messageFrame_);
    (new QVBoxLayout(messageFrame_))->addWidget(messagePanel_);
    messageFrame_->hide();

    connection_ = label(QStringLiteral("lblConnection"), QString(), this);
    connection_->setAlignment(Qt::AlignRight);
    connection_->setWordWrap(true); // what is wrong with the settings may take a few lines

    // No menus on the lock screen: a menu's own grab of the pointer would end the lock's.
    for (QWidget* w : findChildren<QWidget*>())
        w->setContextMenuPolicy(Qt::NoContextMenu);

    auto* panels = new QHBoxLayout;
    panels->addWidget(ratesPanel, 1);
    panels->addWidget(memberPanel, 1);
    panels->addWidget(productsPanel_, 1);
    auto* layout = new QVBoxLayout(this);
    // The window is the screen's size, whatever its contents would like.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    layout->setContentsMargins(48, 32, 48, 16);
    layout->addWidget(cafe_);
    layout->addStretch(1);
    layout->addWidget(headline_);
    layout->addWidget(detail_);
    layout->addWidget(figures_);
    layout->addStretch(1);
    layout->addLayout(panels, 3);
    layout->addWidget(help);
    layout->addWidget(messageFrame_);
    layout->addWidget(connection_);

    connect(callOperator_, &QPushButton::clicked, this, &LockWindow::operatorCalled);
    connect(sendNote_, &QPushButton::clicked, this, &LockWindow::sendNote);
    connect(note_, &QLineEdit::returnPressed, this, &LockWindow::sendNote);
    refresh();
    showRates();
    showProducts();
}

LockWindow::~LockWindow() = default;

QFrame* LockWindow::panel(const QString& objectName) {
    auto* frame = new QFrame(this);
    frame->setObjectName(objectName);
    return frame;
}

void LockWindow::lock(QScreen* screen, bool fullScreen, bool grab) {
    if (fullScreen && screen) {
        setScreen(screen);
        setGeometry(screen->geometry());
        showFullScreen();
    } else {
        if (!isVisible())
            resize(1100, 760);
        showNormal();
    }
    raise();
    activateWindow();
    if (grab)
        grab_->hold();
}

void LockWindow::unlock() {
    grab_->release();
    hide();
}

bool LockWindow::holdsInput() const {
    return grab_->isHeld();
}

void LockWindow::refresh() {
    using Screen = CustomerSession::Screen;
    QString headline, detail, figures;
    switch (session_.screen()) {
    case Screen::Paused:
        headline = tr("Paused");
        detail = tr("Your time is stopped. Please see the operator to go on.");
        if (session_.elapsedKnown()) {
            figures = tr("Time used %1").arg(formatElapsed(session_.elapsedMs()));
            if (session_.hasRates())
                figures += QStringLiteral("    ") + session_.amountCaption();
        }
        break;
    case Screen::Thanks:
        headline = tr("Thank you!");
        detail = tr("Your session is closed. Please come again.");
        break;
    default:
        headline = tr("This PC is locked");
        detail = tr("Members: log in below. Everyone else: please ask the operator.");
        break;
    }
    headline_->setText(headline);
    detail_->setText(detail);
    figures_->setText(figures);
    figures_->setVisible(!figures.isEmpty());
}

void LockWindow::showRates() {
    if (!session_.hasRates())
        return;
    rates_->setText(
        tr("%1 an hour\nMinimum charge %2")
            .arg(pesos(session_.ratePerHour()), pesos(session_.minimumAmount().toDouble())));
}

void LockWindow::showProducts() {
    const QStringList& items = session_.products();
    productsPanel_->setVisible(!items.isEmpty());
    QString rows;
    for (const QString& item : items) {
        const qsizetype at = item.lastIndexOf(QLatin1String(" @ "));
        const QString name = at < 0 ? item : item.left(at);
        const QString price =
            at < 0 ? QString() : QStringLiteral("P ") + item.mid(at + 3).trimmed();
        rows += QStringLiteral("<tr><td>%1</td><td align=right>&nbsp;&nbsp;%2</td></tr>")
                    .arg(name.toHtmlEscaped(), price.toHtmlEscaped());
    }
    products_->setText(QStringLiteral("<table width=100%>") + rows + QStringLiteral("</table>"));
}

void LockWindow::showConnection(const QString& text, bool good) {
    connection_->setText(text);
    connection_->setStyleSheet(
        QStringLiteral("color: %1;").arg(QLatin1String(good ? Soft : AlarmInk)));
}

void LockWindow::showCallState(const QString& text, bool good) {
    callState_->setText(text);
    callState_->setStyleSheet(
        QStringLiteral("color: %1;").arg(QLatin1String(good ? Good : AlarmInk)));
}

void LockWindow::showNoteState(const QString& text, bool good) {
    noteState_->setText(text);
    noteState_->setStyleSheet(
        QStringLiteral("color: %1;").arg(QLatin1String(good ? Good : AlarmInk)));
}

void LockWindow::showOperatorMessage(const QString& text) {
    messagePanel_->showMessage(text);
    messageFrame_->show();
}

void LockWindow::showNotice(const QString& text) {
    messagePanel_->showNotice(text);
    messageFrame_->show();
}

void LockWindow::sendNote() {
    const QString text = note_->text().trimmed();
    if (text.isEmpty())
        return;
    note_->clear();
    Q_EMIT noteRequested(text);
}

void LockWindow::closeEvent(QCloseEvent* event) {
    // Only a session unlocks the PC; a window manager's close does not.
    event->ignore();
}

void LockWindow::keyPressEvent(QKeyEvent* event) {
    // Escape and the like do nothing here.
    event->accept();
}

void LockWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    applyScale();
}

void LockWindow::applyScale() {
    // Read from a metre away: everything is sized from the screen's height.
    const int unit = qMax(12, height() / 45);
    if (unit == unit_)
        return;
    unit_ = unit;
    setPixelSize(cafe_, unit * 2, true);
    setPixelSize(headline_, unit * 3, true);
    setPixelSize(detail_, unit * 5 / 4);
    setPixelSize(figures_, unit * 3, true);
    for (QLabel* title : {ratesTitle_, productsTitle_})
        setPixelSize(title, unit * 3 / 2, true);
    setPixelSize(rates_, unit * 7 / 4);
    setPixelSize(products_, unit * 5 / 4);
    memberForm_->setScale(unit);
    for (QWidget* w : std::initializer_list<QWidget*>{callOperator_, note_, sendNote_})
        setPixelSize(w, unit);
    for (QLabel* l : {callState_, noteState_})
        setPixelSize(l, unit, true);
    messagePanel_->setScale(unit);
    setPixelSize(connection_, qMax(10, unit * 3 / 4));
}

LockCover::LockCover(const QString& cafeName, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("frmLockCover"));
    setStyleSheet(lockStyle());
    paintNight(this);
    auto* name = label(QStringLiteral("lblCoverCafe"), cafeName, this);
    auto* state = label(QStringLiteral("lblCoverState"), tr("This PC is locked"), this);
    setPixelSize(name, 48, true);
    setPixelSize(state, 36);
    auto* layout = new QVBoxLayout(this);
    layout->addStretch();
    layout->addWidget(name, 0, Qt::AlignCenter);
    layout->addWidget(state, 0, Qt::AlignCenter);
    layout->addStretch();
}

void LockCover::cover(QScreen* screen) {
    setScreen(screen);
    setGeometry(screen->geometry());
    showFullScreen();
    raise();
}

void LockCover::closeEvent(QCloseEvent* event) {
    event->ignore();
}
