#include "client_app.h"

#include "lock_window.h"
#include "member_form.h"
#include "message_window.h"
#include "meter_window.h"

#include "base/text.h"
#include "protocol/protocol.h"

#include <QFile>
#include <QGuiApplication>
#include <QSaveFile>
#include <QScreen>

namespace {
using Protocol::ConsoleWord;
} // namespace

ClientApp::ClientApp(ClientSettings settings, const Clock& clock, QObject* parent)
    : QObject(parent), settings_(std::move(settings)),
      link_(terminal_, settings_.consoleAddress, settings_.port, qMax(0, settings_.pc),
            settings_.localAddress),
      session_(clock) {
    terminal_.setMessageGapMs(settings_.messageGapMs);
    terminal_.setInboxLimit(16); // the client reacts to each message as it comes
    HostActions& host = terminal_.host();
    host.setMayEndProcesses(true);
    host.setMayPower(settings_.allowPowerActions);
    host.setOwnProcessesOnly(true);

    lock_ = std::make_unique<LockWindow>(session_, settings_.cafeName, settings_.pc);
    meter_ = std::make_unique<MeterWindow>(session_, settings_.pc);
    message_ = std::make_unique<OperatorMessageWindow>();

    connect(&terminal_, &TerminalClient::messageReceived, this, &ClientApp::onMessage);
    connect(&terminal_, &TerminalClient::systemRequest, this,
            [this](const QByteArray& message, const QString&, bool carriedOut) {
                onSystemRequest(message, carriedOut);
            });
    connect(&link_, &ConsoleLink::onlineChanged, this, &ClientApp::onOnlineChanged);
    connect(&session_, &CustomerSession::changed, this, &ClientApp::showScreens);
    connect(&session_, &CustomerSession::changed, this, &ClientApp::saveState);
    connect(&session_, &CustomerSession::ratesChanged, this, [this] {
        lock_->showRates();
        lock_->refresh();
        meter_->refresh();
    });
    connect(&session_, &CustomerSession::productsChanged, lock_.get(), &LockWindow::showProducts);

    connect(&lock_->memberForm(), &MemberForm::logInRequested, this,
            [this](const QString& payload) {
                if (!link_.send(Msg::checkMember(payload)))
                    lock_->memberForm().showResult(
                        tr("This PC cannot reach the console just now. Please ask the operator."));
            });
    connect(lock_.get(), &LockWindow::operatorCalled, this, [this] {
        if (link_.send(Msg::requestLogOnDialog()))
            lock_->showCallState(tr("Calling the operator…"), true);
        else
            lock_->showCallState(tr("Not connected: please go to the counter."), false);
    });
    connect(lock_.get(), &LockWindow::noteRequested, this, [this](const QString& text) {
        if (link_.send(Msg::alert(text)))
            lock_->showNoteState(tr("Sent to the operator."), true);
        else
            lock_->showNoteState(tr("Not connected: please go to the counter."), false);
    });
    connect(&lock_->messagePanel(), &OperatorMessagePanel::replyRequested, this,
            &ClientApp::sendReply);
    connect(&message_->panel(), &OperatorMessagePanel::replyRequested, this, &ClientApp::sendReply);

    meterTick_.setInterval(MeterTickMs);
    connect(&meterTick_, &QTimer::timeout, meter_.get(), &MeterWindow::refresh);

    if (auto* app = qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        connect(app, &QGuiApplication::screenAdded, this, &ClientApp::showScreens);
        connect(app, &QGuiApplication::screenRemoved, this, &ClientApp::showScreens);
    }
}

ClientApp::~ClientApp() {
    terminal_.disconnect(this);
}

void ClientApp::start() {
    if (QFile saved(settings_.stateFile);
        !settings_.stateFile.isEmpty() && saved.open(QIODevice::ReadOnly))
        session_.restore(saved.read(4096));
    showScreens();
    if (!settings_.usable()) {
        lock_->showConnection(settings_.problems.join(QLatin1Char(' ')), false);
        return;
    }
    lock_->showConnection(
        tr("PC %1 · connecting to the console at %2…").arg(settings_.pc).arg(link_.target()),
        false);
    link_.start();
}

void ClientApp::saveState() {
    if (settings_.stateFile.isEmpty())
        return;
    // Whole or not at all: a client killed while writing must not find half a session.
    QSaveFile file(settings_.stateFile);
    if (!file.open(QIODevice::WriteOnly) || file.write(session_.state()) < 0 || !file.commit())
        qWarning("tarvoqrb-client: the session cannot be kept in %s: %s",
                 qPrintable(settings_.stateFile), qPrintable(file.errorString()));
}

QScreen* ClientApp::mainScreen() const {
    return QGuiApplication::primaryScreen();
}

void ClientApp::showScreens() {
    using Screen = CustomerSession::Screen;
    const Screen screen = session_.screen();
    lock_->refresh();
    if (session_.isLocked()) {
        meterTick_.stop();
        meter_->hide();
        message_->hide();
        lock_->lock(mainScreen(), !settings_.windowed, !settings_.windowed);
        coverOtherScreens(!settings_.windowed);
        return;
    }
    lock_->unlock();
    coverOtherScreens(false);
    lock_->memberForm().clear();
    if (screen == Screen::Running) {
        meter_->setOnline(link_.isOnline());
        meter_->showOn(mainScreen());
        meterTick_.start();
    } else {
        meterTick_.stop();
        meter_->hide();
    }
}

void ClientApp::coverOtherScreens(bool cover) {
    QList<QScreen*> others = QGuiApplication::screens();
    others.removeAll(mainScreen());
    if (!cover)
        others.clear();
    // Made again only when the monitors change, so that a message does not flicker them.
    if (coveredScreens_ == others)
        return;
    covers_.clear();
    coveredScreens_ = others;
    for (QScreen* screen : others) {
        auto c = std::make_unique<LockCover>(settings_.cafeName);
        c->cover(screen);
        covers_.push_back(std::move(c));
    }
}

void ClientApp::onMessage(const QByteArray& message) {
    if (session_.apply(message)) {
        const auto word = Protocol::classifyConsole(message);
        // A new stretch of the session: the rates may have changed since they were asked.
        if (word == ConsoleWord::StartMeter || word == ConsoleWord::Resume)
            link_.send(Msg::requestRates());
        return;
    }
    const auto word = Protocol::classifyConsole(message);
    if (!word)
        return;
    switch (*word) {
    case ConsoleWord::InvalidMember:
        lock_->memberForm().showResult(
            tr("Member ID or name not recognised. Please check them, or ask the operator."));
        break;
    case ConsoleWord::FailedLog:
        lock_->memberForm().showResult(tr("Your session could not be started (is your ID in "
                                          "use on another PC?). Please ask the operator."));
        break;
    case ConsoleWord::LogSuccessful:
        lock_->memberForm().showResult(tr("Welcome!"), true);
        break;
    case ConsoleWord::FormLoggerLoaded:
        lock_->showCallState(tr("The operator has been called. Please wait."), true);
        break;
    case ConsoleWord::TextReceived:
        lock_->messagePanel().showReplyState(tr("Delivered."), true);
        message_->panel().showReplyState(tr("Delivered."), true);
        break;
    case ConsoleWord::Text:
        showOperatorText(decodeText(Protocol::argumentOf(*word, message)), false);
        break;
    default:
        break; // what the terminal library answers by itself, and "ACPT"
    }
}

void ClientApp::onSystemRequest(const QByteArray& message, bool carriedOut) {
    QString what;
    if (message == Msg::logOff())
        what = carriedOut ? tr("The operator is logging this PC off.")
                          : tr("The operator asked this PC to log off.");
    else if (message == Msg::restart())
        what = carriedOut ? tr("The operator is restarting this PC.")
                          : tr("The operator asked this PC to restart.");
    else if (message == Msg::shutDown())
        what = carriedOut ? tr("The operator is shutting this PC down.")
                          : tr("The operator asked this PC to shut down.");
    if (!what.isEmpty())
        showOperatorText(what, true);
}

void ClientApp::showOperatorText(const QString& text, bool notice) {
    if (session_.isLocked()) {
        if (notice)
            lock_->showNotice(text);
        else
            lock_->showOperatorMessage(text);
        return;
    }
    if (notice)
        message_->panel().showNotice(text);
    else
        message_->panel().showMessage(text);
    if (QScreen* screen = mainScreen()) {
        const QRect area = screen->availableGeometry();
        message_->move(area.center() - QPoint(message_->width() / 2, message_->height() / 2));
    }
    message_->show();
    message_->raise();
    message_->activateWindow();
}

void ClientApp::sendReply(const QString& text) {
    const bool sent = link_.send(Msg::textToConsole(text));
    const QString state = sent ? tr("Sending…") : tr("Not connected: your reply was not sent.");
    lock_->messagePanel().showReplyState(state, sent);
    message_->panel().showReplyState(state, sent);
}

void ClientApp::onOnlineChanged(bool online) {
    if (!online)
        session_.connectionLost();
    lock_->showConnection(
        online ? tr("PC %1 · connected to the console").arg(settings_.pc)
               : tr("PC %1 · waiting for the console at %2…").arg(settings_.pc).arg(link_.target()),
        online);
    meter_->setOnline(online);
}
