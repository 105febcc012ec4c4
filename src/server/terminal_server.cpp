#include "server/terminal_server.h"

#include "server/message_log.h"
#include "server/status_panels.h"
#include "store/database.h"

#include <QNetworkInterface>
#include <QTcpSocket>

TerminalServer::TerminalServer(MessageLog& log, StatusPanels& panels) : log_(log), panels_(panels) {
    slots_.resize(1);
    connect(&listener_, &QTcpServer::newConnection, this, &TerminalServer::onNewConnection);
}

TerminalServer::~TerminalServer() {
    for (auto& s : slots_)
        if (s.socket)
            s.socket->disconnect(this);
}

bool TerminalServer::startListening(quint16 port) {
    listener_.close();
    // Every PC of the café may connect in the same instant (after a power cut); a short
    // queue would leave some waiting seconds for the kernel's retries.
    listener_.setListenBacklogSize(ListenBacklog);
    if (!listener_.listen(QHostAddress::AnyIPv4, port)) {
        log_.logMessage(
            QStringLiteral("LISTEN ERR: port %1: %2").arg(port).arg(listener_.errorString()));
        return false;
    }
    localAddress_ = QStringLiteral("127.0.0.1");
    for (const QHostAddress& a : QNetworkInterface::allAddresses())
        if (a.protocol() == QAbstractSocket::IPv4Protocol && !a.isLoopback()) {
            localAddress_ = a.toString();
            break;
        }
    panels_.set(StatusPanel::LocalAddress, localAddress_);
    return true;
}

void TerminalServer::setHandler(Protocol::TerminalWord word, Handler handler) {
    handlers_[size_t(word)] = std::move(handler);
}

void TerminalServer::setSocketCounter(qint16 counter) {
    counter_ = counter;
    if (slots_.size() < size_t(counter) + 1)
        slots_.resize(size_t(counter) + 1);
}

TerminalServer::Slot* TerminalServer::slotAt(int socket) {
    return socket >= 1 && size_t(socket) < slots_.size() ? &slots_[size_t(socket)] : nullptr;
}

const TerminalServer::Slot* TerminalServer::slotAt(int socket) const {
    return socket >= 1 && size_t(socket) < slots_.size() ? &slots_[size_t(socket)] : nullptr;
}

void TerminalServer::onNewConnection() {
    while (QTcpSocket* socket = listener_.nextPendingConnection()) {
        const QString peer = QHostAddress(socket->peerAddress().toIPv4Address()).toString();
        const QString request = QStringLiteral("RQST CONN : ") + peer;
        if (counter_ == MostSockets) {
            // The slot counter cannot grow further; the terminals already served go on.
            log_.logMessage(request);
            log_.logMessage(QStringLiteral("CONN ERR: %1 refused: all %2 connection slots "
                                           "of this run are used; restart the console.")
                                .arg(peer)
                                .arg(MostSockets));
            socket->abort();
            socket->deleteLater();
            continue;
        }
        ++counter_;
        const int index = counter_;
        slots_.resize(size_t(index) + 1);
        panels_.set(StatusPanel::LastRequest, request);
        log_.logMessage(request);
        socket->setParent(this);
        slots_[size_t(index)] = {socket, peer, socket->peerName()};
        connect(socket, &QTcpSocket::readyRead, this,
                [this, socket, index] { handleMessage(index, socket->readAll()); });
        connect(socket, &QTcpSocket::disconnected, this, [this, index] { onSocketGone(index); });
        connect(socket, &QTcpSocket::errorOccurred, this, [this, index](auto error) {
            // A refused or reset connection also ends in disconnected(); handle it once.
            if (error != QAbstractSocket::RemoteHostClosedError)
                onSocketGone(index);
        });
        send(index, Msg::accept());
    }
}

void TerminalServer::handleMessage(int socket, const QByteArray& message) {
    const auto word = Protocol::classify(message);
    const Handler& handler = word ? handlers_[size_t(*word)] : pieceHandler_;
    if (!handler)
        return;
    try {
        handler(socket, message);
    } catch (const StoreError& e) {
        log_.logMessage(QStringLiteral("DB ERR: ") + e.text());
    } catch (const std::exception&) {
        // An error inside a handler ends the handling of that message, silently.
    }
}

bool TerminalServer::send(int socket, const QByteArray& message) {
    Slot* slot = slotAt(socket);
    if (!slot || !slot->socket || slot->socket->state() != QAbstractSocket::ConnectedState)
        return false;
    const bool whole = slot->socket->write(message) == message.size();
    // Out now, not at the next pass of the event loop.
    slot->socket->flush();
    return whole;
}

QString TerminalServer::peerAddress(int socket) const {
    const Slot* slot = slotAt(socket);
    return slot ? slot->peer : QString();
}

QString TerminalServer::peerName(int socket) const {
    const Slot* slot = slotAt(socket);
    return slot ? slot->peerName : QString();
}

void TerminalServer::onSocketGone(int socket) {
    Slot* slot = slotAt(socket);
    if (!slot || !slot->socket)
        return;
    slot->socket->disconnect(this);
    slot->socket->deleteLater();
    slot->socket = nullptr;
    Q_EMIT connectionLost(socket, slot->peer);
}
