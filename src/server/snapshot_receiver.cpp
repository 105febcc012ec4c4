#include "server/snapshot_receiver.h"

#include "base/app_folder.h"
#include "server/message_log.h"
#include "server/terminal_server.h"
#include "server/terminal_table.h"
#include "store/terminal_registry.h"

SnapshotReceiver::SnapshotReceiver(TerminalServer& server, const TerminalRegistry& registry,
                                   const TerminalTable& table, MessageLog& log,
                                   const AppFolder& folder)
    : server_(server), registry_(registry), table_(table), log_(log), folder_(folder) {
    server_.setHandler(Protocol::TerminalWord::Snapshot,
                       [this](int socket, const QByteArray& m) { onPiece(socket, m, true); });
    server_.setPieceHandler([this](int socket, const QByteArray& m) { onPiece(socket, m, false); });
}

void SnapshotReceiver::onPiece(int socket, const QByteArray& piece, bool first) {
    if (first) {
        file_ = std::make_unique<QFile>(folder_.file(QString::fromLatin1(FileName)));
        if (!file_->open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            log_.logMessage(QStringLiteral("SNAPSHOT ERR: ") + file_->errorString());
            file_.reset();
            return;
        }
        pieces_ = 1;
    } else {
        if (!file_)
            return; // not a snapshot, and no snapshot under way: nothing to do with it
        ++pieces_;
        Q_EMIT progress(QStringLiteral("Receiving bytes... ") +
                        QString::number(qint64(pieces_) * PieceSize) + QStringLiteral(" Bytes"));
    }
    if (file_->write(piece) != piece.size()) {
        log_.logMessage(QStringLiteral("SNAPSHOT ERR: ") + file_->errorString());
        file_.reset();
        pieces_ = 0;
        return;
    }
    if (piece.right(10).contains("Close"))
        finish(socket);
}

void SnapshotReceiver::finish(int socket) {
    const QString path = file_->fileName();
    file_->close();
    file_.reset();
    pieces_ = 0;
    Q_EMIT progress(QStringLiteral("Done.!"));
    QString title;
    const QString address = server_.peerAddress(socket);
    const int pc = registry_.pcOfAddress(address);
    if (table_.contains(pc))
        title = table_.at(pc).customerLabel;
    Q_EMIT received(path, title + QStringLiteral(" from IP : ") + address);
}
