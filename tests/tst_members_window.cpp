// The members register (Members), driven through its controls over a real database.
#include "people/members_window.h"
#include "support/files.h"
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Answer = Prompts::Answer;
using Icon = Prompts::Icon;
Q_DECLARE_METATYPE(Prompts::Answer)
Q_DECLARE_METATYPE(Prompts::Icon)

namespace {

const QStringList Boxes = {u"txtid"_s,   u"txtln"_s,   u"txtFn"_s,     u"txtMn"_s,  u"txtadr"_s,
                           u"txtdisc"_s, u"txtstat"_s, u"txtmbdate"_s, u"txtAccu"_s};
const QStringList Three = {u"ID-00001 REYES ANA"_s, u"ID-00002 CRUZ JUAN"_s,
                           u"ID-00003 TOMAS LEA"_s};

} // namespace

class MembersWindowTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;
    QWidget* window = nullptr;
    QList<QStringList> handedOn; // (id, name) of each member cmdlog handed on

    template <typename T = QWidget> T* find(const QString& name) {
        return window->findChild<T*>(name);
    }
    QLineEdit* box(const QString& name) { return find<QLineEdit>(name); }
    void click(const QString& name) {
        auto* b = find<QAbstractButton>(name);
        QVERIFY2(b && b->isEnabled(), qPrintable(name + u" cannot be pressed"_s));
        b->click();
    }
    // The buttons that change with the mode, and whether the boxes take typing.
    QString mode() {
        QStringList out;
        for (const char* name : {"cmdAddM", "cmdedit", "cmdclose"})
            out << find<QPushButton>(QLatin1String(name))->text();
        return out.join(u'/') + (box(u"txtln"_s)->isReadOnly() ? u", read-only"_s : u", typing"_s);
    }
    QTableView* grid() { return find<QTableView>(u"grdMembers"_s); }
    QAbstractItemModel* model() { return grid()->model(); }
    // One column of every row of the grid.
    QStringList column(int c) {
        QStringList out;
        for (int r = 0; r < model()->rowCount(); ++r)
            out << model()->index(r, c).data().toString();
        return out;
    }
    QStringList shown() {
        QStringList out;
        for (const QString& name : Boxes)
            out << box(name)->text();
        return out;
    }
    void select(int row) { grid()->setCurrentIndex(model()->index(row, 0)); }
    QString stored() {
        return fx
            ->scalar(u"SELECT group_concat(CID || ' ' || LN, '|') FROM (SELECT * FROM "
                     "members ORDER BY rowid)"_s)
            .toString();
    }
    void addMembers(const QStringList& rows) { // "CID LN FN"
        for (const QString& r : rows) {
            const QStringList f = r.split(u' ');
            fx->exec(u"INSERT INTO members (CID, LN, FN, MN, Disc, Accuhrs) VALUES (?, ?, ?, '', "
                     "0, 0)"_s,
                     {f.value(0), f.value(1), f.value(2)});
        }
    }
    // The register as the frame opens it, or with a recorder for what cmdlog hands on.
    void open(bool recordHandOn = false) {
        if (recordHandOn) {
            auto* w = new MembersWindow(*fx->console, *fx->frame,
                                        [this](const QString& id, const QString& name) {
                                            handedOn << QStringList{id, name};
                                        });
            fx->frame->showForm(w, false);
        } else {
            fx->frame->action(u"mnuCset"_s)->trigger();
        }
        window = fx->frame->findChild<QWidget*>(u"Members"_s);
        QVERIFY(window && window->isVisible());
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Cashier"_s));
        handedOn.clear();
    }
    void cleanup() { fx.reset(); }

    void opensWithEveryMember() {
        addMembers(Three.mid(0, 2));
        open();
        open(); // the one open is brought forward
        QCOMPARE(fx->frame->findChildren<MembersWindow*>().size(), 1);
        QStringList captions;
        for (int c = 0; c < model()->columnCount(); ++c)
            captions << model()->headerData(c, Qt::Horizontal).toString();
        QCOMPARE(captions,
                 (QStringList{u"ID"_s, u"Last_Name"_s, u"First_Name"_s, u"Middle_Name"_s,
                              u"Address"_s, u"Disc"_s, u"Status"_s, u"mdate"_s, u"Accuhrs"_s}));
        QCOMPARE(column(1), (QStringList{u"REYES"_s, u"CRUZ"_s}));
        QCOMPARE(shown().mid(0, 3), (QStringList{u"ID-00001"_s, u"REYES"_s, u"ANA"_s}));
        QCOMPARE(mode(), u"Add Member/Edit Info/Close, read-only"_s);
        select(1);
        QCOMPARE(box(u"txtln"_s)->text(), u"CRUZ"_s);
        click(u"cmdclose"_s);
        QTRY_VERIFY(!fx->frame->findChild<MembersWindow*>());
    }

    // The id counts the rows: it grows a character when the count gains a digit, and
    // repeats an id after a deletion.
    void addGivesTheNextId_data() {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("deleted");
        QTest::addColumn<QString>("id");
        QTest::newRow("none") << 0 << 0 << u"ID-00001"_s;
        QTest::newRow("5") << 5 << 0 << u"ID-00006"_s;
        QTest::newRow("9") << 9 << 0 << u"ID-000010"_s;
        QTest::newRow("99") << 99 << 0 << u"ID-000100"_s;
        QTest::newRow("3, one deleted: an id again") << 3 << 1 << u"ID-00003"_s;
    }
    void addGivesTheNextId() {
        QFETCH(int, rows);
        QFETCH(int, deleted);
        QFETCH(QString, id);
        for (int i = 1; i <= rows; ++i)
            addMembers({u"%1 LAST%2 FIRST"_s.arg(nextMemberId(i - 1)).arg(i)});
        open();
        for (int i = 0; i < deleted; ++i) {
            select(0);
            click(u"cmddel"_s);
        }
        click(u"cmdAddM"_s);
        QCOMPARE(box(u"txtid"_s)->text(), id);
        QCOMPARE(box(u"txtmbdate"_s)->text(), u"11/15/2026"_s);
        QCOMPARE(mode(), u"Save New/Edit Info/Abandon, typing"_s);
        QVERIFY(!grid()->isEnabled());
        box(u"txtln"_s)->setText(u"  DELA CRUZ "_s);
        box(u"txtFn"_s)->setText(u"JUAN"_s);
        box(u"txtdisc"_s)->setText(u"10"_s);
        click(u"cmdAddM"_s);
        QCOMPARE(fx->prompts.texts(), QStringList(u"Remove current record?"_s).mid(0, deleted));
        QCOMPARE(fx->scalar(u"SELECT count(*) FROM members WHERE CID = ?"_s, {id}).toInt(),
                 1 + (deleted > 0));
        QCOMPARE(fx->scalar(u"SELECT LN || '|' || FN || '|' || Disc || '|' || mdate FROM members "
                            "ORDER BY rowid DESC LIMIT 1"_s)
                     .toString(),
                 u"DELA CRUZ|JUAN|10.0|2026-11-15"_s);
        QCOMPARE(mode(), u"Add Member/Edit Info/Close, read-only"_s);
        // The new member is the current one, at the end.
        QCOMPARE(grid()->currentIndex().row(), rows - deleted);
        QCOMPARE(shown().mid(0, 3), (QStringList{id, u"DELA CRUZ"_s, u"JUAN"_s}));
    }

    void editSavesTheCurrentMember() {
        addMembers(Three);
        open();
        select(1);
        click(u"cmdedit"_s);
        QCOMPARE(mode(), u"Add Member/Save Edit/Abandon, typing"_s);
        QVERIFY(!find<QPushButton>(u"cmdAddM"_s)->isEnabled());
        box(u"txtln"_s)->setText(u"CRUZ-SANTOS"_s);
        box(u"txtAccu"_s)->setText(u"12"_s);
        box(u"txtmbdate"_s)->setText(u"2/3/2025"_s);
        click(u"cmdedit"_s);
        QCOMPARE(fx->prompts.texts(), QStringList());
        QCOMPARE(stored(), u"ID-00001 REYES|ID-00002 CRUZ-SANTOS|ID-00003 TOMAS"_s);
        QCOMPARE(fx->scalar(u"SELECT Accuhrs || ' ' || mdate FROM members WHERE CID = "
                            "'ID-00002'"_s)
                     .toString(),
                 u"12.0 2025-02-03"_s);
        QCOMPARE(grid()->currentIndex().row(), 1);
        QCOMPARE(box(u"txtmbdate"_s)->text(), u"02/03/2025"_s);
        QCOMPARE(mode(), u"Add Member/Edit Info/Close, read-only"_s);
    }

    void abandonWritesNothing_data() {
        QTest::addColumn<QString>("button");
        QTest::newRow("add") << u"cmdAddM"_s;
        QTest::newRow("edit") << u"cmdedit"_s;
    }
    void abandonWritesNothing() {
        QFETCH(QString, button);
        addMembers(Three.mid(0, 2));
        open();
        select(1);
        const QStringList before = shown();
        click(button);
        box(u"txtln"_s)->setText(u"TYPED"_s);
        click(u"cmdclose"_s);
        QVERIFY(window->isVisible());
        QCOMPARE(stored(), u"ID-00001 REYES|ID-00002 CRUZ"_s);
        QCOMPARE(shown(), before);
        QCOMPARE(mode(), u"Add Member/Edit Info/Close, read-only"_s);
    }

    void deleteAsksFirst_data() {
        QTest::addColumn<int>("members");
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<QStringList>("told"); // after the question
        QTest::addColumn<QString>("left");
        QTest::addColumn<int>("current"); // the grid's row afterwards
        QTest::newRow("empty, yes")
            << 0 << Answer::Yes << QStringList{u"Members Record is already empty"_s} << QString()
            << -1;
        QTest::newRow("empty, no") << 0 << Answer::No << QStringList() << QString() << -1;
        QTest::newRow("yes: goes to the last row")
            << 3 << Answer::Yes << QStringList() << u"ID-00001 REYES|ID-00003 TOMAS"_s << 1;
        QTest::newRow("no") << 3 << Answer::No << QStringList()
                            << u"ID-00001 REYES|ID-00002 CRUZ|ID-00003 TOMAS"_s << 1;
    }
    void deleteAsksFirst() {
        QFETCH(int, members);
        QFETCH(Answer, answer);
        QFETCH(QStringList, told);
        QFETCH(QString, left);
        QFETCH(int, current);
        addMembers(Three.mid(0, members));
        open();
        select(1);
        fx->prompts.answers = {answer};
        click(u"cmddel"_s);
        const auto& asked = fx->prompts.shown.first();
        QCOMPARE(asked.title + u": "_s + asked.text, u"Delete?: Remove current record?"_s);
        QCOMPARE(std::pair(asked.buttons, asked.icon),
                 std::pair(Prompts::Buttons::YesNo, Icon::Critical));
        QCOMPARE(fx->prompts.texts().mid(1), told);
        if (!told.isEmpty())
            QCOMPARE(fx->prompts.last()->title, u"Empty"_s);
        QCOMPARE(stored(), left);
        QCOMPARE(grid()->currentIndex().row(), current);
    }

    void findByLastNameFirstNameOrId_data() {
        QTest::addColumn<int>("option"); // optwhat
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("ids"); // shown afterwards, in order
        QTest::addColumn<QString>("told");
        QTest::addColumn<Icon>("icon");
        const QString all = u"ID-00001 ID-00002 ID-00003 ID-00004 ID-00005"_s;
        const QString an = u"ID-00004 ID-00002 ID-00005"_s;
        for (const QString& key : {u"an"_s, u"AN"_s, u" aN "_s}) // any case, blanks trimmed
            QTest::addRow("last name '%s'", qPrintable(key))
                << 0 << key << an << QString() << Icon::None;
        QTest::newRow("first name")
            << 1 << u"jo"_s << u"ID-00003 ID-00001"_s << QString() << Icon::None;
        QTest::newRow("id") << 2 << u"d-00003"_s << u"ID-00003"_s << QString() << Icon::None;
        QTest::newRow("nothing found: all again")
            << 0 << u"zz"_s << all << u"Result Query is Empty"_s << Icon::None;
        QTest::newRow("empty key")
            << 0 << QString() << all << u"Search strings is empty"_s << Icon::Information;
        QTest::newRow("apostrophe") << 0 << u"D'Cruz"_s << all
                                    << u"\"D'Cruz\" holds an apostrophe ( ' ), which no search can "
                                       "hold. Type the key without it."_s
                                    << Icon::Exclamation;
    }
    void findByLastNameFirstNameOrId() {
        QFETCH(int, option);
        QFETCH(QString, key);
        QFETCH(QString, ids);
        QFETCH(QString, told);
        QFETCH(Icon, icon);
        addMembers({u"ID-00001 TOMAS JOSE"_s, u"ID-00002 Santos ANA"_s, u"ID-00003 REYES JOHN"_s,
                    u"ID-00004 andrada MARK"_s, u"ID-00005 SANTOS MARIA"_s});
        open();
        for (auto* o : window->findChildren<QRadioButton*>(u"optwhat"_s))
            if (o->property("index").toInt() == option)
                o->click();
        box(u"txtskey"_s)->setText(key);
        click(u"cmdfind"_s);
        QCOMPARE(column(0).join(u' '), ids);
        QCOMPARE(fx->prompts.texts(), told.isEmpty() ? QStringList() : QStringList{told});
        if (!told.isEmpty())
            QCOMPARE(fx->prompts.last()->icon, icon);
        QCOMPARE(grid()->currentIndex().row(), 0);
        QCOMPARE(box(u"txtid"_s)->text(), ids.section(u' ', 0, 0));
        click(u"cmdBrw"_s);
        QCOMPARE(column(0).size(), 5);
    }

    // Keys typed one at a time, '\b' being Backspace.
    void digitsOnlyBoxes_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        QTest::newRow("hours: letters") << u"txtAccu"_s << u"1a2B"_s << u"12"_s;
        QTest::newRow("hours: backspace") << u"txtAccu"_s << u"45\b"_s << u"4"_s;
        QTest::newRow("hours: sign and point") << u"txtAccu"_s << u"-1.5 "_s << u"15"_s;
        QTest::newRow("discount: other digits") << u"txtdisc"_s << u"٣5x\b"_s << QString();
        QTest::newRow("discount: digits") << u"txtdisc"_s << u"0123456789"_s << u"012345678"_s;
        QTest::newRow("last name takes letters") << u"txtln"_s << u"Ab1\b"_s << u"Ab"_s;
    }
    void digitsOnlyBoxes() {
        QFETCH(QString, name);
        QFETCH(QString, keys);
        QFETCH(QString, text);
        open();
        click(u"cmdAddM"_s);
        QLineEdit* b = box(name);
        b->clear();
        b->setFocus();
        for (const QChar c : keys) {
            if (c == u'\b')
                QTest::keyClick(b, Qt::Key_Backspace);
            else // by its text, as a key of another keyboard layout QTest cannot name
                QTest::sendKeyEvent(QTest::Click, b, Qt::Key_unknown, c, Qt::NoModifier);
        }
        QCOMPARE(b->text(), text);
    }

    // Refused before anything is written, the member left open to correct.
    void refusedBeforeWriting_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("told");
        const QString quote =
            u"\"%1\" holds an apostrophe ( ' ), which the console cannot store. Type it without one."_s;
        for (const auto& [name, text] : {std::pair{u"txtln"_s, u"O'BRIEN"_s},
                                         {u"txtFn"_s, u"D'ARCY"_s},
                                         {u"txtadr"_s, u"12 St. Mary's"_s},
                                         {u"txtstat"_s, u"'"_s}})
            QTest::addRow("apostrophe in %s", qPrintable(name)) << name << text << quote.arg(text);
        QTest::newRow("no last name") << u"txtln"_s << u"  "_s << u"Type the member's last name."_s;
        QTest::newRow("no id") << u"txtid"_s << QString() << u"A member needs an ID."_s;
        QTest::newRow("date") << u"txtmbdate"_s << u"13/45/2026"_s
                              << u"\"13/45/2026\" is not a date. Type the membership date as "
                                 "MM/DD/YYYY, as in 11/15/2026."_s;
        QTest::newRow("hours pasted") << u"txtAccu"_s << u"1x"_s
                                      << u"The accumulated hours must be a whole number of at most "
                                         "9 digits, not \"1x\"."_s;
    }
    void refusedBeforeWriting() {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(QString, told);
        addMembers(Three.mid(0, 1));
        for (const QString& button : {u"cmdAddM"_s, u"cmdedit"_s}) {
            fx->prompts.clear();
            open();
            click(button);
            box(u"txtln"_s)->setText(u"CRUZ"_s);
            box(name)->setText(text);
            click(button);
            QCOMPARE(fx->prompts.texts(), QStringList{told});
            QCOMPARE(fx->prompts.last()->title, u"Not saved"_s);
            QCOMPARE(stored(), u"ID-00001 REYES"_s);
            QVERIFY(!box(name)->isReadOnly()); // still typing
            click(u"cmdclose"_s);
        }
    }

    void logOnHandsTheCurrentMember_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<QStringList>("handed"); // id, name; none when empty
        QTest::newRow("names trimmed") << 1 << QStringList{u"ID-00002"_s, u"DELA CRUZ, JUAN P"_s};
        QTest::newRow("no middle name") << 0 << QStringList{u"ID-00001"_s, u"REYES, ANA "_s};
        QTest::newRow("empty register") << -1 << QStringList();
    }
    void logOnHandsTheCurrentMember() {
        QFETCH(int, row);
        QFETCH(QStringList, handed);
        if (row >= 0)
            fx->exec(u"INSERT INTO members (CID, LN, FN, MN) VALUES ('ID-00001', 'REYES', 'ANA', "
                     "NULL), ('ID-00002', ' DELA CRUZ ', '  JUAN', 'P  ')"_s);
        open(true);
        select(row);
        click(u"cmdlog"_s);
        QCOMPARE(handedOn, handed.isEmpty() ? QList<QStringList>() : QList<QStringList>{handed});
        QCOMPARE(fx->prompts.texts(), handed.isEmpty()
                                          ? QStringList{u"Members Record is already empty"_s}
                                          : QStringList());
    }
};

QTEST_MAIN(MembersWindowTest)
#include "tst_members_window.moc"
