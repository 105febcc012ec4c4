#include "traffic_log.h"

#include "terminal_client.h"

#include <QDateTime>

QTextStream& out() {
    static QTextStream stream(stdout);
    return stream;
}

void say(const QString& line) {
    out() << QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz")) << ' ' << line
          << Qt::endl;
}

QString printable(const QByteArray& message) {
    constexpr qsizetype Most = 240;
    QString text;
    for (qsizetype i = 0; i < qMin(message.size(), Most); ++i) {
        const auto c = uchar(message[i]);
        if (c >= 0x20 && c < 0x7f)
            text += QLatin1Char(char(c));
        else
            text += QStringLiteral("\\x%1").arg(c, 2, 16, QLatin1Char('0'));
    }
    if (message.size() > Most)
        text += QStringLiteral("... (%1 bytes)").arg(message.size());
    return text;
}

void reportTraffic(TerminalClient& client, const QString& who) {
    QObject::connect(
        &client, &TerminalClient::messageReceived, &client,
        [who](const QByteArray& m) { say(who + QStringLiteral("<- ") + printable(m)); });
    QObject::connect(&client, &TerminalClient::answered, &client, [who](const QString& what) {
        say(who + QStringLiteral("-> answered: ") + what);
    });
    QObject::connect(&client, &TerminalClient::systemRequest, &client,
                     [who](const QByteArray& m, const QString& action, bool done) {
                         say(who + QStringLiteral("   %1: %2 (%3)")
                                       .arg(printable(m), action,
                                            done ? QStringLiteral("carried out")
                                                 : QStringLiteral("not carried out; --obey "
                                                                  "carries it out")));
                     });
    QObject::connect(&client, &TerminalClient::disconnected, &client,
                     [who] { say(who + QStringLiteral("   connection closed")); });
}
