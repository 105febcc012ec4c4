// Pictures of the operator accounts window with a few accounts, browsing and adding one,
// for people to look at. Written to $TARVO_BUILD_DIR/screenshots (or ./screenshots). Run
// it under xvfb-run with QT_QPA_PLATFORM=xcb to see the window as a real display draws it.
#include "people/users_window.h"
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class UsersScreenshot : public QObject {
    Q_OBJECT

    FrameFixture fx;
    QDir out;

    void save(QWidget* w, const QString& file) {
        QTest::qWait(50);
        const QPixmap picture = w->grab();
        QVERIFY(picture.save(out.filePath(file)));
        qInfo("screenshot: %s (%dx%d)", qPrintable(out.filePath(file)), picture.width(),
              picture.height());
    }

private Q_SLOTS:
    void initTestCase() {
        out = QDir(qEnvironmentVariable("TARVO_BUILD_DIR", u"."_s) + u"/screenshots"_s);
        QVERIFY(out.mkpath(u"."_s));
        QVERIFY(fx.show(u"Admin"_s));
        fx.frame->resize(1366, 768); // a common counter screen
        const QList<QVariantList> accounts = {
            {"ANA", "Admin", "Kape&Tinapay7"}, {"Maria Santos", "User", "Sampaguita 3"},
            {"JUN", "User", "night-shift"},    {"Rosario Villanueva-Dela Cruz", "Admin", "R0sario"},
            {"Lea", "User", "lea2026"},        {"CASHIER2", "User", "counter"},
        };
        for (const auto& a : accounts)
            fx.exec(u"INSERT INTO sysusers (\"user\", utype, keys) VALUES (?, ?, ?)"_s, a);
    }

    void usersWindow() {
        fx.frame->action(u"mnuuser"_s)->trigger();
        auto* window = fx.frame->findChild<UsersWindow*>(u"frmUsers"_s);
        QVERIFY(window);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        auto* grid = window->findChild<QTableView*>(u"dbusers"_s);
        grid->setCurrentIndex(grid->model()->index(1, 0));
        window->tick();
        save(window, u"frm_users.png"_s);

        window->findChild<QPushButton*>(u"cmdnew"_s)->click();
        window->tick();
        QTest::keyClicks(window->findChild<QLineEdit*>(u"txtnuser"_s), u"Paolo"_s);
        QTest::keyClicks(window->findChild<QLineEdit*>(u"txtkey"_s), u"bagong-pass"_s);
        save(window, u"frm_users_new.png"_s);
    }
};

QTEST_MAIN(UsersScreenshot)
#include "tst_long_users_screenshot.moc"
