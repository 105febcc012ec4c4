#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QString>
#include <QTimer>

class TerminalClient;

// Keeps this PC connected to the console: connects, says which PC it is ("AIP"), asks
// for the rates and the product list, and whenever the console cannot be reached or goes
// away, tries again after a delay that grows from one second to thirty.
class ConsoleLink : public QObject {
    Q_OBJECT
public:
    static constexpr int FirstDelayMs = 1000;
    static constexpr int LongestDelayMs = 30000;
    static constexpr int ConnectTimeoutMs = 10000;

    ConsoleLink(TerminalClient& client, QString address, quint16 port, int pc,
                QHostAddress localAddress = {}, QObject* parent = nullptr);

    void start();
    // Connected and identified.
    bool isOnline() const { return online_; }
    // "192.168.1.10:1066"
    QString target() const;
    // How long the next retry waits.
    int nextDelayMs() const { return delayMs_; }
    int attempts() const { return attempts_; }

    // Sends a message when on line; false (nothing sent) otherwise.
    bool send(const QByteArray& message);

Q_SIGNALS:
    void onlineChanged(bool online);

private:
    void connectNow();
    void onConnected();
    void onLost();

    TerminalClient& client_;
    QString address_;
    quint16 port_;
    QHostAddress localAddress_;
    bool online_ = false;
    int delayMs_ = FirstDelayMs;
    int attempts_ = 0;
    QTimer retry_;
    QTimer connectTimeout_;
};
