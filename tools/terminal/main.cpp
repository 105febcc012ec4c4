// tarvoqrb-terminal: the terminal side of the console protocol, for trying the console
// by hand, scripting it, or loading it with a swarm of terminals.
#include "script_runner.h"
#include "swarm.h"
#include "terminal_client.h"
#include "traffic_log.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QTextStream>

#include <memory>
#include <optional>

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
With --swarm-every MS each also starts a session and asks for the rates every MS,
and the replies' times are summed up each minute and at the end.

Exit status: 0 done, 1 an expectation not met, 2 bad options or no connection.)";

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
    const QCommandLineOption swarmEvery(QStringLiteral("swarm-every"),
                                        QStringLiteral("Each terminal of the swarm starts a "
                                                       "session and asks for the rates every "
                                                       "MS."),
                                        QStringLiteral("MS"), QStringLiteral("0"));
    parser.addOptions({host, port, pc, bind, obey, noIdentify, script, timeout, gap, swarm,
                       swarmSeconds, swarmEvery});
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
    int portNumber = 0, pcNumber = 0, timeoutMs = 0, seconds = 0, gapMs = 0, everyMs = 0;
    if (!number(port, 1, 65535, &portNumber) || !number(pc, 0, 255, &pcNumber) ||
        !number(gap, 0, 60000, &gapMs) || !number(timeout, 1, 3600000, &timeoutMs) ||
        !number(swarmSeconds, 0, 86400 * 365, &seconds) ||
        !number(swarmEvery, 0, 3600000, &everyMs))
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
        return runSwarm({count, parser.value(host), quint16(portNumber), timeoutMs, seconds,
                         parser.isSet(obey), everyMs});
    }

    TerminalClient client;
    client.setPcNumber(pcNumber);
    client.setObey(parser.isSet(obey));
    reportTraffic(client, QString());
    ScriptRunner runner(client, timeoutMs, gapMs, QString::fromLatin1(Usage));

    const bool scripted = parser.isSet(script) || !isatty(STDIN_FILENO);
    std::optional<QStringList> lines;
    if (scripted) {
        lines = ScriptRunner::readScript(
            parser.isSet(script) ? std::optional<QString>(parser.value(script)) : std::nullopt);
        if (!lines)
            return 2;
    }
    if (!runner.handshake(parser.value(host), quint16(portNumber), bindAddress,
                          !parser.isSet(noIdentify)))
        return 2;
    return scripted ? runner.runScript(*lines) : runner.runInteractive();
}
