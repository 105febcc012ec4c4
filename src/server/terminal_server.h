#pragma once

#include "protocol/protocol.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <QTimer>

#include <array>
#include <deque>
#include <functional>
#include <unordered_map>

class MessageLog;
class QTcpSocket;
class StatusPanels;

// The sockets of the terminal connections: the listening one and the array SkServer
// (element 0 listens; 1, 2, 3, ... one per accepted connection, never reused). Each
// data arrival is one message, handed to the handler of its word; what matches no word
// goes to the piece handler (a snapshot's further pieces). Replies leave at once.
//
// Every peer is bounded: connections that have not identified themselves are at most
// a few per terminal (the oldest makes room for a newcomer), and a connection whose
// unsent output passes a megabyte is closed as lost.
class TerminalServer : public QObject {
    Q_OBJECT
public:
    static constexpr quint16 DefaultPort = 1066;
    static constexpr int ListenBacklog = 1024;
    // Connections taken on per pass of the event loop: a storm of them waits in the
    // listen queue while the identified terminals are served between two passes.
    static constexpr int AcceptsPerPass = 16;
    static constexpr qint64 MostUnsentBytes = 1 << 20;

    TerminalServer(MessageLog& log, StatusPanels& panels);
    ~TerminalServer() override;

    // (Re)starts listening on the port (0 picks a free one) and shows the local address.
    // False, with the reason in the message log, when it cannot.
    bool startListening(quint16 port);
    bool isListening() const { return listener_.isListening(); }
    quint16 port() const { return listener_.serverPort(); }
    QString listenError() const { return listener_.errorString(); }
    QString localAddress() const { return localAddress_; }

    using Handler = std::function<void(int socket, const QByteArray& message)>;
    void setHandler(Protocol::TerminalWord word, Handler handler);
    void setPieceHandler(Handler handler) { pieceHandler_ = std::move(handler); }
    // Handles one message as if it had arrived on `socket`. A failure inside a handler
    // ends the handling of that message; a database failure is logged.
    void handleMessage(int socket, const QByteArray& message);

    // Sends on element `socket`; false when it has no open connection. A connection that
    // does not read what it is sent is closed once its unsent output passes the bound.
    bool send(int socket, const QByteArray& message);
    QString peerAddress(int socket) const;
    QString peerName(int socket) const;
    bool isOpen(int socket) const { return slotAt(socket) != nullptr; }

    // A connection that said which PC it is ("AIP"). Only such a connection pauses a
    // session when it is lost.
    void markIdentified(int socket);
    bool isIdentified(int socket) const;
    // The open, identified connections from an address.
    QList<int> identifiedSocketsOf(const QString& address) const;
    // How many connections may wait without identifying; the oldest makes room.
    void setUnidentifiedLimit(int limit) { unidentifiedLimit_ = qMax(1, limit); }
    int unidentifiedCount() const { return unidentifiedCount_; }
    int openCount() const { return int(slots_.size()); }

    // The number of elements in SkServer, the listening one included.
    qint64 socketCount() const { return qint64(counter_) + 1; }
    qint32 socketCounter() const { return counter_; }
    // A console that has run long enough to hand out this many sockets; for tests.
    void setSocketCounter(qint32 counter) { counter_ = counter; }

Q_SIGNALS:
    // A connection closed or failed; its element stays, unused.
    void connectionLost(int socket, const QString& address, bool identified);
    // Connections that had not identified themselves were closed to make room.
    void unidentifiedShed(int count);

private:
    struct Slot {
        QTcpSocket* socket = nullptr;
        QString peer;
        QString peerName;
        bool identified = false;
        bool dropping = false;
    };

    // The slot of an open connection; null for any other index.
    Slot* slotAt(int socket);
    const Slot* slotAt(int socket) const;
    void onNewConnection();
    void makeRoomForNewcomer();
    void reportShed();
    // Closes the connection as lost, after the handler in progress has returned.
    void drop(int socket, const QString& why);
    void onSocketGone(int socket);

    MessageLog& log_;
    StatusPanels& panels_;
    QTcpServer listener_;
    std::unordered_map<int, Slot> slots_; // open connections by element number
    qint32 counter_ = 0;
    std::deque<int> unidentified_; // oldest first; may hold elements since identified or gone
    int unidentifiedCount_ = 0;
    int unidentifiedLimit_ = 4 * 24 + 64;
    int shedPending_ = 0;
    QTimer shedQuiet_;
    bool acceptQueued_ = false;
    // The most connections held since memory was last handed back.
    size_t peakSlots_ = 0;
    QString localAddress_;
    std::array<Handler, 10> handlers_;
    Handler pieceHandler_;
};
