#pragma once

#include "host_actions.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTcpSocket>

#include <functional>

class QTimer;

// The terminal's end of the console connection: identifies the PC, sends every
// terminal-to-console message, cuts what arrives back into console messages and keeps
// them for whoever waits on them. Requests for this machine go to its HostActions.
class TerminalClient : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultTimeoutMs = 5000;

    explicit TerminalClient(QObject* parent = nullptr);
    ~TerminalClient() override;

    void setPcNumber(int pc) { pc_ = pc; }
    int pcNumber() const { return pc_; }
    // When set, log-off, restart, shut-down and end-process requests are carried out on
    // this machine; otherwise they are only reported through systemRequest().
    void setObey(bool obey) { host_.setObey(obey); }
    // What this machine does when asked, for finer settings than setObey().
    HostActions& host() { return host_; }
    // Answer process and snapshot requests by itself (on by default).
    void setAutoAnswer(bool on) { autoAnswer_ = on; }
    // Pause between snapshot pieces, so that the console reads each piece as one
    // message; 0 sends the next piece as soon as the previous one has left.
    void setPieceGapMs(int ms) { pieceGapMs_ = ms; }
    // Pause between messages. The console reads each arrival as one message, so two
    // written back to back may reach it as one and be misread. With a gap, every message
    // waits in line until the one before it has left and the gap has passed (snapshot
    // pieces share the line); 0, the default, writes each message at once.
    void setMessageGapMs(int ms) { messageGapMs_ = ms; }
    // Messages waiting in line.
    qsizetype waitingToSend() const { return outbox_.size(); }
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

    // Terminal-to-console messages, each written at once as one send; each returns the
    // message as sent.
    QByteArray sendRaw(const QByteArray& message);
    QByteArray identify(); // as the PC number set
    QByteArray requestLogOnDialog();
    QByteArray logIn(const QString& payload); // id ":" name ";" PC number
    QByteArray checkMember(const QString& payload);
    QByteArray requestRates();
    QByteArray sendText(const QString& text);
    QByteArray requestProducts();
    QByteArray sendAlert(const QString& text);
    QByteArray sendProcessList(const QStringList& items);
    // Sends the bitmap in its snapshot pieces, one at a time (each waits until the
    // previous one has left); returns how many pieces it makes.
    qsizetype sendSnapshot(const QByteArray& bitmap);
    bool snapshotUnderWay() const;

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

Q_SIGNALS:
    void connected();
    void disconnected();
    void failed(const QString& reason);
    void messageReceived(const QByteArray& message);
    // A request that changes the machine (log off, restart, shut down, end a process):
    // what it asks for here, and whether it was carried out.
    void systemRequest(const QByteArray& message, const QString& action, bool carriedOut);
    // An automatic answer was sent (the process list, a snapshot).
    void answered(const QString& what);

private:
    void onReadyRead();
    void onMessage(const QByteArray& message);
    void onBytesWritten();
    void sendNext();
    void enqueue(const QByteArray& bytes, int gapMs, bool piece);
    void dropOutbox();
    bool handleMachineRequest(const QByteArray& message);
    void answerQuery(const QByteArray& message);
    bool waitUntil(const std::function<bool()>& done, int timeoutMs);

    QTcpSocket socket_;
    QByteArray pending_;
    QList<QByteArray> inbox_;
    int inboxLimit_ = 100000;
    int pc_ = 1;
    HostActions host_;
    bool autoAnswer_ = true;
    int pieceGapMs_ = 2;
    int messageGapMs_ = 0;
    struct Outgoing {
        QByteArray bytes;
        int gapMs = 0; // after the previous one has left
        bool piece = false;
    };
    QList<Outgoing> outbox_;
    bool inFlight_ = false;
    QElapsedTimer sinceLeft_; // since the last queued message left
    QTimer* gapTimer_ = nullptr;
};
