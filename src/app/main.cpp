#include "base/app_folder.h"
#include "base/clock.h"
#include "console/console.h"
#include "console/instance_lock.h"
#include "console/startup_checks.h"
#include "people/first_admin_dialog.h"
#include "people/log_in.h"
#include "people/log_in_dialog.h"
#include "store/database.h"
#include "store/report_source.h"
#include "store/settings_file.h"
#include "ui/main_window.h"
#include "ui/prompts_dialog.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTextStream>

namespace {
constexpr auto ProgramName = "Tarvo QRB";

bool asksOnlyForText(int argc, char* argv[]) {
    for (int i = 1; i < argc; ++i) {
        const QByteArray a(argv[i]);
        if (a == "-h" || a == "--help" || a == "--help-all" || a == "-?" || a == "-v" ||
            a == "--version")
            return true;
    }
    return false;
}

void fail(Prompts& prompts, const QString& text) {
    prompts.message(text, QString::fromLatin1(ProgramName), Prompts::Icon::Critical);
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication::setApplicationName(QStringLiteral("tarvoqrb"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TARVO_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tarvo QRB: the internet café console."));
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption dataDir(QStringLiteral("data-dir"),
                               QStringLiteral("Folder of the database, settings, product list, "
                                              "logs and snapshot (default: the program's folder "
                                              "when writable, else the user's data folder)."),
                               QStringLiteral("DIR"));
    QCommandLineOption port(QStringLiteral("port"),
                            QStringLiteral("TCP port the terminals connect to (default 1066)."),
                            QStringLiteral("N"), QString::number(TerminalServer::DefaultPort));
    QCommandLineOption odbcIni(QStringLiteral("odbc-ini"),
                               QStringLiteral("ODBC ini file that receives the report data "
                                              "source (default: $ODBCINI, else ~/.odbc.ini)."),
                               QStringLiteral("FILE"));
    parser.addOptions({dataDir, port, odbcIni});

    // --help and --version answer without reaching the windowing system, so they work
    // where there is no display.
    if (asksOnlyForText(argc, argv)) {
        QCoreApplication text(argc, argv);
        parser.process(text);
    }

    raiseOpenFilesLimit();
    QApplication app(argc, argv);
    QApplication::setApplicationDisplayName(QString::fromLatin1(ProgramName));
    parser.process(app);

    bool portOk = false;
    const uint portNumber = parser.value(port).toUInt(&portOk);
    if (!portOk || portNumber > 65535) {
        QTextStream(stderr) << "tarvoqrb: --port takes a number from 0 to 65535.\n";
        return 2;
    }
    const QString folderPath =
        parser.isSet(dataDir) ? parser.value(dataDir) : AppFolder::defaultPath();
    if (!QDir().mkpath(folderPath)) {
        QTextStream(stderr) << "tarvoqrb: cannot create the data folder " << folderPath << '\n';
        return 2;
    }
    const QString odbcIniPath =
        parser.isSet(odbcIni) ? parser.value(odbcIni) : ReportSource::defaultIniPath();

    SystemClock clock;
    WidgetPrompts prompts(clock);
    AppFolder folder(folderPath);
    Console console(clock, prompts, folder);

    // A folder that cannot be written is said to be so before anything else is tried.
    if (const QString problem = dataFolderProblem(folder.path()); !problem.isEmpty()) {
        fail(prompts, problem);
        return 1;
    }

    // Storage and the operator's log-in come first; on any failure nothing is written.
    try {
        console.openStorage();
        if (!hasAnyAccount(console.database()) && !runFirstAdminDialog(console))
            return 0;
    } catch (const StoreError& e) {
        fail(prompts, e.text());
        return 1;
    } catch (const SettingsError& e) {
        fail(prompts, e.text());
        return 1;
    }
    {
        LogInDialog logIn(console, LogInDialog::Mode::Start);
        if (logIn.exec() != QDialog::Accepted)
            return 0;
    }

    // The main window's loading.
    MainWindow window(console);
    prompts.setParentWindow(&window);
    window.readNoticesOf(prompts);
    InstanceLock instance(folder);
    if (!instance.tryLock()) {
        if (instance.heldElsewhere())
            prompts.message(QStringLiteral("Application is already Running"),
                            QString::fromLatin1(ProgramName), Prompts::Icon::Exclamation);
        else
            fail(prompts, dataFolderProblem(folder.path()).isEmpty()
                              ? QStringLiteral("The console cannot lock its data folder %1.")
                                    .arg(folder.path())
                              : dataFolderProblem(folder.path()));
        return 1;
    }
    Console::StartupReport report;
    try {
        report = console.startUp(quint16(portNumber), odbcIniPath);
    } catch (const StoreError& e) {
        fail(prompts, e.text());
        return 1;
    }
    window.finishLoading();

    // Closing the window ends the program at once; the sessions stay in the session log.
    QObject::connect(&window, &MainWindow::applicationClosing, &app,
                     [] { QCoreApplication::exit(0); });
    window.updateCaption();
    window.show();
    console.clock().busyWait(1000);
    window.showMaximized();
    // What start-up could not do is said once, plainly, before the day's work begins.
    if (!report.problems.isEmpty())
        prompts.message(report.problems.join(QStringLiteral("\n\n")),
                        QString::fromLatin1(ProgramName), Prompts::Icon::Exclamation);

    const int code = app.exec();
    prompts.setParentWindow(nullptr);
    return code;
}
