#include "people/first_admin_dialog.h"
#include "people/log_in.h"
#include "people/log_in_dialog.h"
#include "support/console_fixture.h"

#include <QApplication>
#include <QFocusEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using Icon = Prompts::Icon;
using NameOutcome = LogIn::NameOutcome;
using PasswordOutcome = LogIn::PasswordOutcome;

namespace {

// A console on a fresh folder with a few accounts, some of them unusable on purpose.
struct AccountsFixture : ConsoleFixture {
    AccountsFixture() {
        console = std::make_unique<Console>(clock, prompts, *folder);
        console->openStorage();
        const QVariant null;
        const QList<QVariantList> rows = {
            {QStringLiteral("Maria"), QStringLiteral("User"), QStringLiteral("secret")},
            {QStringLiteral("Boss"), QStringLiteral("Admin"), QStringLiteral("Key1")},
            {QStringLiteral("Low"), QStringLiteral("admin"), QStringLiteral("low")},
            {QStringLiteral("Nokey"), QStringLiteral("User"), null},
            {QStringLiteral("Notype"), null, QStringLiteral("abc")},
            {QStringLiteral("Blank"), QStringLiteral("User"), QStringLiteral("   ")},
            {QStringLiteral("Padded"), QStringLiteral("User"), QStringLiteral(" pad ")},
            {QStringLiteral("O'Brien"), QStringLiteral("Admin"), QStringLiteral("irish")},
        };
        for (const auto& r : rows)
            exec(QStringLiteral("INSERT INTO sysusers (\"user\", utype, keys) VALUES (?, ?, ?)"),
                 r);
    }
    CurrentOperator& op() { return console->currentOperator(); }
    void logInAs(const QString& name, const QString& type, const QString& key) {
        op().CurrentUserName = name;
        op().CurrentUserType = type;
        op().CurrentUserKey = key;
    }
};

QLineEdit* box(QWidget& w, const char* name) {
    return w.findChild<QLineEdit*>(QString::fromLatin1(name));
}

// The visible window of that name, modal or not.
QWidget* window(const char* name) {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && w->objectName() == QLatin1String(name))
            return w;
    return nullptr;
}

void leave(QLineEdit* edit, Qt::FocusReason reason) {
    QFocusEvent out(QEvent::FocusOut, reason);
    QApplication::sendEvent(edit, &out);
}

} // namespace

class TestLogIn : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void logInSteps_data();
    void logInSteps();
    void startClearsOperatorAndSwitchKeepsIt();
    void firstAdministrator_data();
    void firstAdministrator();
    void firstAdministratorIsMadeOnce();

    void dialogLogsInWithUpperCasedName();
    void dialogWrongPassword_data();
    void dialogWrongPassword();
    void dialogUnknownName_data();
    void dialogUnknownName();
    void dialogIncompleteAccountStaysOpen();
    void leavingNameBox_data();
    void leavingNameBox();
    void switchGrantsRightsBeforePassword();
    void switchCompletes();
    void firstAdminDialogStoresAccount();
};

void TestLogIn::logInSteps_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("nameOutcome");
    QTest::addColumn<int>("passwordOutcome"); // -1: no password step
    QTest::addColumn<QString>("message");     // the last message, "" for none
    QTest::addColumn<int>("icon");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("type");

    const int found = int(NameOutcome::Found), notFound = int(NameOutcome::NotFound);
    const int ok = int(PasswordOutcome::Correct), wrong = int(PasswordOutcome::Wrong),
              incomplete = int(PasswordOutcome::Incomplete);
    const QString notCorrect = QStringLiteral("Password not correct");
    const QString incompleteText =
        QStringLiteral("System user info incomplete, ask for system administrator help");
    const QString unknown = QStringLiteral("User name not found");
    const int crit = int(Icon::Critical), info = int(Icon::Information), none = int(Icon::None);

    QTest::newRow("name and password in other case")
        << "maria"
        << "SECRET" << found << ok << "" << none << "Maria"
        << "User";
    QTest::newRow("typed values trimmed") << "  Boss  "
                                          << "  key1 " << found << ok << "" << none << "Boss"
                                          << "Admin";
    QTest::newRow("wrong password") << "maria"
                                    << "secrets" << found << wrong << notCorrect << info << "Maria"
                                    << "User";
    QTest::newRow("stored spaces never match")
        << "padded"
        << "pad" << found << wrong << notCorrect << info << "Padded"
        << "User";
    QTest::newRow("stored spaces typed exactly")
        << "padded"
        << " pad " << found << wrong << notCorrect << info << "Padded"
        << "User";
    QTest::newRow("null password")
        << "nokey"
        << "x" << found << incomplete << incompleteText << crit << "Nokey"
        << "User";
    QTest::newRow("null type") << "notype"
                               << "abc" << found << incomplete << incompleteText << crit << "Notype"
                               << " ";
    QTest::newRow("blank password")
        << "blank"
        << "" << found << incomplete << incompleteText << crit << "Blank"
        << "User";
    QTest::newRow("unknown name") << "nobody"
                                  << "" << notFound << -1 << unknown << crit << ""
                                  << "";
    QTest::newRow("empty name") << ""
                                << "" << notFound << -1 << unknown << crit << ""
                                << "";
    QTest::newRow("apostrophe refused though stored")
        << "O'Brien"
        << "" << notFound << -1 << unknown << crit << ""
        << "";
    QTest::newRow("injection attempt") << "x' OR '1'='1"
                                       << "" << notFound << -1 << unknown << crit << ""
                                       << "";
}

void TestLogIn::logInSteps() {
    QFETCH(QString, name);
    QFETCH(QString, password);
    QFETCH(int, nameOutcome);
    QFETCH(int, passwordOutcome);
    QFETCH(QString, message);
    QFETCH(int, icon);
    QFETCH(QString, user);
    QFETCH(QString, type);

    AccountsFixture fx;
    LogIn logIn(*fx.console, LogIn::Mode::Start);
    QCOMPARE(int(logIn.NameStep(name)), nameOutcome);
    if (passwordOutcome >= 0)
        QCOMPARE(int(logIn.PasswordStep(password)), passwordOutcome);

    if (message.isEmpty()) {
        QVERIFY2(fx.prompts.shown.isEmpty(), qPrintable(fx.prompts.texts().join('|')));
    } else {
        QCOMPARE(fx.prompts.shown.size(), 1);
        QCOMPARE(fx.prompts.last()->text, message);
        QCOMPARE(int(fx.prompts.last()->icon), icon);
    }
    QCOMPARE(fx.op().CurrentUserName, user);
    QCOMPARE(fx.op().CurrentUserType, type);
}

void TestLogIn::startClearsOperatorAndSwitchKeepsIt() {
    AccountsFixture fx;
    fx.logInAs(QStringLiteral("Boss"), QStringLiteral("Admin"), QStringLiteral("Key1"));
    {
        LogIn keep(*fx.console, LogIn::Mode::Switch);
        QVERIFY(fx.op().isAdmin());
        QCOMPARE(fx.op().CurrentUserName, QStringLiteral("Boss"));
        // No name accepted yet: the held password is empty, whoever is logged in.
        QCOMPARE(keep.PasswordStep(QStringLiteral("Key1")), PasswordOutcome::Incomplete);
    }
    LogIn start(*fx.console, LogIn::Mode::Start);
    QVERIFY(fx.op().CurrentUserName.isEmpty());
    QVERIFY(fx.op().CurrentUserType.isEmpty());
    QVERIFY(!fx.op().isAdmin());
    QCOMPARE(start.PasswordStep(QStringLiteral("Key1")), PasswordOutcome::Incomplete);
}

void TestLogIn::firstAdministrator_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("confirmation");
    QTest::addColumn<int>("problem");
    using P = FirstAdminOutcome::Problem;
    QTest::newRow("empty name") << "   "
                                << "pw"
                                << "pw" << int(P::EmptyName);
    QTest::newRow("apostrophe") << "O'Neil"
                                << "pw"
                                << "pw" << int(P::QuoteInName);
    QTest::newRow("empty password") << "Ana"
                                    << ""
                                    << "" << int(P::EmptyPassword);
    QTest::newRow("spaces around password") << "Ana"
                                            << " pw"
                                            << " pw" << int(P::SpacesAround);
    QTest::newRow("mismatch by case") << "Ana"
                                      << "Pw1"
                                      << "pw1" << int(P::Mismatch);
    QTest::newRow("mismatch") << "Ana"
                              << "Pw1"
                              << "Pw2" << int(P::Mismatch);
    QTest::newRow("created, name trimmed") << "  Ana Cruz "
                                           << "Pw 1"
                                           << "Pw 1" << int(P::None);
}

void TestLogIn::firstAdministrator() {
    QFETCH(QString, name);
    QFETCH(QString, password);
    QFETCH(QString, confirmation);
    QFETCH(int, problem);

    ConsoleFixture fx;
    fx.console = std::make_unique<Console>(fx.clock, fx.prompts, *fx.folder);
    fx.console->openStorage();
    QVERIFY(!HasAnyAccount(fx.console->database()));

    const auto outcome = CreateFirstAdmin(fx.console->database(), name, password, confirmation);
    QCOMPARE(int(outcome.problem), problem);
    QVERIFY(!outcome.text.isEmpty());
    QCOMPARE(HasAnyAccount(fx.console->database()), outcome.created());
    if (!outcome.created())
        return;

    QCOMPARE(fx.scalar(QStringLiteral("SELECT count(*) FROM sysusers")).toInt(), 1);
    QCOMPARE(fx.scalar(QStringLiteral("SELECT \"user\" FROM sysusers")).toString(), name.trimmed());
    QCOMPARE(fx.scalar(QStringLiteral("SELECT utype FROM sysusers")).toString(),
             QStringLiteral("Admin"));
    QCOMPARE(fx.scalar(QStringLiteral("SELECT keys FROM sysusers")).toString(), password);

    // The account logs in like any other, with administrator rights.
    LogIn logIn(*fx.console, LogIn::Mode::Start);
    QCOMPARE(logIn.NameStep(name.trimmed().toLower()), NameOutcome::Found);
    QCOMPARE(logIn.PasswordStep(password.toUpper()), PasswordOutcome::Correct);
    QVERIFY(fx.console->currentOperator().isAdmin());
}

void TestLogIn::firstAdministratorIsMadeOnce() {
    AccountsFixture fx;
    QVERIFY(HasAnyAccount(fx.console->database()));
    const int before = fx.scalar(QStringLiteral("SELECT count(*) FROM sysusers")).toInt();
    const auto outcome = CreateFirstAdmin(fx.console->database(), QStringLiteral("Intruder"),
                                          QStringLiteral("pw"), QStringLiteral("pw"));
    QCOMPARE(outcome.problem, FirstAdminOutcome::Problem::AccountsExist);
    QCOMPARE(fx.scalar(QStringLiteral("SELECT count(*) FROM sysusers")).toInt(), before);
}

void TestLogIn::dialogLogsInWithUpperCasedName() {
    AccountsFixture fx;
    LogInDialog dialog(*fx.console, LogInDialog::Mode::Start);
    QCOMPARE(dialog.objectName(), QStringLiteral("frmLog"));
    dialog.show();
    QLineEdit* txtuser = box(dialog, "txtuser");
    QLineEdit* txtpass = box(dialog, "txtpass");
    QVERIFY(txtuser && txtpass);
    QCOMPARE(txtpass->echoMode(), QLineEdit::Password);

    QTest::keyClicks(txtuser, QStringLiteral("maria"));
    QTest::keyClick(txtuser, Qt::Key_Return);
    QCOMPARE(txtuser->text(), QStringLiteral("MARIA"));
    QCOMPARE(dialog.focusWidget(), txtpass);
    QCOMPARE(fx.op().CurrentUserName, QStringLiteral("Maria"));

    QTest::keyClicks(txtpass, QStringLiteral("Secret "));
    QTest::keyClick(txtpass, Qt::Key_Enter);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!dialog.isVisible());
    QVERIFY(fx.prompts.shown.isEmpty());
}

void TestLogIn::dialogWrongPassword_data() {
    QTest::addColumn<bool>("switching");
    QTest::addColumn<QString>("kept");
    QTest::newRow("start clears the box") << false << "";
    QTest::newRow("switch keeps the box") << true << "nope";
}

void TestLogIn::dialogWrongPassword() {
    QFETCH(bool, switching);
    QFETCH(QString, kept);
    AccountsFixture fx;
    LogInDialog dialog(*fx.console,
                       switching ? LogInDialog::Mode::Switch : LogInDialog::Mode::Start);
    QSignalSpy spy(&dialog, &LogInDialog::switched);
    dialog.show();
    QTest::keyClicks(box(dialog, "txtuser"), QStringLiteral("boss"));
    QTest::keyClick(box(dialog, "txtuser"), Qt::Key_Return);
    QTest::keyClicks(box(dialog, "txtpass"), QStringLiteral("nope"));
    QTest::keyClick(box(dialog, "txtpass"), Qt::Key_Return);

    QCOMPARE(fx.prompts.texts(), QStringList{QStringLiteral("Password not correct")});
    QCOMPARE(fx.prompts.last()->icon, Icon::Information);
    QCOMPARE(box(dialog, "txtpass")->text(), kept);
    QVERIFY(dialog.isVisible());
    QCOMPARE(spy.count(), 0);
}

void TestLogIn::dialogUnknownName_data() {
    QTest::addColumn<bool>("switching");
    QTest::addColumn<QString>("name");
    QTest::newRow("start, unknown") << false << "nobody";
    QTest::newRow("switch, unknown") << true << "nobody";
    QTest::newRow("start, apostrophe") << false << "o'brien";
}

void TestLogIn::dialogUnknownName() {
    QFETCH(bool, switching);
    QFETCH(QString, name);
    AccountsFixture fx;
    fx.logInAs(QStringLiteral("Maria"), QStringLiteral("User"), QStringLiteral("secret"));
    LogInDialog dialog(*fx.console,
                       switching ? LogInDialog::Mode::Switch : LogInDialog::Mode::Start);
    dialog.show();
    QTest::keyClicks(box(dialog, "txtuser"), name);
    QTest::keyClick(box(dialog, "txtuser"), Qt::Key_Return);

    QCOMPARE(fx.prompts.texts(), QStringList{QStringLiteral("User name not found")});
    QCOMPARE(fx.prompts.last()->icon, Icon::Critical);
    QVERIFY(box(dialog, "txtuser")->text().isEmpty());
    QVERIFY(!fx.op().isAdmin());
}

void TestLogIn::dialogIncompleteAccountStaysOpen() {
    AccountsFixture fx;
    LogInDialog dialog(*fx.console, LogInDialog::Mode::Start);
    dialog.show();
    QTest::keyClicks(box(dialog, "txtuser"), QStringLiteral("nokey"));
    QTest::keyClick(box(dialog, "txtuser"), Qt::Key_Return);
    QTest::keyClicks(box(dialog, "txtpass"), QStringLiteral("x"));
    // The OK button does what Enter does in the box being typed in.
    dialog.findChild<QPushButton*>(QStringLiteral("cmdok"))->click();

    QCOMPARE(fx.prompts.texts(),
             QStringList{
                 QStringLiteral("System user info incomplete, ask for system administrator help")});
    QCOMPARE(fx.prompts.last()->icon, Icon::Critical);
    QVERIFY(dialog.isVisible());
    QCOMPARE(box(dialog, "txtpass")->text(), QStringLiteral("x"));
}

void TestLogIn::leavingNameBox_data() {
    QTest::addColumn<bool>("switching");
    QTest::addColumn<int>("reason");
    QTest::addColumn<bool>("looksUp");
    QTest::newRow("start, tab") << false << int(Qt::TabFocusReason) << true;
    QTest::newRow("start, mouse") << false << int(Qt::MouseFocusReason) << true;
    // A message box or another window taking the focus is not leaving the box.
    QTest::newRow("start, window change") << false << int(Qt::ActiveWindowFocusReason) << false;
    QTest::newRow("switch, tab") << true << int(Qt::TabFocusReason) << false;
}

void TestLogIn::leavingNameBox() {
    QFETCH(bool, switching);
    QFETCH(int, reason);
    QFETCH(bool, looksUp);
    AccountsFixture fx;
    fx.logInAs(QStringLiteral("Maria"), QStringLiteral("User"), QStringLiteral("secret"));
    LogInDialog dialog(*fx.console,
                       switching ? LogInDialog::Mode::Switch : LogInDialog::Mode::Start);
    dialog.show();
    QLineEdit* txtuser = box(dialog, "txtuser");
    txtuser->setText(QStringLiteral("boss"));
    leave(txtuser, Qt::FocusReason(reason));

    const bool windowChange = reason == Qt::ActiveWindowFocusReason;
    QCOMPARE(txtuser->text(), windowChange ? QStringLiteral("boss") : QStringLiteral("BOSS"));
    QCOMPARE(fx.op().isAdmin(), looksUp);
    QVERIFY(fx.prompts.shown.isEmpty());
}

void TestLogIn::switchGrantsRightsBeforePassword() {
    AccountsFixture fx;
    fx.logInAs(QStringLiteral("Maria"), QStringLiteral("User"), QStringLiteral("secret"));
    LogInDialog dialog(*fx.console, LogInDialog::Mode::Switch);
    QCOMPARE(dialog.objectName(), QStringLiteral("frmLog2"));
    QSignalSpy spy(&dialog, &LogInDialog::switched);
    dialog.show();
    QTest::keyClicks(box(dialog, "txtuser"), QStringLiteral("boss"));
    QTest::keyClick(box(dialog, "txtuser"), Qt::Key_Return);
    dialog.close();

    // Kept as the console always did: the named account's rights hold without a password,
    // while the caption was never changed.
    QVERIFY(fx.op().isAdmin());
    QCOMPARE(fx.op().CurrentUserName, QStringLiteral("Boss"));
    QCOMPARE(fx.op().CurrentUserKey, QStringLiteral("Key1"));
    QCOMPARE(spy.count(), 0);
    QVERIFY(fx.prompts.shown.isEmpty());
}

void TestLogIn::switchCompletes() {
    AccountsFixture fx;
    fx.logInAs(QStringLiteral("Boss"), QStringLiteral("Admin"), QStringLiteral("Key1"));
    LogInDialog dialog(*fx.console, LogInDialog::Mode::Switch);
    QSignalSpy spy(&dialog, &LogInDialog::switched);
    dialog.show();
    QTest::keyClicks(box(dialog, "txtuser"), QStringLiteral("mAriA"));
    QTest::keyClick(box(dialog, "txtuser"), Qt::Key_Return);
    QCOMPARE(box(dialog, "txtuser")->text(), QStringLiteral("MARIA"));
    QTest::keyClicks(box(dialog, "txtpass"), QStringLiteral("SECRET"));
    QTest::keyClick(box(dialog, "txtpass"), Qt::Key_Return);

    QVERIFY(!dialog.isVisible());
    QVERIFY(!fx.op().isAdmin());
    QCOMPARE(spy.count(), 1);
    const QString caption = spy.at(0).at(0).toString();
    QCOMPARE(caption, QStringLiteral("Vel Ta Simulation Prototype v 1.00") +
                          QString(70, QLatin1Char(' ')) +
                          QStringLiteral(" [User : Maria Type : User ]"));
    QCOMPARE(fx.prompts.shown.size(), 1);
    const auto& shown = *fx.prompts.last();
    QCOMPARE(shown.kind, QStringLiteral("box"));
    QCOMPARE(shown.box.title, QStringLiteral("Switch Log"));
    QCOMPARE(shown.box.text, QStringLiteral("Change Log Maria Done"));
    QCOMPARE(shown.box.mode, QStringLiteral("Message"));
}

void TestLogIn::firstAdminDialogStoresAccount() {
    ConsoleFixture fx;
    fx.console = std::make_unique<Console>(fx.clock, fx.prompts, *fx.folder);
    fx.console->openStorage();

    // Cancelled: nothing stored.
    QTimer::singleShot(0, [] {
        if (auto* w = window("frmFirstAdmin"))
            w->findChild<QPushButton*>(QStringLiteral("cmdclose"))->click();
    });
    QVERIFY(!RunFirstAdminDialog(*fx.console));
    QVERIFY(!HasAnyAccount(fx.console->database()));

    QTimer::singleShot(0, [] {
        auto* w = window("frmFirstAdmin");
        if (!w)
            return;
        w->findChild<QLineEdit*>(QStringLiteral("txtuser"))->setText(QStringLiteral(" Chief "));
        w->findChild<QLineEdit*>(QStringLiteral("txtkey"))->setText(QStringLiteral("Open Door"));
        auto* conf = w->findChild<QLineEdit*>(QStringLiteral("txtconf"));
        QTest::keyClicks(conf, QStringLiteral("Open Door"));
        QTest::keyClick(conf, Qt::Key_Return);
    });
    QVERIFY(RunFirstAdminDialog(*fx.console));
    QCOMPARE(fx.scalar(QStringLiteral("SELECT utype FROM sysusers WHERE \"user\" = ?"),
                       {QStringLiteral("Chief")})
                 .toString(),
             QStringLiteral("Admin"));
    QCOMPARE(fx.prompts.last()->icon, Icon::Information);
}

QTEST_MAIN(TestLogIn)
#include "tst_log_in.moc"
