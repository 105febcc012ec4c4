#include "base/app_folder.h"
#include "base/clock.h"
#include "base/prompts.h"
#include "server/console.h"
#include "server/terminal_server.h"
#include "store/report_source.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTextStream>

namespace {
// Until the windows come, the console reports on its standard streams.
class StreamPrompts final : public Prompts {
public:
    Answer ask(const QString& text, const QString& title, Buttons buttons, Icon) override {
        QTextStream(stderr) << (title.isEmpty() ? QStringLiteral("Tarvo QRB") : title) << ": "
                            << text << '\n';
        return buttons == Buttons::YesNo ? Answer::Yes : Answer::Ok;
    }
    void notice(const QString& text, const QString& title, Icon icon) override {
        ask(text, title, Buttons::Ok, icon);
    }
    QString consoleBox(const ConsoleBox& box) override {
        ask(box.text, box.title, Buttons::Ok, Icon::None);
        return QString();
    }
};
} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tarvoqrb"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tarvo QRB"));
    QApplication::setApplicationVersion(QStringLiteral(TARVO_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tarvo QRB: the internet café console."));
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption dataDir(QStringLiteral("data-dir"),
                               QStringLiteral("Folder of the database, settings, product list, "
                                              "logs and snapshot."),
                               QStringLiteral("DIR"));
    QCommandLineOption port(QStringLiteral("port"),
                            QStringLiteral("TCP port the terminals connect to (default 1066)."),
                            QStringLiteral("N"), QString::number(TerminalServer::DefaultPort));
    parser.addOptions({dataDir, port});
    parser.process(app);

    bool portOk = false;
    const uint portNumber = parser.value(port).toUInt(&portOk);
    if (!portOk || portNumber > 65535) {
        QTextStream(stderr) << "tarvoqrb: --port takes a number from 0 to 65535.\n";
        return 2;
    }
    QString folderPath = parser.isSet(dataDir) ? parser.value(dataDir) : AppFolder::defaultPath();
    if (!QDir().mkpath(folderPath)) {
        QTextStream(stderr) << "tarvoqrb: cannot create the data folder " << folderPath << '\n';
        return 2;
    }

    SystemClock clock;
    StreamPrompts prompts;
    AppFolder folder(folderPath);
    Console console(clock, prompts, folder);
    QObject::connect(&console, &Console::messageLogged,
                     [](const QString& e) { QTextStream(stdout) << e.trimmed() << Qt::endl; });
    try {
        console.openStorage();
        const auto report = console.startUp(quint16(portNumber), ReportSource::DefaultIniPath());
        QTextStream out(stdout);
        out << "Data folder: " << folder.path() << '\n'
            << "Terminals: " << console.nofpc() << '\n'
            << "Sessions restored: " << report.restored << '\n'
            << "Listening on port " << console.server().port() << Qt::endl;
        for (const auto& p : report.problems)
            out << "Note: " << p << '\n';
    } catch (const std::exception& e) {
        QTextStream(stderr) << "tarvoqrb: " << QString::fromUtf8(e.what()) << '\n';
        return 1;
    }
    return app.exec();
}
