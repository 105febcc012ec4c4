// A console with no window, for the benchmarks that measure it from another process:
// the same Console and terminal server as the real program, on a fresh data folder.
// Prints "port N" and "data DIR", then serves until its standard input closes.
#include "base/app_folder.h"
#include "base/clock.h"
#include "base/prompts.h"
#if __has_include("console/console.h")
#include "console/console.h"
#else
#include "server/console.h"
#include "server/terminal_server.h"
#endif

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTextStream>

#include <unistd.h>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    const int at = int(args.indexOf(QStringLiteral("--terminals")));
    const int terminals = at > 0 && at + 1 < args.size() ? args[at + 1].toInt() : 24;

    QTemporaryDir dir;
    if (!dir.isValid())
        return 1;
    QFile settings(dir.filePath(QStringLiteral("TarvoQRB.INI")));
    if (!settings.open(QIODevice::WriteOnly))
        return 1;
    settings.write(QByteArray::number(terminals) + "=NOFPC\n1=PAGE\nPlease don't Modify....\n");
    settings.close();

    SystemClock clock;
    SilentPrompts prompts;
    AppFolder folder(dir.path());
    Console console(clock, prompts, folder);
    console.openStorage();
    console.startUp(0, dir.filePath(QStringLiteral("odbc.ini")));

    QTextStream out(stdout);
    out << "port " << console.server().port() << '\n' << "data " << dir.path() << Qt::endl;

    // The benchmark ends the console by closing its input.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&] {
        char buffer[256];
        if (::read(STDIN_FILENO, buffer, sizeof buffer) <= 0)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
