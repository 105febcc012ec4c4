#pragma once

#include "client_settings.h"
#include "console_link.h"
#include "customer_session.h"
#include "host_actions.h"
#include "terminal_client.h"

#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

class Clock;
class LockCover;
class LockWindow;
class OperatorMessageWindow;
class MeterWindow;
class QScreen;

// The client as a whole: the connection to the console, the customer's session, and
// the windows that show it. Every message from the console ends here and has its visible
// reaction; requests for this machine (processes, snapshot, log off, restart, shut
// down) are carried out by the terminal library, within what the settings allow.
class ClientApp : public QObject {
    Q_OBJECT
public:
    // How often the meter's figures move.
    static constexpr int MeterTickMs = 1000;

    ClientApp(ClientSettings settings, const Clock& clock, QObject* parent = nullptr);
    ~ClientApp() override;

    // Shows the lock screen and connects (unless the settings are unusable).
    void start();

    const ClientSettings& settings() const { return settings_; }
    TerminalClient& terminal() { return terminal_; }
    ConsoleLink& link() { return link_; }
    CustomerSession& session() { return session_; }
    LockWindow& lockWindow() { return *lock_; }
    MeterWindow& meterWindow() { return *meter_; }
    OperatorMessageWindow& messageWindow() { return *message_; }

private:
    void onMessage(const QByteArray& message);
    void onSystemRequest(const QByteArray& message, bool carriedOut);
    void onOnlineChanged(bool online);
    void showScreens();
    void saveState();
    void coverOtherScreens(bool cover);
    void showOperatorText(const QString& text, bool notice);
    void sendReply(const QString& text);
    QScreen* mainScreen() const;

    ClientSettings settings_;
    TerminalClient terminal_;
    ConsoleLink link_;
    CustomerSession session_;
    std::unique_ptr<LockWindow> lock_;
    std::unique_ptr<MeterWindow> meter_;
    std::unique_ptr<OperatorMessageWindow> message_;
    std::vector<std::unique_ptr<LockCover>> covers_;
    QList<QScreen*> coveredScreens_;
    QTimer meterTick_;
};
