#pragma once

#include "base/money.h"
#include "server/session_parts.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <optional>
#include <unordered_map>

class AppFolder;
class TerminalRegistry;
class TerminalServer;

// What the console does with each message a terminal sends (but a snapshot's pieces),
// and with a lost connection: registered with the server word by word.
class TerminalMessages : public QObject {
    Q_OBJECT
public:
    // The member's id as the register spells it, when the id is a member's (any letter
    // case) and the name, upper-cased, is the register's "LN, FN" upper-cased.
    using MemberCheck =
        std::function<std::optional<QString>(const QString& id, const QString& name)>;

    TerminalMessages(TerminalServer& server, TerminalRegistry& registry, const SessionParts& parts,
                     const AppFolder& folder);

    // The "SRPH " reply is built once, here, whenever the rates change.
    void setRates(double ratePerHour, qint32 minimumMinutes, Money minimumAmount);
    QByteArray ratesReply() const { return ratesReply_; }
    void setMemberCheck(MemberCheck check) { memberCheck_ = std::move(check); }

    // A terminal's notices ("EMT"): this many a second reach the operator; the rest are
    // counted and summed up in one notice when the second is over.
    static constexpr int NoticesPerSecond = 3;

Q_SIGNALS:
    // "Loa": a terminal asks for the log-on dialog; `pc` is the PC its connection
    // identified itself as, 0 when it has not.
    void logOnDialogRequested(int pc);
    // "APL": the processes a terminal reported; `pc` as above.
    void processesReceived(const QStringList& processes, int pc);

private:
    void onLogIn(int socket, const QString& payload);
    void onCheckMember(int socket, const QString& payload);
    void onIdentify(int socket, const QString& message);
    void onConnectionLost(int socket, const QString& address, bool identified);
    void onAlert(int socket, const QString& text);
    void sumUpNotices();
    int pcOfSocket(int socket) const;

    TerminalServer& server_;
    TerminalRegistry& registry_;
    SessionParts parts_;
    const AppFolder& folder_;
    QByteArray ratesReply_;
    MemberCheck memberCheck_;
    std::unordered_map<int, int> pcOfSocket_; // identified connections, in memory
    struct NoticeSecond {
        qint32 since = 0; // up-time counter when this terminal's second began
        int shown = 0;
        int held = 0;
    };
    std::unordered_map<QString, NoticeSecond> notices_; // by "PC 7", or the address
    QTimer noticeTimer_;
};
