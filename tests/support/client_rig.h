#pragma once

#include "base/format.h"
#include "billing/board_rules.h"
#include "client_app.h"
#include "lock_window.h"
#include "server/session_start.h"
#include "support/console_fixture.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <memory>

// The terminal client on a real console over loopback TCP, sharing the console's hand-set
// clock. The machine's log-off, restart and shut down only get recorded, never run.
struct ClientRig {
    std::unique_ptr<ConsoleFixture> fx = std::make_unique<ConsoleFixture>();
    std::unique_ptr<ClientApp> client;
    QStringList commands; // "program arg arg" the client would have started
    int pc = 5;
    QString stateFile; // where the client keeps its session; none unless set
    quint16 port = 0;  // the console's, kept while it is away (0: ask the console)

    Console& console() { return *fx->console; }

    // The console, with two members and a product list.
    void startConsole() {
        QVERIFY(
            fx->writeFile(QStringLiteral("Products.LST"), "Coffee @ 25.00\r\nChips @ 15.50\r\n"));
        fx->start();
        port = console().server().port();
        fx->exec("INSERT INTO members (CID, LN, FN) VALUES ('M-0001', 'Dela Cruz', 'Juan'), "
                 "('M-0002', 'Reyes', 'Ana')");
    }

    ClientSettings settings(bool allowPower = false) const {
        ClientSettings s;
        s.consoleAddress = QStringLiteral("127.0.0.1");
        s.port = port != 0 ? port : fx->console->server().port();
        s.pc = pc;
        s.localAddress = QHostAddress(QStringLiteral("127.0.0.%1").arg(pc));
        s.cafeName = QStringLiteral("Kape at Kompyuter");
        s.allowPowerActions = allowPower;
        s.stateFile = stateFile;
        return s;
    }

    // Rates and products are asked for at once: each must still reach the console whole.
    void startClient(bool allowPower = false) {
        client = std::make_unique<ClientApp>(settings(allowPower), fx->clock);
        client->terminal().host().setCommandRunner(
            [this](const QString& program, const QStringList& args) {
                commands << (QStringList{program} + args).join(QLatin1Char(' '));
                return true;
            });
        client->start();
        waitOnline();
    }

    void waitOnline() {
        QTRY_VERIFY_WITH_TIMEOUT(console().control().socketOfPc(pc) != -1 && fx->record(pc).online,
                                 10000);
        QTRY_VERIFY(client->session().hasRates());
        QTRY_VERIFY(!client->session().products().isEmpty());
        QTRY_VERIFY(client->link().isOnline());
    }

    // A walk-in put on the PC by the operator; the client unlocks.
    void assign() {
        QVERIFY(logOnPc(
            console().sessionParts(), QString::number(pc), QStringLiteral("TRM-%1").arg(pc),
            QStringLiteral("WALK-IN ON TRM %1").arg(pc), console().control().socketOfPc(pc)));
        QTRY_VERIFY(visible("frmMeter"));
    }

    // Stopped and started again on the same data and port, as after a crash.
    void restartConsole() {
        fx->console.reset();
        fx->open().startUp(port, fx->iniPath());
        QVERIFY(console().server().isListening());
    }

    // Time passes and the console's board ticks, as its window's timer would.
    void pass(int minutes) {
        fx->clock.advance(minutes * 60000);
        boardTick(console().board(), console().sessionParts(), console().rates());
    }
    QString consoleElapsed() {
        return formatElapsed(fx->record(pc).runningTime(fx->clock.tickCount()));
    }
    QString consoleAmount() {
        return console().board().amountCaption(TimeLimitSlots::slotOfPc(pc));
    }

    static QWidget* window(const QString& name) {
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w->objectName() == name)
                return w;
        return nullptr;
    }
    static bool visible(const QString& name) {
        QWidget* w = window(name);
        return w && w->isVisible();
    }
    // The lock or the meter, and not the other.
    static bool showing(const QString& name) {
        return visible(name) && !visible(name == "frmLock" ? "frmMeter" : "frmLock");
    }
    template <typename W = QWidget> static W* control(const QString& window, const QString& name) {
        QWidget* w = ClientRig::window(window);
        return w ? w->findChild<W*>(name) : nullptr;
    }
    static QString text(const QString& window, const QString& name) {
        auto* l = control<QLabel>(window, name);
        return l ? l->text() : QStringLiteral("(no %1 in %2)").arg(name, window);
    }
    static bool shown(const QString& window, const QString& name) {
        QWidget* w = control(window, name);
        return w && w->isVisible();
    }
    static void click(const QString& window, const QString& name) {
        auto* button = control<QPushButton>(window, name);
        QVERIFY2(button, qPrintable(name));
        button->click();
    }
    static void type(const QString& window, const QString& name, const QString& value) {
        auto* field = control<QLineEdit>(window, name);
        QVERIFY2(field, qPrintable(name));
        field->clear();
        QTest::keyClicks(field, value);
    }
};
