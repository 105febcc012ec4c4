#pragma once

#include "protocol/protocol.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTcpServer>

#include <array>
#include <functional>
#include <vector>

class MessageLog;
class QTcpSocket;
class StatusPanels;

// The sockets of the terminal connections: the listening one and the array SkServer
// (element 0 listens; 1, 2, 3, ... one per accepted connection, never reused). Each
// data arrival is one message, handed to the handler of its word; what matches no word
// goes to the piece handler (a snapshot's further pieces). Replies leave at once.
class TerminalServer : public QObject {
    Q_OBJECT
public:
    static constexpr quint16 DefaultPort = 1066;
    static constexpr qint16 MostSockets = 32767;
    static constexpr int ListenBacklog = 1024;
    using Handler = std::function<void(int socket, const QByteArray& message)>;

    TerminalServer(MessageLog& log, StatusPanels& panels);
    ~TerminalServer() override;

    // (Re)starts listening on the port (0 picks a free one) and shows the local address.
    // False, with the reason in the message log, when it cannot.
    bool startListening(quint16 port);
    bool isListening() const { return listener_.isListening(); }
    quint16 port() const { return listener_.serverPort(); }
    QString listenError() const { return listener_.errorString(); }
    QString localAddress() const { return localAddress_; }

    void setHandler(Protocol::TerminalWord word, Handler handler);
    void setPieceHandler(Handler handler) { pieceHandler_ = std::move(handler); }
    // Handles one message as if it had arrived on `socket`. A failure inside a handler
    // ends the handling of that message; a database failure is logged.
    void handleMessage(int socket, const QByteArray& message);

    // Sends on element `socket`; false when it has no open connection.
    bool send(int socket, const QByteArray& message);
    QString peerAddress(int socket) const;
    QString peerName(int socket) const;

    // The number of elements in SkServer, the listening one included.
    int socketCount() const { return int(slots_.size()); }
    qint16 socketCounter() const { return counter_; }
    // A console that has run long enough to use up its slots; for tests of that limit.
    void setSocketCounter(qint16 counter);

Q_SIGNALS:
    // A connection closed or failed; its element stays, unused.
    void connectionLost(int socket, const QString& address);

private:
    struct Slot {
        QTcpSocket* socket = nullptr;
        QString peer;
        QString peerName;
    };

    // The slot of an accepted connection; null for 0 and for an index never given out.
    Slot* slotAt(int socket);
    const Slot* slotAt(int socket) const;
    void onNewConnection();
    void onSocketGone(int socket);

    MessageLog& log_;
    StatusPanels& panels_;
    QTcpServer listener_;
    std::vector<Slot> slots_; // [0] stands for the listening socket
    qint16 counter_ = 0;
    QString localAddress_;
    std::array<Handler, 10> handlers_;
    Handler pieceHandler_;
};
