// tarvoqrb-terminal: the terminal side of the console protocol, for trying the console
// by hand, scripting it, or loading it with a swarm of terminals.
#include "terminal_client.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTimer>

#include <memory>
#include <vector>

#include <unistd.h>

namespace {

constexpr auto Usage = R"(
Interactive (the default when standard input is a terminal): type one command a line.
Scripted (--script FILE, or standard input that is not a terminal): the same commands,
run in order; the program ends non-zero at the first expectation that is not met.

Commands:
  log ID:NAME;PC     send "LOG ID:NAME;PC" (start a session)
  chk ID:NAME;PC     send "CHK ID:NAME;PC" (member log-in)
  rts                send "RTS" (ask for the rates)
  pls                send "PLS" (ask for the product list)
  loa                send "Loa" (open the log-on dialog on the console)
  txt TEXT           send "TXT TEXT" (a line for the console's message log)
  emt TEXT           send "EMT TEXT" (a notice for the operator)
  apl [A;B;...]      send "APL" with the given items, or with this machine's processes
  snap               send a screen snapshot
  aip [N]            identify again, as PC N when given
  raw TEXT           send TEXT exactly (also: send TEXT)
  expect TEXT        wait (--timeout) for a message beginning with TEXT
  wait MS            let MS milliseconds pass, still receiving
  quit               close the connection and end
Lines starting with # are comments.

The terminal answers "RQPR" with its process list and "SNPS" with a snapshot by itself.
"LGOF", "RSTR", "PTAY" and "KLPR NAME" are only printed unless --obey is given; with it
they run loginctl terminate-user, systemctl reboot, systemctl poweroff, or end this
user's processes of that name.

Swarm (--swarm N): N terminals, PC 1..N, the k-th bound to 127.0.0.k, each identified;
a summary is printed and they stay connected until interrupted or --swarm-seconds.

Exit status: 0 done, 1 an expectation not met, 2 bad options or no connection.)";

QTextStream& out() {
    static QTextStream stream(stdout);
    return stream;
}

// A message as a readable line: control bytes escaped, long ones cut.
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

void say(const QString& line) {
    out() << QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz")) << ' ' << line
          << Qt::endl;
}

void report(TerminalClient& client, const QString& who) {
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

void pause(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

// Runs the commands of one session; expectations wait on the client.
class Commands {
public:
    Commands(TerminalClient& client, int timeoutMs, int gapMs)
        : client_(client), timeoutMs_(timeoutMs), gapMs_(gapMs) {}

    enum class Result { Go, Quit, Failed };

    Result run(const QString& rawLine) {
        const QString line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            return Result::Go;
        const qsizetype blank = line.indexOf(QLatin1Char(' '));
        const QString word = (blank < 0 ? line : line.left(blank)).toLower();
        const QString arg = blank < 0 ? QString() : line.mid(blank + 1);
        auto sent = [this](const QByteArray& m) {
            lastSend_.start();
            say(QStringLiteral("-> ") + printable(m));
        };
        static const QStringList sending = {
            QStringLiteral("log"), QStringLiteral("chk"), QStringLiteral("rts"),
            QStringLiteral("pls"), QStringLiteral("loa"), QStringLiteral("txt"),
            QStringLiteral("emt"), QStringLiteral("apl"), QStringLiteral("snap"),
            QStringLiteral("aip"), QStringLiteral("raw"), QStringLiteral("send")};
        if (sending.contains(word))
            keepApart();

        if (word == QLatin1String("log")) {
            client_.logIn(arg);
            sent("LOG " + arg.toUtf8());
        } else if (word == QLatin1String("chk")) {
            client_.checkMember(arg);
            sent("CHK " + arg.toUtf8());
        } else if (word == QLatin1String("rts")) {
            client_.requestRates();
            sent("RTS");
        } else if (word == QLatin1String("pls")) {
            client_.requestProducts();
            sent("PLS");
        } else if (word == QLatin1String("loa")) {
            client_.requestLogOnDialog();
            sent("Loa");
        } else if (word == QLatin1String("txt")) {
            client_.sendText(arg);
            sent("TXT " + arg.toUtf8());
        } else if (word == QLatin1String("emt")) {
            client_.sendAlert(arg);
            sent("EMT " + arg.toUtf8());
        } else if (word == QLatin1String("apl")) {
            QStringList items = arg.isEmpty() ? TerminalClient::RunningProcesses()
                                              : arg.split(QLatin1Char(';'), Qt::SkipEmptyParts);
            client_.sendProcessList(items);
            lastSend_.start();
            say(QStringLiteral("-> APL with %1 items").arg(items.size()));
        } else if (word == QLatin1String("snap")) {
            const QByteArray bitmap = TerminalClient::SnapshotBitmap();
            client_.sendSnapshot(bitmap);
            while (client_.snapshotUnderWay() && client_.isConnected())
                pause(5);
            lastSend_.start();
            say(QStringLiteral("-> snapshot of %1 bytes in %2 pieces")
                    .arg(bitmap.size())
                    .arg(TerminalClient::SnapshotPieces(bitmap).size()));
        } else if (word == QLatin1String("aip")) {
            if (!arg.isEmpty())
                client_.setPcNumber(arg.toInt());
            client_.identify();
            sent("AIP" + QByteArray::number(client_.pcNumber()));
        } else if (word == QLatin1String("raw") || word == QLatin1String("send")) {
            client_.sendRaw(arg.toUtf8());
            sent(arg.toUtf8());
        } else if (word == QLatin1String("expect")) {
            const QByteArray got = client_.waitFor(arg.toUtf8(), timeoutMs_);
            if (got.isEmpty()) {
                say(QStringLiteral("FAILED: expected a message beginning \"%1\"; none came "
                                   "within %2 ms")
                        .arg(arg)
                        .arg(timeoutMs_));
                return Result::Failed;
            }
            say(QStringLiteral("ok: ") + printable(got));
        } else if (word == QLatin1String("wait")) {
            pause(qMax(0, arg.toInt()));
        } else if (word == QLatin1String("quit") || word == QLatin1String("exit")) {
            return Result::Quit;
        } else if (word == QLatin1String("help")) {
            out() << Usage << Qt::endl;
        } else {
            say(QStringLiteral("?? unknown command \"%1\" (help lists them)").arg(word));
        }
        return Result::Go;
    }

private:
    // The console takes whatever arrives at once as one message, so two sends in a row
    // are kept apart by the gap.
    void keepApart() {
        if (lastSend_.isValid() && lastSend_.elapsed() < gapMs_)
            pause(int(gapMs_ - lastSend_.elapsed()));
    }

    TerminalClient& client_;
    int timeoutMs_;
    int gapMs_;
    QElapsedTimer lastSend_;
};

// Connects and identifies one terminal; false, said, when the console does not answer.
bool handshake(TerminalClient& client, Commands& commands, const QString& host, quint16 port,
               const QHostAddress& bind, int timeoutMs, bool identify) {
    if (!client.connectToConsole(host, port, bind)) {
        say(QStringLiteral("cannot bind to %1: %2").arg(bind.toString(), client.lastError()));
        return false;
    }
    if (!client.waitConnected(timeoutMs)) {
        say(QStringLiteral("no connection to %1:%2: %3")
                .arg(host)
                .arg(port)
                .arg(client.lastError()));
        return false;
    }
    say(QStringLiteral("connected to %1:%2 from %3")
            .arg(host)
            .arg(port)
            .arg(client.socket().localAddress().toString()));
    if (!client.waitForPresent("ACPT", timeoutMs)) {
        say(QStringLiteral("the console did not accept the connection (no ACPT)"));
        return false;
    }
    if (identify)
        commands.run(QStringLiteral("aip"));
    return true;
}

int runSwarm(int count, const QString& host, quint16 port, int timeoutMs, int seconds, bool obey) {
    std::vector<std::unique_ptr<TerminalClient>> swarm;
    QElapsedTimer clock;
    clock.start();
    for (int k = 1; k <= count; ++k) {
        auto t = std::make_unique<TerminalClient>();
        t->setPcNumber(k);
        t->setObey(obey);
        t->setInboxLimit(100);
        report(*t, QStringLiteral("[PC %1] ").arg(k));
        if (!t->connectToConsole(host, port, QHostAddress(QStringLiteral("127.0.0.%1").arg(k))))
            say(QStringLiteral("[PC %1] cannot bind to 127.0.0.%1: %2").arg(k).arg(t->lastError()));
        swarm.push_back(std::move(t));
    }
    // Each identifies as soon as the console has accepted it.
    int accepted = 0;
    for (auto& t : swarm) {
        TerminalClient* c = t.get();
        QObject::connect(c, &TerminalClient::messageReceived, c,
                         [c, &accepted](const QByteArray& m) {
                             if (m == "ACPT") {
                                 c->identify();
                                 ++accepted;
                             }
                         });
    }
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (accepted == count || clock.elapsed() > timeoutMs)
            loop.quit();
    });
    check.start(5);
    loop.exec();
    check.stop();
    say(QStringLiteral("swarm: %1 of %2 terminals accepted and identified with AIP (PC 1..%2 from "
                       "127.0.0.1..127.0.0.%2) in %3 ms")
            .arg(accepted)
            .arg(count)
            .arg(clock.elapsed()));
    if (accepted == 0)
        return 2;
    if (seconds > 0)
        QTimer::singleShot(seconds * 1000, QCoreApplication::instance(), &QCoreApplication::quit);
    const int code = QCoreApplication::exec();
    int connected = 0;
    for (auto& t : swarm)
        connected += t->isConnected() ? 1 : 0;
    say(QStringLiteral("swarm: %1 of %2 still connected at the end").arg(connected).arg(count));
    return code;
}

bool wantsGui(int argc, char* argv[]) {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("DISPLAY") ||
        qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        return true;
    for (int i = 1; i < argc; ++i)
        if (qstrcmp(argv[i], "-platform") == 0)
            return true;
    return false;
}

} // namespace

int main(int argc, char* argv[]) {
    // A screen is only needed to grab it for a snapshot; without one a picture is drawn.
    std::unique_ptr<QCoreApplication> app;
    if (wantsGui(argc, argv))
        app = std::make_unique<QGuiApplication>(argc, argv);
    else
        app = std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tarvoqrb-terminal"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The terminal side of the Tarvo QRB console protocol.") +
        QString::fromLatin1(Usage));
    parser.addHelpOption();
    const QCommandLineOption host(QStringLiteral("host"), QStringLiteral("Console address."),
                                  QStringLiteral("ADDR"), QStringLiteral("127.0.0.1"));
    const QCommandLineOption port(QStringLiteral("port"), QStringLiteral("Console port."),
                                  QStringLiteral("N"), QStringLiteral("1066"));
    const QCommandLineOption pc(QStringLiteral("pc"), QStringLiteral("This terminal's PC number."),
                                QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption bind(QStringLiteral("bind"),
                                  QStringLiteral("Local address to connect from (the console "
                                                 "tells terminals apart by address)."),
                                  QStringLiteral("ADDR"));
    const QCommandLineOption obey(QStringLiteral("obey"),
                                  QStringLiteral("Carry out log-off, restart, shut-down and "
                                                 "end-process requests."));
    const QCommandLineOption noIdentify(QStringLiteral("no-identify"),
                                        QStringLiteral("Do not send \"AIP\" after connecting."));
    const QCommandLineOption script(QStringLiteral("script"),
                                    QStringLiteral("Run the commands of FILE, then end."),
                                    QStringLiteral("FILE"));
    const QCommandLineOption timeout(QStringLiteral("timeout"),
                                     QStringLiteral("How long connect and expect wait."),
                                     QStringLiteral("MS"), QStringLiteral("5000"));
    const QCommandLineOption swarm(QStringLiteral("swarm"),
                                   QStringLiteral("Connect N terminals (at most 254)."),
                                   QStringLiteral("N"));
    const QCommandLineOption swarmSeconds(QStringLiteral("swarm-seconds"),
                                          QStringLiteral("End the swarm after S seconds."),
                                          QStringLiteral("S"), QStringLiteral("0"));
    const QCommandLineOption gap(QStringLiteral("gap"),
                                 QStringLiteral("Least time between two sends, so that the "
                                                "console reads them as two messages."),
                                 QStringLiteral("MS"), QStringLiteral("50"));
    parser.addOptions(
        {host, port, pc, bind, obey, noIdentify, script, timeout, gap, swarm, swarmSeconds});
    parser.process(*app);

    auto number = [&](const QCommandLineOption& option, int low, int high, int* value) {
        bool ok = false;
        *value = parser.value(option).toInt(&ok);
        if (ok && *value >= low && *value <= high)
            return true;
        QTextStream(stderr) << "tarvoqrb-terminal: --" << option.names().first() << " takes a "
                            << "number from " << low << " to " << high << ".\n";
        return false;
    };
    int portNumber = 0, pcNumber = 0, timeoutMs = 0, seconds = 0, gapMs = 0;
    if (!number(port, 1, 65535, &portNumber) || !number(pc, 0, 255, &pcNumber) ||
        !number(gap, 0, 60000, &gapMs) || !number(timeout, 1, 3600000, &timeoutMs) ||
        !number(swarmSeconds, 0, 86400 * 365, &seconds))
        return 2;
    QHostAddress bindAddress;
    if (parser.isSet(bind) && !bindAddress.setAddress(parser.value(bind))) {
        QTextStream(stderr) << "tarvoqrb-terminal: --bind takes an IP address.\n";
        return 2;
    }

    if (parser.isSet(swarm)) {
        int count = 0;
        if (!number(swarm, 1, 254, &count))
            return 2;
        return runSwarm(count, parser.value(host), quint16(portNumber), timeoutMs, seconds,
                        parser.isSet(obey));
    }

    TerminalClient client;
    client.setPcNumber(pcNumber);
    client.setObey(parser.isSet(obey));
    report(client, QString());
    Commands commands(client, timeoutMs, gapMs);

    const bool scripted = parser.isSet(script) || !isatty(STDIN_FILENO);
    QStringList lines;
    if (scripted) {
        QFile file;
        const bool opened = parser.isSet(script)
                                ? (file.setFileName(parser.value(script)),
                                   file.open(QIODevice::ReadOnly | QIODevice::Text))
                                : file.open(stdin, QIODevice::ReadOnly | QIODevice::Text);
        if (!opened) {
            QTextStream(stderr) << "tarvoqrb-terminal: cannot read the script: "
                                << file.errorString() << '\n';
            return 2;
        }
        lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    }

    if (!handshake(client, commands, parser.value(host), quint16(portNumber), bindAddress,
                   timeoutMs, !parser.isSet(noIdentify)))
        return 2;

    if (scripted) {
        for (const QString& line : lines)
            switch (commands.run(line)) {
            case Commands::Result::Go:
                break;
            case Commands::Result::Quit:
                client.disconnectFromConsole();
                return 0;
            case Commands::Result::Failed:
                return 1;
            }
        // Let what is still on its way out leave before closing.
        while (client.snapshotUnderWay() && client.isConnected())
            pause(10);
        client.disconnectFromConsole();
        return 0;
    }

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
            if (commands.run(line) == Commands::Result::Quit) {
                input.setEnabled(false);
                client.disconnectFromConsole();
                QCoreApplication::quit();
                return;
            }
        }
    });
    QObject::connect(&client, &TerminalClient::disconnected, app.get(), &QCoreApplication::quit);
    say(QStringLiteral("type commands; help lists them"));
    return QCoreApplication::exec();
}
