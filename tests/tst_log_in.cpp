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

namespace {

const QString UnknownName = "critical: User name not found";
const QString NotCorrect = "info: Password not correct";
const QString Unusable = "critical: System user info incomplete, ask for system administrator help";
const QString Caption =
    "Vel Ta Simulation Prototype v 1.00" + QString(70, ' ') + " [User : Boss Type : Admin ]";
const QString SwitchBox = "box Switch Log: Change Log Boss Done (Message)";

// Maria logged in, and accounts (some unusable on purpose) unless told not to.
struct AccountsFixture : ConsoleFixture {
    explicit AccountsFixture(bool withAccounts = true) {
        open();
        const QList<QVariantList> rows = {
            {"Maria", "User", "secret"}, {"Boss", "Admin", "Key1"},   {"Nokey", "User", {}},
            {"Notype", {}, "abc"},       {"Padded", "User", " pad "}, {"O'Brien", "Admin", "irish"},
        };
        for (const auto& r : withAccounts ? rows : QList<QVariantList>())
            exec("INSERT INTO sysusers (\"user\", utype, keys) VALUES (?, ?, ?)", r);
        op() = {"Maria", "User", "secret"};
    }
    CurrentOperator& op() { return console->currentOperator(); }
    QString who() { return op().name + '/' + op().type; }
    QString accounts() {
        return scalar("SELECT group_concat(\"user\" || '|' || utype || '|' || keys) FROM sysusers")
            .toString();
    }
    QString shown() const {
        QStringList out;
        for (const auto& s : prompts.shown)
            out << (s.kind == "box"
                        ? "box " + s.title + ": " + s.text + " (" + s.box.mode + ")"
                        : (s.icon == Prompts::Icon::Critical ? "critical: " : "info: ") + s.text);
        return out.join(" | ");
    }
};

QLineEdit* box(QWidget& w, const char* name) {
    return w.findChild<QLineEdit*>(name);
}

// Types into a box; a closing "\n" is the Enter key.
void type(QWidget& dialog, const char* name, const QString& text) {
    QTest::keyClicks(box(dialog, name), QString(text).remove('\n'));
    if (text.endsWith('\n'))
        QTest::keyClick(box(dialog, name), Qt::Key_Return);
}

// One column "c" of cases; returns the function that adds a row.
template <typename T> auto casesOf() {
    QTest::addColumn<T>("c");
    return +[](const char* tag, const T& c) {
        QTest::newRow(tag) << c;
    };
}

struct FirstAdmin {
    bool accountsExist;
    FirstAdminOutcome::Problem problem;
    QString name, password, confirmation;
};

// A password without "\n" is sent by the OK button; a null one: the window is closed instead.
struct DialogCase {
    bool switching;
    Qt::FocusReason nameLeft; // the name box then loses the focus for this reason
    QString name, password, boxes, who, shown;
};

} // namespace

class LogInTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // A switch's password step without a found name is refused as incomplete.
    void switchPasswordWithoutName() {
        AccountsFixture fx;
        LogIn logIn(fx.console->database(), fx.prompts, fx.op(), LogIn::Mode::Switch);
        QCOMPARE(logIn.nameStep("nobody"), LogIn::NameOutcome::NotFound);
        QCOMPARE(logIn.passwordStep("secret"), LogIn::PasswordOutcome::Incomplete);
        QCOMPARE(fx.shown(), UnknownName + " | " + Unusable);
        QCOMPARE(fx.who(), "Maria/User");
    }

    void firstAdministrator_data() {
        const auto row = casesOf<FirstAdmin>();
        using enum FirstAdminOutcome::Problem;
        row("empty name", {false, EmptyName, "   ", "pw", "pw"});
        row("apostrophe", {false, QuoteInName, "O'Neil", "pw", "pw"});
        row("empty password", {false, EmptyPassword, "Ana", "", ""});
        row("spaces around", {false, SpacesAround, "Ana", " pw", " pw"});
        row("mismatch by case", {false, Mismatch, "Ana", "Pw1", "pw1"});
        row("made only once", {true, AccountsExist, "Intruder", "pw", "pw"});
        row("created", {false, None, "  Ana Cruz ", "Pw 1", "Pw 1"});
    }

    void firstAdministrator() {
        QFETCH(FirstAdmin, c);
        AccountsFixture fx(c.accountsExist);
        const QString before = fx.accounts();
        const auto outcome =
            createFirstAdmin(fx.console->database(), c.name, c.password, c.confirmation);
        QCOMPARE(outcome.problem, c.problem);
        QCOMPARE(hasAnyAccount(fx.console->database()), c.accountsExist || outcome.created());
        QCOMPARE(fx.accounts(),
                 outcome.created() ? c.name.trimmed() + "|Admin|" + c.password : before);
    }

    void dialog_data() {
        const auto row = casesOf<DialogCase>();
        const auto no = Qt::NoFocusReason;
        row("start, logs in", {false, no, "  mAriA \n", " Secret \n", "closed", "Maria/User", ""});
        row("switch, logs in", {true, no, "bOsS\n", "KEY1\n", "closed", "Boss/Admin", SwitchBox});
        // Naming an account gives its rights at once; closing without a password keeps them.
        row("switch, name only", {true, no, "Boss\n", {}, "BOSS|", "Boss/Admin", ""});
        row("start, wrong", {false, no, "boss\n", "nope", "BOSS|", "Boss/Admin", NotCorrect});
        row("switch, wrong", {true, no, "boss\n", "nope", "BOSS|nope", "Boss/Admin", NotCorrect});
        row("unknown name", {false, no, "nobody\n", {}, "|", "/", UnknownName});
        row("incomplete", {false, no, "nokey\n", "x", "NOKEY|x", "Nokey/User", Unusable});
        row("null type", {false, no, "notype\n", "abc", "NOTYPE|abc", "Notype/ ", Unusable});
        // Only the typed side is trimmed, so a stored password with spaces never matches.
        row("stored spaces", {false, no, "padded\n", "pad", "PADDED|", "Padded/User", NotCorrect});
        // A stored name with an apostrophe is never looked up, so never found.
        row("apostrophe", {false, no, "O'Brien\n", {}, "|", "/", UnknownName});
        // A log-in clears the operator; a switch keeps him until a name is found.
        row("switch, unknown", {true, no, "nobody\n", {}, "|", "Maria/User", UnknownName});
        // Leaving the name box looks it up at log-in only, and only within the window.
        row("start, tab", {false, Qt::TabFocusReason, "boss", {}, "BOSS|", "Boss/Admin", ""});
        row("start, other window",
            {false, Qt::ActiveWindowFocusReason, "boss", {}, "boss|", "/", ""});
        row("switch, tab", {true, Qt::TabFocusReason, "boss", {}, "BOSS|", "Maria/User", ""});
    }

    void dialog() {
        QFETCH(DialogCase, c);
        AccountsFixture fx;
        LogInDialog dialog(*fx.console,
                           c.switching ? LogInDialog::Mode::Switch : LogInDialog::Mode::Start);
        QCOMPARE(dialog.objectName(), c.switching ? "frmLog2" : "frmLog");
        QSignalSpy spy(&dialog, &LogInDialog::switched);
        dialog.show();
        type(dialog, "txtuser", c.name);
        QFocusEvent out(QEvent::FocusOut, c.nameLeft);
        QApplication::sendEvent(box(dialog, "txtuser"), &out);
        type(dialog, "txtpass", c.password);
        if (!c.password.isNull() && !c.password.endsWith('\n'))
            dialog.findChild<QPushButton*>("cmdok")->click();
        const QString boxes = box(dialog, "txtuser")->text() + '|' + box(dialog, "txtpass")->text();
        QCOMPARE(dialog.isVisible() ? boxes : "closed", c.boxes);
        dialog.close();
        QCOMPARE(fx.who(), c.who);
        QCOMPARE(fx.shown(), c.shown);
        QCOMPARE(spy.count(), c.shown == SwitchBox ? 1 : 0);
        QCOMPARE(spy.value(0).value(0).toString(), spy.isEmpty() ? QString() : Caption);
    }

    void firstAdminDialogStoresAccount() {
        AccountsFixture fx(false);
        QTimer::singleShot(0, [] {
            QApplication::activeModalWidget()->findChild<QPushButton*>("cmdclose")->click();
        });
        QVERIFY(!runFirstAdminDialog(*fx.console));
        QCOMPARE(fx.accounts(), QString());
        QTimer::singleShot(0, [] {
            QWidget& w = *QApplication::activeModalWidget();
            box(w, "txtuser")->setText(" Chief ");
            box(w, "txtkey")->setText("Open Door");
            type(w, "txtconf", "Open Door\n");
        });
        QVERIFY(runFirstAdminDialog(*fx.console));
        QCOMPARE(fx.accounts(), "Chief|Admin|Open Door");
    }
};

QTEST_MAIN(LogInTest)
#include "tst_log_in.moc"
