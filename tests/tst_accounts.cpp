// The operator accounts window, opened from the frame and driven through its controls on
// a real database.
#include "people/scramble.h"
#include "people/users_window.h"
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Answer = Prompts::Answer;

namespace {

const QString ModifyPrompt = u"Please type in your current password on confirmation box"
                             u"Then press the enter key"_s;
const QString Accounts = u"ANA|Admin|pw Maria|User|Secret1 Boss|Admin|Key1"_s;

QString scrambled(const QString& password) {
    return scrambleText(password, u"Lanterns"_s);
}

// What a control allows and shows, as the checks below spell it.
QString stateOf(QWidget* w) {
    QStringList s;
    s << (w->isEnabled() ? u"on"_s : u"off"_s);
    if (!w->isVisibleTo(w->window()))
        s << u"hidden"_s;
    if (qobject_cast<QLineEdit*>(w) || qobject_cast<QComboBox*>(w))
        s << (w->property("readOnly").toBool() ? u"read-only"_s : u"editable"_s);
    if (auto* box = qobject_cast<QLineEdit*>(w); box && box->echoMode() == QLineEdit::Password)
        s << u"mask "_s + QChar(box->style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter,
                                                        nullptr, box));
    if (auto* button = qobject_cast<QPushButton*>(w))
        s << button->text();
    return s.join(u", "_s);
}

// The controls whose state follows the mode, in the order a state table lists them.
const char* const StateControls[] = {"dbusers", "txtuser", "txtnuser", "txtutype", "txtkey",
                                     "txtconf", "cmdnew",  "cmdmodi",  "cmdsave",  "cmddel"};

} // namespace

class AccountsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;
    UsersWindow* window = nullptr;

    template <typename T = QLineEdit> T* find(const char* name) {
        return window->findChild<T*>(QString::fromLatin1(name));
    }
    void click(const char* name) { find<QPushButton>(name)->click(); }
    // Types into a box, replacing its text; a closing "\n" is the Enter key.
    void typeInto(const char* name, QString text) {
        const bool enter = text.endsWith(u'\n');
        text.chop(enter ? 1 : 0);
        QLineEdit* box = find(name);
        box->clear();
        for (const QChar c : std::as_const(text)) // as keys, so a read-only box refuses them
            QTest::sendKeyEvent(QTest::Click, box, Qt::Key_unknown, c, Qt::NoModifier);
        if (enter)
            QTest::keyClick(box, Qt::Key_Return);
    }
    void chooseType(const QString& type) {
        auto* box = find<QComboBox>("txtutype");
        box->setCurrentIndex(box->findText(type));
    }
    void choose(const QString& user) {
        QAbstractItemModel* model = find<QTableView>("dbusers")->model();
        for (int row = 0; row < model->rowCount(); ++row)
            if (model->index(row, 0).data() == user)
                find<QTableView>("dbusers")->setCurrentIndex(model->index(row, 0));
        QCOMPARE(find("txtuser")->text(), user);
    }
    QString mode() const { return modeText(window->accounts().mode()); }
    QString stored() {
        return fx
            ->scalar(u"SELECT group_concat(\"user\" || '|' || utype || '|' || keys, ' ') "
                     "FROM (SELECT * FROM sysusers ORDER BY rowid)"_s)
            .toString();
    }
    QString states() {
        QStringList out;
        for (const char* name : StateControls)
            out << QString::fromLatin1(name) + u": "_s + stateOf(find<QWidget>(name));
        return out.join(u'\n');
    }
    // The grid as it reads, and the account the boxes show.
    QString shown() {
        QStringList rows;
        const QAbstractItemModel* model = find<QTableView>("dbusers")->model();
        for (int r = 0; r < model->rowCount(); ++r)
            rows << model->index(r, 0).data().toString() + u'/' +
                        model->index(r, 1).data().toString();
        return rows.join(u' ') + u" @ "_s + find("txtuser")->text() + u'/' +
               find<QComboBox>("txtutype")->currentText();
    }

    void addAccount(const QString& name, const QString& type, const QString& password,
                    const QString& confirmation) {
        typeInto("txtnuser", name);
        chooseType(type);
        typeInto("txtkey", password);
        typeInto("txtconf", confirmation);
        click("cmdsave");
    }
    // The window as the frame opens it.
    void openWindow() {
        fx->frame->action(u"mnuuser"_s)->trigger();
        window = fx->frame->findChild<UsersWindow*>(u"frmUsers"_s);
        QVERIFY(window);
        QCOMPARE(window->windowTitle(), u"System User Maintenance"_s);
        fx->prompts.clear();
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Admin"_s));
        for (const auto& row : {QVariantList{"ANA", "Admin", "pw"},
                                {"Maria", "User", "Secret1"},
                                {"Boss", "Admin", "Key1"}})
            fx->exec(u"INSERT INTO sysusers (\"user\", utype, keys) VALUES (?, ?, ?)"_s, row);
        openWindow();
    }
    void cleanup() { fx.reset(); }

    void browsingShowsEachAccountWithItsPasswordScrambled() {
        fx->exec(u"INSERT INTO sysusers (\"user\", utype, keys) VALUES ('Old', 'admin', 'x')"_s);
        click("cmdclose");
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        openWindow();
        QCOMPARE(shown(), u"ANA/Admin Maria/User Boss/Admin Old/admin @ ANA/Admin"_s);
        QCOMPARE(find<QTableView>("dbusers")->model()->headerData(1, Qt::Horizontal),
                 u"Category"_s);
        for (const auto& [user, type, password] : {std::tuple{"Maria", "User", "Secret1"},
                                                   {"Boss", "Admin", "Key1"},
                                                   {"Old", "admin", "x"}}) {
            choose(QString::fromLatin1(user));
            QCOMPARE(find<QComboBox>("txtutype")->currentText(), QString::fromLatin1(type));
            QCOMPARE(find("txtkey")->text(), scrambled(QString::fromLatin1(password)));
            QVERIFY(find("txtkey")->text() != QString::fromLatin1(password));
        }
        // A type another tool wrote shows as it is stored, beside the two offered.
        QCOMPARE(find<QComboBox>("txtutype")->count(), 3);
        QCOMPARE(fx->prompts.texts(), QStringList());
    }

    void adding_data() {
        QTest::addColumn<QString>("name"); // a closing "\n": Enter is pressed in the box
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("confirmation");
        QTest::addColumn<QStringList>("told");
        QTest::addColumn<QString>("added"); // to the accounts, or none
        QTest::addColumn<QString>("boxes"); // when refused: "txtnuser|txtkey|txtconf > focus"
        const QString apostrophe = u"A user name cannot hold an apostrophe ( ' ): the log-in "
                                   "would never find it. Type another name."_s;
        QTest::newRow("user") << u"Lea\n"_s << u"User"_s << u"Pass 1"_s << u"Pass 1"_s
                              << QStringList() << u"Lea|User|Pass 1"_s << QString();
        QTest::newRow("admin, name trimmed") << u"  Rico "_s << u"Admin"_s << u"k"_s << u"k"_s
                                             << QStringList() << u"Rico|Admin|k"_s << QString();
        QTest::newRow("mismatch in case")
            << u"Lea"_s << u"User"_s << u"Pass"_s << u"pass"_s
            << QStringList{u"Password Mismatch"_s} << QString() << u"Lea|| > txtkey"_s;
        QTest::newRow("used, told on Enter")
            << u"maria\n"_s << u"User"_s << u"p"_s << u"p"_s
            << QStringList{u"User name : maria already used!"_s, u"Type the new user's name."_s}
            << QString() << u"|p|p > txtnuser"_s;
        QTest::newRow("used, told at Save") << u"BOSS"_s << u"User"_s << u"p"_s << u"p"_s
                                            << QStringList{u"User name : BOSS already used!"_s}
                                            << QString() << u"|p|p > txtnuser"_s;
        QTest::newRow("apostrophe, told at Save")
            << u"O'Neil"_s << u"User"_s << u"p"_s << u"p"_s << QStringList{apostrophe} << QString()
            << u"|p|p > txtnuser"_s;
        QTest::newRow("no password")
            << u"Lea"_s << u"User"_s << QString() << QString()
            << QStringList{u"Type a password: an account without one can never log in."_s}
            << QString() << u"Lea|| > txtkey"_s;
        QTest::newRow("spaces around the password")
            << u"Lea"_s << u"User"_s << u" pw"_s << u" pw"_s
            << QStringList{u"A password cannot begin or end with a space: the log-in could "
                           "never match it. Type it again."_s}
            << QString() << u"Lea|| > txtkey"_s;
    }
    void adding() {
        QFETCH(QString, name);
        QFETCH(QString, type);
        QFETCH(QString, password);
        QFETCH(QString, confirmation);
        QFETCH(QStringList, told);
        QFETCH(QString, added);
        QFETCH(QString, boxes);
        click("cmdnew");
        window->tick();
        QCOMPARE(mode(), u"New"_s);
        QCOMPARE(find("txtkey")->text(), QString()); // no other account's password shows
        addAccount(name, type, password, confirmation);
        QCOMPARE(fx->prompts.texts(), told);
        for (const auto& box : fx->prompts.shown)
            QCOMPARE(box.buttons, Prompts::Buttons::Ok);
        QCOMPARE(stored(), added.isEmpty() ? Accounts : Accounts + u' ' + added);
        if (added.isEmpty()) {
            QCOMPARE(mode(), u"New"_s);
            QCOMPARE(find("txtnuser")->text() + u'|' + find("txtkey")->text() + u'|' +
                         find("txtconf")->text() + u" > "_s + window->focusWidget()->objectName(),
                     boxes);
            return;
        }
        // The new account is the current one, and may log in.
        const QString user = added.section(u'|', 0, 0);
        QCOMPARE(mode(), u"None"_s);
        QCOMPARE(find<QPushButton>("cmdnew")->text(), u"Add User"_s);
        QCOMPARE(find("txtuser")->text(), user);
        QCOMPARE(find<QComboBox>("txtutype")->currentText(), type);
        QCOMPARE(find("txtkey")->text(), scrambled(password));
        QCOMPARE(find("txtnuser")->text() + find("txtconf")->text(), QString());
        QVERIFY(find<QTableView>("dbusers")->isEnabled());
        QCOMPARE(find<QTableView>("dbusers")->currentIndex().data().toString(), user);
    }

    void modifying_data() {
        QTest::addColumn<QString>("password"); // Maria's, as stored
        QTest::addColumn<QString>("current");  // typed in the confirmation box, then Enter
        QTest::addColumn<bool>("retype");      // the confirmation box before Save
        QTest::addColumn<QString>("retyped");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("after"); // Maria's account, or what is told
        QTest::addColumn<QString>("mode");
        const QString mismatch = u"told: Password mismatch "_s;
        QTest::newRow("new password and type")
            << u"Secret1"_s << u"Secret1"_s << true << u"Open_Sesame"_s << u"Admin"_s
            << u"Maria|Admin|Open_Sesame"_s << u"None"_s;
        // Only the confirmation box is saved: not retyped, the old password stays.
        QTest::newRow("not retyped keeps the password")
            << u"Secret1"_s << u"Secret1"_s << false << QString() << u"Admin"_s
            << u"Maria|Admin|Secret1"_s << u"None"_s;
        QTest::newRow("current password in another case")
            << u"Secret1"_s << u"SECRET1"_s << true << u"x"_s << u"Admin"_s << mismatch
            << u"None"_s;
        QTest::newRow("wrong current password")
            << u"Secret1"_s << u"Secret"_s << true << u"x"_s << u"Admin"_s << mismatch << u"None"_s;
        // The peso sign has no byte in the Windows code page the display scrambles in.
        QTest::newRow("password beyond the code page")
            << u"\u20b120/hr"_s << u"\u20b120/hr"_s << false << QString() << u"User"_s
            << u"Maria|User|\u20b120/hr"_s << u"None"_s;
        QTest::newRow("retyped empty")
            << u"Secret1"_s << u"Secret1"_s << true << QString() << u"User"_s
            << u"told: Type a password: an account without one can never log in."_s << u"Modi"_s;
    }
    void modifying() {
        QFETCH(QString, password);
        QFETCH(QString, current);
        QFETCH(bool, retype);
        QFETCH(QString, retyped);
        QFETCH(QString, type);
        QFETCH(QString, after);
        QFETCH(QString, mode);
        fx->exec(u"UPDATE sysusers SET keys = ? WHERE \"user\" = 'Maria'"_s, {password});
        choose(u"Maria"_s);
        click("cmdmodi");
        QCOMPARE(fx->prompts.texts(), QStringList{ModifyPrompt});
        QCOMPARE(fx->prompts.last()->icon, Prompts::Icon::None);
        QCOMPARE(this->mode(), u"idle"_s);
        QCOMPARE(window->focusWidget(), find("txtconf"));
        fx->prompts.clear();
        typeInto("txtconf", current + u'\n');
        window->tick();
        if (this->mode() == u"Modi"_s) {
            QCOMPARE(window->focusWidget(), find("txtkey"));
            typeInto("txtkey", u"not what is saved"_s);
            if (retype)
                typeInto("txtconf", retyped);
            chooseType(type);
            click("cmdsave");
        }
        QCOMPARE(this->mode(), mode);
        const QString told = fx->prompts.texts().join(u" | "_s);
        QCOMPARE(told.isEmpty() ? stored().section(u' ', 1, 1) : u"told: "_s + told, after);
        if (!told.isEmpty())
            QCOMPARE(stored(), QString(Accounts).replace(u"Secret1"_s, password));
    }

    void choosingAnotherAccountEndsTheModification() {
        choose(u"Maria"_s);
        click("cmdmodi");
        typeInto("txtconf", u"Secret1\n"_s);
        QCOMPARE(mode(), u"Modi"_s);
        // Maria's password confirmed is no licence to change Boss.
        choose(u"Boss"_s);
        QCOMPARE(mode(), u"None"_s);
        QCOMPARE(find("txtconf")->text(), QString());
        window->tick();
        QVERIFY(!find<QPushButton>("cmdsave")->isEnabled());
        QCOMPARE(stored(), Accounts);
    }

    void deleting_data() {
        QTest::addColumn<QStringList>("users");
        QTest::addColumn<QList<Answer>>("answers");
        QTest::addColumn<QStringList>("told"); // after the questions
        QTest::addColumn<QString>("left");
        QTest::newRow("no") << QStringList{u"Maria"_s} << QList<Answer>{Answer::No} << QStringList()
                            << Accounts;
        QTest::newRow("yes") << QStringList{u"Maria"_s} << QList<Answer>{Answer::Yes}
                             << QStringList() << u"ANA|Admin|pw Boss|Admin|Key1"_s;
        // Even the operator at work and the last "Admin" may go, but not untold.
        QTest::newRow("the last Admin")
            << QStringList{u"Boss"_s, u"ANA"_s} << QList<Answer>{Answer::Yes, Answer::Yes}
            << QStringList{u"No account of type Admin is left: nobody will be able to manage "
                           "the operator accounts or the settings. Add an Admin account, or "
                           "make one of the accounts an Admin, before closing this window."_s}
            << u"Maria|User|Secret1"_s;
    }
    void deleting() {
        QFETCH(QStringList, users);
        QFETCH(QList<Answer>, answers);
        QFETCH(QStringList, told);
        QFETCH(QString, left);
        fx->prompts.answers = answers;
        QStringList questions;
        for (const QString& user : users) {
            choose(user);
            click("cmddel");
            questions << u"Delete user : "_s + user + u" ?"_s;
            const auto* asked = &fx->prompts.shown.at(questions.size() - 1);
            QCOMPARE(asked->buttons, Prompts::Buttons::YesNo);
            QCOMPARE(asked->icon, Prompts::Icon::Critical);
        }
        QCOMPARE(fx->prompts.texts(), questions + told);
        QCOMPARE(stored(), left);
        // The boxes show an account that is still there.
        const QString current = find("txtuser")->text();
        QVERIFY2(left.contains(current + u'|'), qPrintable(current));
    }

    void controlStatesFollowTheMode() {
        const QString none = u"dbusers: on\ntxtuser: on, read-only\ntxtnuser: on, hidden, "
                             "editable\ntxtutype: on, read-only\ntxtkey: on, read-only\n"
                             "txtconf: off, editable, mask *\ncmdnew: on, Add User\n"
                             "cmdmodi: on, &Modify\ncmdsave: off, &Save\ncmddel: on, &Delete"_s;
        QCOMPARE(states(), none);
        choose(u"Boss"_s);
        // Adding: "Cancel" at once, "Abandon" once the timer has run.
        click("cmdnew");
        QCOMPARE(find<QPushButton>("cmdnew")->text(), u"Cancel"_s);
        QTRY_COMPARE_WITH_TIMEOUT(find<QPushButton>("cmdnew")->text(), u"Abandon"_s, 1000);
        QCOMPARE(states(),
                 u"dbusers: off\ntxtuser: on, hidden, read-only\ntxtnuser: on, editable\n"
                 "txtutype: on, editable\ntxtkey: on, editable, mask *\n"
                 "txtconf: on, editable, mask *\ncmdnew: on, Abandon\ncmdmodi: off, &Modify\n"
                 "cmdsave: on, &Save\ncmddel: off, &Delete"_s);
        QCOMPARE(window->focusWidget(), find("txtnuser"));
        click("cmdnew");
        window->tick();
        QCOMPARE(states(), none);
        QCOMPARE(find("txtuser")->text(), u"ANA"_s); // back at the first account

        // Waiting for the current password changes only what the button does.
        choose(u"Boss"_s);
        click("cmdmodi");
        window->tick();
        QString idle = none;
        idle.replace(u"txtkey: on, read-only"_s, u"txtkey: on, read-only, mask *"_s)
            .replace(u"txtconf: off"_s, u"txtconf: on"_s);
        QCOMPARE(states(), idle);
        typeInto("txtconf", u"Key1\n"_s);
        window->tick();
        QCOMPARE(states(),
                 u"dbusers: on\ntxtuser: on, read-only\ntxtnuser: on, hidden, editable\n"
                 "txtutype: on, editable\ntxtkey: on, editable, mask *\n"
                 "txtconf: on, editable, mask *\ncmdnew: off, Add User\ncmdmodi: off, &Modify\n"
                 "cmdsave: on, &Save\ncmddel: off, &Delete"_s);
        // Saved: the password box is masked with "@" until the timer shows it again.
        click("cmdsave");
        QCOMPARE(stateOf(find("txtkey")), u"on, editable, mask @"_s);
        window->tick();
        QCOMPARE(states(), none);
    }

    // The database refuses the write as a full disk would: the operator is told, nothing
    // changes, and what was typed stays to try again.
    void refusedWrite_data() {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("told");
        QTest::addColumn<QString>("mode");
        QTest::newRow("add") << u"INSERT"_s << u"The account could not be saved"_s << u"New"_s;
        QTest::newRow("modify") << u"UPDATE"_s << u"The account could not be saved"_s << u"Modi"_s;
        QTest::newRow("delete") << u"DELETE"_s << u"The account could not be deleted"_s
                                << u"None"_s;
    }
    void refusedWrite() {
        QFETCH(QString, statement);
        QFETCH(QString, told);
        QFETCH(QString, mode);
        fx->exec(u"CREATE TRIGGER refuse BEFORE %1 ON sysusers "
                 "BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END"_s.arg(statement));
        choose(u"Maria"_s);
        if (statement == u"INSERT"_s) {
            click("cmdnew");
            window->tick();
            addAccount(u"Lea"_s, u"User"_s, u"pw"_s, u"pw"_s);
        } else if (statement == u"UPDATE"_s) {
            click("cmdmodi");
            typeInto("txtconf", u"Secret1\n"_s);
            typeInto("txtconf", u"changed"_s);
            fx->prompts.clear();
            window->tick();
            click("cmdsave");
        } else {
            fx->prompts.answers = {Answer::Yes};
            click("cmddel");
            fx->prompts.shown.removeFirst(); // the question
        }
        QCOMPARE(fx->prompts.shown.size(), 1);
        QCOMPARE(fx->prompts.last()->title, u"Database error"_s);
        QVERIFY2(fx->prompts.last()->text.startsWith(told), qPrintable(fx->prompts.last()->text));
        QVERIFY(fx->prompts.last()->text.contains(u"full"_s));
        QCOMPARE(stored(), Accounts);
        QCOMPARE(this->mode(), mode);
        if (mode != u"None"_s)
            QVERIFY(!find("txtconf")->text().isEmpty());
    }
};

QTEST_MAIN(AccountsTest)
#include "tst_accounts.moc"
