#include "script_runner.h"

#include "host_actions.h"
#include "protocol/protocol.h"
#include "terminal_client.h"
#include "traffic_log.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QSocketNotifier>
#include <QTimer>

#include <unistd.h>

namespace {

// Lets `ms` pass while sockets and timers go on.
void pause(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

// The commands that send one message, and how each sends it.
using Send = QByteArray (*)(TerminalClient&, const QString&);
const QHash<QString, Send>& sendingCommands() {
    static const QHash<QString, Send> commands = {
        {QStringLiteral("log"),
         [](TerminalClient& c, const QString& a) {
             return c.logIn(a);
         }},
        {QStringLiteral("chk"),
         [](TerminalClient& c, const QString& a) {
             return c.checkMember(a);
         }},
        {QStringLiteral("rts"),
         [](TerminalClient& c, const QString&) {
             return c.requestRates();
         }},
        {QStringLiteral("pls"),
         [](TerminalClient& c, const QString&) {
             return c.requestProducts();
         }},
        {QStringLiteral("loa"),
         [](TerminalClient& c, const QString&) {
             return c.requestLogOnDialog();
         }},
        {QStringLiteral("txt"),
         [](TerminalClient& c, const QString& a) {
             return c.sendText(a);
         }},
        {QStringLiteral("emt"),
         [](TerminalClient& c, const QString& a) {
             return c.sendAlert(a);
         }},
        {QStringLiteral("aip"),
         [](TerminalClient& c, const QString& a) {
             if (!a.isEmpty())
                 c.setPcNumber(a.toInt());
             return c.identify();
         }},
        {QStringLiteral("raw"),
         [](TerminalClient& c, const QString& a) {
             return c.sendRaw(a.toUtf8());
         }},
        {QStringLiteral("send"),
         [](TerminalClient& c, const QString& a) {
             return c.sendRaw(a.toUtf8());
         }},
    };
    return commands;
}

} // namespace

ScriptRunner::ScriptRunner(TerminalClient& client, int timeoutMs, int gapMs, QString helpText)
    : client_(client), timeoutMs_(timeoutMs), gapMs_(gapMs), helpText_(std::move(helpText)) {}

ScriptRunner::Result ScriptRunner::run(const QString& rawLine) {
    const QString line = rawLine.trimmed();
    if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
        return Result::Go;
    const qsizetype blank = line.indexOf(QLatin1Char(' '));
    const QString word = (blank < 0 ? line : line.left(blank)).toLower();
    const QString arg = blank < 0 ? QString() : line.mid(blank + 1);

    if (const auto send = sendingCommands().constFind(word); send != sendingCommands().cend()) {
        keepApart();
        const QByteArray sent = (*send)(client_, arg);
        lastSend_.start();
        say(QStringLiteral("-> ") + printable(sent));
    } else if (word == QLatin1String("apl")) {
        keepApart();
        sendProcessList(arg);
    } else if (word == QLatin1String("snap")) {
        keepApart();
        sendSnapshot();
    } else if (word == QLatin1String("expect")) {
        return expect(arg);
    } else if (word == QLatin1String("wait")) {
        pause(qMax(0, arg.toInt()));
    } else if (word == QLatin1String("quit") || word == QLatin1String("exit")) {
        return Result::Quit;
    } else if (word == QLatin1String("help")) {
        out() << helpText_ << Qt::endl;
    } else {
        say(QStringLiteral("?? unknown command \"%1\" (help lists them)").arg(word));
    }
    return Result::Go;
}

// The console takes whatever arrives at once as one message, so two sends in a row are
// kept apart by the gap.
void ScriptRunner::keepApart() {
    if (lastSend_.isValid() && lastSend_.elapsed() < gapMs_)
        pause(int(gapMs_ - lastSend_.elapsed()));
}

void ScriptRunner::sendProcessList(const QString& items) {
    const QStringList list = items.isEmpty() ? HostActions::runningProcesses()
                                             : items.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    client_.sendProcessList(list);
    lastSend_.start();
    say(QStringLiteral("-> %1 with %2 items")
            .arg(QString::fromLatin1(Protocol::info(Protocol::TerminalWord::Processes).text))
            .arg(list.size()));
}

void ScriptRunner::sendSnapshot() {
    const QByteArray bitmap = HostActions::snapshotBitmap();
    const qsizetype pieces = client_.sendSnapshot(bitmap);
    finishSnapshot();
    lastSend_.start();
    say(QStringLiteral("-> snapshot of %1 bytes in %2 pieces").arg(bitmap.size()).arg(pieces));
}

ScriptRunner::Result ScriptRunner::expect(const QString& start) {
    const QByteArray got = client_.waitFor(start.toUtf8(), timeoutMs_);
    if (got.isEmpty()) {
        say(QStringLiteral("FAILED: expected a message beginning \"%1\"; none came within %2 ms")
                .arg(start)
                .arg(timeoutMs_));
        return Result::Failed;
    }
    say(QStringLiteral("ok: ") + printable(got));
    return Result::Go;
}

// Until the last piece has left, or the connection is gone.
void ScriptRunner::finishSnapshot() {
    while (client_.snapshotUnderWay() && client_.isConnected())
        pause(5);
}

bool ScriptRunner::handshake(const QString& host, quint16 port, const QHostAddress& bind,
                             bool identify) {
    if (!client_.connectToConsole(host, port, bind)) {
        say(QStringLiteral("cannot bind to %1: %2").arg(bind.toString(), client_.lastError()));
        return false;
    }
    if (!client_.waitConnected(timeoutMs_)) {
        say(QStringLiteral("no connection to %1:%2: %3")
                .arg(host)
                .arg(port)
                .arg(client_.lastError()));
        return false;
    }
    say(QStringLiteral("connected to %1:%2 from %3")
            .arg(host)
            .arg(port)
            .arg(client_.socket().localAddress().toString()));
    if (!client_.waitForPresent(Msg::accept(), timeoutMs_)) {
        say(QStringLiteral("the console did not accept the connection (no %1)")
                .arg(QString::fromLatin1(Msg::accept())));
        return false;
    }
    if (identify)
        run(QStringLiteral("aip"));
    return true;
}

int ScriptRunner::runScript(const QStringList& lines) {
    for (const QString& line : lines)
        switch (run(line)) {
        case Result::Go:
            break;
        case Result::Quit:
            client_.disconnectFromConsole();
            return 0;
        case Result::Failed:
            return 1;
        }
    // Let what is still on its way out leave before closing.
    finishSnapshot();
    client_.disconnectFromConsole();
    return 0;
}

int ScriptRunner::runInteractive() {
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray typed;
    QObject::connect(&input, &QSocketNotifier::activated, &input, [&] {
        char buffer[4096];
        const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (n <= 0) {
            input.setEnabled(false);
            QCoreApplication::quit();
            return;
        }
        typed.append(buffer, n);
        qsizetype end;
        while ((end = typed.indexOf('\n')) >= 0) {
            const QString line = QString::fromUtf8(typed.left(end));
            typed.remove(0, end + 1);
            if (run(line) == Result::Quit) {
                input.setEnabled(false);
                client_.disconnectFromConsole();
                QCoreApplication::quit();
                return;
            }
        }
    });
    QObject::connect(&client_, &TerminalClient::disconnected, QCoreApplication::instance(),
                     &QCoreApplication::quit);
    say(QStringLiteral("type commands; help lists them"));
    return QCoreApplication::exec();
}

std::optional<QStringList> ScriptRunner::readScript(const std::optional<QString>& path) {
    QFile file;
    const bool opened =
        path ? (file.setFileName(*path), file.open(QIODevice::ReadOnly | QIODevice::Text))
             : file.open(stdin, QIODevice::ReadOnly | QIODevice::Text);
    if (!opened) {
        QTextStream(stderr) << "tarvoqrb-terminal: cannot read the script: " << file.errorString()
                            << '\n';
        return std::nullopt;
    }
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
}
