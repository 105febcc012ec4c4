#include "server/terminal_server.h"

#include "server/message_log.h"
#include "server/status_panels.h"
#include "store/database.h"

#include <QNetworkInterface>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {
void returnFreeMemory() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}
} // namespace

TerminalServer::TerminalServer(MessageLog& log, StatusPanels& panels) : log_(log), panels_(panels) {
    connect(&listener_, &QTcpServer::newConnection, this, &TerminalServer::onNewConnection);
    shedQuiet_.setSingleShot(true);
    shedQuiet_.setInterval(60000);
    connect(&shedQuiet_, &QTimer::timeout, this, &TerminalServer::reportShed);
}

TerminalServer::~TerminalServer() {
    for (auto& [index, slot] : slots_)
        slot.socket->disconnect(this);
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

TerminalServer::Slot* TerminalServer::slotAt(int socket) {
    const auto it = slots_.find(socket);
    return it == slots_.end() ? nullptr : &it->second;
}

const TerminalServer::Slot* TerminalServer::slotAt(int socket) const {
    const auto it = slots_.find(socket);
    return it == slots_.end() ? nullptr : &it->second;
}

void TerminalServer::onNewConnection() {
    acceptQueued_ = false;
    for (int taken = 0; taken < AcceptsPerPass; ++taken) {
        QTcpSocket* socket = listener_.nextPendingConnection();
        if (!socket)
            return;
        makeRoomForNewcomer();
        const QString peer = QHostAddress(socket->peerAddress().toIPv4Address()).toString();
        const QString request = QStringLiteral("RQST CONN : ") + peer;
        const int index = ++counter_;
        panels_.set(StatusPanel::LastRequest, request);
        log_.logMessage(request);
        socket->setParent(this);
        slots_[index] = Slot{socket, peer, socket->peerName()};
        unidentified_.push_back(index);
        ++unidentifiedCount_;
        connect(socket, &QTcpSocket::readyRead, this,
                [this, socket, index] { handleMessage(index, socket->readAll()); });
        connect(socket, &QTcpSocket::disconnected, this, [this, index] { onSocketGone(index); });
        connect(socket, &QTcpSocket::errorOccurred, this, [this, index](auto error) {
            // A refused or reset connection also ends in disconnected(); handle it once.
            if (error != QAbstractSocket::RemoteHostClosedError)
                onSocketGone(index);
        });
        send(index, Msg::accept());
        peakSlots_ = std::max(peakSlots_, slots_.size());
    }
    if (listener_.hasPendingConnections() && !acceptQueued_) {
        acceptQueued_ = true;
        QTimer::singleShot(0, this, &TerminalServer::onNewConnection);
    }
}

void TerminalServer::makeRoomForNewcomer() {
    // A flood of connections that never say who they are must not crowd the terminals out:
    // the oldest of them goes, so that a terminal connecting now is still served.
    while (unidentifiedCount_ >= unidentifiedLimit_ && !unidentified_.empty()) {
        const int oldest = unidentified_.front();
        unidentified_.pop_front();
        Slot* slot = slotAt(oldest);
        if (!slot || slot->identified)
            continue;
        slot->socket->abort(); // handled as lost, without pausing anything
        ++shedPending_;
        if (!shedQuiet_.isActive())
            reportShed();
    }
    // The queue remembers every newcomer; forget those that have since identified or gone.
    while (!unidentified_.empty()) {
        const Slot* slot = slotAt(unidentified_.front());
        if (slot && !slot->identified)
            break;
        unidentified_.pop_front();
    }
}

void TerminalServer::reportShed() {
    // Told at once, then at most once a minute with what was closed meanwhile.
    if (shedPending_ == 0)
        return;
    log_.logMessage(QStringLiteral("CONN ERR: %1 connections that had not said which PC they are "
                                   "were closed to make room (at most %2 may wait)")
                        .arg(shedPending_)
                        .arg(unidentifiedLimit_));
    Q_EMIT unidentifiedShed(shedPending_);
    shedPending_ = 0;
    shedQuiet_.start();
}

void TerminalServer::markIdentified(int socket) {
    Slot* slot = slotAt(socket);
    if (!slot || slot->identified)
        return;
    slot->identified = true;
    --unidentifiedCount_;
}

bool TerminalServer::isIdentified(int socket) const {
    const Slot* slot = slotAt(socket);
    return slot && slot->identified;
}

QList<int> TerminalServer::identifiedSocketsOf(const QString& address) const {
    QList<int> found;
    for (const auto& [index, slot] : slots_)
        if (slot.identified && !slot.dropping && slot.peer == address)
            found << index;
    std::sort(found.begin(), found.end());
    return found;
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
    if (!slot || slot->dropping || slot->socket->state() != QAbstractSocket::ConnectedState)
        return false;
    if (slot->socket->bytesToWrite() + message.size() > MostUnsentBytes) {
        drop(socket, QStringLiteral("it does not read what it is sent"));
        return false;
    }
    const bool whole = slot->socket->write(message) == message.size();
    // Out now, not at the next pass of the event loop.
    slot->socket->flush();
    return whole;
}

void TerminalServer::drop(int socket, const QString& why) {
    Slot* slot = slotAt(socket);
    if (!slot || slot->dropping)
        return;
    slot->dropping = true;
    log_.logMessage(QStringLiteral("CONN ERR: %1 closed: %2").arg(slot->peer, why));
    QTimer::singleShot(0, this, [this, socket] {
        if (Slot* s = slotAt(socket))
            s->socket->abort();
    });
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
    const auto it = slots_.find(socket);
    if (it == slots_.end())
        return;
    const Slot slot = it->second;
    slots_.erase(it);
    if (!slot.identified)
        --unidentifiedCount_;
    slot.socket->disconnect(this);
    slot.socket->deleteLater();
    Q_EMIT connectionLost(socket, slot.peer, slot.identified);
    // After a storm of connections the allocator keeps the freed memory for itself; once
    // it has passed, it is handed back, so that the console returns to its usual size.
    if (peakSlots_ > 512 && slots_.size() < peakSlots_ / 4) {
        peakSlots_ = slots_.size();
        QTimer::singleShot(2000, this, [] { returnFreeMemory(); });
    }
}
