// Pictures of what the customer sees on a café PC: the lock screen, the lock screen of a
// paused session, and the meter of a running session over the customer's own windows.
// Written to $TARVO_BUILD_DIR/screenshots (or ./screenshots). Under Xvfb with
// QT_QPA_PLATFORM=xcb (the long_client_screenshots_xvfb test) they are the real screen,
// grabbed from the X server as the console's snapshot grabs it; offscreen, the client's
// windows are put together where they stand.
#include "billing/board_rules.h"
#include "host_actions.h"
#include "server/operator_commands.h"
#include "support/client_rig.h"

#include <QLineEdit>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

class ClientScreenshots : public QObject {
    Q_OBJECT

    ClientRig rig;
    QDir out;
    std::unique_ptr<QLabel> desktop; // the customer's own windows, behind the meter

    Console& console() { return rig.console(); }
    void pass(int ms) {
        rig.fx->clock.advance(ms);
        boardTick(console().board(), console().sessionParts(), console().rates());
    }
    QImage screen() {
        QTest::qWait(300); // let the X server draw
        if (QGuiApplication::platformName() == u"xcb"_s)
            return HostActions::screensPicture();
        QImage picture(QGuiApplication::primaryScreen()->virtualGeometry().size(),
                       QImage::Format_RGB32);
        picture.fill(Qt::black);
        QPainter painter(&picture);
        for (const char* name : {"desktop", "frmLock", "frmMeter", "frmMessage"})
            if (QWidget* w = ClientRig::window(QString::fromLatin1(name)); w && w->isVisible())
                painter.drawPixmap(w->geometry().topLeft(), w->grab());
        return picture;
    }
    void save(const QString& file) {
        const QImage picture = screen();
        QVERIFY(!picture.isNull());
        QVERIFY(picture.save(out.filePath(file)));
        qInfo("screenshot: %s (%dx%d)", qPrintable(out.filePath(file)), picture.width(),
              picture.height());
    }

private Q_SLOTS:
    void initTestCase() {
        out = QDir(qEnvironmentVariable("TARVO_BUILD_DIR", u"."_s) + u"/screenshots"_s);
        QVERIFY(out.mkpath(u"."_s));
        QVERIFY(rig.fx->writeFile(
            u"Products.LST"_s, "Coffee @ 25.00\r\nIced tea @ 20.00\r\nInstant noodles @ 35.00\r\n"
                               "Chips @ 15.50\r\nPrinting, per page @ 3.00\r\n"
                               "Scanning, per page @ 5.00\r\n"));
        rig.fx->start();
        rig.fx->exec("INSERT INTO members (CID, LN, FN) VALUES ('M-0001', 'Dela Cruz', 'Juan')");
        console().rates().setValues(25, Money::fromPesos(12), 30);
        rig.startClient();
    }

    void lockScreen() {
        QVERIFY(ClientRig::visible(u"frmLock"_s));
        // On a real X display the lock holds keyboard and pointer.
        if (QGuiApplication::platformName() == u"xcb"_s)
            QTRY_VERIFY(rig.client->lockWindow().holdsInput());
        save(u"client_lock.png"_s);
        if (QGuiApplication::platformName() == u"xcb"_s &&
            !QStandardPaths::findExecutable(u"xdotool"_s).isEmpty()) {
            // Keys typed on the real keyboard (the X server's test extension) still reach
            // the lock screen's own fields while it holds the keyboard.
            auto* id = rig.control<QLineEdit>(u"frmLock"_s, u"txtMemberId"_s);
            id->setFocus();
            QProcess::execute(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"20"_s, u"M-77"_s});
            QTRY_COMPARE(id->text(), u"M-77"_s);
            id->clear();
        }
        // A mistyped name, as the customer sees the refusal.
        rig.control<QLineEdit>(u"frmLock"_s, u"txtMemberId"_s)->setText(u"M-0001"_s);
        rig.control<QLineEdit>(u"frmLock"_s, u"txtLastName"_s)->setText(u"Dela Cruz"_s);
        rig.control<QLineEdit>(u"frmLock"_s, u"txtFirstName"_s)->setText(u"Juna"_s);
        rig.control<QPushButton>(u"frmLock"_s, u"cmdLogIn"_s)->click();
        QTRY_VERIFY(rig.text(u"frmLock"_s, u"lblLogInResult"_s).startsWith(u"Member ID"_s));
        save(u"client_lock_refused.png"_s);
    }

    void meterOfARunningSession() {
        desktop = std::make_unique<QLabel>(
            u"<div style='font-size:28px;color:#333'>The customer's browser or game</div>"_s);
        desktop->setObjectName(u"desktop"_s);
        desktop->setAlignment(Qt::AlignCenter);
        desktop->setStyleSheet(u"background: #e8eef5;"_s);
        desktop->setGeometry(QGuiApplication::primaryScreen()->geometry());
        desktop->show();
        rig.assign();
        chooseTimeLimit(console().board(), console().sessionParts(), 5, u"60"_s);
        pass((47 * 60 + 12) * 1000);
        QTRY_COMPARE(rig.text(u"frmMeter"_s, u"lblElapsed"_s), u"00:47:12"_s);
        QTRY_COMPARE(rig.text(u"frmMeter"_s, u"lblTimeLeft"_s), u"00:12:48"_s);
        save(u"client_meter.png"_s);
        pass((7 * 60 + 48) * 1000); // five minutes left: warned
        QTRY_VERIFY(ClientRig::shown(u"frmMeter"_s, u"lblWarning"_s));
        save(u"client_meter_warning.png"_s);
    }

    void pausedAtTheLimit() {
        pass(5 * 60 * 1000);
        QTRY_VERIFY(ClientRig::visible(u"frmLock"_s));
        QCOMPARE(rig.text(u"frmLock"_s, u"lblState"_s), u"Paused"_s);
        save(u"client_paused.png"_s);
    }
};

QTEST_MAIN(ClientScreenshots)
#include "tst_long_client_screenshots.moc"
