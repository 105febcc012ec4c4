#include "server/terminal_server.h"

#include "base/format.h"
#include "base/text.h"
#include "server/console.h"
#include "server/protocol.h"
#include "server/session_start.h"
#include "store/product_list.h"

#include <QNetworkInterface>
#include <QTcpSocket>

#include <cmath>

namespace {
constexpr auto SnapshotFile = "TrmSnapShot.Bmp";
constexpr int SnapshotPieceSize = 8192;

// The PC number of a text taken as an unsigned byte; -1 when it is not one.
int byteValue(const QString& text) {
    const double v = std::nearbyint(Val(text));
    return v < 0 || v > 255 ? -1 : int(v);
}
} // namespace

TerminalServer::TerminalServer(Console& console) : console_(console) {
    slots_.resize(1);
    connect(&listener_, &QTcpServer::newConnection, this, &TerminalServer::onNewConnection);
}

TerminalServer::~TerminalServer() {
    for (auto& s : slots_)
        if (s.socket)
            s.socket->disconnect(this);
}

bool TerminalServer::StartListening(quint16 port) {
    listener_.close();
    if (!listener_.listen(QHostAddress::AnyIPv4, port)) {
        console_.LogMessage(
            QStringLiteral("LISTEN ERR: port %1: %2").arg(port).arg(listener_.errorString()));
        return false;
    }
    localAddress_ = QStringLiteral("127.0.0.1");
    for (const QHostAddress& a : QNetworkInterface::allAddresses())
        if (a.protocol() == QAbstractSocket::IPv4Protocol && !a.isLoopback()) {
            localAddress_ = a.toString();
            break;
        }
    console_.setStatus(7, localAddress_);
    return true;
}

quint16 TerminalServer::port() const {
    return listener_.serverPort();
}

void TerminalServer::markAllOffline() {
    DbSession s(console_.database());
    s.run(QStringLiteral("UPDATE SrvIPTable SET Status = ?"), {yesNo(false)});
}

void TerminalServer::setSocketCounter(qint16 counter) {
    counter_ = counter;
    if (slots_.size() < size_t(counter) + 1)
        slots_.resize(size_t(counter) + 1);
}

void TerminalServer::onNewConnection() {
    while (QTcpSocket* socket = listener_.nextPendingConnection()) {
        const QString peer = QHostAddress(socket->peerAddress().toIPv4Address()).toString();
        const QString request = QStringLiteral("RQST CONN : ") + peer;
        if (counter_ == MostSockets) {
            // The slot counter cannot grow further; the terminals already served go on.
            console_.LogMessage(request);
            console_.LogMessage(QStringLiteral("CONN ERR: %1 refused: all %2 connection slots "
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
        console_.setStatus(9, request);
        console_.LogMessage(request);
        socket->setParent(this);
        slots_[size_t(index)] = {socket, peer, socket->peerName()};
        connect(socket, &QTcpSocket::readyRead, this, [this, index] { onSocketData(index); });
        connect(socket, &QTcpSocket::disconnected, this, [this, index] { OnSocketGone(index); });
        connect(socket, &QTcpSocket::errorOccurred, this, [this, index](auto error) {
            // A refused or reset connection also ends in disconnected(); handle it once.
            if (error != QAbstractSocket::RemoteHostClosedError)
                OnSocketGone(index);
        });
        socket->write(Msg::ACPT());
    }
}

void TerminalServer::onSocketData(int index) {
    QTcpSocket* socket = slots_[size_t(index)].socket;
    if (!socket)
        return;
    handleMessage(index, socket->readAll());
}

QString TerminalServer::peerAddressOf(int index) const {
    if (index < 1 || size_t(index) >= slots_.size())
        return QString();
    return slots_[size_t(index)].peer;
}

QString TerminalServer::peerNameOf(int index) const {
    if (index < 1 || size_t(index) >= slots_.size())
        return QString();
    return slots_[size_t(index)].peerName;
}

bool TerminalServer::sendOnSocket(int index, const QByteArray& message) {
    if (index < 1 || size_t(index) >= slots_.size())
        return false;
    QTcpSocket* socket = slots_[size_t(index)].socket;
    if (!socket || socket->state() != QAbstractSocket::ConnectedState)
        return false;
    return socket->write(message) == message.size();
}

bool TerminalServer::SendToPc(int pc, const QByteArray& message) {
    return sendOnSocket(SocketOfPc(pc), message);
}

void TerminalServer::RegisterTerminal(const QString& message, const QString& address,
                                      int socketIndex) {
    const int pc = byteValue(message.mid(3));
    DbSession s(console_.database());
    auto found = s.run(QStringLiteral("SELECT rowid FROM SrvIPTable WHERE TrmIP = ? "
                                      "ORDER BY rowid LIMIT 1"),
                       {address});
    if (found.next()) {
        const qint64 row = found.value(0).toLongLong();
        found.finish();
        s.run(QStringLiteral("UPDATE SrvIPTable SET TrmIP = ?, PCno = ?, SKIndex = ?, Status = ? "
                             "WHERE rowid = ?"),
              {address, pc, socketIndex, yesNo(true), row});
    } else {
        found.finish();
        s.run(QStringLiteral("INSERT INTO SrvIPTable (TrmIP, PCno, SKIndex, Status) "
                             "VALUES (?, ?, ?, ?)"),
              {address, pc, socketIndex, yesNo(true)});
    }
}

int TerminalServer::PcOfAddress(const QString& address) const {
    DbSession s(console_.database());
    auto q = s.run(QStringLiteral("SELECT PCno FROM SrvIPTable WHERE TrmIP = ? AND Status <> 0 "
                                  "ORDER BY rowid LIMIT 1"),
                   {address});
    return q.next() ? q.value(0).toInt() : 0;
}

int TerminalServer::SocketOfPc(int pc) const {
    DbSession s(console_.database());
    auto q = s.run(QStringLiteral("SELECT SKIndex FROM SrvIPTable WHERE PCno = ? AND Status <> 0 "
                                  "ORDER BY rowid LIMIT 1"),
                   {pc});
    return q.next() ? q.value(0).toInt() : -1;
}

void TerminalServer::OnSocketGone(int index) {
    if (index < 1 || size_t(index) >= slots_.size())
        return;
    Slot& slot = slots_[size_t(index)];
    if (slot.socket) {
        slot.socket->disconnect(this);
        slot.socket->deleteLater();
        slot.socket = nullptr;
    }
    try {
        TerminalTable& table = console_.terminals();
        {
            DbSession s(console_.database());
            auto q = s.run(QStringLiteral("SELECT rowid, PCno FROM SrvIPTable WHERE SKIndex = ? "
                                          "AND Status <> 0 ORDER BY rowid LIMIT 1"),
                           {index});
            if (q.next()) {
                const qint64 row = q.value(0).toLongLong();
                const int pc = q.value(1).toInt();
                q.finish();
                s.run(QStringLiteral("UPDATE SrvIPTable SET Status = ? WHERE rowid = ?"),
                      {yesNo(false), row});
                if (table.contains(pc))
                    table.at(pc).online = false;
            }
        }

        const QString address = slot.peer;
        bool running = false;
        for (int p = 1; p <= table.count(); ++p) {
            const TerminalRecord& r = table.at(p);
            running |= r.TrmIP == address && r.pcstat == QLatin1String("LOG") && r.logged;
        }
        if (!running)
            return;
        console_.LogMessage(QStringLiteral("CONN ERR: ") + address +
                            QStringLiteral(" Socket Force closed"));
        const qint32 now = console_.clock().tickCount();
        for (int p = 1; p <= table.count(); ++p) {
            TerminalRecord& r = table.at(p);
            if (!r.logged || r.TrmIP != address)
                continue;
            // Replaces the banked time rather than adding to it: kept as the console
            // has always done it.
            r.BkTick = TickSub(now, r.TickStart);
            r.pcstat = QStringLiteral("PAU");
            console_.sessionLog().UpdateSessionRow(r);
        }
    } catch (const StoreError& e) {
        console_.LogMessage(QStringLiteral("DB ERR: ") + e.text());
    } catch (const std::exception&) {
        // An overflow abandons the handling, as any error inside a socket event does.
    }
}

void TerminalServer::handleMessage(int index, const QByteArray& message) {
    try {
        dispatch(index, message);
    } catch (const StoreError& e) {
        console_.LogMessage(QStringLiteral("DB ERR: ") + e.text());
    } catch (const std::exception&) {
        // An error inside a handler ends the handling of that message, silently.
    }
}

void TerminalServer::dispatch(int index, const QByteArray& message) {
    const QByteArray command = message.left(3);
    const QString text = QString::fromUtf8(message);
    const QString payload = text.mid(4);
    if (command == "Loa") {
        sendOnSocket(index, Msg::FormLoggerLoaded());
        Q_EMIT logOnDialogRequested();
    } else if (command == "LOG") {
        onLog(index, payload);
    } else if (command == "AIP") {
        onIdentify(index, message);
    } else if (command == "RTS") {
        const Rates& rates = console_.rates();
        sendOnSocket(index, Msg::SRPH(rates.RPH, rates.mint, rates.mina.toDouble()));
    } else if (command == "CHK") {
        onCheckMember(index, payload);
    } else if (command == "TXT") {
        console_.LogMessage(text);
        sendOnSocket(index, Msg::MSGR());
    } else if (command == "PLS") {
        sendOnSocket(index, Msg::RAVP(ProductList::ListText(console_.folder())));
    } else if (command == "EMT") {
        console_.prompts().notice(text, QString(), Prompts::Icon::None);
    } else if (command == "APL") {
        QStringList items = payload.split(QLatin1Char(';'));
        items.removeAll(QString());
        Q_EMIT processesReceived(items);
    } else if (command == "BM6") {
        onSnapshotPiece(index, message, true);
    } else {
        onSnapshotPiece(index, message, false);
    }
}

void TerminalServer::onLog(int index, const QString& payload) {
    LogInPayload in;
    if (!LogInPayload::parse(payload, &in))
        return;
    if (!in.pcText.trimmed().isEmpty() && byteValue(in.pcText) < 0)
        return;
    const bool ok = LogOnPc(console_, in.pcText, in.id, in.name, index, LogOnSource::Terminal);
    sendOnSocket(index, ok ? Msg::LogSuccessful() : Msg::FailedLog());
}

void TerminalServer::onCheckMember(int index, const QString& payload) {
    LogInPayload in;
    if (!LogInPayload::parse(payload, &in))
        return;
    if (!in.pcText.trimmed().isEmpty() && byteValue(in.pcText) < 0)
        return;
    bool matches = false;
    {
        DbSession s(console_.database());
        auto q = s.run(QStringLiteral("SELECT LN, FN FROM members WHERE CID = ? COLLATE NOCASE "
                                      "ORDER BY rowid LIMIT 1"),
                       {in.id});
        if (q.next()) {
            const QString registered = q.value(0).toString().toUpper() + QStringLiteral(", ") +
                                       q.value(1).toString().trimmed().toUpper();
            matches = in.name.toUpper() == registered;
        }
    }
    if (!matches) {
        sendOnSocket(index, Msg::INVD());
        return;
    }
    if (!LogOnPc(console_, in.pcText, in.id, in.name, index, LogOnSource::Terminal))
        sendOnSocket(index, Msg::FailedLog());
}

void TerminalServer::onIdentify(int index, const QByteArray& message) {
    const QString text = QString::fromUtf8(message);
    const int pc = byteValue(text.mid(3));
    const QString address = peerAddressOf(index);
    TerminalTable& table = console_.terminals();
    if (!table.contains(pc)) {
        console_.LogMessage(QStringLiteral("AIP ERR: %1 calls itself PC %2; this console has "
                                           "PCs 1 to %3.")
                                .arg(address, text.mid(3).trimmed())
                                .arg(table.count()));
        return;
    }
    RegisterTerminal(text, address, index);
    const int p = PcOfAddress(address);
    if (!table.contains(p))
        return;
    TerminalRecord& r = table.at(p);
    if (r.pcstat == QLatin1String("PAU"))
        sendOnSocket(index, Msg::PAUSBare());
    r.online = true;
    r.TrmIP = address;
}

void TerminalServer::onSnapshotPiece(int index, const QByteArray& piece, bool first) {
    if (first) {
        snapshot_ =
            std::make_unique<QFile>(console_.folder().file(QString::fromLatin1(SnapshotFile)));
        if (!snapshot_->open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            console_.LogMessage(QStringLiteral("SNAPSHOT ERR: ") + snapshot_->errorString());
            snapshot_.reset();
            return;
        }
        snapshotPieces_ = 1;
    } else {
        if (!snapshot_)
            return; // not a snapshot, and no snapshot under way: nothing to do with it
        ++snapshotPieces_;
        Q_EMIT snapshotProgress(QStringLiteral("Receiving bytes... ") +
                                QString::number(qint64(snapshotPieces_) * SnapshotPieceSize) +
                                QStringLiteral(" Bytes"));
    }
    if (snapshot_->write(piece) != piece.size()) {
        console_.LogMessage(QStringLiteral("SNAPSHOT ERR: ") + snapshot_->errorString());
        snapshot_.reset();
        snapshotPieces_ = 0;
        return;
    }
    if (piece.right(10).contains("Close"))
        finishSnapshot(index);
}

void TerminalServer::finishSnapshot(int index) {
    const QString path = snapshot_->fileName();
    snapshot_->close();
    snapshot_.reset();
    snapshotPieces_ = 0;
    Q_EMIT snapshotProgress(QStringLiteral("Done.!"));
    QString title;
    const QString address = peerAddressOf(index);
    const int pc = PcOfAddress(address);
    if (console_.terminals().contains(pc))
        title = console_.terminals().at(pc).cdtls;
    Q_EMIT snapshotReceived(path, title + QStringLiteral(" from IP : ") + address);
}
