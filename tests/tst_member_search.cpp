// The member search (Gsearch), driven through its controls over a real database.
#include "people/member_search_dialog.h"
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class MemberSearchTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;
    QDialog* dialog = nullptr;
    QList<QStringList> passed; // (id, name) of each member handed on

    template <typename T = QWidget> T* find(const QString& name) {
        return dialog->findChild<T*>(name);
    }
    QLineEdit* key() { return find<QLineEdit>(u"txtskey"_s); }
    QTableView* grid() { return find<QTableView>(u"grdMembers"_s); }
    QStringList ids() {
        QStringList out;
        for (int r = 0; r < grid()->model()->rowCount(); ++r)
            out << grid()->model()->index(r, 0).data().toString();
        return out;
    }
    void choose(int option) {
        for (auto* o : dialog->findChildren<QRadioButton*>(u"optwhat"_s))
            if (o->property("index").toInt() == option)
                o->click();
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Cashier"_s));
        fx->exec(u"INSERT INTO members (CID, LN, FN, MN) VALUES "
                 "('ID-00001', 'DELA CRUZ', 'JUAN', 'P'), ('ID-00002', 'CRUZ', 'JOSE', ''), "
                 "('ID-00003', 'SANTOS', 'MARIA', 'L'), ('ID-00004', 'cruz', 'ANA', NULL), "
                 "('ID-00014', 'ANDRADA', 'JUAN CARLO', 'M'), ('ID-00040', 'OCAMPO', NULL, 'R')"_s);
        passed.clear();
        openMemberSearch(*fx->console, *fx->frame, [this](const QString& id, const QString& name) {
            passed << QStringList{id, name};
        });
        dialog = fx->frame->findChild<QDialog*>(u"Gsearch"_s);
        QVERIFY(dialog && dialog->isVisible());
    }
    void cleanup() { fx.reset(); }

    void followsEveryKey_data() {
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("keys");      // '\b' is Backspace
        QTest::addColumn<QStringList>("after"); // the ids shown after each key, ", "-joined
        const QString all = u"ID-00014, ID-00004, ID-00002, ID-00001, ID-00040, ID-00003"_s;
        QTest::newRow("id") << 0 << u"0004"_s
                            << QStringList{all, all, all, u"ID-00004, ID-00040"_s};
        // Last name and first name joined: a text may run from one into the other; a
        // member without a first name is not found by name.
        QTest::newRow("name across both")
            << 1 << u"ZJ"_s
            << QStringList{u"ID-00004, ID-00002, ID-00001"_s, u"ID-00002, ID-00001"_s};
        const QString a = u"ID-00014, ID-00004, ID-00001, ID-00003"_s;
        QTest::newRow("backspace widens")
            << 1 << u"anaz\b\b\b"_s
            << QStringList{a, a, u"ID-00004"_s, QString(), u"ID-00004"_s, a, a};
        QTest::newRow("apostrophe keeps the grid")
            << 1 << u"o'"_s
            << QStringList{u"ID-00014, ID-00002, ID-00003"_s, u"ID-00014, ID-00002, ID-00003"_s};
    }
    void followsEveryKey() {
        QFETCH(int, option);
        QFETCH(QString, keys);
        QFETCH(QStringList, after);
        // On opening: every member, as registered.
        QCOMPARE(ids(), (QStringList{u"ID-00001"_s, u"ID-00002"_s, u"ID-00003"_s, u"ID-00004"_s,
                                     u"ID-00014"_s, u"ID-00040"_s}));
        choose(option);
        QStringList got;
        key()->setFocus();
        for (const QChar c : keys) {
            if (c == u'\b')
                QTest::keyClick(key(), Qt::Key_Backspace);
            else
                QTest::keyClicks(key(), QString(c));
            got << ids().join(u", "_s);
        }
        QCOMPARE(got, after);
        QCOMPARE(fx->prompts.texts(), QStringList());
        if (!ids().isEmpty())
            QCOMPARE(grid()->currentIndex().row(), 0);
    }

    // Enter searches and hands nobody on; Pass with nobody found tells so.
    void toldWhenNobodyIsFound_data() {
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("pass"); // else Enter
        QTest::addColumn<QString>("told");
        const QString empty = u"Query result is empty"_s;
        QTest::newRow("found") << 1 << u"santos"_s << false << QString();
        QTest::newRow("nobody by name") << 1 << u"zz"_s << false << empty;
        QTest::newRow("nobody by id") << 0 << u"ID-9"_s << false << empty;
        QTest::newRow("pass, nobody") << 1 << u"zz"_s << true << empty;
        QTest::newRow("apostrophe") << 1 << u"D'"_s << false
                                    << u"\"D'\" holds an apostrophe ( ' ), which no search can "
                                       "hold. Type the key without it."_s;
    }
    void toldWhenNobodyIsFound() {
        QFETCH(int, option);
        QFETCH(QString, typed);
        QFETCH(bool, pass);
        QFETCH(QString, told);
        choose(option);
        QTest::keyClicks(key(), typed);
        if (pass)
            find<QPushButton>(u"cmdpassd"_s)->click();
        else
            QTest::keyClick(key(), Qt::Key_Return);
        QCOMPARE(fx->prompts.texts(), told.isEmpty() ? QStringList() : QStringList{told});
        if (!told.isEmpty())
            QCOMPARE(fx->prompts.last()->title, u"Try another key"_s);
        QVERIFY(dialog->isVisible());
        QCOMPARE(passed, QList<QStringList>());
    }

    // The member handed on: its id, and the names as stored, joined.
    void handsTheChosenMemberOn_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("doubleClick");
        QTest::addColumn<QStringList>("handed");
        QTest::newRow("pass button")
            << u"cruz"_s << 2 << false << QStringList{u"ID-00001"_s, u"DELA CRUZ, JUAN P"_s};
        QTest::newRow("double-click")
            << u"cruz"_s << 1 << true << QStringList{u"ID-00002"_s, u"CRUZ, JOSE "_s};
        QTest::newRow("first row, no middle name")
            << u"cruza"_s << 0 << false << QStringList{u"ID-00004"_s, u"cruz, ANA "_s};
    }
    void handsTheChosenMemberOn() {
        QFETCH(QString, typed);
        QFETCH(int, row);
        QFETCH(bool, doubleClick);
        QFETCH(QStringList, handed);
        choose(1);
        QTest::keyClicks(key(), typed);
        if (row > 0)
            grid()->setCurrentIndex(grid()->model()->index(row, 1));
        if (doubleClick) {
            const QRect cell = grid()->visualRect(grid()->currentIndex());
            QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
            QTest::mouseDClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
        } else {
            find<QPushButton>(u"cmdpassd"_s)->click();
        }
        QCOMPARE(passed, QList<QStringList>{handed});
        QTRY_VERIFY(!fx->frame->findChild<QDialog*>(u"Gsearch"_s));
    }
};

QTEST_MAIN(MemberSearchTest)
#include "tst_member_search.moc"
