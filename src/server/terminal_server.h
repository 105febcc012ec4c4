#pragma once

#include <QByteArray>
#include <QFile>
#include <QHostAddress>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTcpServer>

#include <memory>
#include <vector>

class Console;
class QTcpSocket;

// The console's side of the terminal connections: the listening socket, the socket
// array SkServer (element 0 listens; 1, 2, 3, ... one per accepted connection, never
// reused), the registry SrvIPTable, and the dispatch of every message a terminal sends.
class TerminalServer : public QObject {
    Q_OBJECT
public:
    static constexpr quint16 DefaultPort = 1066;
    static constexpr qint16 MostSockets = 32767;

    explicit TerminalServer(Console& console);
    ~TerminalServer() override;

    // (Re)starts listening on the port (0 picks a free one) and shows the local address
    // in status panel 7. False, with the reason in the message log, when it cannot.
    bool StartListening(quint16 port);
    quint16 port() const;
    QString listenError() const { return listener_.errorString(); }
    QString localAddress() const { return localAddress_; }
    // Every known terminal off line, as at every start.
    void markAllOffline();

    // Registry.
    void RegisterTerminal(const QString& message, const QString& address, int socketIndex);
    int PcOfAddress(const QString& address) const; // 0 when unknown
    int SocketOfPc(int pc) const;                  // -1 when it has no identified connection
    bool SendToPc(int pc, const QByteArray& message);
    // Sends on element `index`; false when it has no open connection.
    bool sendOnSocket(int index, const QByteArray& message);
    void OnSocketGone(int index);

    // The number of elements in SkServer, the listening one included.
    int socketCount() const { return int(slots_.size()); }
    qint16 socketCounter() const { return counter_; }
    QString peerAddressOf(int index) const;
    QString peerNameOf(int index) const;

    // Handles one received message as if it came on element `index`.
    void handleMessage(int index, const QByteArray& message);

    // A console that has run long enough to use up its slots; for tests of that limit.
    void setSocketCounter(qint16 counter);

Q_SIGNALS:
    // "Loa": a terminal asks for the log-on dialog.
    void logOnDialogRequested();
    // "APL": the processes a terminal reported.
    void processesReceived(const QStringList& processes);
    // Screen snapshot progress ("Receiving bytes... 8192 Bytes", "Done.!").
    void snapshotProgress(const QString& text);
    void snapshotReceived(const QString& path, const QString& title);

private:
    struct Slot {
        QTcpSocket* socket = nullptr;
        QString peer;
        QString peerName;
    };

    void onNewConnection();
    void onSocketData(int index);
    void dispatch(int index, const QByteArray& message);
    void onLog(int index, const QString& payload);
    void onCheckMember(int index, const QString& payload);
    void onIdentify(int index, const QByteArray& message);
    void onSnapshotPiece(int index, const QByteArray& piece, bool first);
    void finishSnapshot(int index);

    Console& console_;
    QTcpServer listener_;
    std::vector<Slot> slots_; // [0] stands for the listening socket
    qint16 counter_ = 0;
    QString localAddress_;
    std::unique_ptr<QFile> snapshot_;
    int snapshotPieces_ = 0;
};
