#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTcpSocket>

#include <functional>

class QImage;
class QTimer;

// The terminal's end of the console connection: identifies the PC, sends every
// terminal-to-console message, and cuts what arrives back into console messages.
//
// The console adds no terminator or length to what it sends, so two messages written
// back to back may arrive in one read ("CMTR" and "OFPS" as "CMTROFPS"). The client
// tells them apart by the console's command words and the known shape of each message.
class TerminalClient : public QObject {
    Q_OBJECT
public:
    static constexpr int SnapshotPieceSize = 8192;
    static constexpr int DefaultTimeoutMs = 5000;

    explicit TerminalClient(QObject* parent = nullptr);
    ~TerminalClient() override;

    void setPcNumber(int pc) { pc_ = pc; }
    int pcNumber() const { return pc_; }
    // When set, "LGOF", "RSTR", "PTAY" and "KLPR " are carried out on this machine;
    // otherwise they are only reported through systemRequest().
    void setObey(bool obey) { obey_ = obey; }
    // Answer "RQPR" and "SNPS" by itself (on by default).
    void setAutoAnswer(bool on) { autoAnswer_ = on; }
    // Pause between snapshot pieces, so that the console reads each piece as one
    // message; 0 sends the next piece as soon as the previous one has left.
    void setPieceGapMs(int ms) { pieceGapMs_ = ms; }
    // Received messages kept for takeMessage()/waitFor(); the oldest go beyond this.
    void setInboxLimit(int limit) { inboxLimit_ = limit; }

    // Connects to the console; with a local address, binds to it first, so that many
    // terminals on one machine reach the console from distinct addresses (the console
    // tells terminals apart by address). False when the bind fails.
    bool connectToConsole(const QString& host, quint16 port,
                          const QHostAddress& localAddress = QHostAddress());
    // Runs the event loop until connected or the time is up.
    bool waitConnected(int timeoutMs = DefaultTimeoutMs);
    // Closes the connection the orderly way (the console sees a close).
    void disconnectFromConsole();
    // Drops the connection at once (the console sees a reset).
    void abort();
    bool isConnected() const;
    QTcpSocket& socket() { return socket_; }
    QString lastError() const { return socket_.errorString(); }

    // Terminal-to-console messages.
    void sendRaw(const QByteArray& message);
    void identify();                                // "AIP" + PC number
    void requestLogOnDialog();                      // "Loa"
    void logIn(const QString& payload);             // "LOG id:name;pc"
    void checkMember(const QString& payload);       // "CHK id:name;pc"
    void requestRates();                            // "RTS"
    void sendText(const QString& text);             // "TXT text"
    void requestProducts();                         // "PLS"
    void sendAlert(const QString& text);            // "EMT text"
    void sendProcessList(const QStringList& items); // "APL " + each item + ";"
    // Sends the bitmap in pieces of SnapshotPieceSize bytes, "Close" after the last,
    // one piece at a time (each waits until the previous one has left).
    void sendSnapshot(const QByteArray& bitmap);
    bool snapshotUnderWay() const { return !pieces_.isEmpty(); }

    // Received messages not yet taken, oldest first.
    const QList<QByteArray>& inbox() const { return inbox_; }
    void clearInbox() { inbox_.clear(); }
    // Takes the oldest message, waiting for one up to the time-out; empty when none came.
    QByteArray takeMessage(int timeoutMs = DefaultTimeoutMs);
    // Takes the oldest message that begins with `start`, waiting up to the time-out;
    // messages before it stay in the inbox. Empty when none came.
    QByteArray waitFor(const QByteArray& start, int timeoutMs = DefaultTimeoutMs);
    // Waits for a message that begins with `start` and leaves it in the inbox.
    bool waitForPresent(const QByteArray& start, int timeoutMs = DefaultTimeoutMs);

    // Cuts complete console messages off the front of `pending`; an incomplete tail
    // that more data may still finish stays in `pending`. Text that begins with no
    // command word comes out as one message of its own, up to the next word.
    static QList<QByteArray> SplitMessages(QByteArray& pending);

    // This machine's processes as "pid:name" items (the name after the first ":").
    static QStringList RunningProcesses();
    // A screen picture as a bitmap file whose size field begins with the byte '6', as
    // the console expects of a snapshot's first piece. The screen when there is one,
    // a drawn picture otherwise.
    static QByteArray SnapshotBitmap();
    // A 24-bit bitmap file of the image, padded at the end so that the low byte of
    // the file size is 0x36.
    static QByteArray EncodeBitmap(const QImage& image);
    // The pieces sendSnapshot() sends, "Close" appended to the last.
    static QList<QByteArray> SnapshotPieces(const QByteArray& bitmap);

Q_SIGNALS:
    void connected();
    void disconnected();
    void failed(const QString& reason);
    void messageReceived(const QByteArray& message);
    // A request that changes the machine ("LGOF", "RSTR", "PTAY", "KLPR "): what it asks
    // for, and whether it was carried out.
    void systemRequest(const QByteArray& message, const QString& action, bool carriedOut);
    // An automatic answer was sent ("APL ..." with n processes, a snapshot of n bytes).
    void answered(const QString& what);

private:
    void onReadyRead();
    void onMessage(const QByteArray& message);
    void onBytesWritten();
    void sendNextPiece();
    void systemCommand(const QByteArray& message);
    bool waitUntil(const std::function<bool()>& done, int timeoutMs);

    QTcpSocket socket_;
    QByteArray pending_;
    QList<QByteArray> inbox_;
    int inboxLimit_ = 100000;
    int pc_ = 1;
    bool obey_ = false;
    bool autoAnswer_ = true;
    int pieceGapMs_ = 2;
    QList<QByteArray> pieces_;
    bool pieceInFlight_ = false;
    QTimer* pieceTimer_ = nullptr;
};
