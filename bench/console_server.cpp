// The console for the benchmarks that measure it from another process: the same Console
// and terminal server as the real program, on a fresh data folder; with --window also
// its main window and its real message boxes and notices (offscreen unless a display is
// given). Prints "port N" and "data DIR", then serves until its standard input closes.
#include "base/app_folder.h"
#include "base/clock.h"
#include "base/prompts.h"
#if __has_include("console/console.h")
#include "console/console.h"
#else
#include "server/console.h"
#include "server/terminal_server.h"
#endif

#if __has_include("console/startup_checks.h")
#include "console/startup_checks.h"
#include "ui/main_window.h"
#include "ui/prompts_dialog.h"
#define TARVO_WINDOW 1
#include "billing/settlement.h"
#include "server/session_start.h"
#endif

#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>
#include <memory>

#include <unistd.h>

namespace {
QtMessageHandler standardHandler = nullptr;

// The offscreen platform says, for every window shown, what it cannot do; nothing else of
// what Qt says is dropped.
void quietOffscreen(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (text.startsWith(QLatin1String("This plugin does not support")))
        return;
    if (standardHandler)
        standardHandler(type, context, text);
    else
        std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
}
} // namespace

int main(int argc, char* argv[]) {
    standardHandler = qInstallMessageHandler(quietOffscreen);
    bool window = false;
    for (int i = 1; i < argc; ++i)
        window |= qstrcmp(argv[i], "--window") == 0;
#ifdef TARVO_WINDOW
    raiseOpenFilesLimit();
    if (window && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    std::unique_ptr<QCoreApplication> app = window ? std::make_unique<QApplication>(argc, argv)
                                                   : std::make_unique<QCoreApplication>(argc, argv);
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
    SilentPrompts silent;
#ifdef TARVO_WINDOW
    WidgetPrompts shown(clock);
    Prompts& prompts = window ? static_cast<Prompts&>(shown) : silent;
#else
    Prompts& prompts = silent;
#endif
    AppFolder folder(dir.path());
    Console console(clock, prompts, folder);
    console.openStorage();
    console.startUp(0, dir.filePath(QStringLiteral("odbc.ini")));
#ifdef TARVO_WINDOW
    std::unique_ptr<MainWindow> frame;
    if (window) {
        console.currentOperator() = {QStringLiteral("BENCH"), QStringLiteral("Admin"), {}};
        frame = std::make_unique<MainWindow>(console);
        shown.setParentWindow(frame.get());
        frame->show();
        frame->finishLoading();
    }
#endif

    QTextStream out(stdout);
    out << "port " << console.server().port() << '\n' << "data " << dir.path() << Qt::endl;

    // The benchmark ends the console by closing its input; "bill N" settles PC N as the
    // bill's Save button does (the question answered Yes); "start N" puts a walk-in on
    // PC N as the log-on dialog does.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray typed;
    QObject::connect(&input, &QSocketNotifier::activated, app.get(), [&] {
        char buffer[256];
        const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (n <= 0) {
            QCoreApplication::quit();
            return;
        }
        typed.append(buffer, n);
        for (qsizetype end; (end = typed.indexOf('\n')) >= 0; typed.remove(0, end + 1)) {
            const QByteArray line = typed.left(end);
#ifdef TARVO_WINDOW
            if (line.startsWith("bill ")) {
                const int pc = line.mid(5).toInt();
                if (const auto bill =
                        stopSession(console.billingParts(), pc, TimeLimitSlots::slotOfPc(pc)))
                    saveBill(console.billingParts(), *bill);
            } else if (line.startsWith("start ")) {
                const int pc = line.mid(6).toInt();
                logOnPc(
                    console.sessionParts(), QString::number(pc), QStringLiteral("TRM-%1").arg(pc),
                    QStringLiteral("WALK-IN ON TRM %1").arg(pc), console.control().socketOfPc(pc));
            }
#endif
        }
    });
    return QCoreApplication::exec();
}
