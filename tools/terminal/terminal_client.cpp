#include "terminal_client.h"

#include "protocol/protocol.h"
#include "protocol/splitter.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <climits>

TerminalClient::TerminalClient(QObject* parent) : QObject(parent) {
    gapTimer_ = new QTimer(this);
    gapTimer_->setSingleShot(true);
    connect(gapTimer_, &QTimer::timeout, this, &TerminalClient::sendNext);
    connect(&socket_, &QTcpSocket::readyRead, this, &TerminalClient::onReadyRead);
    connect(&socket_, &QTcpSocket::connected, this, &TerminalClient::connected);
    connect(&socket_, &QTcpSocket::disconnected, this, [this] {
        dropOutbox();
        Q_EMIT disconnected();
    });
    connect(&socket_, &QTcpSocket::bytesWritten, this, &TerminalClient::onBytesWritten);
    connect(&socket_, &QTcpSocket::errorOccurred, this,
            [this](QAbstractSocket::SocketError) { Q_EMIT failed(socket_.errorString()); });
}

TerminalClient::~TerminalClient() {
    socket_.disconnect(this);
}

bool TerminalClient::connectToConsole(const QString& host, quint16 port,
                                      const QHostAddress& localAddress) {
    socket_.abort();
    pending_.clear();
    dropOutbox();
    if (!localAddress.isNull() && !socket_.bind(localAddress))
        return false;
    socket_.connectToHost(host, port);
    return true;
}

bool TerminalClient::waitConnected(int timeoutMs) {
    return waitUntil([this] { return isConnected(); }, timeoutMs);
}

void TerminalClient::disconnectFromConsole() {
    socket_.disconnectFromHost();
}

void TerminalClient::abort() {
    socket_.abort();
}

bool TerminalClient::isConnected() const {
    return socket_.state() == QAbstractSocket::ConnectedState;
}

QByteArray TerminalClient::sendRaw(const QByteArray& message) {
    if (messageGapMs_ > 0) {
        enqueue(message, messageGapMs_, false);
        return message;
    }
    // Out at once, one write per message: the console reads each arrival as one.
    socket_.write(message);
    socket_.flush();
    return message;
}

void TerminalClient::enqueue(const QByteArray& bytes, int gapMs, bool piece) {
    outbox_.append({bytes, gapMs, piece});
    if (!inFlight_ && !gapTimer_->isActive())
        sendNext();
}

void TerminalClient::dropOutbox() {
    outbox_.clear();
    inFlight_ = false;
    gapTimer_->stop();
}

bool TerminalClient::snapshotUnderWay() const {
    return std::any_of(outbox_.cbegin(), outbox_.cend(), [](const Outgoing& o) { return o.piece; });
}

QByteArray TerminalClient::identify() {
    return sendRaw(Msg::identify(pc_));
}

QByteArray TerminalClient::requestLogOnDialog() {
    return sendRaw(Msg::requestLogOnDialog());
}

QByteArray TerminalClient::logIn(const QString& payload) {
    return sendRaw(Msg::logIn(payload));
}

QByteArray TerminalClient::checkMember(const QString& payload) {
    return sendRaw(Msg::checkMember(payload));
}

QByteArray TerminalClient::requestRates() {
    return sendRaw(Msg::requestRates());
}

QByteArray TerminalClient::sendText(const QString& text) {
    return sendRaw(Msg::textToConsole(text));
}

QByteArray TerminalClient::requestProducts() {
    return sendRaw(Msg::requestProducts());
}

QByteArray TerminalClient::sendAlert(const QString& text) {
    return sendRaw(Msg::alert(text));
}

QByteArray TerminalClient::sendProcessList(const QStringList& items) {
    return sendRaw(Msg::processList(items));
}

qsizetype TerminalClient::sendSnapshot(const QByteArray& bitmap) {
    const QList<QByteArray> pieces = HostActions::snapshotPieces(bitmap);
    for (qsizetype i = 0; i < pieces.size(); ++i)
        // The first piece is a message of its own and keeps the messages' gap from
        // what went before; the others follow it closely.
        enqueue(pieces[i], i == 0 ? qMax(messageGapMs_, pieceGapMs_) : pieceGapMs_, true);
    return pieces.size();
}

void TerminalClient::sendNext() {
    if (outbox_.isEmpty())
        return;
    if (!isConnected()) {
        dropOutbox();
        return;
    }
    // The next one leaves only once the previous one is out, and its gap later, so that
    // two do not arrive as one.
    const qint64 waited = sinceLeft_.isValid() ? sinceLeft_.elapsed() : qint64(INT_MAX);
    const int gap = outbox_.first().gapMs;
    if (waited < gap) {
        gapTimer_->start(int(gap - waited));
        return;
    }
    inFlight_ = true;
    socket_.write(outbox_.takeFirst().bytes);
    socket_.flush();
}

void TerminalClient::onBytesWritten() {
    if (!inFlight_ || socket_.bytesToWrite() > 0)
        return;
    inFlight_ = false;
    sinceLeft_.start();
    if (!outbox_.isEmpty())
        sendNext();
}

QByteArray TerminalClient::takeMessage(int timeoutMs) {
    if (!waitUntil([this] { return !inbox_.isEmpty(); }, timeoutMs))
        return QByteArray();
    return inbox_.takeFirst();
}

QByteArray TerminalClient::waitFor(const QByteArray& start, int timeoutMs) {
    qsizetype found = -1;
    auto look = [&] {
        for (qsizetype i = 0; i < inbox_.size(); ++i)
            if (inbox_[i].startsWith(start)) {
                found = i;
                return true;
            }
        return false;
    };
    if (!waitUntil(look, timeoutMs))
        return QByteArray();
    return inbox_.takeAt(found);
}

bool TerminalClient::waitForPresent(const QByteArray& start, int timeoutMs) {
    return waitUntil(
        [&] {
            return std::any_of(inbox_.cbegin(), inbox_.cend(),
                               [&](const QByteArray& m) { return m.startsWith(start); });
        },
        timeoutMs);
}

bool TerminalClient::waitUntil(const std::function<bool()>& done, int timeoutMs) {
    if (done())
        return true;
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    auto check = [&] {
        if (done())
            loop.quit();
    };
    connect(this, &TerminalClient::messageReceived, &loop, check);
    connect(this, &TerminalClient::connected, &loop, check);
    connect(this, &TerminalClient::disconnected, &loop, &QEventLoop::quit);
    connect(this, &TerminalClient::failed, &loop, &QEventLoop::quit);
    timer.start(timeoutMs);
    loop.exec();
    return done();
}

void TerminalClient::onReadyRead() {
    pending_ += socket_.readAll();
    const QList<QByteArray> messages = Protocol::splitConsoleMessages(pending_);
    for (const QByteArray& m : messages)
        onMessage(m);
}

void TerminalClient::onMessage(const QByteArray& message) {
    inbox_.append(message);
    if (inbox_.size() > inboxLimit_)
        inbox_.removeFirst();
    Q_EMIT messageReceived(message);
    if (!handleMachineRequest(message) && autoAnswer_)
        answerQuery(message);
}

bool TerminalClient::handleMachineRequest(const QByteArray& message) {
    const QByteArrayView killPrefix = Protocol::info(Protocol::ConsoleWord::KillProcess).prefix;
    HostActions::Outcome outcome;
    if (message == Msg::logOff())
        outcome = host_.logOff();
    else if (message == Msg::restart())
        outcome = host_.restart();
    else if (message == Msg::shutDown())
        outcome = host_.shutDown();
    else if (message.startsWith(killPrefix))
        outcome =
            host_.endProcesses(QString::fromUtf8(message.sliced(killPrefix.size())).trimmed());
    else
        return false;
    Q_EMIT systemRequest(message, outcome.action, outcome.carriedOut);
    return true;
}

void TerminalClient::answerQuery(const QByteArray& message) {
    if (message == Msg::requestProcesses()) {
        const QStringList processes = host_.processList();
        sendProcessList(processes);
        Q_EMIT answered(
            QStringLiteral("%1 with %2 processes")
                .arg(QString::fromLatin1(Protocol::info(Protocol::TerminalWord::Processes).text))
                .arg(processes.size()));
    } else if (message == Msg::requestSnapshot()) {
        const QByteArray bitmap = HostActions::snapshotBitmap();
        sendSnapshot(bitmap);
        Q_EMIT answered(QStringLiteral("snapshot of %1 bytes").arg(bitmap.size()));
    }
}
