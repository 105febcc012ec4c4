#include "server/snapshot_receiver.h"

#include "base/app_folder.h"
#include "base/clock.h"
#include "server/message_log.h"
#include "server/terminal_control.h"
#include "server/terminal_server.h"
#include "server/terminal_table.h"
#include "store/terminal_registry.h"

SnapshotReceiver::SnapshotReceiver(TerminalServer& server, TerminalControl& control,
                                   const TerminalRegistry& registry, const TerminalTable& table,
                                   MessageLog& log, const AppFolder& folder, const Clock& clock)
    : server_(server), control_(control), registry_(registry), table_(table), log_(log),
      folder_(folder), clock_(clock) {
    server_.setHandler(Protocol::TerminalWord::Snapshot,
                       [this](int socket, const QByteArray& m) { onFirstPiece(socket, m); });
    server_.setPieceHandler([this](int socket, const QByteArray& m) { onPiece(socket, m); });
    connect(&server_, &TerminalServer::connectionLost, this, [this](int socket) {
        requested_.erase(socket);
        if (file_ && socket == socket_)
            abandon(QStringLiteral("the terminal's connection was lost"), true);
    });
}

bool SnapshotReceiver::request(int pc) {
    const int socket = control_.socketOfPc(pc);
    if (socket == -1 || !control_.send(socket, Msg::requestSnapshot()))
        return false;
    requested_[socket] = {clock_.tickCount(), pc};
    return true;
}

void SnapshotReceiver::onFirstPiece(int socket, const QByteArray& piece) {
    const auto asked = requested_.find(socket);
    if (asked == requested_.end() ||
        quint32(clock_.tickCount()) - quint32(asked->second.at) > quint32(RequestLifeMs))
        return; // nobody asked this terminal for its screen: not a snapshot to keep
    const int pc = asked->second.pc;
    requested_.erase(asked);
    if (file_)
        abandon(QStringLiteral("another snapshot began"), false);
    file_ = std::make_unique<QFile>(folder_.file(QString::fromLatin1(FileName)));
    if (!file_->open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        log_.logMessage(QStringLiteral("SNAPSHOT ERR: ") + file_->errorString());
        file_.reset();
        return;
    }
    socket_ = socket;
    pc_ = pc;
    pieces_ = 1;
    bytes_ = 0;
    if (write(piece) && piece.right(Protocol::SnapshotEndWindow).contains(Protocol::SnapshotEnd))
        finish(socket);
}

void SnapshotReceiver::onPiece(int socket, const QByteArray& piece) {
    // Only the connection that began the snapshot adds to it; anything else is not a
    // snapshot piece, and is left alone.
    if (!file_ || socket != socket_)
        return;
    ++pieces_;
    Q_EMIT progress(QStringLiteral("Receiving bytes... ") +
                        QString::number(qint64(pieces_) * Protocol::SnapshotPieceSize) +
                        QStringLiteral(" Bytes"),
                    pc_);
    if (write(piece) && piece.right(Protocol::SnapshotEndWindow).contains(Protocol::SnapshotEnd))
        finish(socket);
}

bool SnapshotReceiver::write(const QByteArray& piece) {
    bytes_ += piece.size();
    if (bytes_ > mostBytes_) {
        abandon(QStringLiteral("it is larger than %1 bytes, more than any screen").arg(mostBytes_),
                true);
        return false;
    }
    if (file_->write(piece) != piece.size()) {
        abandon(file_->errorString(), false);
        return false;
    }
    return true;
}

void SnapshotReceiver::abandon(const QString& why, bool remove) {
    log_.logMessage(
        QStringLiteral("SNAPSHOT ERR: dropped from %1: %2").arg(server_.peerAddress(socket_), why));
    if (remove)
        file_->remove();
    file_.reset();
    socket_ = 0;
    pc_ = 0;
    pieces_ = 0;
    bytes_ = 0;
}

void SnapshotReceiver::finish(int socket) {
    const QString path = file_->fileName();
    const int asked = pc_;
    file_->close();
    file_.reset();
    socket_ = 0;
    pieces_ = 0;
    bytes_ = 0;
    pc_ = 0;
    Q_EMIT progress(QStringLiteral("Done.!"), asked);
    QString title;
    const QString address = server_.peerAddress(socket);
    const int pc = registry_.pcOfAddress(address);
    if (table_.contains(pc))
        title = table_.at(pc).customerLabel;
    Q_EMIT received(path, title + QStringLiteral(" from IP : ") + address, asked);
}
