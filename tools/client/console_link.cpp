#include "console_link.h"

#include "terminal_client.h"

ConsoleLink::ConsoleLink(TerminalClient& client, QString address, quint16 port, int pc,
                         QHostAddress localAddress, QObject* parent)
    : QObject(parent), client_(client), address_(std::move(address)), port_(port),
      localAddress_(std::move(localAddress)) {
    client_.setPcNumber(pc);
    retry_.setSingleShot(true);
    connect(&retry_, &QTimer::timeout, this, &ConsoleLink::connectNow);
    connectTimeout_.setSingleShot(true);
    connectTimeout_.setInterval(ConnectTimeoutMs);
    // A console that does not answer at all (switched off, cable out) would otherwise
    // hold the attempt for minutes.
    connect(&connectTimeout_, &QTimer::timeout, this, [this] {
        client_.abort();
        onLost();
    });
    connect(&client_, &TerminalClient::connected, this, &ConsoleLink::onConnected);
    connect(&client_, &TerminalClient::disconnected, this, &ConsoleLink::onLost);
    connect(&client_, &TerminalClient::failed, this, [this] {
        if (!client_.isConnected())
            onLost();
    });
}

void ConsoleLink::start() {
    if (!retry_.isActive() && !connectTimeout_.isActive() && !online_)
        connectNow();
}

QString ConsoleLink::target() const {
    return address_ + QLatin1Char(':') + QString::number(port_);
}

void ConsoleLink::connectNow() {
    ++attempts_;
    connectTimeout_.start();
    if (!client_.connectToConsole(address_, port_, localAddress_)) {
        connectTimeout_.stop();
        onLost(); // the local address cannot be bound now; maybe later
    }
}

void ConsoleLink::onConnected() {
    connectTimeout_.stop();
    delayMs_ = FirstDelayMs;
    // Each its own message: the client keeps them apart by its message gap.
    client_.identify();
    client_.requestRates();
    client_.requestProducts();
    online_ = true;
    Q_EMIT onlineChanged(true);
}

void ConsoleLink::onLost() {
    connectTimeout_.stop();
    if (retry_.isActive())
        return; // already told (a failure is reported as an error and as a close)
    const bool was = online_;
    online_ = false;
    retry_.start(delayMs_);
    delayMs_ = qMin(delayMs_ * 2, LongestDelayMs);
    if (was)
        Q_EMIT onlineChanged(false);
}

bool ConsoleLink::send(const QByteArray& message) {
    if (!online_ || !client_.isConnected())
        return false;
    client_.sendRaw(message);
    return true;
}
