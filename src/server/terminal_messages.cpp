#include "server/terminal_messages.h"

#include "base/app_folder.h"
#include "base/clock.h"
#include "base/prompts.h"
#include "base/text.h"
#include "server/message_log.h"
#include "server/session_clock.h"
#include "server/session_start.h"
#include "server/terminal_server.h"
#include "server/terminal_table.h"
#include "store/product_list.h"
#include "store/terminal_registry.h"

#include <cmath>

namespace {
using Protocol::TerminalWord;

// A PC number taken as an unsigned byte; -1 when the text is not one.
int byteValue(const QString& text) {
    const double v = std::nearbyint(leadingNumber(text));
    return v < 0 || v > 255 ? -1 : int(v);
}

QString textOf(const QByteArray& message) {
    return decodeText(message);
}
} // namespace

TerminalMessages::TerminalMessages(TerminalServer& server, TerminalRegistry& registry,
                                   const SessionParts& parts, const AppFolder& folder)
    : server_(server), registry_(registry), parts_(parts), folder_(folder) {
    setRates(20, 30, Money::fromPesos(10));
    auto on = [this](TerminalWord word, TerminalServer::Handler handler) {
        server_.setHandler(word, std::move(handler));
    };
    on(TerminalWord::LogOnDialog, [this](int socket, const QByteArray&) {
        server_.send(socket, Msg::formLoggerLoaded());
        Q_EMIT logOnDialogRequested(pcOfSocket(socket));
    });
    on(TerminalWord::LogIn, [this](int socket, const QByteArray& m) {
        onLogIn(socket, Protocol::payloadOf(textOf(m)));
    });
    on(TerminalWord::Identify,
       [this](int socket, const QByteArray& m) { onIdentify(socket, textOf(m)); });
    on(TerminalWord::Rates,
       [this](int socket, const QByteArray&) { server_.send(socket, ratesReply_); });
    on(TerminalWord::CheckMember, [this](int socket, const QByteArray& m) {
        onCheckMember(socket, Protocol::payloadOf(textOf(m)));
    });
    on(TerminalWord::Text, [this](int socket, const QByteArray& m) {
        parts_.messageLog.logMessage(textOf(m));
        server_.send(socket, Msg::textReceived());
    });
    on(TerminalWord::Products, [this](int socket, const QByteArray&) {
        server_.send(socket, Msg::products(ProductList::listText(folder_)));
    });
    on(TerminalWord::Alert,
       [this](int socket, const QByteArray& m) { onAlert(socket, textOf(m)); });
    on(TerminalWord::Processes, [this](int socket, const QByteArray& m) {
        QStringList items = Protocol::payloadOf(textOf(m)).split(QLatin1Char(';'));
        items.removeAll(QString());
        Q_EMIT processesReceived(items, pcOfSocket(socket));
    });
    connect(&server_, &TerminalServer::connectionLost, this, &TerminalMessages::onConnectionLost);
    noticeTimer_.setInterval(1000);
    connect(&noticeTimer_, &QTimer::timeout, this, &TerminalMessages::sumUpNotices);
}

int TerminalMessages::pcOfSocket(int socket) const {
    const auto pc = pcOfSocket_.find(socket);
    return pc == pcOfSocket_.end() ? 0 : pc->second;
}

void TerminalMessages::onAlert(int socket, const QString& text) {
    const auto pc = pcOfSocket_.find(socket);
    const QString who = pc != pcOfSocket_.end() ? QStringLiteral("PC %1").arg(pc->second)
                                                : server_.peerAddress(socket);
    NoticeSecond& n = notices_[who];
    const qint32 now = parts_.clock.tickCount();
    if (quint32(now) - quint32(n.since) >= 1000u) {
        if (n.held > 0)
            parts_.prompts.notice(QStringLiteral("%1 sent %2 more notices").arg(who).arg(n.held),
                                  QString(), Prompts::Icon::Exclamation);
        n = {now, 0, 0};
    }
    if (n.shown < NoticesPerSecond) {
        ++n.shown;
        parts_.prompts.notice(text, QString(), Prompts::Icon::None);
        return;
    }
    ++n.held;
    if (!noticeTimer_.isActive())
        noticeTimer_.start();
}

void TerminalMessages::sumUpNotices() {
    const qint32 now = parts_.clock.tickCount();
    bool waiting = false;
    for (auto it = notices_.begin(); it != notices_.end();) {
        NoticeSecond& n = it->second;
        if (quint32(now) - quint32(n.since) >= 1000u) {
            if (n.held > 0)
                parts_.prompts.notice(
                    QStringLiteral("%1 sent %2 more notices").arg(it->first).arg(n.held), QString(),
                    Prompts::Icon::Exclamation);
            it = notices_.erase(it);
            continue;
        }
        waiting |= n.held > 0;
        ++it;
    }
    if (!waiting)
        noticeTimer_.stop();
}

void TerminalMessages::setRates(double ratePerHour, qint32 minimumMinutes, Money minimumAmount) {
    ratesReply_ = Msg::rates(ratePerHour, minimumMinutes, minimumAmount.toDouble());
}

void TerminalMessages::onLogIn(int socket, const QString& payload) {
    const auto in = Protocol::LogInPayload::parse(payload);
    if (!in)
        return;
    if (!in->pcText.trimmed().isEmpty() && byteValue(in->pcText) < 0)
        return;
    const bool ok = logOnPc(parts_, in->pcText, in->id, in->name, socket, LogOnSource::Terminal);
    server_.send(socket, ok ? Msg::logSuccessful() : Msg::failedLog());
}

void TerminalMessages::onCheckMember(int socket, const QString& payload) {
    const auto in = Protocol::LogInPayload::parse(payload);
    if (!in)
        return;
    if (!in->pcText.trimmed().isEmpty() && byteValue(in->pcText) < 0)
        return;
    const std::optional<QString> member =
        memberCheck_ ? memberCheck_(in->id, in->name) : std::nullopt;
    if (!member) {
        server_.send(socket, Msg::invalidMember());
        return;
    }
    // The register's spelling: a second log-in of the same member in another letter case
    // then meets the session already running.
    if (!logOnPc(parts_, in->pcText, *member, in->name, socket, LogOnSource::Terminal))
        server_.send(socket, Msg::failedLog());
}

void TerminalMessages::onIdentify(int socket, const QString& message) {
    const int pc = byteValue(message.mid(3));
    const QString address = server_.peerAddress(socket);
    TerminalTable& table = parts_.table;
    if (!table.contains(pc)) {
        parts_.messageLog.logMessage(QStringLiteral("AIP ERR: %1 calls itself PC %2; this "
                                                    "console has PCs 1 to %3.")
                                         .arg(address, message.mid(3).trimmed())
                                         .arg(table.count()));
        return;
    }
    server_.markIdentified(socket);
    pcOfSocket_[socket] = pc;
    registry_.registerTerminal(pc, address, socket);
    const int p = registry_.pcOfAddress(address);
    if (!table.contains(p))
        return;
    auto r = table.edit(p);
    if (r->state == TerminalState::Paused)
        server_.send(socket, Msg::pausedState());
    r->online = true;
    r->address = address;
}

void TerminalMessages::onConnectionLost(int socket, const QString& address, bool identified) {
    // A connection that never said which PC it is stops nothing: a program on a
    // customer's PC could otherwise stop its own meter with a bare connect and close.
    if (!identified)
        return;
    const auto known = pcOfSocket_.find(socket);
    const int pc = known == pcOfSocket_.end() ? 0 : known->second;
    if (known != pcOfSocket_.end())
        pcOfSocket_.erase(known);
    // Each step runs even when the one before could not write to the database.
    try {
        registry_.markSocketGone(socket);
    } catch (const StoreError& e) {
        parts_.messageLog.logMessage(QStringLiteral("DB ERR: ") + e.text());
    }
    if (parts_.table.contains(pc) && parts_.table.at(pc).address == address)
        parts_.table.edit(pc)->online = false;
    QList<int> paused;
    try {
        paused = pauseOnLostConnection(parts_, address);
    } catch (const std::exception&) {
        // An overflow abandons the handling, as any error inside a socket event does.
    }
    // The PC may still be connected another way (the connection lost was a second one
    // from its address): it is told of the pause and locks, as for any other pause.
    const QList<int> others = server_.identifiedSocketsOf(address);
    if (others.isEmpty())
        return;
    const int survivor = others.last();
    for (int p : paused) {
        server_.send(survivor, Msg::pause(parts_.table.at(p).bankedMs));
        pcOfSocket_[survivor] = p;
        auto r = parts_.table.edit(p);
        r->online = true;
        try {
            registry_.registerTerminal(p, address, survivor);
        } catch (const StoreError& e) {
            parts_.messageLog.logMessage(QStringLiteral("DB ERR: ") + e.text());
        }
    }
}
