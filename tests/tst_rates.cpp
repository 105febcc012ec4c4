// The rates window and the promo list, driven through their controls on a real database:
// what Apply puts in force and writes, what the grids write, and what is refused.
#include "support/console_fixture.h"
#include "support/terminal_probe.h"
#include "ui/main_window.h"

#include <QSqlRecord>
#include <QtTest>
#include <QtWidgets>

#include <array>

using namespace Qt::StringLiterals;
using Answer = Prompts::Answer;
Q_DECLARE_METATYPE(Prompts::Answer)

namespace {

const QString Updated = u"Services table & Tarvo QRB  rates has been refreshed\r"
                        u"Restart routine for terminals is needed before changes takes effect!"_s;

} // namespace

class RatesTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<MainWindow> frame;

    Console& console() { return *fx->console; }
    Rates& rates() { return console().rates(); }
    template <typename T = QWidget> T* find(const QString& name) {
        return frame->findChild<T*>(name);
    }
    QTableView* grid(const QString& window) {
        return find<QWidget>(window)->findChild<QTableView*>();
    }

    // A fresh console on the same database, as at the next start.
    void restart() {
        frame.reset();
        fx->prompts.clear();
        fx->console.reset(); // a console started again reads everything afresh
        fx->start();
        console().currentOperator() = {u"ANA"_s, u"Admin"_s, u"pw"_s};
        frame = std::make_unique<MainWindow>(console());
        frame->setModalShowsBlock(false);
        frame->show();
    }
    QDialog* openRates(const QString& command = u"mnuRateS"_s) {
        frame->action(command)->trigger();
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
        for (const QChar c : keys) {
            if (c == u'\b')
                QTest::keyClick(editor, Qt::Key_Backspace);
            else
                QTest::keyClicks(editor, QString(c));
        }
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
        fx = std::make_unique<ConsoleFixture>();
        fx->start();
        fx->exec(u"INSERT INTO services (Description, Amount) VALUES ('Scan', 10), ('Print', 5)"_s);
        fx->exec(u"INSERT INTO promos (ddtls, drange, dtype, Amount) VALUES "
                 "('Summer', 'June', 'Per Hour', 5), ('Student', 'All year', 'Fix', 0)"_s);
        restart();
    }
    void cleanup() {
        frame.reset();
        fx.reset();
    }

    void applyPutsTheSettingsInForce_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("rows");          // in the rates table before
        QTest::addColumn<QStringList>("typed"); // txtrph, txtmina, cmbMtime
        QTest::addColumn<QByteArray>("reply");  // to the terminal's next "RTS"
        QTest::addColumn<QString>("stored");    // RPH/mina/mint of each row
        QTest::newRow("rate 25") << u"mnuRateS"_s << 1 << QStringList{"25", "10", "30"}
                                 << "SRPH 25.:30.;10."_ba << u"25.0/10.0/30"_s;
        // What a charge reads (rate and minimum) stays as it was.
        QTest::newRow("minutes alone") << u"tbar4"_s << 1 << QStringList{"20", "10", "120"}
                                       << "SRPH 20.:120.;10."_ba << u"20.0/10.0/120"_s;
        QTest::newRow("fractions") << u"tbar4"_s << 1 << QStringList{"12.5", "7.25", "44.6"}
                                   << "SRPH 12.5:45.;7.25"_ba << u"12.5/7.25/45"_s;
        QTest::newRow("grouped texts read their leading number")
            << u"mnuRateS"_s << 1 << QStringList{"1,234.50", "1,000", "30"} << "SRPH 1.:30.;1."_ba
            << u"1.0/1.0/30"_s;
        QTest::newRow("empty table") << u"mnuRateS"_s << 0 << QStringList{"25", "15", "45"}
                                     << "SRPH 25.:45.;15."_ba << u"25.0/15.0/45"_s;
        QTest::newRow("two rows: the first is the one read")
            << u"mnuRateS"_s << 2 << QStringList{"25", "15", "45"} << "SRPH 25.:45.;15."_ba
            << u"25.0/15.0/45 31.0/10.0/30"_s;
    }
    void applyPutsTheSettingsInForce() {
        QFETCH(QString, command);
        QFETCH(int, rows);
        QFETCH(QStringList, typed);
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
        QCOMPARE(grid(u"RatesSrv"_s)->columnWidth(0), 3000 * frame->logicalDpiX() / 1440);

        apply(typed[0], typed[1], typed[2]);
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
        QTest::addColumn<QStringList>("fields"); // amount, range, type of each entry
        QTest::newRow("three promos")
            << 3 << QStringList{"No Discount", "Happy hour", "Student", "Loyal"}
            << QStringList{"0.00", "None",     "None", "5.00",    "2-5 PM",   "Per Hour",
                           "0.50", "Weekdays", "Fix",  "1234.50", "All year", "None"};
        QTest::newRow("none") << 0 << QStringList{"None Defined"}
                              << QStringList{"0.00", "None", "None"};
    }
    void promoListHasItsBuiltInEntryFirst() {
        QFETCH(int, promos);
        QFETCH(QStringList, names);
        QFETCH(QStringList, fields);
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
        for (int i = names.size() - 1; i >= 0; --i) {
            combo->setCurrentIndex(i);
            QCOMPARE(QStringList({find<QLineEdit>(u"txtpamnt"_s)->text(),
                                  find<QLineEdit>(u"txtprange"_s)->text(),
                                  find<QLineEdit>(u"txtptype"_s)->text()}),
                     fields.mid(3 * i, 3));
        }
        combo->setCurrentIndex(names.size() - 1);
        apply(u"20"_s, u"10"_s, u"30"_s);
        QCOMPARE(rates().promoInForce(), int(names.size()) - 1);
        QCOMPARE(rates().promo().details, names.last());
    }

    void gridEditsReachTheListsWhenTheirTimeComes() {
        openRates();
        QTableView* services = grid(u"RatesSrv"_s);
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
        QTest::newRow("promo amount") << u"frmlp"_s << 3 << u"12.50"_s << u"12.5"_s;
        QTest::newRow("letters dropped") << u"frmlp"_s << 3 << u"1a2b.5"_s << u"12.5"_s;
        QTest::newRow("no sign or blank") << u"frmlp"_s << 3 << u"- 3"_s << u"3"_s;
        QTest::newRow("no grouping") << u"frmlp"_s << 3 << u"7,5"_s << u"75"_s;
        QTest::newRow("backspace edits") << u"frmlp"_s << 3 << u"129\b"_s << u"12"_s;
        QTest::newRow("service amount") << u"RatesSrv"_s << 1 << u"4O5"_s << u"45"_s;
        QTest::newRow("text column") << u"frmlp"_s << 0 << u"Pay-1, get 2"_s << u"Pay-1, get 2"_s;
    }
    void numericColumnsTakeOnlyNumberKeys() {
        QFETCH(QString, window);
        QFETCH(int, column);
        QFETCH(QString, keys);
        QFETCH(QString, stored);
        openRates();
        QWidget* w = window == u"frmlp"_s ? openPromos() : find(window);
        typeInto(w->findChild<QTableView*>(), 2, column, keys); // a new record
        const QString table = window == u"frmlp"_s ? u"promos"_s : u"services"_s;
        const QString field = column == 0 ? u"ddtls"_s : u"Amount"_s;
        QCOMPARE(fx->scalar(u"SELECT %1 FROM %2 ORDER BY rowid DESC LIMIT 1"_s.arg(field, table))
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
        // clang-format off
        const std::array<const char*, 5> rows[] = {
            {"no to a service deletion", "", "delete RatesSrv", "No",
             "Remove record?: Delete current Service?"},
            {"no to a promo deletion", "", "delete frmlp", "No",
             "Remove record?: Delete current record?"},
            {"' in txtrph", "", "txtrph", "2'5", apostrophe},
            {"' in txtmina", "", "txtmina", "1'0", apostrophe},
            {"' in cmbMtime", "", "cmbMtime", "3'0", apostrophe},
            {"' in a service", "", "RatesSrv 0 0", "Kid's", apostrophe},
            {"' in a new promo", "", "frmlp 2 0", "Mom's day", apostrophe},
            {"' in a promo type", "", "frmlp 0 2", "Fix'", apostrophe},
            {"rate too large", "", "txtrph", "99999999999", "Not saved: too large"},
            {"rates row fails", "fail UPDATE rates", "txtrph", "25", diskSaysNo},
            {"services unreadable", "ALTER TABLE services RENAME COLUMN Amount TO Price",
             "txtrph", "25", "Database error: Amount"},
            {"service change fails", "fail UPDATE services", "RatesSrv 0 1", "99", diskSaysNo},
            {"promo insert fails", "fail INSERT promos", "frmlp 2 0", "Night", diskSaysNo},
            {"service delete fails", "fail DELETE services", "delete RatesSrv", "", diskSaysNo},
            {"promo delete fails", "fail DELETE promos", "delete frmlp", "", diskSaysNo},
        };
        // clang-format on
        for (const auto& r : rows)
            QTest::newRow(r[0]) << QString::fromUtf8(r[1]) << QString::fromUtf8(r[2])
                                << QString::fromUtf8(r[3]) << QString::fromUtf8(r[4]);
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
        const QString title = told.section(u": "_s, 0, 0);
        QCOMPARE(last->title, title);
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
