// The rates window and the promo list, driven through their controls on a real database:
// what Apply puts in force and writes, what the grids write, and what is refused.
#include "support/files.h"
#include "support/frame_fixture.h"
#include "support/terminal_probe.h"

#include <QSqlRecord>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Answer = Prompts::Answer;

namespace {

const QString Updated = u"Services table & Tarvo QRB  rates has been refreshed\r"
                        u"Restart routine for terminals is needed before changes takes effect!"_s;

} // namespace

class RatesTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;

    Console& console() { return *fx->console; }
    Rates& rates() { return console().rates(); }
    template <typename T = QWidget> T* find(const QString& name) {
        return fx->frame->findChild<T*>(name);
    }

    // A fresh console and frame on the same database, as at the next start.
    void restart() {
        fx->frame.reset();
        fx->console.reset(); // a console started again reads everything afresh
        fx->prompts.clear();
        QVERIFY(fx->show(u"Admin"_s));
    }
    QDialog* openRates(const QString& command = u"mnuRateS"_s) {
        fx->frame->action(command)->trigger();
        return find<QDialog>(u"RatesSrv"_s);
    }
    QDialog* openPromos() {
        find<QPushButton>(u"cmdplist"_s)->click();
        return find<QDialog>(u"frmlp"_s);
    }
    void apply(const QString& rate, const QString& minimum, const QString& minutes) {
        find<QLineEdit>(u"txtrph"_s)->setText(rate);
        find<QLineEdit>(u"txtmina"_s)->setText(minimum);
        find<QComboBox>(u"cmbMtime"_s)->setCurrentText(minutes);
        find<QPushButton>(u"cmdApply"_s)->click();
    }

    // Types into a cell as the operator does, '\b' being Backspace, and ends with Enter.
    static void typeInto(QTableView* view, int row, int column, const QString& keys) {
        const QModelIndex index = view->model()->index(row, column);
        view->setCurrentIndex(index);
        view->edit(index);
        auto* editor = view->viewport()->findChild<QLineEdit*>();
        QVERIFY(editor);
        editor->selectAll();
        QTest::keyClicks(editor, keys);
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::sendPostedEvents(); // the view commits the edit queued
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // Every row of the three tables, and what the console holds of them.
    QString stored() {
        QStringList out;
        for (const char* table : {"rates", "services", "promos"}) {
            Database db(*fx->folder);
            DbSession s(db);
            auto q = s.run(u"SELECT * FROM %1 ORDER BY rowid"_s.arg(QLatin1String(table)));
            while (q.next())
                for (int c = 0; c < q.record().count(); ++c)
                    out << q.value(c).toString();
            out << u"|"_s;
        }
        out << inForce() << QString::number(rates().promoInForce())
            << QString::number(rates().services().size());
        return out.join(u' ');
    }
    QString inForce() {
        return QString::number(rates().ratePerHour()) + u'/' +
               rates().minimumAmount().toDecimalText() + u'/' +
               QString::number(rates().minimumMinutes());
    }
    static QString shown(const QAbstractItemModel* model) {
        QStringList out;
        for (int r = 0; r < model->rowCount(); ++r)
            for (int c = 0; c < model->columnCount(); ++c)
                out << model->index(r, c).data().toString();
        return out.join(u'|');
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        fx->start();
        fx->exec(u"INSERT INTO services (Description, Amount) VALUES ('Scan', 10), ('Print', 5)"_s);
        fx->exec(u"INSERT INTO promos (ddtls, drange, dtype, Amount) VALUES "
                 "('Summer', 'June', 'Per Hour', 5), ('Student', 'All year', 'Fix', 0)"_s);
        restart();
    }
    void cleanup() { fx.reset(); }

    void applyPutsTheSettingsInForce_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("rows");         // in the rates table before
        QTest::addColumn<QString>("typed");    // txtrph, txtmina, cmbMtime
        QTest::addColumn<QByteArray>("reply"); // to the terminal's next "RTS"
        QTest::addColumn<QString>("stored");   // RPH/mina/mint of each row
        row("rate 25", "mnuRateS", 1, "25 10 30", "SRPH 25.:30.;10."_ba, "25.0/10.0/30");
        // What a charge reads (rate and minimum) stays as it was.
        row("minutes alone", "tbar4", 1, "20 10 120", "SRPH 20.:120.;10."_ba, "20.0/10.0/120");
        row("fractions", "tbar4", 1, "12.5 7.25 44.6", "SRPH 12.5:45.;7.25"_ba, "12.5/7.25/45");
        row("grouped texts read their leading number", "mnuRateS", 1, "1,234.50 1,000 30",
            "SRPH 1.:30.;1."_ba, "1.0/1.0/30");
        row("empty table", "mnuRateS", 0, "25 15 45", "SRPH 25.:45.;15."_ba, "25.0/15.0/45");
        row("two rows: the first is the one read", "mnuRateS", 2, "25 15 45", "SRPH 25.:45.;15."_ba,
            "25.0/15.0/45 31.0/10.0/30");
    }
    void applyPutsTheSettingsInForce() {
        QFETCH(QString, command);
        QFETCH(int, rows);
        QFETCH(QString, typed);
        QFETCH(QByteArray, reply);
        QFETCH(QString, stored);
        fx->exec(u"DELETE FROM rates"_s);
        for (int i = 0; i < rows; ++i)
            fx->exec(u"INSERT INTO rates (RPH, mina, mint) VALUES (?, 10, 30)"_s, {20 + 11 * i});
        TerminalProbe probe(console());
        auto terminal = probe.online(3, u"127.0.0.13"_s);
        QVERIFY(terminal);
        QVERIFY(openRates(command));
        // The window opens with what is in force.
        QCOMPARE(find<QLineEdit>(u"txtrph"_s)->text(), u"20"_s);
        QCOMPARE(find<QLineEdit>(u"txtmina"_s)->text(), u"10"_s);
        QCOMPARE(find<QComboBox>(u"cmbMtime"_s)->currentText(), u"30"_s);
        QCOMPARE(find(u"RatesSrv"_s)->findChild<QTableView*>()->columnWidth(0),
                 3000 * fx->frame->logicalDpiX() / 1440);

        const QStringList values = typed.split(u' ');
        apply(values[0], values[1], values[2]);
        QCOMPARE(fx->prompts.texts(), QStringList{Updated});
        QCOMPARE(fx->prompts.last()->title, u"Updated"_s);
        QCOMPARE(fx->prompts.last()->icon, Prompts::Icon::Information);
        terminal->clearInbox();
        terminal->requestRates();
        QCOMPARE(terminal->waitFor("SRPH"), reply);
        QCOMPARE(fx->scalar(u"SELECT group_concat(RPH || '/' || mina || '/' || mint, ' ') FROM "
                            "(SELECT * FROM rates ORDER BY rowid)"_s)
                     .toString(),
                 stored);
        // The next start reads what was put in force, and finds the table not empty.
        const QString inForce = this->inForce();
        restart();
        QCOMPARE(fx->prompts.texts(), QStringList());
        QCOMPARE(this->inForce(), inForce);
    }

    void promoListHasItsBuiltInEntryFirst_data() {
        QTest::addColumn<int>("promos");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("fields"); // amount, range, type of each entry
        row("three promos", 3, QStringList{"No Discount", "Happy hour", "Student", "Loyal"},
            "0.00|None|None|5.00|2-5 PM|Per Hour|0.50|Weekdays|Fix|1234.50|All year|None");
        row("none", 0, QStringList{"None Defined"}, "0.00|None|None");
    }
    void promoListHasItsBuiltInEntryFirst() {
        QFETCH(int, promos);
        QFETCH(QStringList, names);
        QFETCH(QString, fields);
        fx->exec(u"DELETE FROM promos"_s);
        const QList<QVariantList> rows = {{"Happy hour", "2-5 PM", "Per Hour", 5},
                                          {"Student", "Weekdays", "Fix", 0.5},
                                          {"Loyal", "All year", "None", 1234.5}};
        for (const auto& r : rows.mid(0, promos))
            fx->exec(u"INSERT INTO promos (ddtls, drange, dtype, Amount) VALUES (?, ?, ?, ?)"_s, r);
        restart();
        openRates();
        auto* combo = find<QComboBox>(u"cmdpromos"_s);
        QStringList listed;
        for (int i = 0; i < combo->count(); ++i)
            listed << combo->itemText(i);
        QCOMPARE(listed, names);
        QCOMPARE(combo->currentIndex(), 0);
        QStringList shown;
        for (int i = names.size() - 1; i >= 0; --i) {
            combo->setCurrentIndex(i);
            for (const char* field : {"txtptype", "txtprange", "txtpamnt"})
                shown.prepend(find<QLineEdit>(QString::fromLatin1(field))->text());
        }
        QCOMPARE(shown.join(u'|'), fields);
        combo->setCurrentIndex(names.size() - 1);
        apply(u"20"_s, u"10"_s, u"30"_s);
        QCOMPARE(rates().promoInForce(), int(names.size()) - 1);
        QCOMPARE(rates().promo().details, names.last());
    }

    void gridEditsReachTheListsWhenTheirTimeComes() {
        openRates();
        QTableView* services = find(u"RatesSrv"_s)->findChild<QTableView*>();
        typeInto(services, 2, 0, u"Burn CD"_s); // the blank row takes a new service
        typeInto(services, 2, 1, u"25"_s);
        typeInto(services, 0, 1, u"6"_s); // "Print" is listed first
        services->setCurrentIndex(services->model()->index(1, 0));
        find<QPushButton>(u"cmddel"_s)->click(); // "Scan", answered Yes
        QCOMPARE(rates().services().size(), 2);
        QDialog* promoList = openPromos();
        QTableView* promos = promoList->findChild<QTableView*>();
        typeInto(promos, 2, 0, u"Night"_s);
        typeInto(promos, 0, 3, u"7"_s);
        promos->setCurrentIndex(promos->model()->index(1, 0));
        promoList->findChild<QPushButton*>(u"cmddel"_s)->click(); // "Student"
        QCOMPARE(fx->prompts.texts(),
                 QStringList({"Delete current Service?", "Delete current record?"}));

        apply(u"20"_s, u"10"_s, u"30"_s);
        QStringList listed;
        for (const Service& s : rates().services())
            listed << s.description + u'=' + QString::number(s.amount);
        QCOMPARE(listed, QStringList({"Burn CD=25", "Print=6"}));
        QCOMPARE(shown(services->model()), u"Burn CD|25|Print|6||"_s);
        // Promos wait for the next start, even through Apply.
        QCOMPARE(rates().promos().size(), 3);
        QCOMPARE(rates().promos().at(1).amount, Money::fromPesos(5));
        restart();
        QStringList promosNow;
        for (const Promo& p : rates().promos())
            promosNow << p.details + u'=' + p.amount.toDecimalText();
        QCOMPARE(promosNow, QStringList({"No Discount=0.0000", "Summer=7.0000", "Night=0.0000"}));
    }

    void numericColumnsTakeOnlyNumberKeys_data() {
        QTest::addColumn<QString>("window");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("stored");
        row("promo amount", "frmlp", 3, "12.50", "12.5");
        row("letters dropped", "frmlp", 3, "1a2b.5", "12.5");
        row("no sign or blank", "frmlp", 3, "- 3", "3");
        row("no grouping", "frmlp", 3, "7,5", "75");
        row("backspace edits", "frmlp", 3, "129\b", "12");
        row("service amount", "RatesSrv", 1, "4O5", "45");
        row("text column", "frmlp", 0, "Pay-1, get 2", "Pay-1, get 2");
    }
    void numericColumnsTakeOnlyNumberKeys() {
        QFETCH(QString, window);
        QFETCH(int, column);
        QFETCH(QString, keys);
        QFETCH(QString, stored);
        openRates();
        const bool promos = window == u"frmlp"_s;
        QWidget* w = promos ? openPromos() : find(window);
        typeInto(w->findChild<QTableView*>(), 2, column, keys); // a new record
        QCOMPARE(fx->scalar(u"SELECT %1 FROM %2 ORDER BY rowid DESC LIMIT 1"_s.arg(
                                column == 0 ? u"ddtls"_s : u"Amount"_s,
                                promos ? u"promos"_s : u"services"_s))
                     .toString(),
                 stored);
    }

    // Refused before anything is written, or failed in the database: the operator is told
    // why, and the tables, the console's values and the grids stay as they were.
    void refusalsChangeNothing_data() {
        QTest::addColumn<QString>("failure"); // "fail <statement kind> <table>", or SQL that breaks
        QTest::addColumn<QString>("action");  // a rates text, "<window> row column", "delete"
        QTest::addColumn<QString>("typed");   // or the answer to a deletion
        QTest::addColumn<QString>("told");    // title: part of the text
        const char* const apostrophe = "Not saved: apostrophe";
        const char* const diskSaysNo = "Database error: disk says no";
        row("no to a service deletion", "", "delete RatesSrv", "No",
            "Remove record?: Delete current Service?");
        row("no to a promo deletion", "", "delete frmlp", "No",
            "Remove record?: Delete current record?");
        row("' in txtrph", "", "txtrph", "2'5", apostrophe);
        row("' in txtmina", "", "txtmina", "1'0", apostrophe);
        row("' in cmbMtime", "", "cmbMtime", "3'0", apostrophe);
        row("' in a service", "", "RatesSrv 0 0", "Kid's", apostrophe);
        row("' in a new promo", "", "frmlp 2 0", "Mom's day", apostrophe);
        row("' in a promo type", "", "frmlp 0 2", "Fix'", apostrophe);
        row("rate too large", "", "txtrph", "99999999999", "Not saved: too large");
        row("rates row fails", "fail UPDATE rates", "txtrph", "25", diskSaysNo);
        row("services unreadable", "ALTER TABLE services RENAME COLUMN Amount TO Price", "txtrph",
            "25", "Database error: Amount");
        row("service change fails", "fail UPDATE services", "RatesSrv 0 1", "99", diskSaysNo);
        row("promo insert fails", "fail INSERT promos", "frmlp 2 0", "Night", diskSaysNo);
        row("service delete fails", "fail DELETE services", "delete RatesSrv", "", diskSaysNo);
        row("promo delete fails", "fail DELETE promos", "delete frmlp", "", diskSaysNo);
    }
    void refusalsChangeNothing() {
        QFETCH(QString, failure);
        QFETCH(QString, action);
        QFETCH(QString, typed);
        QFETCH(QString, told);
        openRates();
        QDialog* promos = openPromos();
        const QStringList words = action.split(u' ');
        QWidget* window = words.contains(u"frmlp"_s) ? promos : find(u"RatesSrv"_s);
        auto* view = window->findChild<QTableView*>();
        const QStringList failing = failure.split(u' ');
        if (failing.first() == u"fail"_s)
            fx->exec(u"CREATE TRIGGER fail BEFORE %1 ON %2 BEGIN SELECT RAISE(ABORT, 'disk says "
                     "no'); END"_s.arg(failing[1], failing[2]));
        else if (!failure.isEmpty())
            fx->exec(failure);
        const QString before = stored();
        const QString gridBefore = shown(view->model());
        fx->prompts.clear();

        if (words.first() == u"delete"_s) {
            if (typed == u"No"_s)
                fx->prompts.answers = {Answer::No};
            view->setCurrentIndex(view->model()->index(0, 0));
            window->findChild<QPushButton*>(u"cmddel"_s)->click();
        } else if (words.size() == 3) {
            typeInto(view, words[1].toInt(), words[2].toInt(), typed);
        } else {
            if (action == u"cmbMtime"_s)
                find<QComboBox>(action)->setCurrentText(typed);
            else
                find<QLineEdit>(action)->setText(typed);
            find<QPushButton>(u"cmdApply"_s)->click();
        }
        const auto* last = fx->prompts.last();
        QVERIFY(last);
        QCOMPARE(last->title, told.section(u": "_s, 0, 0));
        QVERIFY2(last->text.contains(told.section(u": "_s, 1)), qPrintable(last->text));
        if (words.first() == u"delete"_s) {
            const auto& asked = fx->prompts.shown.first();
            QCOMPARE(asked.title, u"Remove record?"_s);
            QCOMPARE(asked.buttons, Prompts::Buttons::YesNo);
            QCOMPARE(asked.icon, Prompts::Icon::Critical);
        }
        QVERIFY(!fx->prompts.texts().contains(Updated));
        QCOMPARE(stored(), before);
        QCOMPARE(shown(view->model()), gridBefore);
    }
};

QTEST_MAIN(RatesTest)
#include "tst_rates.moc"
