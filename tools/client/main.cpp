// tarvoqrb-client: runs on every café PC. It locks the PC while no session runs, shows
// the customer's meter while one does, and answers the console's requests.
#include "client_app.h"
#include "client_settings.h"

#include "base/clock.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTextStream>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tarvoqrb-client"));
    QApplication::setApplicationVersion(QStringLiteral(TARVO_VERSION));
    // The lock screen is the only window at times; hiding it must not end the program.
    QApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral(
            "The Tarvo QRB terminal client: locks this PC and shows the customer's meter.\n"
            "Settings are read from the first of these that exists (or --config FILE):\n  ") +
        ClientSettings::candidateFiles().join(QStringLiteral("\n  ")));
    parser.addHelpOption();
    parser.addVersionOption();
    ClientSettings::addOptions(parser);
    parser.process(app);

    const ClientSettings settings = ClientSettings::load(parser);
    for (const QString& problem : settings.problems)
        QTextStream(stderr) << "tarvoqrb-client: " << problem << '\n';

    SystemClock clock;
    ClientApp client(settings, clock);
    client.start();
    return QApplication::exec();
}
