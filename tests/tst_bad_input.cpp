// Every window the frame opens, every text box in it fed what customers and operators
// really type by mistake: a quote, a very long text, text beyond Latin-1, control
// characters; each followed by Enter. Nothing may crash, no database error may reach the
// operator, and what was saved before is still there, whole.
#include "store/database.h"
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

namespace {
// Commands that end the program, leave it, or hand over to another program.
const QStringList Skipped = {u"mnuexit"_s,   u"tbar10"_s,     u"mnuSwitch"_s,
                             u"mnumanual"_s, u"mnuPrinter"_s, u"mnuAbout"_s};

struct Variant {
    const char* name;
    QString text;
    bool typed; // typed key by key (so validators and key filters see it), else pasted
};
} // namespace

// Key by key, as a keyboard sends it, whatever the characters.
void type(QWidget* box, const QString& text) {
    QPointer<QWidget> alive(box);
    for (QChar c : text) {
        if (!alive)
            return;
        QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(c));
        QApplication::sendEvent(box, &press);
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_unknown, Qt::NoModifier, QString(c));
        QApplication::sendEvent(box, &release);
    }
}

class BadInputTest : public QObject {
    Q_OBJECT

    FrameFixture fx;
    QTimer modalWatch;

    // The boxes of every window now shown, the frame's own included.
    QList<QLineEdit*> textBoxes() {
        QList<QLineEdit*> boxes;
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top->isVisible())
                for (QLineEdit* e : top->findChildren<QLineEdit*>())
                    if (e->isVisible() && e->isEnabled() && !e->isReadOnly())
                        boxes << e;
        return boxes;
    }
    void closeWindows() {
        if (auto* area = fx.frame->findChild<QMdiArea*>())
            area->closeAllSubWindows();
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top != fx.frame.get() && top->isVisible())
                top->close();
        QCoreApplication::processEvents();
    }

private Q_SLOTS:
    void initTestCase() {
        qputenv("HOMEDRIVE", fx.dir.filePath(u"home"_s).toUtf8());
        QVERIFY(fx.show(u"Admin"_s));
        fx.exec(u"INSERT INTO members (CID, LN, FN, MN, ADR) VALUES (?, ?, ?, ?, ?)"_s,
                {u"ID-00001"_s, u"DELA CRUZ"_s, u"JUAN"_s, u"P"_s, u"Manila"_s});
        fx.exec(u"INSERT INTO TmpRvnD (Rdate, Amount, rtype, TID) VALUES (?, ?, ?, ?)"_s,
                {QDate(2026, 11, 14), 120.5, u"GAMES_RENTALS"_s, u"3"_s});
        // A window that opens a box of its own outside the console's prompts is closed
        // after a while, as an operator would.
        modalWatch.setInterval(1500);
        connect(&modalWatch, &QTimer::timeout, this, [] {
            if (QWidget* modal = QApplication::activeModalWidget())
                modal->close();
        });
        modalWatch.start();
    }

    void everyTextBoxOfEveryWindow_data() {
        QTest::addColumn<QString>("action");
        for (QAction* a : fx.frame->findChildren<QAction*>()) {
            const QString name = a->objectName();
            if ((name.startsWith(u"mnu"_s) || name.startsWith(u"tbar"_s)) && !a->menu() &&
                !Skipped.contains(name))
                QTest::newRow(qPrintable(name)) << name;
        }
    }
    void everyTextBoxOfEveryWindow() {
        QFETCH(QString, action);
        const QList<Variant> variants = {
            {"quote", u"O'Brien"_s, true},
            {"long", QString(5000, u'x'), false},
            {"beyond Latin-1", u"Ñiño Ü 日本 ₱ ✓"_s, true},
            {"control characters", u"a\tb\x01\x7f\r\nc"_s, false},
        };
        fx.prompts.clear();
        fx.frame->findChild<QAction*>(action)->trigger();
        QCoreApplication::processEvents();
        for (const Variant& v : variants) {
            for (QLineEdit* box : textBoxes()) {
                QPointer<QLineEdit> alive(box);
                box->clear();
                if (v.typed)
                    type(box, v.text);
                else
                    box->setText(v.text);
                if (alive)
                    QTest::keyClick(alive, Qt::Key_Return);
                QCoreApplication::processEvents();
            }
        }
        for (const QString& said : fx.prompts.texts())
            QVERIFY2(!said.contains(u"syntax"_s, Qt::CaseInsensitive) &&
                         !said.contains(u"unrecognized token"_s, Qt::CaseInsensitive) &&
                         !said.contains(u"no such"_s, Qt::CaseInsensitive),
                     qPrintable(action + u" showed a database error: "_s + said));
        closeWindows();
    }

    void whatWasSavedIsStillThere() {
        QCOMPARE(fx.scalar(u"SELECT count(*) FROM TmpRvnD WHERE Amount = 120.5"_s).toInt(), 1);
        QCOMPARE(fx.scalar(u"SELECT count(*) FROM members WHERE CID = 'ID-00001'"_s).toInt(), 1);
        QCOMPARE(fx.scalar(u"PRAGMA integrity_check"_s).toString(), u"ok"_s);
    }
};

QTEST_MAIN(BadInputTest)
#include "tst_bad_input.moc"
