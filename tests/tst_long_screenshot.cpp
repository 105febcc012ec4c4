// A picture of the console as an operator first sees it: a fresh data folder, the first
// administrator made, logged in, the main window up with two terminals connected. The
// program builds what the console's start builds, with the real clock and the real
// message boxes, and types into the real dialogs. Under a display server (Xvfb when
// there is no display) it photographs the screen; the PNG goes to the build folder.

#include "base/app_folder.h"
#include "base/clock.h"
#include "people/first_admin_dialog.h"
#include "people/log_in.h"
#include "people/log_in_dialog.h"
#include "server/console.h"
#include "server/instance_lock.h"
#include "server/session_start.h"
#include "server/terminal_server.h"
#include "terminal_client.h"
#include "ui/main_window.h"
#include "ui/prompts_dialog.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {
// Answers whatever modal window is up, as an operator at the counter would.
class Operator : public QObject {
public:
    QStringList seen; // object names of the dialogs answered, in order

    Operator() {
        timer_.setInterval(20);
        connect(&timer_, &QTimer::timeout, this, &Operator::act);
        timer_.start();
    }

private:
    void act() {
        QWidget* w = QApplication::activeModalWidget();
        if (!w || w == last_)
            return;
        if (auto* box = qobject_cast<QMessageBox*>(w)) {
            last_ = w;
            seen << QStringLiteral("box:") + box->text();
            later(box->defaultButton() ? static_cast<QWidget*>(box->defaultButton()) : box);
            return;
        }
        const QString name = w->objectName();
        if (name == QLatin1String("frmFirstAdmin")) {
            last_ = w;
            seen << name;
            type(w, "txtuser", "admin");
            type(w, "txtkey", "secret");
            type(w, "txtconf", "secret");
            later(w->findChild<QPushButton*>(QStringLiteral("cmdsave")));
        } else if (name == QLatin1String("frmLog")) {
            last_ = w;
            seen << name;
            auto* user = w->findChild<QLineEdit*>(QStringLiteral("txtuser"));
            QTest::keyClicks(user, QStringLiteral("admin"));
            QTest::keyClick(user, Qt::Key_Return);
            auto* pass = w->findChild<QLineEdit*>(QStringLiteral("txtpass"));
            QTest::keyClicks(pass, QStringLiteral("SECRET"));
            QTimer::singleShot(0, pass, [pass] { QTest::keyClick(pass, Qt::Key_Return); });
        }
    }
    // What may open a further box runs after this tick, so that the timer keeps firing
    // while that box waits (a timer never fires again inside its own handler).
    static void later(QWidget* target) {
        QTimer::singleShot(0, target, [target] {
            if (auto* button = qobject_cast<QAbstractButton*>(target))
                button->click();
            else if (auto* dialog = qobject_cast<QDialog*>(target))
                dialog->accept();
        });
    }
    static void type(QWidget* w, const char* name, const char* text) {
        auto* edit = w->findChild<QLineEdit*>(QString::fromLatin1(name));
        edit->setFocus();
        QTest::keyClicks(edit, QString::fromLatin1(text));
    }

    QTimer timer_;
    QPointer<QWidget> last_;
};
} // namespace

class ScreenshotTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void mainWindowWithTwoTerminals() {
        QTemporaryDir dir;
        SystemClock clock;
        WidgetPrompts prompts(clock);
        AppFolder folder(dir.filePath(QStringLiteral("data")));
        QVERIFY(QDir().mkpath(folder.path()));
        Console console(clock, prompts, folder);
        Operator counter;

        console.openStorage();
        QVERIFY(!HasAnyAccount(console.database()));
        QVERIFY(RunFirstAdminDialog(console));
        LogInDialog logIn(console, LogInDialog::Mode::Start);
        QCOMPARE(logIn.exec(), int(QDialog::Accepted));
        QCOMPARE(console.currentOperator().CurrentUserType, QStringLiteral("Admin"));

        MainWindow window(console);
        prompts.setParentWindow(&window);
        InstanceLock instance(folder);
        QVERIFY(instance.tryLock());
        console.startUp(0, dir.filePath(QStringLiteral("odbc.ini")));
        window.finishLoading();
        window.updateCaption();
        window.show();
        console.clock().BusyWait(1000);
        window.showMaximized();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        std::vector<std::unique_ptr<TerminalClient>> terminals;
        for (int pc : {1, 2}) {
            auto t = std::make_unique<TerminalClient>();
            t->setPcNumber(pc);
            QVERIFY(t->connectToConsole(QStringLiteral("127.0.0.1"), console.server().port(),
                                        QHostAddress(QStringLiteral("127.0.0.%1").arg(20 + pc))));
            QVERIFY(t->waitConnected());
            QVERIFY(!t->waitFor("ACPT").isEmpty());
            t->identify();
            QVERIFY(QTest::qWaitFor([&] { return console.server().SocketOfPc(pc) != -1; }));
            terminals.push_back(std::move(t));
        }
        QVERIFY(LogOnPc(console, QStringLiteral("1"), QStringLiteral("M-0001"),
                        QStringLiteral("CRUZ, JUAN"), console.server().SocketOfPc(1)));
        QVERIFY(QTest::qWaitFor([&] { return window.panelText(4) == QLatin1String("3"); }));
        QCOMPARE(window.panelText(2), QStringLiteral("1 PC"));
        QTest::qWait(300); // lets the frame finish painting before the picture

        const bool onScreen = QGuiApplication::platformName() == QLatin1String("xcb");
        const QPixmap shot = onScreen ? window.screen()->grabWindow(0, window.frameGeometry().x(),
                                                                    window.frameGeometry().y(),
                                                                    window.frameGeometry().width(),
                                                                    window.frameGeometry().height())
                                      : window.grab();
        const QString folderOut = qEnvironmentVariable("TARVO_BUILD_DIR", QDir::currentPath()) +
                                  QStringLiteral("/screenshots");
        QVERIFY(QDir().mkpath(folderOut));
        const QString file = folderOut + QStringLiteral("/main_window.png");
        QVERIFY(shot.save(file, "PNG"));
        qInfo("Screenshot (%s): %s", qPrintable(QGuiApplication::platformName()), qPrintable(file));

        // A real picture, not a blank one: the frame, menus and list give many colours.
        const QImage image(file);
        QVERIFY(image.width() >= window.width() / 2);
        QSet<QRgb> colours;
        for (int y = 0; y < image.height(); y += 7)
            for (int x = 0; x < image.width(); x += 7)
                colours.insert(image.pixel(x, y));
        QVERIFY(colours.size() > 50);
        QCOMPARE(counter.seen.first(), QStringLiteral("frmFirstAdmin"));
        QVERIFY(counter.seen.contains(QStringLiteral("frmLog")));
    }
};

int main(int argc, char* argv[]) {
    // Without a display, the test runs itself again under Xvfb so that the picture is of
    // real windows on a real X screen.
    const bool underXvfb = argc > 1 && qstrcmp(argv[argc - 1], "--under-xvfb") == 0;
    if (!underXvfb && qEnvironmentVariableIsEmpty("DISPLAY") &&
        !QStandardPaths::findExecutable(QStringLiteral("xvfb-run")).isEmpty()) {
        QCoreApplication core(argc, argv);
        QProcess run;
        run.setProcessChannelMode(QProcess::ForwardedChannels);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        run.setProcessEnvironment(env);
        QStringList args = {QStringLiteral("-a"), QStringLiteral("-s"),
                            QStringLiteral("-screen 0 1280x800x24"),
                            QCoreApplication::applicationFilePath()};
        for (int i = 1; i < argc; ++i)
            args << QString::fromLocal8Bit(argv[i]);
        args << QStringLiteral("--under-xvfb");
        run.start(QStringLiteral("xvfb-run"), args);
        if (!run.waitForFinished(240000))
            return 1;
        return run.exitStatus() == QProcess::NormalExit ? run.exitCode() : 1;
    }
    int count = underXvfb ? argc - 1 : argc;
    QApplication app(count, argv);
    ScreenshotTest test;
    return QTest::qExec(&test, count, argv);
}

#include "tst_long_screenshot.moc"
